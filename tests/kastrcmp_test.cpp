// KaStrCmp and the comparisons of KaString and KaChar built on it.
#include "katypemgr/kastrcmp.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "kastring_test_util.h"
#include "katypemgr/kastring.h"
#include "string/compare_general.h"

namespace {

using ka::test::Wide;

int Sign(int v) { return (v > 0) - (v < 0); }

// Windows-1252 text in language 0, mode 1 (as the string classes call).
int Latin(const char* value, const char* pattern, unsigned short op, short max = -1,
          unsigned char mode = 1) {
  return KaStrCmp(1, 0, value, 1, 0, pattern, op, max, mode, nullptr);
}

int Bytes(const char* value, const char* pattern, unsigned short op, short max = -1) {
  return KaStrCmp(0, 0, value, 0, 0, pattern, op, max, 1, nullptr);
}

class StrCmpTest : public ::testing::Test {
 protected:
  void TearDown() override { KaLanguageContext::Reset(); }
};

struct NullCase {
  unsigned char cs1, lang1;
  const char* s1;
  unsigned char cs2, lang2;
  const char* s2;
  unsigned short op;
  short max;
  int sign;
  const char* why;
};
const NullCase kNullCases[] = {
    {1, 254, nullptr, 1, 254, nullptr, 0, -1, 0, "two nulls are equal"},
    {254, 0, nullptr, 1, 254, nullptr, 16, -1, 0, "code set 254 in language 0 is null too"},
    {1, 254, nullptr, 1, 0, "", 16, -1, -1, "null before empty when exact"},
    {1, 254, nullptr, 1, 0, "", 256, -1, -1, "null before empty when simple"},
    {1, 254, nullptr, 1, 0, "", 0, -1, 0, "a null value matches the empty pattern"},
    {1, 254, nullptr, 1, 0, "*", 0, -1, 0, "and the lone star"},
    {1, 254, nullptr, 1, 0, "a", 0, -1, -1, "but not a letter"},
    {1, 0, "", 1, 254, nullptr, 0, -1, 1, "a null pattern: after everything"},
    {1, 0, "", 254, 0, nullptr, 16, -1, 1, "null by code set 254"},
    {1, 0, "a", 1, 0, "b", 16, 0, 0, "maximum length 0"},
    {0, 254, nullptr, 0, 0, "", 16, -1, -1, "null before the byte paths"},
};

TEST_F(StrCmpTest, NullsAndTrivialCasesComeFirst) {
  for (const NullCase& c : kNullCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.sign,
              Sign(KaStrCmp(c.cs1, c.lang1, c.s1, c.cs2, c.lang2, c.s2, c.op, c.max, 1, nullptr)));
  }
}

struct ByteCase {
  const char* value;
  const char* pattern;
  unsigned short op;
  short max;
  int result;
  const char* why;
};
const ByteCase kByteCases[] = {
    {"abc", "abd", 16, -1, 'c' - 'd', "first difference"},
    {"ab", "abc", 16, -1, -'c', "a prefix first"},
    {"\xE9", "e", 16, -1, 0xE9 - 'e', "bytes are unsigned"},
    {"abX", "abY", 16, 2, 0, "cut at the maximum length"},
    {"abX", "abY", 256, -5, 'X' - 'Y', "any negative length is unlimited"},
    {"a*c", "abc", 16, -1, '*' - 'b', "exact: a star is a byte"},
    {"ab", "a?c", 0, -1, -'c', "question mark, then the missing c"},
    {"abcbdx", "a*bd", 0, -1, -'b', "backtracking runs out"},
    {"ab", "a*c", 0, -1, -'c', "the byte after the star is missing"},
    {"a", "a*c", 0, -1, -1, "star at the end of the value"},
    {"abcd", "abc", 0, -1, 'd', "pattern ends first"},
    {"abc", "abd", 0, -1, 'c' - 'd', "mismatch without a star"},
    {"a*b", "a\\*b", 0, -1, '*' - '\\', "no escape in bytes"},
    {"", "?", 0, -1, -1, "question mark on empty"},
    {"abc", "a*z", 0, 2, 0, "the budget runs out in the scan"},
    {"abc", "abz", 0, 2, 0, "the budget runs out in the walk"},
};

