// The Compare slots of the string rows: stored elements (both byte orders,
// built here from the stored layout) compare as the strings they store; the
// array walk and its 2101 reports, the case-insensitive rows, the older
// zero-terminated form and malformed stored bytes.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "kastring_test_util.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kastrcmp.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypcmp.h"

namespace {

using Bytes = std::vector<unsigned char>;
using ka::test::Wide;
constexpr int kBound = kKaArrayBoundExceeded;
constexpr unsigned char kMemory = 8, kLittle = 3, kBig = 2;

void Put16(Bytes& out, unsigned v, bool big) {
  out.push_back(static_cast<unsigned char>(big ? v >> 8 : v & 0xFF));
  out.push_back(static_cast<unsigned char>(big ? v & 0xFF : v >> 8));
}

// One stored element from the layout: N = D + 2, code set, language, the
// text without its terminator, 0x00 0xFF; D = 2 for no buffer, S + 1 for
// 1-byte units, S for 2-byte units (S: the buffer size, terminator included).
Bytes Concat(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes StoredElement(const KaString& s, bool big) {
  const unsigned width = s.CodeSet() > 224 ? 2 : 1;
  const unsigned size = s.Size();
  const unsigned d = size == 0 ? 2 : (width == 1 ? size + 1 : size);
  Bytes out;
  Put16(out, d + 2, big);
  out.push_back(s.CodeSet());
  out.push_back(s.Language());
  for (unsigned i = 0; i < s.Len(); ++i) {
    if (width == 1) {
      out.push_back(static_cast<unsigned char>(s.StrGet()[i]));
    } else {
      Put16(out, s.UnitAt(static_cast<unsigned short>(i)), big);
    }
  }
  out.push_back(0x00);
  out.push_back(0xFF);
  return out;
}

Bytes StoredArray(const std::vector<const KaString*>& strings, bool big) {
  Bytes out;
  for (const KaString* s : strings) out = Concat(out, StoredElement(*s, big));
  return out;
}

KaString InCodeSet(const char* text, unsigned char codeSet) {
  KaString s(text);
  s.SetCodeSetCode(codeSet);
  return s;
}

KaString Null() {
  KaString s;
  s.SetNullValue();
  return s;
}

struct Outcome {
  int result, error;
};

Outcome Slot(KaCompareFunc f, unsigned char format, unsigned length1, const void* v1,
             unsigned length2, const void* v2, unsigned short option, unsigned count) {
  int error = -7;
  const int r = f(format, length1, const_cast<void*>(v1), length2, const_cast<void*>(v2), option,
                  count, error);
  return {r, error};
}

class StringSlots : public ::testing::Test {
 protected:
  void SetUp() override {
    // Long texts go past the slot's stack buffer.
    const std::u16string longText = std::u16string(700, u'x') + u"\u00e9";
    pool_ = {Null(), KaString(), InCodeSet("abc", 2), Wide(longText),
             KaString(std::string(600, 'x').c_str())};
    for (const char* t : {"a", "A", "abc", "Abc", "abd", "ab", "\xE9t\xE9", "ete"}) {
      pool_.emplace_back(t);
    }
    for (const char16_t* t : {u"abc", u"\u00e9t\u00e9", u"\u0416\u0438", u"a*"}) {
      pool_.push_back(Wide(t));
    }
  }
  std::vector<KaString> pool_;
};

// Every pair, under exact, wildcard, case-blind, accent-blind and simple
// options: the stored element in either byte order answers what the objects
// answer, and that is the sign of KaStrCmp on the strings.
TEST_F(StringSlots, StoredElementsCompareAsTheirStrings) {
  const unsigned short options[] = {16, 0, 16 | 32, 16 | 64, 256};
  for (unsigned short option : options) {
    for (const KaString& a : pool_) {
      for (const KaString& b : pool_) {
        SCOPED_TRACE(testing::Message() << "option " << option << " '" << ka::test::Text(a)
                                        << "' cs " << int(a.CodeSet()) << " vs '"
                                        << ka::test::Text(b) << "' cs " << int(b.CodeSet()));
        const int raw = KaStrCmp(a.CodeSet(), a.Language(), a.StrGet(), b.CodeSet(), b.Language(),
                                 b.StrGet(), option, -1, 1, nullptr);
        const int expected = (raw > 0) - (raw < 0);
        const Outcome memory = Slot(StringCompare, kMemory, 0, &a, 0, &b, option, 1);
        EXPECT_EQ(expected, memory.result);
        EXPECT_EQ(0, memory.error);
        for (bool big : {false, true}) {
          const Bytes s1 = StoredElement(a, big), s2 = StoredElement(b, big);
          const Outcome stored = Slot(StringCompare, big ? kBig : kLittle, unsigned(s1.size()),
                                      s1.data(), unsigned(s2.size()), s2.data(), option, 1);
          EXPECT_EQ(expected, stored.result) << (big ? "big-endian" : "little-endian");
          EXPECT_EQ(0, stored.error);
        }
      }
    }
  }
}

// --- The array walk --------------------------------------------------------------------------

struct WalkCase {
  unsigned length1;
  const KaString* v1;
  unsigned count;
  int result, error;
  const char* why;
};

TEST(StringCompareWalk, CountsLengthsAndTheBoundReport) {
  const KaString a[] = {KaString("a"), KaString("b"), KaString("c")};
  const KaString b[] = {KaString("a"), KaString("b"), KaString("d")};
  const unsigned stride = sizeof(KaString);
  const WalkCase cases[] = {
      {0, nullptr, 0, 0, 0, "count 0 reads nothing"},
      {0, a, 3, -1, 0, "unbounded"},
      {2 * stride, a, 3, 0, kBound, "the third pair is never reached"},
      {stride, &a[1], 2, 1, kBound, "decided on the first pair, the bound still checked"},
      {stride - 1, a, 1, 0, kBound, "no whole element"},
  };
  for (const WalkCase& c : cases) {
    const Outcome o = Slot(StringCompare, kMemory, c.length1, c.v1, 0, b, 16, c.count);
    EXPECT_EQ(c.result, o.result) << c.why;
    EXPECT_EQ(c.error, o.error) << c.why;
  }
  for (bool big : {false, true}) {
    SCOPED_TRACE(big ? "big-endian" : "little-endian");
    const unsigned char format = big ? kBig : kLittle;
    const Bytes s1 = StoredArray({&a[0], &a[1], &a[2]}, big);
    const Bytes s2 = StoredArray({&b[0], &b[1], &b[2]}, big);
    const Outcome unbounded = Slot(StringCompare, format, 0, s1.data(), 0, s2.data(), 16, 3);
    EXPECT_EQ(-1, unbounded.result) << "length 0 walks by each element's own size";
    EXPECT_EQ(0, unbounded.error);
    const Outcome bounded =
        Slot(StringCompare, format, unsigned(s1.size()), s1.data(), 14, s2.data(), 16, 3);
    EXPECT_EQ(0, bounded.result) << "two 7-byte elements fit in 14 bytes";
    EXPECT_EQ(kBound, bounded.error);
    const Outcome firstOnly =
        Slot(StringCompare, format, 7, s2.data() + 14, 7, s1.data() + 14, 16, 2);
    EXPECT_EQ(1, firstOnly.result) << "decided, then out of room";
    EXPECT_EQ(kBound, firstOnly.error);
  }
}

// --- Malformed stored bytes ------------------------------------------------------------------

// Each image is copied into a buffer of exactly its size, so that a read past
// it shows under the address sanitizer.
Outcome SlotExact(KaCompareFunc f, unsigned char format, const Bytes& image, const Bytes& other,
                  unsigned count) {
  std::vector<unsigned char> exact(image);
  exact.shrink_to_fit();
  return Slot(f, format, unsigned(exact.size()), exact.data(), unsigned(other.size()), other.data(),
              16, count);
}

TEST(StringCompareMalformed, NeverReadsOutsideTheGivenLengths) {
  const KaString abc("abc"), wide = Wide(u"xyz");
  const Bytes good = StoredArray({&abc, &wide}, false);
  // Every truncated prefix: whole elements compare, the rest ends the array.
  for (size_t n = 1; n < good.size(); ++n) {
    SCOPED_TRACE(n);
    const Bytes cut(good.begin(), good.begin() + long(n));
    const Outcome o = SlotExact(StringCompare, kLittle, cut, good, 2);
    EXPECT_EQ(0, o.result);
    EXPECT_EQ(kBound, o.error);
  }
  // N past the buffer, and N below 4: not an element.
  for (const Bytes& bad : {Bytes{0x40, 0x00, 1, 0, 'a', 0x00, 0xFF}, Bytes{0x02, 0x00, 1, 0},
                           Bytes{0x00, 0x00, 1, 0, 0, 0}}) {
    const Outcome o = SlotExact(StringCompare, kLittle, bad, good, 1);
    EXPECT_EQ(0, o.result);
    EXPECT_EQ(kBound, o.error);
  }
}

TEST(StringCompareMalformed, TextWithoutItsTerminatorEndsAtItsElement) {
  const KaString abc("abc");
  const Bytes reference = StoredElement(abc, false);
  // 'x' 'y' where 0x00 0xFF belong: the text is still the N - 4 bytes "abc".
  Bytes noZero = reference;
  noZero[7] = 'x';
  noZero[8] = 'y';
  const Outcome o = SlotExact(StringCompare, kLittle, noZero, reference, 1);
  EXPECT_EQ(0, o.error);
  EXPECT_EQ(0, o.result);
  // An odd byte count of 2-byte text: the half unit is dropped.
  const Bytes odd = {0x07, 0x00, 253, 0, 'a', 0, 'b', 0, 'c'};
  const Outcome half = SlotExact(StringCompare, kLittle, odd, StoredElement(Wide(u"ab"), false), 1);
  EXPECT_EQ(0, half.error);
  EXPECT_EQ(-1, half.result) << "three text bytes hold one unit, 'a'";
}

// --- The case-insensitive rows -----------------------------------------------------------------

struct FoldedCase {
  const char* a;
  const char* b;
  unsigned short flags1, option;
  int iString, caseIString;
  const char* why;
};

TEST(FoldedStringSlots, FoldPlainBytesAndStoredForms) {
  const FoldedCase cases[] = {
      {"a", "A", 0, 16, -1, 0, "KaIString: lower before upper; KaCaseIString: equal"},
      {"A", "b", 0, 16, -1, -1, "the letter decides before case"},
      {"\xE9", "e", 0, 16, 0, 0, "diacritics ignored"},
      {"\xE9", "e", 0x20, 16, 0, 1, "KaCaseIString weighs them with flag 0x20"},
      {"Abc", "aBC", 0, 16, 1, 0, "case in the first letter"},
      {"a", "A", 0, 256, 1, 1, "plain bytes: 0x61 after 0x41"},
      {"\xE9", "f", 0, 256, 1, 1, "plain bytes: 0xE9 after f"},
      {"\xE9", "f", 0, 0, -1, -1, "folding: e before f"},
      {"", "a", 0, 16, -1, -1, "empty before text"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    KaIString i1(c.a), i2(c.b);
    KaCaseIString k1(c.a), k2(c.b);
    i1.SetFlags(c.flags1);
    k1.SetFlags(c.flags1);
    EXPECT_EQ(c.iString, Slot(KaIStringCompare, kMemory, 0, &i1, 0, &i2, c.option, 1).result);
    EXPECT_EQ(c.caseIString,
              Slot(KaCaseIStringCompare, kMemory, 0, &k1, 0, &k2, c.option, 1).result);
    if (c.flags1 != 0) continue;  // a stored element carries no flags
    for (bool big : {false, true}) {
      const Bytes s1 = StoredElement(KaString(c.a), big), s2 = StoredElement(KaString(c.b), big);
      const unsigned char f = big ? kBig : kLittle;
      EXPECT_EQ(c.iString,
                Slot(KaIStringCompare, f, 0, s1.data(), 0, s2.data(), c.option, 1).result);
      EXPECT_EQ(c.caseIString,
                Slot(KaCaseIStringCompare, f, 0, s1.data(), 0, s2.data(), c.option, 1).result);
    }
  }
}

TEST(FoldedStringSlots, WalkAndBound) {
  const KaCaseIString a[] = {KaCaseIString("x"), KaCaseIString("Y")};
  const KaCaseIString b[] = {KaCaseIString("X"), KaCaseIString("z")};
  const Outcome all = Slot(KaCaseIStringCompare, kMemory, 0, a, 0, b, 16, 2);
  EXPECT_EQ(-1, all.result);
  EXPECT_EQ(0, all.error);
  const Outcome cut = Slot(KaCaseIStringCompare, kMemory, sizeof(KaCaseIString), a, 0, b, 16, 2);
  EXPECT_EQ(0, cut.result);
  EXPECT_EQ(kBound, cut.error);
  const Bytes truncated = {0x09, 0x00, 0, 0, 'a', 'b'};
  EXPECT_EQ(kBound, SlotExact(KaIStringCompare, kLittle, truncated, truncated, 1).error);
}

// --- The older string row ------------------------------------------------------------------------

// The older stored form: one N (the size of all that follows), then the texts
// back to back, each ended by a zero byte.
Bytes OldForm(const std::vector<std::string>& texts, bool big) {
  unsigned n = 0;
  for (const std::string& t : texts) n += unsigned(t.size()) + 1;
  Bytes out;
  Put16(out, n, big);
  for (const std::string& t : texts) out = Concat(out, Bytes(t.c_str(), t.c_str() + t.size() + 1));
  return out;
}

TEST(OldStringSlot, ComparesTheZeroTerminatedForm) {
  for (bool big : {false, true}) {
    SCOPED_TRACE(big ? "big-endian" : "little-endian");
    const unsigned char format = big ? kBig : kLittle;
    const Bytes a = OldForm({"abc", "", "Zeta"}, big);
    const Bytes b = OldForm({"abc", "", "zeta"}, big);
    const Outcome o = Slot(OldStringCompare, format, 0, a.data(), 0, b.data(), 16, 3);
    EXPECT_EQ(1, o.result) << "upper case after lower, as the strings it loads into";
    EXPECT_EQ(0, o.error);
    const Outcome four = Slot(OldStringCompare, format, 0, a.data(), 0, b.data(), 16, 4);
    EXPECT_EQ(1, four.result) << "decided on the third pair, then out of texts";
    EXPECT_EQ(kBound, four.error);
    // With length 0, N bounds the texts: bytes after them are not a text.
    const Bytes trailing = Concat(OldForm({"abc"}, big), {'a', 'b', 'd', 0});
    const Bytes two = OldForm({"abc", "abd"}, big);
    const Outcome bounded =
        Slot(OldStringCompare, format, 0, trailing.data(), 0, two.data(), 16, 2);
    EXPECT_EQ(0, bounded.result);
    EXPECT_EQ(kBound, bounded.error);
  }
}

TEST(OldStringSlot, TextWithoutTerminatorIsNotAnElement) {
  const Bytes other = OldForm({"abc", "def"}, false);
  const Bytes image(other.begin(), other.end() - 1);  // "def" loses its zero byte
  const Outcome o = SlotExact(OldStringCompare, kLittle, image, other, 2);
  EXPECT_EQ(0, o.result);
  EXPECT_EQ(kBound, o.error);
  EXPECT_EQ(kBound, SlotExact(OldStringCompare, kLittle, {0x05}, other, 1).error);
}

// --- The rows ------------------------------------------------------------------------------------

TEST(StringRows, CompareSlotsAreWired) {
  KaTypeMgr current, old(3);
  EXPECT_EQ(&StringCompare, current.CmpFuncPtrGet(KaSTRING_T));
  EXPECT_EQ(&OldStringCompare, old.CmpFuncPtrGet(KaSTRING_T));
  EXPECT_EQ(&KaIStringCompare, current.CmpFuncPtrGet(KaISTRING_T));
  EXPECT_EQ(&KaCaseIStringCompare, current.CmpFuncPtrGet(KaCASEISTRING_T));
  EXPECT_EQ(&KaIStringCompare, old.CmpFuncPtrGet(KaISTRING_T));
  KaString a("a"), b("b");
  EXPECT_EQ(-1, current.Cmp(KaSTRING_T, &a, &b, 16, 1, kMemory));
}

}  // namespace
