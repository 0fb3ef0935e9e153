// The descriptor tables and the KaTypeMgr facade: binding, folding, names,
// capabilities, completeness of the rows, stepping, null values, printing,
// translation and the older single-string form.
#include "katypemgr/katypemgr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "kabase/codec.h"
#include "katables.h"

namespace {

std::string Text(const KaString& s) { return s.StrGet() == nullptr ? "" : s.StrGet(); }

struct BindingCase {
  unsigned int requested;
  bool old;
  unsigned short version;
};
constexpr BindingCase kBindings[] = {
    {0, true, 0},  {3, true, 3},   {4, false, 4},   {5, false, 5},          {10, false, 10},
    {11, true, 3}, {12, false, 4}, {200, false, 4}, {0xFFFFFFFF, false, 4},
};

TEST(TypeMgr, BindsVersionsToTables) {
  for (const BindingCase& c : kBindings) {
    SCOPED_TRACE(c.requested);
    KaTypeMgr m(c.requested);
    EXPECT_EQ(c.old, m.UsesOldTable());
    EXPECT_EQ(c.version, m.Version());
    KaTypeMgr f;
    f.SetFactory(c.requested);
    EXPECT_EQ(c.old, f.UsesOldTable());
    EXPECT_EQ(c.version, f.Version());
  }
  EXPECT_EQ(5, KaTypeMgr().Version());
  EXPECT_FALSE(KaTypeMgr().UsesOldTable());
}

TEST(TypeMgr, FoldsEveryIdentifier) {
  KaTypeMgr m;
  for (int raw = -128; raw <= 127; ++raw) {
    SCOPED_TRACE(raw);
    const auto id = static_cast<signed char>(raw);
    const std::string name = m.NameGet(id, nullptr);
    if (raw >= 0 && raw < 47) {
      EXPECT_EQ(1, m.IsValidType(id));
      signed char found = -1;
      EXPECT_EQ(0, m.Name2KaTypeId(name.c_str(), found));
      EXPECT_EQ(raw, found) << name;
    } else if (raw >= 100) {
      EXPECT_EQ(1, m.IsValidType(id));
      EXPECT_EQ("illegal", name) << "100 and above reach row 46";
    } else if (raw >= 47) {
      EXPECT_EQ(0, m.IsValidType(id)) << "47..99 are no types";
      EXPECT_EQ("illegal", name) << "but never index past the table";
    } else {
      EXPECT_EQ(1, m.IsValidType(id)) << "negative ids count as valid";
      EXPECT_EQ("illegal", name);
    }
  }
}

TEST(TypeMgr, LooksUpExchangeNamesOnly) {
  KaTypeMgr m;
  signed char id = -1;
  EXPECT_EQ(0, m.Name2KaTypeId("o_4b", id));
  EXPECT_EQ(2, id);
  EXPECT_EQ(0, m.Name2KaTypeId("KaString", id));
  EXPECT_EQ(11, id);
  EXPECT_EQ(1, m.Name2KaTypeId("Ka4B_T", id)) << "type-id names are not searched";
  EXPECT_EQ(1, m.Name2KaTypeId("O_4B", id)) << "case matters";
  EXPECT_EQ(1, m.Name2KaTypeId(nullptr, id));
  char buffer[32];
  EXPECT_STREQ("KaU8B_T", m.TypeIdNameGet(KaU8B_T, buffer));
  EXPECT_EQ(buffer, m.NameGet(KaINT_T, buffer));
  EXPECT_STREQ("int", buffer);
}

TEST(TypeMgr, AnswersCapabilities) {
  KaTypeMgr m;
  const std::vector<int> integers = {0, 1, 2, 5, 6, 7, 8, 9, 10, 15, 26, 42, 43};
  const std::vector<int> dates = {12, 13, 19, 22, 23, 24, 40};
  for (int id = 0; id < 47; ++id) {
    SCOPED_TRACE(id);
    const auto sid = static_cast<signed char>(id);
    EXPECT_EQ(std::count(integers.begin(), integers.end(), id), m.SupportsCapability(sid, 2));
    EXPECT_EQ(std::count(dates.begin(), dates.end(), id), m.SupportsCapability(sid, 3));
    EXPECT_EQ(0, m.SupportsCapability(sid, 4));
  }
  EXPECT_EQ(0, m.SupportsCapability(KaBLOCKID_T, 2)) << "BlockId deliberately has not";
  EXPECT_EQ(1, m.SupportsNullValue(KaSTRING_T));
  EXPECT_EQ(0, m.SupportsNullValue(Ka4B_T));
  EXPECT_EQ(0, KaTypeMgr(3).SupportsNullValue(KaSTRING_T)) << "the older string has none";
}

// Rows whose every slot is filled. Rows of value classes join this list as
// their classes enter the table, until it covers every row.
constexpr int kCompleteRows[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14, 42, 43, 46};

TEST(TypeMgr, CompleteRowsHaveEverySlot) {
  KaTypeMgr m;
  for (int id : kCompleteRows) {
    SCOPED_TRACE(id);
    const auto sid = static_cast<signed char>(id);
    EXPECT_NE(nullptr, m.StorePtrGet(sid));
    EXPECT_NE(nullptr, m.LoadPtrGet(sid));
    EXPECT_NE(nullptr, m.CmpFuncPtrGet(sid));
    EXPECT_NE(nullptr, m.ConstructorPtrGet(sid));
    EXPECT_NE(nullptr, m.DestructorPtrGet(sid));
    EXPECT_NE(nullptr, m.AssignmentPtrGet(sid));
    EXPECT_NE(nullptr, m.CopyPtrGet(sid));
    EXPECT_NE(nullptr, m.IsNullPtrGet(sid));
    EXPECT_EQ(nullptr, m.SetNullPtrGet(sid)) << "no null value";
    EXPECT_EQ(nullptr, m.ComparePtrGet(sid));
    EXPECT_NE(nullptr, m.ExchangeFormat(sid, nullptr));
    EXPECT_NE(nullptr, m.ExchangePrintToKaStringFunc(sid, nullptr));
    EXPECT_NE(nullptr, m.ExchangeScanFromKaStringFunc(sid, nullptr));
    // The remaining slots show through what they answer.
    unsigned int data[4] = {1, 2, 3, 4};
    int error = 0;
    if (id != KaRES_T) {
      EXPECT_GT(m.DiskLenGet(sid, nullptr, 8, 1, 8), 0u);
      EXPECT_GT(m.DiskLenGetFromMemFile(sid, nullptr, 2, 1), 0u);
      void* values = m.DefaultValue(sid, 2, 0);
      EXPECT_NE(nullptr, values);
      m.Delete(sid, values, 2);
      KaTypeConvertData* texts = m.ConvertTo(sid, data, 1);
      ASSERT_NE(nullptr, texts);
      void* back = m.ConvertFrom(sid, texts, 1);
      EXPECT_NE(nullptr, back);
      m.Delete(sid, back, 1);
      delete texts;
      EXPECT_NE(0u, m.Hash(sid, 0, data, 1, 8, error));
      EXPECT_GT(m.Translate(sid, data, 0x03, 16, data, 0x08, 16, 1), 0u);
    }
  }
}

TEST(TypeMgr, PrimitiveStoredSlotsComeFromTheBaseCodecs) {
  KaTypeMgr m;
  EXPECT_EQ(&CharStore, m.StorePtrGet(Ka1B_T));
  EXPECT_EQ(&CharStore, m.LoadPtrGet(Ka1B_T));
  EXPECT_EQ(&IntStore, m.StorePtrGet(KaINT_T));
  EXPECT_EQ(&IntLoad, m.LoadPtrGet(KaINT_T));
  EXPECT_EQ(&UnsignedLoad, m.LoadPtrGet(KaUNSIGNED_T));
  EXPECT_EQ(&LongStore, m.LoadPtrGet(KaBLOCKID_T));
  EXPECT_EQ(&O_8BStore, m.StorePtrGet(KaU8B_T));
  EXPECT_EQ(4u, m.DiskLenGet(KaUNSIGNED_T, nullptr, 2, 1, 0)) << "int sizes: 4 per element";
}

TEST(TypeMgr, MemoryLengthsAreTheHostSizes) {
  KaTypeMgr m;
  struct Size {
    signed char id;
    size_t size;
  };
  const Size sizes[] = {
      {Ka1B_T, sizeof(signed char)},
      {Ka2B_T, sizeof(int16_t)},
      {Ka4B_T, sizeof(int32_t)},
      {KaDOUBLE_T, sizeof(double)},
      {KaFLOAT_T, sizeof(float)},
      {KaU2B_T, sizeof(uint16_t)},
      {KaU4B_T, sizeof(uint32_t)},
      {KaINT_T, sizeof(int)},
      {KaUNSIGNED_T, sizeof(unsigned)},
      {KaENUM_T, sizeof(int)},
      {KaU1B_T, 1},
      {KaSTRING_T, sizeof(KaString)},
      {KaBLOCKID_T, 4},
      {KaISTRING_T, sizeof(KaIString)},
      {KaCASEISTRING_T, sizeof(KaCaseIString)},
      {Ka8B_T, 8},
      {KaU8B_T, 8},
      {KaRES_T, 0},
  };
  for (const Size& s : sizes) {
    SCOPED_TRACE(static_cast<int>(s.id));
    EXPECT_EQ(s.size, m.MemLenGet(s.id, 1));
    EXPECT_EQ(static_cast<unsigned short>(s.size * 70000), m.MemLenGet(s.id, 70000))
        << "truncated to 16 bits";
  }
  EXPECT_EQ(0, m.IsFixed(KaSTRING_T));
  EXPECT_EQ(1, m.IsFixed(KaDOUBLE_T));
}

// --- Stepping -------------------------------------------------------------------------

// Each stepping row at its largest value: no next value, and the value stays.
template <typename T>
void ExpectNoStepPastMaximum(KaTypeMgr& m, signed char id) {
  SCOPED_TRACE(static_cast<int>(id));
  T v = std::numeric_limits<T>::max();
  EXPECT_EQ(2091, m.GetValue(id, &v, 0, 8, 'N'));
  EXPECT_EQ(std::numeric_limits<T>::max(), v);
  T below = std::numeric_limits<T>::max() - 1;
  EXPECT_EQ(0, m.GetValue(id, &below, 0, 8, 'M'));
  EXPECT_EQ(std::numeric_limits<T>::max(), below);
}

TEST(TypeMgr, NoRowStepsPastItsMaximum) {
  KaTypeMgr m;
  ExpectNoStepPastMaximum<signed char>(m, Ka1B_T);
  ExpectNoStepPastMaximum<unsigned char>(m, KaU1B_T);
  ExpectNoStepPastMaximum<int16_t>(m, Ka2B_T);
  ExpectNoStepPastMaximum<uint16_t>(m, KaU2B_T);
  ExpectNoStepPastMaximum<int32_t>(m, Ka4B_T);
  ExpectNoStepPastMaximum<uint32_t>(m, KaU4B_T);
  ExpectNoStepPastMaximum<int>(m, KaINT_T);
  ExpectNoStepPastMaximum<unsigned>(m, KaUNSIGNED_T);
  ExpectNoStepPastMaximum<uint32_t>(m, KaBLOCKID_T);
  ExpectNoStepPastMaximum<int64_t>(m, Ka8B_T);
  ExpectNoStepPastMaximum<uint64_t>(m, KaU8B_T);
}

TEST(TypeMgr, StepsOnlyInStepModes) {
  KaTypeMgr m;
  uint64_t uq = 41;
  EXPECT_EQ(0, m.GetValue(KaU8B_T, &uq, 0, 8, 'O'));
  EXPECT_EQ(41u, uq) << "mode O leaves the value";
  int e = 1;
  EXPECT_EQ(-2999, m.GetValue(KaENUM_T, &e, 0, 8, 'N')) << "enum has no next value";
  EXPECT_EQ(-2999, m.GetValue(KaINT_T, &e, 0, 8, 'X'));
  EXPECT_EQ(-2999, m.GetValue(KaINT_T, &e, 0, 8, 2)) << "the facade steps only M, N and O";
}

// Mode 2 reaches the slot only directly: it sets the smallest value.
TEST(TypeMgr, NextValueSlotSetsTheSmallestValue) {
  KaTypeDescriptor* const* rows = ka::detail::CurrentTable();
  signed char c = 5;
  EXPECT_EQ(0, rows[Ka1B_T]->nextValue(&c, 0, 8, 2));
  EXPECT_EQ(-128, c);
  int32_t l = 5;
  EXPECT_EQ(0, rows[Ka4B_T]->nextValue(&l, 0, 8, 2));
  EXPECT_EQ(INT32_MIN, l);
  uint32_t u = 5;
  EXPECT_EQ(0, rows[KaU4B_T]->nextValue(&u, 0, 8, 2));
  EXPECT_EQ(0u, u);
  double d = 5;
  EXPECT_EQ(0, rows[KaDOUBLE_T]->nextValue(&d, 0, 8, 2));
  EXPECT_EQ(-std::numeric_limits<double>::infinity(), d);
  EXPECT_EQ(-2999, rows[KaINT_T]->nextValue(&l, 0, 2, 'N')) << "memory form only";
}

TEST(TypeMgr, FloatsStepToTheNextRepresentableValue) {
  KaTypeMgr m;
  double d = std::numeric_limits<double>::infinity();
  EXPECT_EQ(2091, m.GetValue(KaDOUBLE_T, &d, 0, 8, 'N'));
  d = std::nan("");
  EXPECT_EQ(2091, m.GetValue(KaDOUBLE_T, &d, 0, 8, 'M'));
  d = 1.0;
  EXPECT_EQ(0, m.GetValue(KaDOUBLE_T, &d, 0, 8, 'N'));
  EXPECT_EQ(std::nextafter(1.0, 2.0), d);
  float f = -0.0f;
  EXPECT_EQ(0, m.GetValue(KaFLOAT_T, &f, 0, 8, 'N'));
  EXPECT_GT(f, 0.0f);
}

TEST(TypeMgr, StepsStoredValuesThroughLoadAndStore) {
  KaTypeMgr m;
  // Stored forms are read with format & 0x81, so a little-endian image works.
  unsigned char stored[4] = {0xFE, 0xFF, 0xFF, 0x7F};  // INT32_MAX - 1
  EXPECT_EQ(0, m.GetValue(Ka4B_T, stored, 0, 0x03, 'N'));
  EXPECT_EQ(0xFF, stored[0]);
  EXPECT_EQ(2091, m.GetValue(Ka4B_T, stored, 0, 0x03, 'N'));
  EXPECT_EQ(-2999, m.GetValue(KaDATE_T, stored, 0, 0x03, 'N')) << "no slot yet";
}

// --- Null values and defaults -------------------------------------------------------------

TEST(TypeMgr, SetNullValueFallsBackToTheEmptyText) {
  KaTypeMgr m;
  int v = 77;
  EXPECT_EQ(0, m.SetNullValue(KaINT_T, &v));
  EXPECT_EQ(0, v) << "what an empty text converts to";
  double d = 2.5;
  EXPECT_EQ(0, m.SetNullValue(KaDOUBLE_T, &d));
  EXPECT_EQ(0.0, d);
  KaString s("x");
  EXPECT_EQ(0, m.SetNullValue(KaSTRING_T, &s));
  EXPECT_TRUE(s.IsNullValue());
  EXPECT_EQ(1, m.IsNullValue(KaSTRING_T, &s));
  EXPECT_EQ(0, m.IsNullValue(KaINT_T, &v));
  EXPECT_EQ(0, m.SetNullValue(KaDATE_T, &v)) << "a row without slots answers 0";
}

TEST(TypeMgr, NullPrintStringCanBeReplaced) {
  EXPECT_EQ("{NULL}", Text(KaTypeMgr::GetNullPrintString()));
  KaTypeMgr::SetNullPrintString(KaString("<null>"));
  EXPECT_EQ("<null>", Text(KaTypeMgr::GetNullPrintString()));
  KaTypeMgr::SetNullPrintString(KaString("{NULL}"));
}

// --- Printing and scanning -------------------------------------------------------------

TEST(TypeMgr, PrintsArraysWithSeparators) {
  KaTypeMgr m;
  int32_t three[] = {1, -2, 3};
  KaString out;
  EXPECT_EQ("1,-2,3", Text(m.PrintToKaString(Ka4B_T, out, three, nullptr, 3)));
  KaString one;
  EXPECT_EQ("1", Text(m.PrintToKaString(Ka4B_T, one, three, nullptr, 1)));
  signed char chars[] = {'A', 7, 'b'};
  KaString text;
  EXPECT_EQ("A0x07b", Text(m.PrintToKaString(Ka1B_T, text, chars, nullptr, 3)))
      << "one text for a character array";
  uint32_t blocks[] = {7, 8};
  KaString b;
  EXPECT_EQ("#7,#8", Text(m.PrintToKaString(KaBLOCKID_T, b, blocks, nullptr, 2)));
  KaString untouched("keep");
  EXPECT_EQ("keep", Text(m.PrintToKaString(KaRES_T, untouched, three, nullptr, 1)))
      << "the illegal row's print leaves the text";
  EXPECT_EQ("keep", Text(m.PrintToKaString(KaDATE_T, untouched, three, nullptr, 3)))
      << "a row without a print slot";
  // Arrays are printed element by element with separators, even where each
  // element prints nothing.
  EXPECT_EQ("keep,,", Text(m.PrintToKaString(KaRES_T, untouched, three, nullptr, 3)));
  int scanned = 0;
  KaString number("42");
  EXPECT_EQ(&scanned, m.ScanFromKaString(KaINT_T, &scanned, number, nullptr, 1));
  EXPECT_EQ(42, scanned);
}

TEST(TypeMgr, ExchangesWriteTheSharedRow) {
  KaTypeMgr m;
  KaTypeMgr other(4);
  const char* old = m.ExchangeFormat(KaINT_T, "<%d>");
  EXPECT_STREQ("%d", old);
  EXPECT_STREQ("<%d>", other.ExchangeFormat(KaINT_T, nullptr)) << "every manager sees it";
  m.ExchangeFormat(KaINT_T, old);
  KaCompareFunc always = [](unsigned char, unsigned int, void*, unsigned int, void*, unsigned short,
                            unsigned int, int&) { return 1; };
  const KaCompareFunc before = m.ExchangeKaTypeCmpFunc(KaU2B_T, always);
  EXPECT_EQ(1, other.Cmp(KaU2B_T, nullptr, nullptr, 0, 1, 8));
  m.ExchangeKaTypeCmpFunc(KaU2B_T, before);
  EXPECT_EQ(before, m.ExchangeKaTypeCmpFunc(KaU2B_T, nullptr));
}

// --- Compare and the "illegal" row ----------------------------------------------------------

TEST(TypeMgr, CmpDispatchesWithTheArrayBoundStatus) {
  KaTypeMgr m;
  int32_t a[] = {1, 2};
  int32_t b[] = {1, 3};
  int error = -7;
  EXPECT_EQ(-1, m.Cmp(Ka4B_T, 0, a, 0, b, 0, 2, 8, error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(0, m.Cmp(Ka4B_T, 4, a, 8, b, 0, 2, 8, error));
  EXPECT_EQ(2101, error);
  EXPECT_EQ(-1, m.Cmp(Ka4B_T, a, b, 0, 2, 8));
  error = 55;
  EXPECT_EQ(0, m.Cmp(static_cast<signed char>(101), 0, a, 0, b, 0, 2, 8, error));
  EXPECT_EQ(55, error) << "the illegal row leaves the error word alone";
}

// --- Arrays, translation, holders -------------------------------------------------------------

TEST(TypeMgr, ArrayElementsAndTranslation) {
  KaTypeMgr m;
  double values[3] = {};
  EXPECT_EQ(&values[2], m.GetArrayElement(KaDOUBLE_T, values, 2, 3));
  EXPECT_EQ(nullptr, m.GetArrayElement(KaDOUBLE_T, values, 3, 3));
  EXPECT_EQ(&values[2], m.GetArrayElement(KaDOUBLE_T, values, 2, 0)) << "count 0: any index";

  const unsigned char little[8] = {1, 0, 0, 0, 2, 0, 0, 0};
  unsigned char big[8] = {};
  EXPECT_EQ(8u, m.Translate(Ka4B_T, big, 0x02, 8, const_cast<unsigned char*>(little), 0x03, 8, 2));
  EXPECT_EQ(0, std::memcmp(little, big, 8)) << "stored to stored is a byte copy";
  unsigned char wide[12];
  std::memset(wide, 0xAA, sizeof wide);
  EXPECT_EQ(8u,
            m.Translate(Ka4B_T, wide, 0x02, 12, const_cast<unsigned char*>(little), 0x03, 8, 2));
  EXPECT_EQ(0, wide[11]) << "the rest is zero-filled";
  EXPECT_EQ(4u, m.Translate(Ka4B_T, wide, 0x02, 4, const_cast<unsigned char*>(little), 0x03, 8, 2));
  int32_t memory[2] = {0x01020304, -1};
  EXPECT_EQ(8u, m.Translate(Ka4B_T, big, 0x02, 8, memory, 0x08, 8, 2));
  EXPECT_EQ(1, big[0]) << "memory to stored converts";
  int32_t back[2] = {};
  EXPECT_EQ(8u, m.Translate(Ka4B_T, back, 0x08, 8, big, 0x02, 8, 2));
  EXPECT_EQ(memory[0], back[0]);
  EXPECT_EQ(0u, m.Translate(KaINT_T, back, 0x08, 8, memory, 0x08, 8, 0));
}

TEST(TypeMgr, HolderOwnsItsArray) {
  KaTypeMgr m;
  KaTypeConvertData* holder = KaTypeConvertData::Make(KaSTRING_T, 2, m.Create(KaSTRING_T, 2), &m);
  ASSERT_NE(nullptr, holder);
  EXPECT_NE(nullptr, holder->GetString(1));
  EXPECT_EQ(nullptr, holder->GetString(2));
  EXPECT_EQ(nullptr, holder->GetString(-1));
  *holder->GetString(0) = "x";
  delete holder;  // ASan would report the strings if the holder did not free them
  int32_t n = 9;
  KaTypeConvertData* numbers = KaTypeConvertData::Make(Ka4B_T, 1, &n, nullptr);
  EXPECT_EQ(nullptr, numbers->GetString(0)) << "not a string array";
  delete numbers;  // no manager: the array is not the holder's to free
}

// The older single-string form is protected: reached through a derived manager.
class OldFormManager : public KaTypeMgr {
 public:
  using KaTypeMgr::ConvertFromKaStringOld;
  using KaTypeMgr::ConvertToKaStringOld;
};

TEST(TypeMgr, OldSingleStringFormRoundTrips) {
  OldFormManager m;
  signed char letters[] = {'a', 'b'};
  KaString* joined = m.ConvertToKaStringOld(letters, Ka1B_T, 2);
  ASSERT_NE(nullptr, joined);
  EXPECT_EQ(std::string("a\x01"
                        "b\x01"),
            Text(*joined))
      << "code 1 separates and ends";
  auto* back = static_cast<signed char*>(m.ConvertFromKaStringOld(joined, Ka1B_T, 2));
  ASSERT_NE(nullptr, back);
  EXPECT_EQ('a', back[0]);
  EXPECT_EQ('b', back[1]);
  m.Delete(Ka1B_T, back, 2);
  m.Delete(KaSTRING_T, joined, 1);
}

TEST(TypeMgr, DefaultManagerFollowsTheContext) {
  ___KaTypemgrContext(1);
  KaTypeMgr* made = DefaultTypeMgr(nullptr);
  ASSERT_NE(nullptr, made);
  EXPECT_EQ(5, made->Version());
  KaTypeMgr mine(11);
  EXPECT_EQ(made, DefaultTypeMgr(&mine));
  EXPECT_EQ(&mine, DefaultTypeMgr(nullptr));
  DefaultTypeMgr(made);
  ___KaTypemgrContext(0);
  EXPECT_EQ(nullptr, DefaultTypeMgr(nullptr));
  EXPECT_EQ(0, ___KaTypeMgrOptions());
}

}  // namespace