TEST_F(StrCmpTest, BytesCompareAndMatchWithBacktracking) {
  for (const ByteCase& c : kByteCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.result, Bytes(c.value, c.pattern, c.op, c.max));
  }
  EXPECT_EQ(-1, Bytes(nullptr, "a", 16));
  EXPECT_EQ(0, Bytes(nullptr, "", 16));
  EXPECT_EQ(1, Bytes("a", nullptr, 0));
  EXPECT_EQ(-1, Bytes(nullptr, "a", 0));
}

struct LevelCase {
  const char* s1;
  const char* s2;
  unsigned short op;
  unsigned char mode;
  int sign;
  const char* why;
};
const LevelCase kLevelCases[] = {
    {"abc", "abd", 16, 1, -1, "primary"},
    {"abc", "ABC", 16, 1, -1, "lower case before upper case"},
    {"abc", "ABC", 16 | 32, 1, 0, "bit 5 ignores case"},
    {"aB", "Ab", 16, 1, -1, "the first case difference counts"},
    {"Ab", "ac", 16, 1, -1, "primary over case"},
    {"\xE9", "e", 16, 0, 1, "mode 0: the accent after the plain letter"},
    {"\xE9", "e", 16 | 64, 0, 0, "bit 6 ignores the accent"},
    {"\xE9", "e", 16, 1, 0, "mode 1 breaks no ties by accent"},
    {"\xE9\x65", "e\xE9", 16, 0, -1, "the last accent difference counts"},
    {"\xC9", "e", 16, 0, 1, "accent and case: the accent first in mode 0"},
    {"\xC9", "e", 16, 1, 1, "case alone in mode 1"},
    {"\xC9", "e", 16 | 32 | 64, 0, 0, "both ignored"},
    {"\xE9t", "ez", 16, 0, -1, "primary over accent"},
    {"a", "A", 256, 1, 1, "simple: keys as they are, lower case above"},
    {"a", "A", 256 | 32, 1, 0, "simple with the case mask"},
    {"1", "a", 16, 1, -1, "digits before letters"},
    {" ", "1", 16, 1, -1, "spaces before digits"},
};

TEST_F(StrCmpTest, LevelsAndOptionBits) {
  for (const LevelCase& c : kLevelCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.sign, Sign(Latin(c.s1, c.s2, c.op, -1, c.mode)));
    if (c.op & kKaCmpSimple) continue;
    EXPECT_EQ(-c.sign, Sign(Latin(c.s2, c.s1, c.op, -1, c.mode))) << "reversed";
  }
}

TEST_F(StrCmpTest, LetterKeysRankBaseLetterBeforeAccentExceptInLanguage20) {
  // Upper-case A with acute against plain B, as orders (code set 254): the
  // raw A-acute order is the larger one.
  const unsigned short aAcute[] = {0x4000 | 2 << 7 | 3 << 2, 0};
  const unsigned short b[] = {0x4000 | 4 << 2, 0};
  ASSERT_GT(aAcute[0], b[0]);
  EXPECT_LT(KaStrCmp(254, 1, aAcute, 254, 1, b, 16, -1, 1, nullptr), 0);
  EXPECT_GT(KaStrCmp(254, 20, aAcute, 254, 20, b, 16, -1, 1, nullptr), 0);
  EXPECT_NE(0, KaStrCmp(1, 1, "a", 1, 2, "a", 16, -1, 1, nullptr)) << "languages count";
}

