// KaIString and KaCaseIString: the folding of every byte, the comparison and its
// ordering laws, construction, numbers, and the byte edits at their bounds.
#include "katypemgr/kaistring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kai18n/codeset.h"

namespace {

using CmpFn = int (*)(const char*, const char*, unsigned short, unsigned short, unsigned short);
constexpr unsigned short kRaw = 0x80;
constexpr unsigned short kWeigh = 0x20;

int Sign(int v) { return (v > 0) - (v < 0); }

// A text for failure messages, bytes outside printable ASCII escaped.
std::string Shown(const char* text) {
  return text == nullptr ? "<null>" : ::testing::PrintToString(std::string(text));
}

std::string Hex(unsigned c) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02X", c);
  return text;
}

// Empty content must leave no buffer, so an expected "" means a null buffer.
template <class S>
void ExpectText(const std::string& expected, const S& s) {
  if (expected.empty()) {
    EXPECT_EQ(nullptr, s.StrGet());
  } else {
    ASSERT_NE(nullptr, s.StrGet());
    EXPECT_EQ(expected, s.StrGet());
  }
  EXPECT_EQ(expected.size(), s.Len());
}

// --- Folding: every byte against the alphabets written out by hand ------------------------

// Sort bytes of 0x40..0x7F, then sort/extra of 0xC0..0xFF, 16 to a row.
constexpr const char* kCaseILetters =
    "40 54 5B 5E 61 69 6F 71 73 79 7F 81 83 85 87 90  97 99 9B 9D 9F A5 AB AD AF B3 B7 42 43 44 45 "
    "46 "
    "41 54 5B 5E 61 69 6F 71 73 79 7F 81 83 85 87 90  97 99 9B 9D 9F A5 AB AD AF B3 B7 47 48 49 4A "
    "4B";
constexpr const char* kILetters =
    "40 54 5B 5E 61 69 6F 71 73 79 7F 81 83 85 87 90  97 99 9B 9D 9F A5 AB AD AF B3 B7 42 43 44 45 "
    "46 "
    "41 4E 5A 5C 60 64 6E 70 72 74 7E 80 82 84 86 8A  96 98 9A 9C 9E A0 AA AC AE B0 B6 47 48 49 4A "
    "4B";
constexpr const char* kRowC0 =
    "54/03 54/02 54/04 54/05 54/01 BD/00 B9/00 5E/01 69/03 69/02 69/04 69/01 79/03 79/02 79/04 "
    "79/01";
constexpr const char* kCaseIRowD0 =
    "63/00 89/00 90/03 90/02 90/04 90/05 90/01 4C/00 BB/00 A5/03 A5/02 A5/04 A5/01 B3/02 BF/00 "
    "9D/9D";
constexpr const char* kCaseIRowF0 =
    "63/00 89/00 90/03 90/02 90/04 90/05 90/01 4D/00 BB/00 A5/03 A5/02 A5/04 A5/01 B3/02 BF/00 "
    "B3/01";
constexpr const char* kIRowD0 =
    "63/00 89/00 90/03 90/02 90/04 90/05 90/01 4C/00 BB/00 A5/03 A5/02 A5/04 A5/01 B3/02 BF/00 "
    "9C/9C";
constexpr const char* kIRowE0 =
    "4E/03 4E/02 4E/04 4E/05 4E/01 BC/00 B8/00 5C/01 64/03 64/02 64/04 64/01 74/03 74/02 74/04 "
    "74/01";
constexpr const char* kIRowF0 =
    "62/00 88/00 8A/03 8A/02 8A/04 8A/05 8A/01 4D/00 BA/00 A0/03 A0/02 A0/04 A0/01 B0/02 BE/00 "
    "B0/01";

// Ranges that fold by an offset, and the bytes of those ranges that do not.
struct Shift {
  unsigned first, last, offset;
};
constexpr Shift kShifts[] = {{0x00, 0x3F, 0x00}, {0x80, 0x9F, 0x60}, {0xA0, 0xBF, 0x10}};

struct Alphabet {
  const char* letters;
  const char* latin[4];
  ka::FoldedByte smallOe;  // 0x9C
};
constexpr Alphabet kCaseIAlphabet = {
    kCaseILetters, {kRowC0, kCaseIRowD0, kRowC0, kCaseIRowF0}, {0x90, 0x69}};
constexpr Alphabet kIAlphabet = {kILetters, {kRowC0, kIRowD0, kIRowE0, kIRowF0}, {0x8A, 0x64}};

using Folding = std::array<ka::FoldedByte, 256>;

