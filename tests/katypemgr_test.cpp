// The descriptor tables and the KaTypeMgr facade over them.
#include "katypemgr/katypemgr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "kabase/assert.h"
#include "kabase/codec.h"
#include "kabase/config.h"
#include "table/tables.h"

namespace {

std::string Text(const KaString& s) { return s.StrGet() == nullptr ? "" : s.StrGet(); }

// One '1' per slot that is filled, '0' per empty one.
template <typename... Slot>
std::string Filled(Slot... slots) {
  return {(slots != nullptr ? '1' : '0')...};
}

// One '1' per slot two rows share, '0' per slot they do not.
template <auto... Slot>
std::string Shared(const KaTypeDescriptor& a, const KaTypeDescriptor& b) {
  return {(a.*Slot == b.*Slot ? '1' : '0')...};
}

KaTypeDescriptor& Row(signed char id) { return *ka::detail::CurrentTable()[id]; }

// Counts the string layer's overflow reports, switched on.
class TypeMgr : public ::testing::Test {
 protected:
  void SetUp() override {
    reports = 0;
    KaSetAssertReceiver([](const char*, const char*, int) { ++reports; });
    DefaultConfig().SetInt("debug", "stringOverflow", 1);
  }
  void TearDown() override {
    KaSetAssertReceiver(nullptr);
    DefaultConfig().Remove("debug", "stringOverflow");
  }
  static inline int reports = 0;
  // A default manager that also reaches the protected single-string form.
  struct Manager : KaTypeMgr {
    using KaTypeMgr::ConvertFromKaStringOld;
    using KaTypeMgr::ConvertToKaStringOld;
  } m;
};

// Requested version, bound to the old table, version answered.
constexpr std::tuple<unsigned int, bool, unsigned short> kBindings[] = {
    {0, true, 0},  {3, true, 3},   {4, false, 4},   {5, false, 5},          {10, false, 10},
    {11, true, 3}, {12, false, 4}, {200, false, 4}, {0xFFFFFFFF, false, 4},
};

TEST_F(TypeMgr, BindsVersionsToTablesAndTheDefaultManager) {
  for (const auto& [requested, old, version] : kBindings) {
    SCOPED_TRACE(requested);
    KaTypeMgr bound(requested);
    EXPECT_EQ(old, bound.UsesOldTable());
    EXPECT_EQ(version, bound.Version());
  }
  EXPECT_EQ(5, m.Version());
  ___KaTypemgrContext(1);  // the default manager lives with the context
  KaTypeMgr* made = DefaultTypeMgr(nullptr);
  ASSERT_NE(nullptr, made);
  EXPECT_EQ(5, made->Version());
  KaTypeMgr mine(11);
  EXPECT_EQ(made, DefaultTypeMgr(&mine));
  EXPECT_EQ(&mine, DefaultTypeMgr(nullptr));
  DefaultTypeMgr(made);
  ___KaTypemgrContext(0);
  EXPECT_EQ(nullptr, DefaultTypeMgr(nullptr));
}

// Raw ids answering capability 2 (integer rows, KaObjId, KaInt64) and 3 (dates and times).
constexpr int kIntegers[] = {0, 1, 2, 5, 6, 7, 8, 9, 10, 15, 26, 42, 43};
constexpr int kDates[] = {12, 13, 19, 22, 23, 24, 40};

TEST_F(TypeMgr, AnswersForEveryIdentifier) {
  for (int raw = -128; raw <= 127; ++raw) {
    SCOPED_TRACE(raw);
    const auto id = static_cast<signed char>(raw);
    EXPECT_EQ(std::ranges::count(kIntegers, raw), m.SupportsCapability(id, 2));
    EXPECT_EQ(std::ranges::count(kDates, raw), m.SupportsCapability(id, 3));
    EXPECT_EQ(raw == KaSTRING_T, m.SupportsCapability(id, 1) == 1) << "only KaString has SetNull";
    KaString out("keep");
    EXPECT_EQ("keep", Text(m.PrintToKaString(id, out, nullptr, nullptr, 2))) << "no values";
    const std::string name = m.NameGet(id, nullptr);
    EXPECT_EQ(raw < 47 || raw >= 100 ? 1 : 0, m.IsValidType(id)) << "47..99 only are no types";
    if (raw >= 0 && raw < 47) {
      signed char found = -1;
      EXPECT_EQ(0, m.Name2KaTypeId(name.c_str(), found));
      EXPECT_EQ(raw, found) << name;
    } else {
      EXPECT_EQ("illegal", name) << "never index past the table";
    }
  }
  signed char id = -1;
  EXPECT_EQ(1, m.Name2KaTypeId("Ka4B_T", id)) << "type-id names are not searched";
  EXPECT_EQ(1, m.Name2KaTypeId(nullptr, id));
  char buffer[32];
  EXPECT_STREQ("KaU8B_T", m.TypeIdNameGet(KaU8B_T, buffer));
  EXPECT_EQ(0, KaTypeMgr(3).SupportsNullValue(KaSTRING_T)) << "the older string has none";
}

// Rows whose every slot is filled. Rows of value classes join this list as
// their classes enter the table, until it covers every row.
constexpr int kCompleteRows[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 42, 43, 46};

TEST_F(TypeMgr, CompleteRowsHaveEverySlot) {
  for (int id : kCompleteRows) {
    SCOPED_TRACE(id);
    const auto sid = static_cast<signed char>(id);
    EXPECT_EQ("1111111111100",
              Filled(m.StorePtrGet(sid), m.LoadPtrGet(sid), m.CmpFuncPtrGet(sid),
                     m.ConstructorPtrGet(sid), m.DestructorPtrGet(sid), m.AssignmentPtrGet(sid),
                     m.CopyPtrGet(sid), m.IsNullPtrGet(sid), m.ExchangeFormat(sid, nullptr),
                     m.ExchangePrintToKaStringFunc(sid, nullptr),
                     m.ExchangeScanFromKaStringFunc(sid, nullptr), m.SetNullPtrGet(sid),
                     m.ComparePtrGet(sid)))
        << "no null value, no plain compare";
    if (id == KaRES_T) continue;  // the remaining slots show through what they answer
    unsigned int data[4] = {1, 2, 3, 4};
    int error = 0;
    EXPECT_GT(m.DiskLenGet(sid, nullptr, 8, 1, 8), 0u);
    EXPECT_GT(m.DiskLenGetFromMemFile(sid, nullptr, 2, 1), 0u);
    std::unique_ptr<KaTypeConvertData> texts(m.ConvertTo(sid, data, 1));
    ASSERT_NE(nullptr, texts);
    void* made[] = {m.DefaultValue(sid, 1, 0), m.ConvertFrom(sid, texts.get(), 1)};
    EXPECT_EQ("11", Filled(made[0], made[1]));
    for (void* values : made) m.Delete(sid, values, 1);
    EXPECT_NE(0u, m.Hash(sid, 0, data, 1, 8, error));
    EXPECT_GT(m.Translate(sid, data, 0x03, 16, data, 0x08, 16, 1), 0u);
    // No array where pairs are asked for: compare and hash agree that the
    // array ended before the first element.
    int hashError = 0;
    EXPECT_EQ(0u, m.Hash(sid, 0, nullptr, 2, 8, hashError));
    EXPECT_EQ(2101, hashError);
    EXPECT_EQ(0, m.Cmp(sid, 0, nullptr, 0, nullptr, 0, 2, 8, error));
    EXPECT_EQ(2101, error);
    EXPECT_EQ(0, m.Cmp(sid, 0, data, 0, nullptr, 0, 1, 2, error));
    EXPECT_EQ(2101, error);
    EXPECT_EQ(0, m.Cmp(sid, nullptr, data, 0, 1, 8));
  }
}

TEST_F(TypeMgr, PrimitiveRowsUseTheBaseCodecsAndHostSizes) {
  EXPECT_EQ(&IntStore, m.StorePtrGet(KaINT_T));
  EXPECT_EQ(&UnsignedLoad, m.LoadPtrGet(KaUNSIGNED_T));
  EXPECT_EQ(4u, m.DiskLenGet(KaUNSIGNED_T, nullptr, 2, 1, 0)) << "int sizes: 4 per element";
  // Rows beyond the integer ones (checked with their stepping) hold their host types.
  EXPECT_EQ(sizeof(int), m.MemLenGet(KaENUM_T, 1));
  EXPECT_EQ(sizeof(float), m.MemLenGet(KaFLOAT_T, 1));
  EXPECT_EQ(sizeof(double), m.MemLenGet(KaDOUBLE_T, 1));
  EXPECT_EQ(sizeof(KaString), m.MemLenGet(KaSTRING_T, 1));
  EXPECT_EQ(0, m.MemLenGet(KaRES_T, 1));
  EXPECT_EQ(static_cast<unsigned short>(8 * 70000), m.MemLenGet(KaDOUBLE_T, 70000)) << "16 bits";
  EXPECT_EQ(0, m.IsFixed(KaSTRING_T));
  EXPECT_EQ(1, m.IsFixed(KaDOUBLE_T));
}

// Rows of one width and signedness family share their functions. What a
// pair does not share besides: Create, Delete, EvalAndBound, Hash, the
// conversions, stepping, and where a flag is '0' (store, load, translate,
// compare), that slot too.
struct SharedCase {
  signed char a, b;
  const char* flags;
  const char* why;
};
constexpr SharedCase kSharedCases[] = {
    {Ka1B_T, KaU1B_T, "1110", "the 1-byte functions"},
    {Ka2B_T, KaU2B_T, "1110", "the 2-byte functions"},
    {Ka4B_T, KaU4B_T, "1110", "the 4-byte functions"},
    {Ka8B_T, KaU8B_T, "1110", "the 8-byte functions"},
    {KaINT_T, KaUNSIGNED_T, "0000", "the int functions; each its stored form"},
    {KaINT_T, KaENUM_T, "1101", "int itself, but for translation and stepping"},
    {KaU4B_T, KaBLOCKID_T, "1111", "o_u4b itself, but for names and format"},
};

TEST_F(TypeMgr, RowsOfOneFamilyShareTheirFunctions) {
  using D = KaTypeDescriptor;
  for (const SharedCase& c : kSharedCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(
        std::string("1111111111") + c.flags,
        (Shared<&D::constructor, &D::destructor, &D::assignment, &D::copy, &D::isNull,
                &D::printToString, &D::scanFromString, &D::sizeGetFromMemFile, &D::nullSizeGet,
                &D::sizeGet, &D::store, &D::load, &D::translate, &D::compare>(Row(c.a), Row(c.b))));
    EXPECT_NE(Row(c.a).name, Row(c.b).name);
  }
}

// An integer row holds a T: its memory length is sizeof(T), mode 2 (reached
// only through the slot) sets the smallest T, and nothing steps past the largest.
template <typename T>
void ExpectIntegerRow(KaTypeMgr& m, signed char id) {
  SCOPED_TRACE(static_cast<int>(id));
  using Limits = std::numeric_limits<T>;
  EXPECT_EQ(sizeof(T), m.MemLenGet(id, 1));
  T v = 5;
  EXPECT_EQ(0, Row(id).nextValue(&v, 0, 8, 2));
  EXPECT_EQ(Limits::min(), v);
  v = Limits::max() - 1;
  EXPECT_EQ(0, m.GetValue(id, &v, 0, 8, 'M'));
  EXPECT_EQ(Limits::max(), v);
  EXPECT_EQ(2091, m.GetValue(id, &v, 0, 8, 'N'));
  EXPECT_EQ(Limits::max(), v) << "the value stays";
}

TEST_F(TypeMgr, RowsStepWithinTheirHostTypes) {
  ExpectIntegerRow<signed char>(m, Ka1B_T);
  ExpectIntegerRow<unsigned char>(m, KaU1B_T);
  ExpectIntegerRow<int16_t>(m, Ka2B_T);
  ExpectIntegerRow<uint16_t>(m, KaU2B_T);
  ExpectIntegerRow<int32_t>(m, Ka4B_T);
  ExpectIntegerRow<uint32_t>(m, KaU4B_T);
  ExpectIntegerRow<int>(m, KaINT_T);
  ExpectIntegerRow<unsigned>(m, KaUNSIGNED_T);
  ExpectIntegerRow<uint32_t>(m, KaBLOCKID_T);
  ExpectIntegerRow<int64_t>(m, Ka8B_T);
  ExpectIntegerRow<uint64_t>(m, KaU8B_T);
  uint64_t uq = 41;
  EXPECT_EQ(0, m.GetValue(KaU8B_T, &uq, 0, 8, 'O'));
  EXPECT_EQ(41u, uq) << "mode O leaves the value";
  EXPECT_EQ(-2999, m.GetValue(KaENUM_T, &uq, 0, 8, 'N')) << "enum has no next value";
  EXPECT_EQ(-2999, m.GetValue(KaINT_T, &uq, 0, 8, 2)) << "the facade steps only M, N and O";
  EXPECT_EQ(-2999, Row(KaINT_T).nextValue(&uq, 0, 2, 'N')) << "the slot steps memory forms only";
  // Stored forms are read with format & 0x81, so a little-endian image works.
  unsigned char stored[4] = {0xFE, 0xFF, 0xFF, 0x7F};  // INT32_MAX - 1
  EXPECT_EQ(0, m.GetValue(Ka4B_T, stored, 0, 0x03, 'N'));
  EXPECT_EQ(2091, m.GetValue(Ka4B_T, stored, 0, 0x03, 'N'));
  // Floating rows step to the next representable value.
  double d = 5;
  EXPECT_EQ(0, Row(KaDOUBLE_T).nextValue(&d, 0, 8, 2));
  EXPECT_EQ(-std::numeric_limits<double>::infinity(), d) << "mode 2: the smallest";
  for (double stuck : {std::numeric_limits<double>::infinity(), std::nan("")}) {
    EXPECT_EQ(2091, m.GetValue(KaDOUBLE_T, &stuck, 0, 8, 'N')) << stuck;
  }
  d = 1.0;
  EXPECT_EQ(0, m.GetValue(KaDOUBLE_T, &d, 0, 8, 'N'));
  EXPECT_EQ(std::nextafter(1.0, 2.0), d);
  float f = -0.0f;
  EXPECT_EQ(0, m.GetValue(KaFLOAT_T, &f, 0, 8, 'N'));
  EXPECT_GT(f, 0.0f);
}

TEST_F(TypeMgr, NullValuesAndTheirText) {
  int v = 77;
  EXPECT_EQ(0, m.SetNullValue(KaINT_T, &v));
  EXPECT_EQ(0, v) << "no null value: what an empty text converts to";
  KaString s("x");
  EXPECT_EQ(0, m.SetNullValue(KaSTRING_T, &s));
  EXPECT_EQ(1, m.IsNullValue(KaSTRING_T, &s));
  // No value at all reads as the null value, and there is nothing to set.
  EXPECT_EQ(1, m.IsNullValue(KaSTRING_T, nullptr));
  EXPECT_EQ(0, m.SetNullValue(KaSTRING_T, nullptr));
  EXPECT_EQ(0, m.IsNullValue(KaINT_T, nullptr)) << "a type without a null value";
  EXPECT_EQ(0, m.SetNullValue(KaINT_T, nullptr));
  EXPECT_EQ("{NULL}", Text(KaTypeMgr::GetNullPrintString()));
}

TEST_F(TypeMgr, PrintsArraysWithSeparators) {
  int32_t three[] = {1, -2, 3};
  KaString out, text, b, untouched("keep");
  EXPECT_EQ("1,-2,3", Text(m.PrintToKaString(Ka4B_T, out, three, nullptr, 3)));
  signed char chars[] = {'A', 7, 'b'};
  EXPECT_EQ("A0x07b", Text(m.PrintToKaString(Ka1B_T, text, chars, nullptr, 3)))
      << "one text for a character array";
  uint32_t blocks[] = {7, 8};
  EXPECT_EQ("#7,#8", Text(m.PrintToKaString(KaBLOCKID_T, b, blocks, nullptr, 2)));
  EXPECT_EQ("keep", Text(m.PrintToKaString(KaDATE_T, untouched, three, nullptr, 3)))
      << "a row without a print slot";
  EXPECT_EQ("keep,,", Text(m.PrintToKaString(KaRES_T, untouched, three, nullptr, 3)))
      << "separators even where each element prints nothing";
}

// An array whose text passes the string's limit is cut there, exactly as the
// string cuts one long append, and reported once; the printing stops there.
TEST_F(TypeMgr, ArrayTextStopsAtTheStringLimitWithOneReport) {
  std::vector<int> values(30000);
  std::string all = "[";  // what the output holds before
  for (size_t i = 0; i < values.size(); ++i) {
    values[i] = static_cast<int>(i * 7919) - 100000;
    if (i > 0) all.push_back(',');
    all.append(std::to_string(values[i]));
  }
  KaString out("[");
  m.PrintToKaString(KaINT_T, out, values.data(), nullptr, static_cast<unsigned>(values.size()));
  EXPECT_EQ(all.substr(0, KaString::kMaxSize - 1), Text(out));
  EXPECT_EQ(1, reports) << "one cut, one report";

  // A 2-byte output holds half as many units; an element that ends exactly at
  // the limit leaves the separator after it to be cut.
  KaString wide(253, KaString::GetDefaultLanguage());
  reports = 0;
  m.PrintToKaString(KaINT_T, wide, values.data(), nullptr, static_cast<unsigned>(values.size()));
  EXPECT_EQ(KaString::kMaxSize / 2 - 1, wide.Len());
  EXPECT_EQ(1, reports);
  reports = 0;
  KaString exact(std::string(KaString::kMaxSize - 2, 'x').c_str());  // room for one unit
  int32_t two[] = {7, 8};
  m.PrintToKaString(Ka4B_T, exact, two, nullptr, 2);
  EXPECT_EQ(KaString::kMaxSize - 1, exact.Len());
  EXPECT_EQ('7', exact.UnitAt(KaString::kMaxSize - 2));
  EXPECT_EQ(1, reports) << "the cut separator is reported";
}

TEST_F(TypeMgr, CmpDispatchesThroughTheSharedRows) {
  KaTypeMgr other(4);
  const char* old = m.ExchangeFormat(KaINT_T, "<%d>");
  EXPECT_STREQ("%d", old);
  EXPECT_STREQ("<%d>", other.ExchangeFormat(KaINT_T, nullptr)) << "every manager sees it";
  m.ExchangeFormat(KaINT_T, old);
  KaCompareFunc always = [](unsigned char, unsigned int, void*, unsigned int, void*, unsigned short,
                            unsigned int, int&) { return 1; };
  const KaCompareFunc before = m.ExchangeKaTypeCmpFunc(KaU2B_T, always);
  EXPECT_EQ(1, other.Cmp(KaU2B_T, nullptr, nullptr, 0, 1, 8));
  EXPECT_EQ(always, m.ExchangeKaTypeCmpFunc(KaU2B_T, before));
  EXPECT_EQ(before, m.ExchangeKaTypeCmpFunc(KaU2B_T, nullptr));
  int32_t a[] = {1, 2}, b[] = {1, 3};
  int error = -7;
  EXPECT_EQ(-1, m.Cmp(Ka4B_T, 0, a, 0, b, 0, 2, 8, error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(0, m.Cmp(Ka4B_T, 4, a, 8, b, 0, 2, 8, error));
  EXPECT_EQ(2101, error);
  error = 55;
  EXPECT_EQ(0, m.Cmp(static_cast<signed char>(101), 0, a, 0, b, 0, 2, 8, error));
  EXPECT_EQ(55, error) << "the illegal row leaves the error word alone";
}

// Stored to stored is a byte copy, the tail zero-filled, within one buffer too
// (the codecs allow it): the source bytes reach the destination first.
TEST_F(TypeMgr, ArrayElementsAndTranslation) {
  double values[3] = {};
  EXPECT_EQ(&values[2], m.GetArrayElement(KaDOUBLE_T, values, 2, 3));
  EXPECT_EQ(nullptr, m.GetArrayElement(KaDOUBLE_T, values, 3, 3));
  EXPECT_EQ(&values[2], m.GetArrayElement(KaDOUBLE_T, values, 2, 0)) << "count 0: any index";
  unsigned char stored[8] = {1, 2, 3, 4, 5, 6, 7, 8}, big[8];
  for (const auto& [to, from] : {std::pair{0, 0}, {4, 0}, {0, 4}}) {
    SCOPED_TRACE(from - to);
    unsigned char buffer[16];
    std::memset(buffer, 0xAA, sizeof buffer);
    std::memcpy(buffer + from, stored, sizeof stored);
    EXPECT_EQ(8u, m.Translate(Ka4B_T, buffer + to, 0x02, 12, buffer + from, 0x03, 8, 2));
    EXPECT_EQ(0, std::memcmp(stored, buffer + to, 8));
    EXPECT_EQ(std::string(4, '\0'), std::string(buffer + to + 8, buffer + to + 12));
  }
  int32_t memory[2] = {0x01020304, -1}, back[2] = {};
  EXPECT_EQ(4u, m.Translate(Ka4B_T, big, 0x02, 4, stored, 0x03, 8, 2)) << "cut";
  EXPECT_EQ(8u, m.Translate(Ka4B_T, big, 0x02, 8, memory, 0x08, 8, 2));
  EXPECT_EQ(1, big[0]) << "memory to stored converts";
  EXPECT_EQ(8u, m.Translate(Ka4B_T, back, 0x08, 8, big, 0x02, 8, 2));
  EXPECT_EQ(memory[0], back[0]);
  EXPECT_EQ(0u, m.Translate(KaINT_T, back, 0x08, 8, memory, 0x08, 8, 0));
}

TEST_F(TypeMgr, HolderOwnsItsArrayAndTheOldFormRoundTrips) {
  KaTypeConvertData* holder = KaTypeConvertData::Make(KaSTRING_T, 2, m.Create(KaSTRING_T, 2), &m);
  ASSERT_NE(nullptr, holder);
  EXPECT_EQ("1100", Filled(holder->GetString(0), holder->GetString(1), holder->GetString(2),
                           holder->GetString(-1)));
  delete holder;  // ASan would report the strings if the holder did not free them
  int32_t n = 9;
  KaTypeConvertData* numbers = KaTypeConvertData::Make(Ka4B_T, 1, &n, nullptr);
  EXPECT_EQ(nullptr, numbers->GetString(0)) << "not a string array";
  delete numbers;  // no manager: the array is not the holder's to free
  signed char letters[] = {'a', 'b'};
  KaString* joined = m.ConvertToKaStringOld(letters, Ka1B_T, 2);
  ASSERT_NE(nullptr, joined);
  EXPECT_EQ(std::string("a\001b\001"), Text(*joined)) << "code 1 separates and ends";
  auto* back = static_cast<signed char*>(m.ConvertFromKaStringOld(joined, Ka1B_T, 2));
  ASSERT_NE(nullptr, back);
  EXPECT_EQ("ab", std::string(back, back + 2));
  m.Delete(Ka1B_T, back, 2);
  m.Delete(KaSTRING_T, joined, 1);
}

}  // namespace