TEST_F(StrCmpTest, RunningDifferenceThroughTheResult) {
  struct {
    const char *s1, *s2;
    unsigned short op;
    short max;
    int sign, running;  // running: sign of the difference, 2 for "the result", 9 for untouched
    const char* why;
  } const cases[] = {
      {"Ab", "ab", 16 | 128, -1, 1, 2, "the case difference after the first pair"},
      {"ab", "abc", 16 | 128, -1, -1, 0, "equal while both had characters"},
      {"abc", "abd", 16 | 128, 3, -1, 2, "the result"},
      {"abc", "abd", 16 | 128, 2, 0, 0, "nothing past the maximum length"},
      {"abc", "abd", 16, -1, -1, 9, "untouched without bit 7"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    int running = 12345;
    const int r = KaStrCmp(1, 0, c.s1, 1, 0, c.s2, c.op, c.max, 1, &running);
    EXPECT_EQ(c.sign, Sign(r));
    EXPECT_EQ(c.running == 2 ? r : c.running == 9 ? 12345 : c.running, running);
  }
}

TEST_F(StrCmpTest, ExpansionsAndTheFirstOrderStep) {
  // The ligature expands into a and e: equal to its letters up to the
  // length, which puts the one character first.
  EXPECT_LT(Latin("\xE6", "ae", 16), 0);
  EXPECT_GT(Latin("\xE6", "a", 16), 0);
  EXPECT_EQ(0, Latin("\xE6", "ae", 0)) << "a match is decided by orders alone";
  EXPECT_EQ(0, Latin("\xE6", "a", 16 | 512)) << "bit 9: one order per character";
  EXPECT_LT(Latin("\xE6", "ab", 16 | 512), 0);
}

struct WildCase {
  const char* value;
  const char* pattern;
  unsigned short op;
  int sign;
  const char* why;
};
const WildCase kWildCases[] = {
    {"abcbdx", "a*bd", 0, -1, "backtracking runs out"},
    {"mississippi", "m*iss*ppi", 0, 0, "several restarts"},
    {"ab", "a?c", 0, -1, "question mark past the end"},
    {"ab", "ab?", 0, -1, "question mark at the end of the value"},
    {"a", "a*c", 0, -1, "star at the end of the value"},
    {"abd", "a*c", 0, -1, "the letter after the star is missing"},
    {"abc", "ab", 0, 1, "pattern ends first"},
    {"abc", "a\\*c", 0, 1, "and matches only itself"},
    {"ab", "a\\?", 0, 1, "is no wildcard"},
    {"a\\b", "a\\\\b", 0, 0, "escaped escape"},
    {"a\\", "a\\", 0, 0, "a trailing escape stands for itself"},
    {"abc", "a*", 16, 1, "exact: no wildcards"},
    {"a*", "a*", 16, 0, "exact: the star is a character"},
    {"Aa", "*a*", 0, 0, "the scan passes a capital"},
    {"AB", "*b", 0, -1, "case counts in a match"},
    {"AB", "*b", 32, 0, "unless ignored"},
    {"xAbc", "x*b?", 0, 0, "case below the star"},
    {"Abc", "a*", 0, 1, "case before the star"},
    {"\xE9t\xE9", "*t*", 0, 0, "accented letters under stars"},
};

TEST_F(StrCmpTest, WildcardsInTheCollatingWalk) {
  for (const WildCase& c : kWildCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.sign, Sign(Latin(c.value, c.pattern, c.op)));
  }
}

TEST_F(StrCmpTest, WildcardCharactersCanBeChanged) {
  KaString::SetAsterisk(KaChar('%', 1, 0));
  EXPECT_EQ(0, Latin("abc", "a%", 0));
  EXPECT_NE(0, Latin("abc", "a*", 0));
  KaString::SetAsterisk(KaChar('*', 1, 0));
}

// A brute-force matcher: the independent answer to "does the value match".
bool Glob(const char* v, const char* p, bool escapes) {
  if (*p == 0) return *v == 0;
  if (*p == '*') return Glob(v, p + 1, escapes) || (*v != 0 && Glob(v + 1, p, escapes));
  if (*p == '?') return *v != 0 && Glob(v + 1, p + 1, escapes);
  if (escapes && *p == '\\' && p[1] != 0) ++p;
  return *v == *p && Glob(v + 1, p + 1, escapes);
}

std::string RandomText(std::mt19937& rng, const char* alphabet, int maxLength) {
  std::string s;
  const int n = static_cast<int>(rng() % (maxLength + 1));
  for (int i = 0; i < n; ++i) s.push_back(alphabet[rng() % std::strlen(alphabet)]);
  return s;
}