Folding ExpectedFolding(const Alphabet& a) {
  Folding f{};
  for (const Shift& s : kShifts) {
    for (unsigned c = s.first; c <= s.last; ++c)
      f[c] = {static_cast<unsigned char>(c + s.offset), 0};
  }
  f[0x8C] = {0x90, 0x69};
  f[0x9C] = a.smallOe;
  f[0x9F] = {0xB3, 0x01};
  std::istringstream letters(a.letters);
  for (unsigned c = 0x40; c < 0x80; ++c) {
    unsigned sort = 0;
    letters >> std::hex >> sort;
    f[c] = {static_cast<unsigned char>(sort), 0};
  }
  for (unsigned row = 0; row < 4; ++row) {
    std::istringstream pairs(a.latin[row]);
    for (unsigned col = 0; col < 16; ++col) {
      unsigned sort = 0, extra = 0;
      char slash = 0;
      pairs >> std::hex >> sort >> slash >> extra;
      f[0xC0 + row * 16 + col] = {static_cast<unsigned char>(sort),
                                  static_cast<unsigned char>(extra)};
    }
  }
  return f;
}

class FoldingTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    iAlphabet_ = ExpectedFolding(kIAlphabet);
    caseIAlphabet_ = ExpectedFolding(kCaseIAlphabet);
  }
  static Folding iAlphabet_;
  static Folding caseIAlphabet_;
};
Folding FoldingTest::iAlphabet_;
Folding FoldingTest::caseIAlphabet_;

TEST_F(FoldingTest, EveryByteFoldsAsWritten) {
  for (unsigned c = 0; c < 256; ++c) {
    SCOPED_TRACE(Hex(c));
    const ka::FoldedByte i = ka::FoldIStringByte(static_cast<unsigned char>(c));
    EXPECT_EQ(iAlphabet_[c].sort, i.sort);
    EXPECT_EQ(iAlphabet_[c].extra, i.extra);
    const ka::FoldedByte ci = ka::FoldCaseIStringByte(static_cast<unsigned char>(c));
    EXPECT_EQ(caseIAlphabet_[c].sort, ci.sort);
    EXPECT_EQ(caseIAlphabet_[c].extra, ci.extra);
  }
}

// One folded byte against one raw byte: the compare routine must answer from
// the written alphabet for every pair, with each rule for extras.
enum class Rule { kExpand, kWeigh };

int ExpectedAgainstRaw(ka::FoldedByte f, unsigned raw, Rule rule) {
  int sort = f.sort;
  if (rule == Rule::kWeigh && f.extra != 0) sort = f.extra < 9 ? sort + f.extra : sort - 1;
  if (sort != static_cast<int>(raw)) return sort - static_cast<int>(raw);
  // Equal first pair: the raw side is at its end, a waiting second sort byte
  // meets its terminator.
  return rule == Rule::kExpand && f.extra >= 9 ? f.extra : 0;
}

TEST_F(FoldingTest, CompareTakesEveryByteThroughItsFolding) {
  struct Mode {
    CmpFn cmp;
    const Folding* alphabet;
    unsigned short flags1;
    Rule rule;
    const char* why;
  };
  const Mode modes[] = {
      {KaIStringCmp, &iAlphabet_, 0, Rule::kExpand, "KaIString"},
      {KaIStringCmp, &iAlphabet_, kWeigh, Rule::kExpand, "KaIString has no diacritic weights"},
      {KaCaseIStringCmp, &caseIAlphabet_, 0, Rule::kExpand, "KaCaseIString"},
      {KaCaseIStringCmp, &caseIAlphabet_, kWeigh, Rule::kWeigh, "KaCaseIString, weighed"},
  };
  for (const Mode& m : modes) {
    SCOPED_TRACE(m.why);
    for (unsigned c = 1; c < 256; ++c) {
      const char folded[2] = {static_cast<char>(c), 0};
      for (unsigned x = 1; x < 256; ++x) {
        const char raw[2] = {static_cast<char>(x), 0};
        const int expected = ExpectedAgainstRaw((*m.alphabet)[c], x, m.rule);
        ASSERT_EQ(expected, m.cmp(folded, raw, 0, m.flags1, kRaw)) << Hex(c) << " vs " << Hex(x);
        if (m.flags1 == 0) {
          // The raw side on the left: a waiting sort byte now stands on the right.
          ASSERT_EQ(-expected, m.cmp(raw, folded, 0, kRaw, 0)) << Hex(x) << " vs " << Hex(c);
        }
      }
    }
  }
}

// --- Comparison ------------------------------------------------------------------------------

struct CmpCase {
  CmpFn cmp;
  const char* s1;
  const char* s2;
  unsigned short flags1, flags2, maxLength;
  int sign;
  const char* why;
};

constexpr CmpFn kI = KaIStringCmp;
constexpr CmpFn kCI = KaCaseIStringCmp;

