// The Compare slots of the string rows: stored elements compare as the
// strings they store (both byte orders, built here byte by byte from the
// stored layout), the array walk and its 2101 reports, null and empty strings,
// mixed code sets, the case-insensitive rows, the older zero-terminated form,
// and malformed stored bytes.
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
  for (const KaString* s : strings) {
    const Bytes e = StoredElement(*s, big);
    out.insert(out.end(), e.begin(), e.end());
  }
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
  int result;
  int error;
};

Outcome Slot(KaCompareFunc f, unsigned char format, unsigned length1, const void* v1,
             unsigned length2, const void* v2, unsigned short option, unsigned count) {
  int error = -7;
  const int r = f(format, length1, const_cast<void*>(v1), length2, const_cast<void*>(v2), option,
                  count, error);
  return {r, error};
}

// --- StringCompare: stored forms against the memory form -----------------------------------

class StringSlots : public ::testing::Test {
 protected:
  void SetUp() override {
    // A long 2-byte text goes past the slot's stack buffer.
    std::u16string longText(700, u'x');
    longText += u"\u00e9";
    pool_ = {Null(),
             KaString(),
             KaString("a"),
             KaString("A"),
             KaString("abc"),
             KaString("Abc"),
             KaString("abd"),
             KaString("ab"),
             KaString("\xE9t\xE9"),  // été, code set 1
             KaString("ete"),
             InCodeSet("abc", 2),
             Wide(u"abc"),
             Wide(u"\u00e9t\u00e9"),
             Wide(u"\u0416\u0438"),  // Cyrillic
             Wide(u"a*"),
             Wide(longText),
             KaString(std::string(600, 'x').c_str())};
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

struct OrderCase {
  KaString a, b;
  unsigned short option;
  int expected;
  const char* why;
};

TEST(StringCompareOrder, NullEmptyCaseAndCodeSets) {
  const OrderCase cases[] = {
      {Null(), Null(), 16, 0, "two null strings are equal"},
      {Null(), KaString(), 16, -1, "null sorts before empty"},
      {KaString(), Null(), 16, 1, "empty sorts after null"},
      {KaString(), KaString("a"), 16, -1, "empty before text"},
      {KaString("a"), KaString("A"), 16, -1, "lower case first"},
      {KaString("a"), KaString("A"), 16 | 32, 0, "case ignored"},
      {KaString("abc"), Wide(u"abc"), 16, 0, "same text, 8-bit and Unicode"},
      {InCodeSet("\xE9", 2), Wide(u"\u00e9"), 16, 0, "ISO-8859-1 against Unicode"},
      {KaString("abc"), Wide(u"abd"), 16, -1, "mixed code sets still ordered"},
      {KaString("abc"), KaString("a*"), 0, 0, "wildcards honoured without exact"},
      {KaString("abc"), KaString("a*"), 16, 1, "exact: the asterisk is a character"},
      {KaString("zzz"), KaString("b"), 16, 1, "results are signs"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.expected, Slot(StringCompare, kMemory, 0, &c.a, 0, &c.b, c.option, 1).result);
    for (bool big : {false, true}) {
      const Bytes s1 = StoredElement(c.a, big), s2 = StoredElement(c.b, big);
      EXPECT_EQ(c.expected,
                Slot(StringCompare, big ? kBig : kLittle, 0, s1.data(), 0, s2.data(), c.option, 1)
                    .result);
    }
  }
}

// --- The array walk --------------------------------------------------------------------------

TEST(StringCompareWalk, CountsLengthsAndTheBoundReport) {
  const KaString a[] = {KaString("a"), KaString("b"), KaString("c")};
  const KaString b[] = {KaString("a"), KaString("b"), KaString("d")};
  const unsigned stride = sizeof(KaString);
  const Outcome none = Slot(StringCompare, kMemory, 0, nullptr, 0, nullptr, 16, 0);
  EXPECT_EQ(0, none.result) << "count 0 reads nothing";
  EXPECT_EQ(0, none.error);

  const Outcome all = Slot(StringCompare, kMemory, 0, a, 0, b, 16, 3);
  EXPECT_EQ(-1, all.result);
  EXPECT_EQ(0, all.error);

  const Outcome shortFirst = Slot(StringCompare, kMemory, 2 * stride, a, 0, b, 16, 3);
  EXPECT_EQ(0, shortFirst.result) << "the third pair is never reached";
  EXPECT_EQ(kBound, shortFirst.error);

  // Decided on the first pair, yet the bound is still checked before it stops.
  const Outcome decided = Slot(StringCompare, kMemory, stride, &a[1], 0, b, 16, 2);
  EXPECT_EQ(1, decided.result);
  EXPECT_EQ(kBound, decided.error);

  const Outcome tooShort = Slot(StringCompare, kMemory, stride - 1, a, 0, b, 16, 1);
  EXPECT_EQ(0, tooShort.result) << "no whole element";
  EXPECT_EQ(kBound, tooShort.error);

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
    // "d" against "c": decided, then out of room.
    const Outcome firstOnly =
        Slot(StringCompare, format, 7, s2.data() + 14, 7, s1.data() + 14, 16, 2);
    EXPECT_EQ(1, firstOnly.result);
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
  const Bytes pastEnd = {0x40, 0x00, 1, 0, 'a', 0x00, 0xFF};
  const Bytes tiny = {0x02, 0x00, 1, 0};
  const Bytes zeroN = {0x00, 0x00, 1, 0, 0, 0};
  for (const Bytes* bad : {&pastEnd, &tiny, &zeroN}) {
    const Outcome o = SlotExact(StringCompare, kLittle, *bad, good, 1);
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
  const KaString w = Wide(u"ab");
  Bytes odd = {0x07, 0x00, 253, 0, 'a', 0, 'b', 0, 'c'};
  const Outcome half = SlotExact(StringCompare, kLittle, odd, StoredElement(w, false), 1);
  EXPECT_EQ(0, half.error);
  EXPECT_EQ(-1, half.result) << "three text bytes hold one unit, 'a'";
}

// --- The case-insensitive rows -----------------------------------------------------------------

// Stored elements of those rows: the same layout with their bytes.
template <class S>
Bytes StoredFolded(const S& s, bool big) {
  const KaString text(s.StrGet() == nullptr ? "" : s.StrGet());
  return StoredElement(text, big);
}

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
      {"", "", 0, 16, 0, 0, "two empty strings"},
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
      const Bytes s1 = StoredFolded(i1, big), s2 = StoredFolded(i2, big);
      const unsigned char format = big ? kBig : kLittle;
      EXPECT_EQ(c.iString,
                Slot(KaIStringCompare, format, 0, s1.data(), 0, s2.data(), c.option, 1).result);
      EXPECT_EQ(c.caseIString,
                Slot(KaCaseIStringCompare, format, 0, s1.data(), 0, s2.data(), c.option, 1).result);
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
  const Outcome bad = SlotExact(KaIStringCompare, kLittle, truncated, truncated, 1);
  EXPECT_EQ(kBound, bad.error);
}

// --- The older string row ------------------------------------------------------------------------

// The older stored form: one N (the size of all that follows), then the texts
// back to back, each ended by a zero byte.
Bytes OldForm(const std::vector<std::string>& texts, bool big) {
  unsigned n = 0;
  for (const std::string& t : texts) n += unsigned(t.size()) + 1;
  Bytes out;
  Put16(out, n, big);
  for (const std::string& t : texts) {
    for (char c : t) out.push_back(static_cast<unsigned char>(c));
    out.push_back(0);
  }
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
    // The slot answers as the memory form of the loaded strings does.
    const KaString m1("Zeta"), m2("zeta");
    const Bytes o1 = OldForm({"Zeta"}, big), o2 = OldForm({"zeta"}, big);
    EXPECT_EQ(Slot(StringCompare, kMemory, 0, &m1, 0, &m2, 16, 1).result,
              Slot(OldStringCompare, format, 0, o1.data(), 0, o2.data(), 16, 1).result);
    // With length 0, N bounds the texts: bytes after them are not a text.
    Bytes trailing = OldForm({"abc"}, big);
    for (unsigned char c : {'a', 'b', 'd', '\0'}) trailing.push_back(c);
    const Bytes two = OldForm({"abc", "abd"}, big);
    const Outcome bounded =
        Slot(OldStringCompare, format, 0, trailing.data(), 0, two.data(), 16, 2);
    EXPECT_EQ(0, bounded.result);
    EXPECT_EQ(kBound, bounded.error);
  }
}

TEST(OldStringSlot, TextWithoutTerminatorIsNotAnElement) {
  Bytes image = OldForm({"abc", "def"}, false);
  image.pop_back();  // "def" loses its zero byte
  const Bytes other = OldForm({"abc", "def"}, false);
  const Outcome o = SlotExact(OldStringCompare, kLittle, image, other, 2);
  EXPECT_EQ(0, o.result);
  EXPECT_EQ(kBound, o.error);
  const Bytes prefixOnly = {0x05};
  EXPECT_EQ(kBound, SlotExact(OldStringCompare, kLittle, prefixOnly, other, 1).error);
}

// --- The rows ------------------------------------------------------------------------------------

TEST(StringRows, CompareSlotsAreWired) {
  KaTypeMgr current;
  KaTypeMgr old(3);
  EXPECT_EQ(&StringCompare, current.CmpFuncPtrGet(KaSTRING_T));
  EXPECT_EQ(&OldStringCompare, old.CmpFuncPtrGet(KaSTRING_T));
  EXPECT_EQ(&KaIStringCompare, current.CmpFuncPtrGet(KaISTRING_T));
  EXPECT_EQ(&KaCaseIStringCompare, current.CmpFuncPtrGet(KaCASEISTRING_T));
  EXPECT_EQ(&KaIStringCompare, old.CmpFuncPtrGet(KaISTRING_T));
  KaString a("a"), b("b");
  EXPECT_EQ(-1, current.Cmp(KaSTRING_T, &a, &b, 16, 1, kMemory));
}

}  // namespace