TEST_F(StrCmpTest, MatchersAgreeWithBruteForce) {
  std::mt19937 rng(7);
  for (int i = 0; i < 20000; ++i) {
    const std::string value = RandomText(rng, "abA*", 7);
    const std::string pattern = RandomText(rng, "ab*?A\\", 6);
    SCOPED_TRACE(value + " against " + pattern);
    EXPECT_EQ(Glob(value.c_str(), pattern.c_str(), false),
              Bytes(value.c_str(), pattern.c_str(), 0) == 0);
    EXPECT_EQ(Glob(value.c_str(), pattern.c_str(), true),
              Latin(value.c_str(), pattern.c_str(), 0) == 0);
  }
}

struct LengthCase {
  const char* s1;
  const char* s2;
  unsigned short op;
  short max;
  int sign;
  const char* why;
};
const LengthCase kLengthCases[] = {
    {"abc", "abd", 16, 2, 0, "differs after the limit"},
    {"abc", "abd", 16, 3, -1, "differs at the limit"},
    {"ab", "abc", 16, 2, 0, "both cut to the same length"},
    {"a", "abc", 16, 2, -1, "one shorter than the limit"},
    {"abc", "abd", 16, 32767, -1, "the largest limit"},
    {"abc", "abd", 16, -32768, -1, "every negative limit is unlimited"},
    {"abc", "abz", 0, 2, 0, "a pattern agreeing over the value's limit"},
    {"abc", "a*z", 0, 2, 0, "also under a star"},
    {"abc", "x*", 0, 2, -1, "but not when it differs within"},
    {"abc", "abd", 256, 2, 0, "simple"},
    {"\xE6x", "aey", 16, 1, 1, "a limit of characters: both orders of the ligature"},
};

TEST_F(StrCmpTest, MaximumLengths) {
  for (const LengthCase& c : kLengthCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.sign, Sign(Latin(c.s1, c.s2, c.op, c.max)));
  }
}

const char16_t* const kWords[] = {
    u"",    u"a",      u"A",      u"ab",          u"Ab",      u"\u00E9", u"\u00C9t\u00E9",
    u"ete", u"\u00E6", u"ae",     u"stra\u00DFe", u"strasse", u"1",      u" x",
    u"x y", u"z",      u"\u00FF", u"\u00D8",      u"o",       u"\u00F6",
};

// A Windows-1252 string of the same characters.
std::string ToLatin(const std::u16string& s) {
  std::string out;
  for (char16_t c : s) out.push_back(static_cast<char>(c));
  return out;
}

TEST_F(StrCmpTest, OneByteAndUnicodeTextAgree) {
  for (const char16_t* a : kWords) {
    for (const char16_t* b : kWords) {
      SCOPED_TRACE(ToLatin(a) + " / " + ToLatin(b));
      const KaString wa = Wide(a), wb = Wide(b);
      const std::string la = ToLatin(a), lb = ToLatin(b);
      for (unsigned short op : {16, 16 | 32, 256, 0}) {
        const int latin = Sign(Latin(la.c_str(), lb.c_str(), op));
        EXPECT_EQ(latin,
                  Sign(KaStrCmp(253, 0, wa.StrGet(), 253, 0, wb.StrGet(), op, -1, 1, nullptr)));
        EXPECT_EQ(latin, Sign(KaStrCmp(1, 0, la.c_str(), 253, 0, wb.StrGet(), op, -1, 1, nullptr)));
        EXPECT_EQ(latin, Sign(KaStrCmp(2, 0, la.c_str(), 1, 0, lb.c_str(), op, -1, 1, nullptr)))
            << "ISO-8859-1 holds these too";
      }
    }
  }
}

TEST_F(StrCmpTest, OneNativeCodeSetIsResolved) {
  ASSERT_TRUE(KaLanguageContext::SetNativeCodeSet(2));
  EXPECT_EQ(0, KaStrCmp(0, 0, "\xE9", 253, 0, u"\u00E9", 16, -1, 1, nullptr));
  EXPECT_GT(KaStrCmp(0, 0, "\xE9", 0, 0, "f", 16, -1, 1, nullptr), 0) << "two natives: bytes";
}