constexpr CmpCase kCmpCases[] = {
    {kCI, "Abc", "aBC", 0, 0, 0, 0, "case is ignored"},
    {kCI, "e", "\xE9", 0, 0, 0, 0, "diacritics count for nothing by default"},
    {kCI, "e", "\xE9", kWeigh, 0, 0, -1, "weighed, the acute sorts after the plain letter"},
    {kCI, "\xE9", "e", kWeigh, 0, 0, 1, "weighed, from the other side"},
    {kCI, "e", "\xE9", 0, kWeigh, 0, 0, "only the left flags weigh diacritics"},
    {kCI, "\xE9", "\xE8", kWeigh, 0, 0, -1, "acute before grave"},
    {kCI, "\x9F", "Y", 0, 0, 0, 0, "Y with diaeresis is a Y"},
    {kCI, "\x9F", "Y", kWeigh, 0, 0, 1, "... unless diacritics count"},
    {kI, "a", "A", 0, 0, 0, -1, "small letter just before its capital"},
    {kI, "A", "b", 0, 0, 0, -1, "capital before the next small letter"},
    {kI, "\xE9", "e", 0, 0, 0, 0, "diacritics ignored"},
    {kI, "\xE9", "E", 0, 0, 0, -1, "a small accented letter stays small"},
    {kI, "e", "\xE9", kWeigh, 0, 0, 0, "bit 5 means nothing to KaIString"},
    {kI, "\xE9", "z", 0, 0, 0, -1, "bytes above 0x7F are unsigned"},
    {kCI, "\xA3", "Y", 0, 0, 0, 0, "0xA0..0xBF move up by 0x10, onto letters too"},
    {kI, "\xA7", "Z", 0, 0, 0, 0, "... in both alphabets"},
    {kCI, "\xDF", "ss", 0, 0, 0, 0, "sharp s expands into two letters"},
    {kCI, "\xDF", "SS", 0, 0, 0, 0, "... of either case"},
    {kCI, "\xDF", "ssx", 0, 0, 0, 0, "the walk ends one pair after a terminator"},
    {kCI, "ssx", "\xDF", 0, 0, 0, 0, "... from either side"},
    {kCI, "\xDF", "s", 0, 0, 0, 1, "the second letter meets the terminator"},
    {kCI, "\xDF", "st", 0, 0, 0, -1, "the second letter is compared"},
    {kCI, "\xDF\x61", "ssa", 0, 0, 0, 0, "the expansion inside a word"},
    {kCI, "\xDF\x61", "ssb", 0, 0, 0, -1, "the word goes on after the expansion"},
    {kCI, "\xDF", "ss", kWeigh, 0, 0, -1, "weighed, sharp s is one byte below s"},
    {kCI, "\xDF", "r", kWeigh, 0, 0, 1, "... and above r"},
    {kI, "\xDF", "ss", 0, 0, 0, 0, "KaIString: sharp s is small ss"},
    {kI, "\xDF", "SS", 0, 0, 0, -1, "... before capital SS"},
    {kCI, "\x8C", "oe", 0, 0, 0, 0, "ligature OE"},
    {kCI, "\x9C", "OE", 0, 0, 0, 0, "ligature oe, case ignored"},
    {kI, "\x9C", "oe", 0, 0, 0, 0, "KaIString: small ligature is small"},
    {kI, "\x8C", "OE", 0, 0, 0, 0, "KaIString: capital ligature is capital"},
    {kI, "\x9C", "OE", 0, 0, 0, -1, "... and they differ in case"},
    {kI, nullptr, "", 0, 0, 0, -1, "null before empty"},
    {kCI, nullptr, "a", 0, 0, 0, -1, "null before any text"},
    {kI, "", nullptr, 0, 0, 0, 1, "empty after null"},
    {kCI, nullptr, nullptr, 0, 0, 0, 0, "two nulls are equal"},
    {kI, "", "", 0, 0, 0, 0, "two empty texts are equal"},
    {kI, "a", "ab", 0, 0, 0, -1, "a prefix sorts first"},
    {kI, "abc", "abd", 0, 0, 2, 0, "two pairs compared"},
    {kI, "abc", "abd", 0, 0, 3, -1, "three pairs compared"},
    {kI, "abc", "abd", 0, 0, 0, -1, "0 is no limit"},
    {kCI, "\xDFx", "ssy", 0, 0, 2, 0, "a waiting sort byte counts as a pair"},
    {kI, "a", "A", kRaw, kRaw, 0, 1, "raw bytes: 0x61 above 0x41"},
    {kI, "A", "A", kRaw, 0, 0, -1, "raw on one side only: 0x41 against sort byte 0x54"},
    {kCI, "a", "A", kRaw | kWeigh, kRaw, 0, 1, "raw bytes are not folded, weighed or not"},
};

TEST(FoldedCompare, EdgeCases) {
  for (const CmpCase& c : kCmpCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.sign, Sign(c.cmp(c.s1, c.s2, c.maxLength, c.flags1, c.flags2)));
  }
}

TEST(FoldedCompare, EmptyTextAnswersTheDifferenceOfTheFirstBytes) {
  EXPECT_EQ(-0x61, KaIStringCmp("", "a", 0, 0, 0));
  EXPECT_EQ(0xE9, KaCaseIStringCmp("\xE9", "", 0, 0, 0)) << "unsigned, not folded";
  EXPECT_EQ(-0xDF, KaCaseIStringCmp("", "\xDF", 0, kWeigh, 0));
}

TEST(FoldedCompare, ReachesTheEndOfTheLongestTexts) {
  std::string a(65534, 'q');
  std::string b = a;
  EXPECT_EQ(0, KaIStringCmp(a.c_str(), b.c_str(), 0, 0, 0));
  b.back() = 'r';
  EXPECT_GT(0, KaIStringCmp(a.c_str(), b.c_str(), 0, 0, 0)) << "the last byte counts";
  EXPECT_EQ(0, KaIStringCmp(a.c_str(), b.c_str(), 65533, 0, 0)) << "but not past the limit";
}

// Words that meet on every rule: case, diacritics, expansions, prefixes,
// bytes of each range.
const std::vector<const char*> kWords = {
    nullptr, "",     "a",    "A",    "ab",        "Ab",   "aB",        "abc",  "b",    "B",
    "e",     "E",    "\xE9", "\xC9", "\xE9t\xE9", "ete",  "\xC9T\xC9", "z",    "Z",    "zz",
    "\xDF",  "ss",   "ssa",  "SS",   "\xDF\x61",  "st",   "\xC6",      "\xE6", "ae",   "oe",
    "OE",    "\x9C", "\x8C", "0",    "9",         " ",    "a b",       "\xFF", "\x9F", "Y",
    "y",     "\xA0", "\x80", "\x7F", "~",         "\xB5", "\xF7",      "\xD7",
};

bool Expands(const char* word) {
  return word != nullptr && std::string(word).find_first_of("\x8C\x9C\xDF") != std::string::npos;
}

TEST(FoldedCompare, OrderingLaws) {
  struct Mode {
    CmpFn cmp;
    unsigned short flags;
    bool mayExpand;
    const char* why;
  };
  const Mode modes[] = {
      {kI, 0, true, "KaIString"},
      {kCI, 0, true, "KaCaseIString"},
      {kCI, kWeigh, false, "KaCaseIString, weighed: nothing expands"},
      {kI, kRaw, false, "raw bytes"},
  };
  for (const Mode& m : modes) {
    SCOPED_TRACE(m.why);
    auto cmp = [&](const char* x, const char* y) { return Sign(m.cmp(x, y, 0, m.flags, m.flags)); };
    for (const char* a : kWords) {
      EXPECT_EQ(0, cmp(a, a)) << Shown(a);
      for (const char* b : kWords) {
        ASSERT_EQ(cmp(a, b), -cmp(b, a)) << Shown(a) << " / " << Shown(b);
      }
    }
    // Transitivity holds where no word ends inside an expansion.
    for (const char* a : kWords) {
      for (const char* b : kWords) {
        for (const char* c : kWords) {
          if (m.mayExpand && (Expands(a) || Expands(b) || Expands(c))) continue;
          if (cmp(a, b) <= 0 && cmp(b, c) <= 0) {
            ASSERT_LE(cmp(a, c), 0) << Shown(a) << " / " << Shown(b) << " / " << Shown(c);
          }
        }
      }
    }
  }
}

TEST(FoldedCompare, KaIStringSortsLikeADictionary) {
  std::vector<KaIString> words = {"Z", "b", "\xC6", "Ab", "ae", "A", "z", "B", "ab", "\xE6", "a"};
  std::sort(words.begin(), words.end());
  std::vector<std::string> sorted;
  for (const KaIString& w : words) sorted.push_back(w.StrGet());
  const std::vector<std::string> expected = {"a", "ab", "ae", "A",    "Ab",  "b",
                                             "B", "z",  "Z",  "\xE6", "\xC6"};
  EXPECT_EQ(expected, sorted);
}

// --- Operators and flags -------------------------------------------------------------------

struct OperatorCase {
  const char* a;
  const char* b;
  unsigned short flagsA, flagsB;
  int sign;
  const char* why;
};