TEST_F(StrCmpTest, StringOperatorsUseTheDefaultExactComparison) {
  KaString null;
  null.SetNullValue();
  const KaString empty(""), abc("abc"), abd("abd");
  EXPECT_TRUE(null < empty && !(null == empty) && null == null);
  EXPECT_FALSE(abc == KaString("a*")) << "equality is no pattern match";
  EXPECT_EQ(0, abc.Compare(KaString("a*"), -1, 0)) << "unless asked for";
  EXPECT_TRUE(abc < abd && abd >= abc && abc <= abc && abd > abc && abc != KaString("ABC"));
  EXPECT_TRUE(abc == Wide(u"abc")) << "code sets do not matter";
  EXPECT_EQ(0, abc.Compare(KaString("abX"), 2));
  KaString::SetDefaultCmpOp(32);
  EXPECT_TRUE(abc == KaString("A*")) << "the default reaches the operators";
}

TEST_F(StrCmpTest, EqualsIgnoreLanguage) {
  KaString a("abc"), b("abc");
  a.SetLanguage(1);
  b.SetLanguage(2);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a.EqualsIgnoreLanguage(b));
  EXPECT_FALSE(a.EqualsIgnoreLanguage(KaString("ABC")));
  EXPECT_FALSE(a.EqualsIgnoreLanguage(KaString("a*"))) << "simple: no wildcards";
}

TEST_F(StrCmpTest, CharComparisonsTakeOneCharacter) {
  KaString s("ab");
  EXPECT_TRUE(KaChar(s, 0) == 'a') << "not the rest of the buffer";
  EXPECT_TRUE(KaChar(s, 0) < KaChar(s, 1));
  EXPECT_TRUE(KaChar('a') < 'A' && KaChar('A') > 'a') << "lower case first";
  EXPECT_TRUE(KaChar('b') >= 'a' && KaChar('a') <= 'a' && KaChar('a') != 'b');
  EXPECT_EQ(0, KaChar('a').Compare(KaChar('A'), 16 | 32));
  EXPECT_TRUE(KaChar('\xE9', 1, 0) == static_cast<unsigned short>(0xE9));
  EXPECT_FALSE(KaChar('x') == KaChar('*')) << "exact by default";
  EXPECT_EQ(0, KaChar('x').Compare(KaChar('?'), 0));
  const unsigned short wide[] = {0x0100, 0};
  EXPECT_TRUE(KaChar(reinterpret_cast<const char*>(wide), 253, 0) ==
              static_cast<unsigned short>(0x0100));
}

class OrderingLaw : public ::testing::TestWithParam<unsigned char> {};