template <class S>
void ExpectOperators(const OperatorCase& c) {
  S a(c.a);
  S b(c.b);
  a.SetFlags(c.flagsA);
  b.SetFlags(c.flagsB);
  EXPECT_EQ(c.sign == 0, a == b);
  EXPECT_EQ(c.sign != 0, a != b);
  EXPECT_EQ(c.sign < 0, a < b);
  EXPECT_EQ(c.sign <= 0, a <= b);
  EXPECT_EQ(c.sign > 0, a > b);
  EXPECT_EQ(c.sign >= 0, a >= b);
}

TEST(FoldedOperators, FollowTheFlagsOfBothSides) {
  const OperatorCase iCases[] = {
      {"a", "A", 0, 0, -1, "small first"},
      {"a", "A", kRaw, kRaw, 1, "raw bytes"},
      {"A", "a", kRaw, 0, -1, "raw left 0x41 against folded 0x4E"},
      {"\xE9", "e", 0, 0, 0, "diacritics ignored"},
      {"", "", 0, 0, 0, "both empty (null buffers)"},
      {"", "a", 0, 0, -1, "empty first"},
  };
  for (const OperatorCase& c : iCases) {
    SCOPED_TRACE(std::string("KaIString: ") + c.why);
    ExpectOperators<KaIString>(c);
  }
  const OperatorCase caseICases[] = {
      {"Abc", "aBC", 0, 0, 0, "case ignored"},
      {"e", "\xE9", kWeigh, 0, -1, "weighed by the left flags"},
      {"e", "\xE9", 0, kWeigh, 0, "the right flags do not weigh"},
      {"Abc", "aBC", kRaw, kRaw, -1, "raw bytes"},
  };
  for (const OperatorCase& c : caseICases) {
    SCOPED_TRACE(std::string("KaCaseIString: ") + c.why);
    ExpectOperators<KaCaseIString>(c);
  }
  EXPECT_TRUE(KaCaseIString("MIXED") == "mixed") << "a text converts on either side";
  EXPECT_TRUE("mixed" == KaCaseIString("MIXED"));
}

TEST(FoldedFlags, EveryConstructionAndAssignmentClearsThem) {
  KaCaseIString flagged("x");
  flagged.SetFlags(0xA0);
  EXPECT_EQ(0, KaCaseIString(flagged).GetFlags()) << "copy";
  KaCaseIString s("y");
  s.SetFlags(0xA0);
  s = flagged;
  EXPECT_EQ(0, s.GetFlags()) << "copy assignment";
  s.SetFlags(0xA0);
  s = "z";
  EXPECT_EQ(0, s.GetFlags()) << "text assignment";
  s.SetFlags(0xA0);
  const KaCaseIString& same = s;
  s = same;
  EXPECT_EQ(0, s.GetFlags()) << "self-assignment";
  ExpectText("z", s);
  s.SetFlags(0xA0);
  s = KaCaseIString("w");
  EXPECT_EQ(0, s.GetFlags()) << "move assignment";
  KaCaseIString moved(std::move(flagged));
  EXPECT_EQ(0, moved.GetFlags()) << "move";
  ExpectText("x", moved);
  EXPECT_EQ(nullptr, flagged.StrGet()) << "the source is left empty";
  EXPECT_EQ(0, (moved + s).GetFlags()) << "operator+ makes a new string";
  moved.SetFlags(kWeigh);
  moved += "v";
  moved.ToUpper();
  moved.Insert("u", 0);
  EXPECT_EQ(kWeigh, moved.GetFlags()) << "edits keep the flags";
}

// --- Both classes alike ----------------------------------------------------------------------

template <class S>
class FoldedStringTest : public ::testing::Test {};
using BothClasses = ::testing::Types<KaIString, KaCaseIString>;
TYPED_TEST_SUITE(FoldedStringTest, BothClasses);

TYPED_TEST(FoldedStringTest, EmptyContentHasNoBuffer) {
  using S = TypeParam;
  S cut("abc");
  cut.Cut(0, 65535);
  S filled("abc");
  filled.Fill(0, 'x');
  S assigned("abc");
  assigned = "";
  S assignedNull("abc");
  assignedNull = static_cast<const char*>(nullptr);
  const S cases[] = {
      S(),           S('\0'),       S(""),         S(static_cast<const char*>(nullptr)),
      S("abc", 0),   S(nullptr, 5), S("\0abc", 4), S("abc").Copy(3, 1),
      S("") + S(""), cut,           filled,        assigned,
      assignedNull};
  for (const S& s : cases) {
    EXPECT_EQ(nullptr, s.StrGet());
    EXPECT_EQ(0, s.Len());
    EXPECT_TRUE(!s);
  }
  EXPECT_FALSE(!S("0"));
}

TYPED_TEST(FoldedStringTest, NumbersPrintAsTheirTypes) {
  using S = TypeParam;
  const struct {
    S value;
    const char* text;
    const char* why;
  } cases[] = {
      {S(static_cast<short>(-32768)), "-32768", "short"},
      {S(INT_MIN), "-2147483648", "int"},
      {S(4294967295u), "4294967295", "unsigned int prints unsigned"},
      {S(0.1), "0.10000000000000001", "double with 17 digits"},
      {S(-1e300), "-1.0000000000000001e+300", "double with exponent"},
      {S(LLONG_MIN), "-9223372036854775808", "64-bit"},
      {S(ULLONG_MAX), "18446744073709551615", "unsigned 64-bit"},
      {S('x'), "x", "one character"},
      {S('\xE9'), "\xE9", "a byte above 0x7F"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    ExpectText(c.text, c.value);
  }
}

TYPED_TEST(FoldedStringTest, CountedTextStopsAtNOrAtAZeroByte) {
  using S = TypeParam;
  ExpectText("ab", S("abcdef", 2));
  ExpectText("ab", S("ab\0cd", 5));
  ExpectText("abcdef", S("abcdef", 65535));
}

TYPED_TEST(FoldedStringTest, TextsAreCutAt65534Bytes) {
  using S = TypeParam;
  const std::string big(70000, 'x');
  EXPECT_EQ(65534, S(big.c_str()).Len()) << "text";
  EXPECT_EQ(65534, S(big.c_str(), 65535).Len()) << "counted text, to the terminator";
  EXPECT_EQ(65534, S(big.c_str(), 65534).Len());
  S assigned;
  assigned = big.c_str();
  EXPECT_EQ(65534, assigned.Len()) << "assignment";

  S joined(std::string(40000, 'a').c_str());
  joined += S(std::string(40000, 'b').c_str());
  EXPECT_EQ(65534, joined.Len()) << "append";
  EXPECT_EQ('b', joined[65533]);
  EXPECT_EQ(65534, (joined + S("c")).Len()) << "operator+";

  S expanded("x");
  expanded.Expand(65535, '-');
  EXPECT_EQ(65534, expanded.Len()) << "expand";
  S filled;
  filled.Fill(65535, 'f');
  EXPECT_EQ(65534, filled.Len()) << "fill";

  S full(big.c_str());
  full.Insert("HEAD", 0);
  EXPECT_EQ(65534, full.Len()) << "insert keeps the front";
  EXPECT_EQ(0, full.SubStringPos("HEAD"));
  full.Replace("TAIL", 65533);
  EXPECT_EQ(65534, full.Len()) << "replace past the end";
  EXPECT_EQ('T', full[65533]);
  EXPECT_EQ(65534, full.Copy(0, 65535).Len()) << "copy";
}

struct EditCase {
  const char* before;
  const char* argument;  // the string argument, or the fill character
  unsigned short first, second;
  const char* after;
  const char* why;
};

constexpr EditCase kCopyCases[] = {
    {"abcdef", "", 2, 3, "cde", "inside"},
    {"abcdef", "", 4, 65535, "ef", "to the end"},
    {"abcdef", "", 0, 65535, "abcdef", "all"},
    {"abcdef", "", 6, 1, "", "start at the end"},
    {"abcdef", "", 65535, 65535, "", "start far past the end"},
    {"abcdef", "", 1, 0, "", "nothing"},
    {"", "", 0, 5, "", "from empty"},
};

constexpr EditCase kCutCases[] = {
    {"abcdef", "", 1, 2, "adef", "inside"},
    {"abcdef", "", 3, 65535, "abc", "to the end"},
    {"abcdef", "", 4, 100, "abcd", "count past the end"},
    {"abcdef", "", 0, 65535, "", "all"},
    {"abcdef", "", 6, 1, "abcdef", "start at the end"},
    {"abcdef", "", 2, 0, "abcdef", "count 0"},
    {"", "", 0, 65535, "", "empty"},
};

constexpr EditCase kInsertCases[] = {
    {"abc", "XY", 0, 0, "XYabc", "front"},
    {"abc", "XY", 1, 0, "aXYbc", "inside"},
    {"abc", "XY", 3, 0, "abcXY", "at the end"},
    {"abc", "XY", 65535, 0, "abcXY", "past the end appends"},
    {"abc", "", 1, 0, "abc", "nothing to insert"},
    {"", "XY", 5, 0, "XY", "into empty"},
};

constexpr EditCase kReplaceCases[] = {
    {"abc", "xyz", 2, 0, "abxyz", "grows past the end"},
    {"abcdef", "XY", 1, 0, "aXYdef", "inside"},
    {"abc", "XYZ", 0, 0, "XYZ", "all of it"},
    {"abc", "XY", 10, 0, "abcXY", "past the end appends"},
    {"abc", "", 0, 0, "abc", "nothing to write"},
    {"", "ab", 0, 0, "ab", "into empty"},
};

constexpr EditCase kExpandCases[] = {
    {"ab", ".", 5, 0, "ab...", "pads"},
    {"abc", ".", 3, 0, "abc", "already that long"},
    {"abc", ".", 1, 0, "abc", "longer"},
    {"", "-", 2, 0, "--", "from empty"},
    {"ab", "", 5, 0, "ab", "zero byte pads nothing"},
    {"", "", 3, 0, "", "zero byte leaves empty text without a buffer"},
};

constexpr EditCase kFillCases[] = {
    {"abc", "z", 2, 0, "zz", "shorter"},
    {"", "z", 4, 0, "zzzz", "from empty"},
    {"abc", "z", 0, 0, "", "none"},
    {"abc", "", 3, 0, "", "zero byte"},
};

template <class S, size_t N, class Edit>
void RunEdits(const EditCase (&cases)[N], Edit edit) {
  for (const EditCase& c : cases) {
    SCOPED_TRACE(c.why);
    S s(c.before);
    edit(s, c);
    ExpectText(c.after, s);
  }
}

TYPED_TEST(FoldedStringTest, EditsAtTheirBounds) {
  using S = TypeParam;
  {
    SCOPED_TRACE("Copy");
    RunEdits<S>(kCopyCases, [](S& s, const EditCase& c) { s = s.Copy(c.first, c.second); });
  }
  {
    SCOPED_TRACE("Cut");
    RunEdits<S>(kCutCases, [](S& s, const EditCase& c) { s.Cut(c.first, c.second); });
  }
  {
    SCOPED_TRACE("Insert");
    RunEdits<S>(kInsertCases, [](S& s, const EditCase& c) { s.Insert(c.argument, c.first); });
  }
  {
    SCOPED_TRACE("Replace");
    RunEdits<S>(kReplaceCases, [](S& s, const EditCase& c) { s.Replace(c.argument, c.first); });
  }
  {
    SCOPED_TRACE("Expand");
    RunEdits<S>(kExpandCases, [](S& s, const EditCase& c) { s.Expand(c.first, c.argument[0]); });
  }
  {
    SCOPED_TRACE("Fill");
    RunEdits<S>(kFillCases, [](S& s, const EditCase& c) { s.Fill(c.first, c.argument[0]); });
  }
}

TYPED_TEST(FoldedStringTest, AppendAndJoin) {
  using S = TypeParam;
  S s("ab");
  s += "cd";
  ExpectText("abcd", s);
  S empty;
  empty += "xy";
  ExpectText("xy", empty);
  ExpectText("abcdxy", s + empty);
  ExpectText("<ab>", "<" + S("ab") + '>');
  s += S();
  ExpectText("abcd", s);
}

TYPED_TEST(FoldedStringTest, EditsMayTakeTheirOwnText) {
  using S = TypeParam;
  S s("abc");
  s += s;
  ExpectText("abcabc", s);
  s = "abc";
  s.Insert(s, 1);
  ExpectText("aabcbc", s);
  s = "abc";
  s.Replace(s, 1);
  ExpectText("aabc", s);
  s = "abc";
  s.Replace(s, 0);
  ExpectText("abc", s);
  s = s.StrGet() + 1;
  ExpectText("bc", s);
  const S& same = s;
  s = same;
  ExpectText("bc", s);
}

TYPED_TEST(FoldedStringTest, SubStringPosFindsExactBytes) {
  using S = TypeParam;
  const struct {
    const char* text;
    const char* needle;
    unsigned short start;
    int at;
    const char* why;
  } cases[] = {
      {"abcabc", "bc", 0, 1, "first"},
      {"abcabc", "bc", 2, 4, "from a start"},
      {"abcabc", "abc", 4, -1, "none after the start"},
      {"abc", "abcd", 0, -1, "longer than the text"},
      {"aBc", "b", 0, -1, "no folding: case counts"},
      {"\xE9t\xE9", "\xE9", 1, 2, "bytes above 0x7F"},
      {"abc", "", 0, 0, "empty at the start"},
      {"abc", "", 3, 3, "empty at the end"},
      {"abc", "", 4, -1, "empty past the end"},
      {"", "a", 0, -1, "in empty"},
      {"", "", 0, 0, "empty in empty"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.at, S(c.text).SubStringPos(c.needle, c.start));
  }
}

// The case pairs of code set 1 as the internationalisation library knows them:
// a byte maps when its simple case mapping is a character of the set.
unsigned char CaseInCodeSet1(unsigned char c, bool upper) {
  const KaCodeSet* set = KaCodeSet::Get(1);
  const KaUnicodeProps props = set->GetUnicodeProps(c, 0);
  const unsigned short mapped = upper ? props.upper : props.lower;
  if (mapped == 0 || mapped == set->ToUnicode(c)) return c;
  const unsigned short back = set->FromUnicode(mapped);
  return back == '?' ? c : static_cast<unsigned char>(back);
}

TYPED_TEST(FoldedStringTest, CaseMapsEveryByteAsCodeSet1Does) {
  using S = TypeParam;
  std::string all;
  for (unsigned c = 1; c < 256; ++c) all += static_cast<char>(c);
  S upper(all.c_str());
  upper.ToUpper();
  S lower(all.c_str());
  lower.ToLower();
  ASSERT_EQ(255, upper.Len());
  ASSERT_EQ(255, lower.Len());
  for (unsigned c = 1; c < 256; ++c) {
    SCOPED_TRACE(Hex(c));
    EXPECT_EQ(CaseInCodeSet1(static_cast<unsigned char>(c), true),
              static_cast<unsigned char>(upper[static_cast<int>(c - 1)]));
    EXPECT_EQ(CaseInCodeSet1(static_cast<unsigned char>(c), false),
              static_cast<unsigned char>(lower[static_cast<int>(c - 1)]));
  }
  S empty;
  EXPECT_EQ(nullptr, empty.ToUpper().StrGet());
  SCOPED_TRACE("sharp s has no one-byte capital");
  ExpectText("STRASSE \xDF", S("Strasse \xDF").ToUpper());
}

TYPED_TEST(FoldedStringTest, BlanksAndZeros) {
  using S = TypeParam;
  S s(" a 0 ");
  s.SpaceToZero();
  ExpectText("0a000", s);
  s = " 0b0 ";
  s.ZeroToSpace();
  ExpectText("  b  ", s);
  S empty;
  empty.SpaceToZero();
  empty.ZeroToSpace();
  EXPECT_EQ(nullptr, empty.StrGet());
}

TYPED_TEST(FoldedStringTest, IndexReachesOnlyTheText) {
  using S = TypeParam;
  S s("abc");
  s[1] = 'X';
  ExpectText("aXc", s);
  s[3] = 'Z';  // the terminator is out of reach
  s[-1] = 'Z';
  s[65535] = 'Z';
  ExpectText("aXc", s);
  EXPECT_EQ('\0', s[7]) << "the scratch byte is cleared on each use";
  S empty;
  empty[0] = 'e';
  EXPECT_EQ(nullptr, empty.StrGet());
  const S& view = s;
  EXPECT_EQ('c', view[2]);
  EXPECT_EQ('\0', view[3]);
  EXPECT_EQ('\0', view[-1]);
  EXPECT_EQ('\0', view[100]);
  s[1] = '\0';
  ExpectText("a", s);
}

TYPED_TEST(FoldedStringTest, NumbersReadFromTheText) {
  using S = TypeParam;
  const struct {
    const char* text;
    short s;
    int i;
    long long ll;
    double d;
    const char* why;
  } cases[] = {
      {" 42abc", 42, 42, 42, 42.0, "blanks before, text after"},
      {"\t-17", -17, -17, -17, -17.0, "tab and minus"},
      {"+7", 7, 7, 7, 7.0, "plus"},
      {"-12.5e1", -12, -12, -12, -125.0, "integers stop at the point"},
      {".5", 0, 0, 0, 0.5, "fraction without integer digits"},
      {"1,5", 1, 1, 1, 1.0, "a comma ends the number"},
      {"99999", 32767, 99999, 99999, 99999.0, "short clamps"},
      {"-99999999999", -32768, INT_MIN, -99999999999LL, -99999999999.0, "int clamps"},
      {"99999999999999999999", 32767, INT_MAX, LLONG_MAX, 1e20, "long long saturates"},
      {"-9223372036854775808", -32768, INT_MIN, LLONG_MIN, -9223372036854775808.0, "most negative"},
      {"1e400", 1, 1, 1, HUGE_VAL, "double overflows to infinity"},
      {"abc", 0, 0, 0, 0.0, "no number"},
      {"- 5", 0, 0, 0, 0.0, "the sign must touch the digits"},
      {"0x1A", 0, 0, 0, 0.0, "no hexadecimal"},
      {"inf", 0, 0, 0, 0.0, "no infinity"},
      {"nan", 0, 0, 0, 0.0, "no NaN"},
      {"", 0, 0, 0, 0.0, "empty"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const S s(c.text);
    EXPECT_EQ(c.s, static_cast<short>(s));
    EXPECT_EQ(c.i, static_cast<int>(s));
    EXPECT_EQ(c.ll, static_cast<long long>(s));
    EXPECT_DOUBLE_EQ(c.d, static_cast<double>(s));
  }
  EXPECT_EQ(0.1, static_cast<double>(S(0.1))) << "a printed double reads back exactly";
}

}  // namespace