TEST_P(OrderingLaw, ExactComparisonIsAntisymmetricAndTransitive) {
  const unsigned char mode = GetParam();
  const char16_t alphabet[] = u"aAbBeE\u00E9\u00C9\u00E8zZ \u00E6\u00DF\u00F6\u00D61*";
  std::mt19937 rng(20240611 + mode);
  std::vector<KaString> strings;
  for (int i = 0; i < 3000; ++i) {
    std::u16string text;
    const int n = static_cast<int>(rng() % 6);
    for (int k = 0; k < n; ++k) text.push_back(alphabet[rng() % (std::size(alphabet) - 1)]);
    KaString s = Wide(text);
    if (rng() % 2 == 0) s.MapToCodeSet(1);  // every character fits Windows-1252
    strings.push_back(std::move(s));
  }
  auto cmp = [&](const KaString& a, const KaString& b) {
    return Sign(KaStrCmp(a.CodeSet(), a.Language(), a.StrGet(), b.CodeSet(), b.Language(),
                         b.StrGet(), 16, -1, mode, nullptr));
  };
  int failures = 0;
  for (int i = 0; i < 20000 && failures < 5; ++i) {
    const KaString& a = strings[rng() % strings.size()];
    const KaString& b = strings[rng() % strings.size()];
    const KaString& c = strings[rng() % strings.size()];
    const int ab = cmp(a, b), bc = cmp(b, c), ac = cmp(a, c);
    bool ok = ab == -cmp(b, a);
    if (ab <= 0 && bc <= 0) ok = ok && ac <= 0;
    if (ab == 0 && bc == 0) ok = ok && ac == 0;
    if (ab < 0 && bc <= 0) ok = ok && ac < 0;
    if (!ok) {
      ++failures;
      ADD_FAILURE() << "ab " << ab << " bc " << bc << " ac " << ac;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, OrderingLaw, ::testing::Values(0, 1));

}  // namespace

// --- The table walk against the iterator walk ---------------------------------------

// Text of known code sets is read through per-set tables and identical
// prefixes are passed at once; the answers (and running differences) must be
// those of the walk through the iterator, for every option bit, maximum
// length, mode and language pairing, on text full of expansions (sharp s,
// ae and oe ligatures beside their spelled-out letters), case and accent
// variants, wildcards and escapes.
class TableWalkTest : public ::testing::TestWithParam<unsigned char> {};

// Windows-1252 bytes; as code points they are the same characters in code
// set 253 except 0x9C (oe), which is U+0153 there.
const char kDifferentialAlphabet[] = "aAbeEsSoO\xE9\xC9\xDF\xE6\xC6\x9C*?\\";

std::string RandomText(std::mt19937& rng) {
  std::string t;
  for (size_t n = rng() % 8; n > 0; --n) {
    t.push_back(kDifferentialAlphabet[rng() % (sizeof kDifferentialAlphabet - 1)]);
  }
  return t;
}

std::vector<unsigned short> AsUnicode(const std::string& t) {
  std::vector<unsigned short> u;
  for (unsigned char c : t) u.push_back(c == 0x9C ? 0x153 : c);
  u.push_back(0);
  return u;
}

TEST_P(TableWalkTest, AnswersAsTheIteratorWalk) {
  // The code sets of value and pattern: 1 and 1, 253 and 253, or one each.
  const unsigned char pairing = GetParam();
  const unsigned char cs1 = pairing == 1 ? 253 : 1;
  const unsigned char cs2 = pairing == 0 ? 1 : 253;
  std::mt19937 rng(40 + pairing);
  const short maxima[] = {-1, 1, 2, 3, 5};
  int differing = 0;
  for (int i = 0; i < 300; ++i) {
    const std::string a = RandomText(rng);
    // Often a's prefix: the identical-prefix skip runs, into and past the
    // maximum length.
    const std::string b =
        (rng() % 2 == 0 ? a.substr(0, rng() % (a.size() + 1)) : "") + RandomText(rng);
    const std::vector<unsigned short> ua = AsUnicode(a);
    const std::vector<unsigned short> ub = AsUnicode(b);
    const void* s1 = cs1 == 1 ? static_cast<const void*>(a.c_str()) : ua.data();
    const void* s2 = cs2 == 1 ? static_cast<const void*>(b.c_str()) : ub.data();
    const unsigned char lang2 = i % 4 == 3 ? 20 : 0;
    for (unsigned bits = 0; bits < 64; ++bits) {
      const auto op = static_cast<unsigned short>(bits << 4);  // 16 .. 512
      for (short max : maxima) {
        for (unsigned char mode = 0; mode < 2; ++mode) {
          int fastRunning = 7;
          int generalRunning = 7;
          const int fast = KaStrCmp(cs1, 0, s1, cs2, lang2, s2, op, max, mode, &fastRunning);
          const int general = ka::detail::KaStrCmpGeneral(cs1, 0, s1, cs2, lang2, s2, op, max, mode,
                                                          &generalRunning);
          if (fast != general || fastRunning != generalRunning) {
            ADD_FAILURE() << "value \"" << a << "\" pattern \"" << b << "\" op " << op << " max "
                          << max << " mode " << int{mode} << " language " << int{lang2} << ": "
                          << fast << " (running " << fastRunning << ") against " << general
                          << " (running " << generalRunning << ")";
            if (++differing > 10) return;
          }
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(CodeSets, TableWalkTest, ::testing::Values(0, 1, 2));

// Value and pattern of one 1-byte set and one language take the byte walk:
// patterns made from their values (letters turned to wildcards, stars put in,
// case and accents changed, escapes), for each option bit a pattern sees,
// maximum lengths into and past the texts, and every language kind. The
// sharp s expands: where it is read the general walk takes over.
class ByteWalkTest : public ::testing::TestWithParam<unsigned char> {};

const char kByteWalkAlphabet[] = "abeAEBsS\xE9\xC9\xE8\xC8xy";

std::string ByteWalkPattern(const std::string& value, std::mt19937& rng) {
  std::string p;
  for (char c : value) {
    switch (rng() % 12) {
      case 0:
        p += '?';
        break;
      case 1:
        p += '*';
        break;
      case 2:
        p += '*';
        p += c;
        break;
      case 3:
        p += static_cast<char>(c ^ 0x20);
        break;  // the other case
      case 4:
        p += '\\';
        p += c;
        break;
      case 5:
        p += kByteWalkAlphabet[rng() % (sizeof kByteWalkAlphabet - 1)];
        break;
      case 6:
        break;
      default:
        p += c;
    }
  }
  switch (rng() % 8) {
    case 0:
      p += '*';
      break;
    case 1:
      p += '\\';
      break;  // an escape that stands for itself
    case 2:
      p += "\\*";
      break;
    case 3:
      p += "\xDF";
      break;
    default:
      break;
  }
  return p;
}

TEST_P(ByteWalkTest, AnswersAsTheIteratorWalk) {
  const unsigned char language = GetParam();
  std::mt19937 rng(70 + language);
  const short maxima[] = {-1, 1, 2, 3, 4, 6, 9, 40};
  const unsigned short flags[] = {kKaCmpIgnoreCase, kKaCmpIgnoreDiacritics, kKaCmpRunningDifference,
                                  kKaCmpStepFlag};
  int differing = 0;
  for (int i = 0; i < 1500; ++i) {
    std::string value;
    for (size_t n = rng() % 10; n > 0; --n) {
      value.push_back(kByteWalkAlphabet[rng() % (sizeof kByteWalkAlphabet - 1)]);
    }
    if (i % 50 == 0) value += "\xDF";
    const std::string pattern = ByteWalkPattern(value, rng);
    for (unsigned bits = 0; bits < 16; ++bits) {
      unsigned short op = 0;
      for (unsigned f = 0; f < 4; ++f) {
        if ((bits >> f & 1) != 0) op = static_cast<unsigned short>(op | flags[f]);
      }
      for (short max : maxima) {
        for (unsigned char mode = 0; mode < 2; ++mode) {
          int fastRunning = 7;
          int generalRunning = 7;
          const int fast = KaStrCmp(1, language, value.c_str(), 1, language, pattern.c_str(), op,
                                    max, mode, &fastRunning);
          const int general =
              ka::detail::KaStrCmpGeneral(1, language, value.c_str(), 1, language, pattern.c_str(),
                                          op, max, mode, &generalRunning);
          if (fast != general || fastRunning != generalRunning) {
            ADD_FAILURE() << "value \"" << value << "\" pattern \"" << pattern << "\" op " << op
                          << " max " << max << " mode " << int{mode} << ": " << fast << " (running "
                          << fastRunning << ") against " << general << " (running "
                          << generalRunning << ")";
            if (++differing > 10) return;
          }
        }
      }
    }
  }
}

// 0 and 3 key letters by base letter first; 20 keeps the raw order.
INSTANTIATE_TEST_SUITE_P(Languages, ByteWalkTest, ::testing::Values(0, 3, 20));

TEST(TableWalk, DefaultCodeSetAndUnknownSetsStillCompare) {
  // 255 takes the default 16-bit set through the iterator; an unknown set
  // compares its units as undefined orders. Both answer as before.
  const unsigned short abc[] = {'a', 'b', 'c', 0};
  const unsigned short abd[] = {'a', 'b', 'd', 0};
  EXPECT_LT(KaStrCmp(255, 0, abc, 253, 0, abd, 16, -1, 1, nullptr), 0);
  EXPECT_EQ(ka::detail::KaStrCmpGeneral(200, 0, "ab", 200, 0, "ac", 16, -1, 1, nullptr),
            KaStrCmp(200, 0, "ab", 200, 0, "ac", 16, -1, 1, nullptr));
}
