// KaIString and KaCaseIString: the folding of every byte, the comparison and its
// ordering laws, construction, numbers, and the byte edits at their bounds.
#include "katypemgr/kaistring.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <utility>

#include "kai18n/codeset.h"
#include "string/folding.h"

namespace {

using CmpFn = int (*)(const char*, const char*, unsigned short, unsigned short, unsigned short);
constexpr CmpFn kI = KaIStringCmp;
constexpr CmpFn kCI = KaCaseIStringCmp;
constexpr unsigned short kRaw = 0x80;
constexpr unsigned short kWeigh = 0x20;
using Mode = std::pair<CmpFn, unsigned short>;  // a compare routine and the flags it gets

int Sign(int v) { return (v > 0) - (v < 0); }

// Empty content must leave no buffer, so an expected "" means a null buffer.
template <class S>
void ExpectText(const std::string& expected, const S& s) {
  EXPECT_EQ(expected.empty(), s.StrGet() == nullptr);
  EXPECT_EQ(expected, s.StrGet() == nullptr ? "" : s.StrGet());
  EXPECT_EQ(expected.size(), s.Len());
  EXPECT_EQ(expected.empty(), !s);
}

// --- Folding: every byte against the alphabets written out by hand ------------------------

// Sort bytes of 0x40..0x7F and 0xC0..0xFF, then the extras of 0xC0..0xFF; 16 to a row.
// 0x00..0x3F keep their value, 0x80..0x9F move up by 0x60, 0xA0..0xBF by 0x10.
struct Alphabet {
  const char* sorts[8];
  const char* extras[4];
  ka::FoldedByte smallOe;  // 0x9C
};
constexpr Alphabet kIAlphabet = {
    {"40545B5E61696F7173797F8183858790", "97999B9D9FA5ABADAFB3B74243444546",
     "414E5A5C60646E7072747E808284868A", "96989A9C9EA0AAACAEB0B64748494A4B",
     "5454545454BDB95E6969696979797979", "638990909090904CBBA5A5A5A5B3BF9C",
     "4E4E4E4E4EBCB85C6464646474747474", "62888A8A8A8A8A4DBAA0A0A0A0B0BEB0"},
    {"03020405010000010302040103020401", "0000030204050100000302040102009C",
     "03020405010000010302040103020401", "00000302040501000003020401020001"},
    {0x8A, 0x64}};
constexpr Alphabet kCaseIAlphabet = {
    {"40545B5E61696F7173797F8183858790", "97999B9D9FA5ABADAFB3B74243444546",
     "41545B5E61696F7173797F8183858790", "97999B9D9FA5ABADAFB3B74748494A4B",
     "5454545454BDB95E6969696979797979", "638990909090904CBBA5A5A5A5B3BF9D",
     "5454545454BDB95E6969696979797979", "638990909090904DBBA5A5A5A5B3BFB3"},
    {"03020405010000010302040103020401", "0000030204050100000302040102009D",
     "03020405010000010302040103020401", "00000302040501000003020401020001"},
    {0x90, 0x69}};

unsigned char RowByte(const char* row, unsigned col) {
  return static_cast<unsigned char>(std::stoul(std::string(row).substr(2 * col, 2), nullptr, 16));
}

using Folding = std::array<ka::FoldedByte, 256>;

Folding Expected(const Alphabet& a) {
  Folding f{};
  for (unsigned c = 0; c < 256; ++c) f[c].sort = c + (c >= 0xA0 ? 0x10 : c >= 0x80 ? 0x60 : 0);
  f[0x8C] = {0x90, 0x69};
  f[0x9C] = a.smallOe;
  f[0x9F] = {0xB3, 0x01};
  for (unsigned i = 0; i < 128; ++i) {
    const unsigned c = i < 64 ? 0x40 + i : 0x80 + i;
    f[c].sort = RowByte(a.sorts[i / 16], i % 16);
    if (c >= 0xC0) f[c].extra = RowByte(a.extras[(i - 64) / 16], i % 16);
  }
  return f;
}

TEST(Folding, EveryByteFoldsAsWritten) {
  const Folding i = Expected(kIAlphabet), ci = Expected(kCaseIAlphabet);
  for (unsigned c = 0; c < 256; ++c) {
    SCOPED_TRACE(::testing::Message() << "byte " << c);
    const auto byte = static_cast<unsigned char>(c);
    EXPECT_EQ(i[c].sort, ka::FoldIStringByte(byte).sort);
    EXPECT_EQ(i[c].extra, ka::FoldIStringByte(byte).extra);
    EXPECT_EQ(ci[c].sort, ka::FoldCaseIStringByte(byte).sort);
    EXPECT_EQ(ci[c].extra, ka::FoldCaseIStringByte(byte).extra);
  }
}

// One folded byte against one raw byte, from the written alphabet: weighed, an extra adds
// 1..8 or lowers the sort byte by one; expanding, a second sort byte meets the terminator.
int AgainstRaw(ka::FoldedByte f, unsigned raw, bool weigh) {
  int sort = f.sort;
  if (weigh && f.extra != 0) sort = f.extra < 9 ? sort + f.extra : sort - 1;
  if (sort != static_cast<int>(raw)) return sort - static_cast<int>(raw);
  return !weigh && f.extra >= 9 ? f.extra : 0;
}

TEST(Folding, CompareTakesEveryByteThroughItsAlphabet) {
  const Folding i = Expected(kIAlphabet), ci = Expected(kCaseIAlphabet);
  for (const auto& [cmp, flags] :
       {Mode{kI, 0}, Mode{kI, kWeigh}, Mode{kCI, 0}, Mode{kCI, kWeigh}}) {
    SCOPED_TRACE(::testing::Message() << (cmp == kI ? "KaIString" : "KaCaseIString") << flags);
    const bool weigh = cmp == kCI && flags == kWeigh;  // KaIString has no diacritic weights
    for (unsigned c = 1; c < 256; ++c) {
      for (unsigned x = 1; x < 256; ++x) {
        const char folded[2] = {static_cast<char>(c), 0}, raw[2] = {static_cast<char>(x), 0};
        const int expected = AgainstRaw((cmp == kI ? i : ci)[c], x, weigh);
        ASSERT_EQ(expected, cmp(folded, raw, 0, flags, kRaw)) << c << " vs " << x;
        // Raw on the left: its flags weigh the right side, where a second sort byte waits.
        ASSERT_EQ(-expected, cmp(raw, folded, 0, kRaw | flags, 0)) << x << " vs " << c;
      }
    }
  }
}

// --- Comparison ------------------------------------------------------------------------------

struct CmpCase {
  CmpFn cmp;
  const char *s1, *s2;
  unsigned short flags1, flags2, maxLength;
  int sign;
  const char* why;
};
constexpr CmpCase kCmpCases[] = {
    {kCI, "Abc", "aBC", 0, 0, 0, 0, "case is ignored"},
    {kCI, "e", "\xE9", 0, 0, 0, 0, "diacritics count for nothing by default"},
    {kCI, "e", "\xE9", kWeigh, 0, 0, -1, "bit 5: the acute sorts after the plain letter"},
    {kCI, "e", "\xE9", 0, kWeigh, 0, 0, "only the left flags weigh diacritics"},
    {kCI, "\xDF", "ss", 0, 0, 0, 0, "sharp s expands into two letters"},
    {kCI, "\xDF", "ssx", 0, 0, 0, 0, "the walk ends one pair after a terminator"},
    {kCI, "\xDF", "s", 0, 0, 0, 1, "the second letter meets the terminator"},
    {kCI, "\xDF\x61", "ssa", 0, 0, 0, 0, "the word goes on after the expansion"},
    {kCI, "\xDF", "ss", kWeigh, 0, 0, -1, "weighed, sharp s sorts one below s"},
    {kI, "ab", "A", 0, 0, 0, -1, "KaIString: small letters just before capitals"},
    {kI, nullptr, "", 0, 0, 0, -1, "null before empty"},
    {kCI, "", nullptr, 0, 0, 0, 1, "empty after null"},
    {kCI, nullptr, nullptr, 0, 0, 0, 0, "two nulls are equal"},
    {kI, "a", "ab", 0, 0, 0, -1, "a prefix sorts first; 0 is no limit"},
    {kI, "abc", "abd", 0, 0, 2, 0, "two pairs compared"},
    {kI, "abc", "abd", 0, 0, 3, -1, "three pairs compared"},
    {kCI, "\xDFx", "ssy", 0, 0, 2, 0, "a waiting sort byte counts as a pair"},
    {kI, "a", "A", kRaw, kRaw, 0, 1, "raw bytes: 0x61 above 0x41"},
    {kCI, "Abc", "aBC", kRaw | kWeigh, kRaw, 0, -1, "raw bytes are neither folded nor weighed"},
};

// The operators compare all of both texts, each side with its own flags.
template <class S>
void ExpectOperators(const CmpCase& c) {
  S a(c.s1), b(c.s2);
  a.SetFlags(c.flags1);
  b.SetFlags(c.flags2);
  EXPECT_EQ(c.sign, (a > b) - (a < b));
  EXPECT_EQ(c.sign, (a >= b) - (a <= b));
  EXPECT_EQ(c.sign == 0 ? 1 : -1, (a == b) - (a != b));
}

TEST(FoldedCompare, EdgeCasesAndOperators) {
  for (const CmpCase& c : kCmpCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.sign, Sign(c.cmp(c.s1, c.s2, c.maxLength, c.flags1, c.flags2)));
    // A string object holds no null text apart from the empty one.
    if (c.maxLength != 0 || c.s1 == nullptr || c.s2 == nullptr) continue;
    c.cmp == kI ? ExpectOperators<KaIString>(c) : ExpectOperators<KaCaseIString>(c);
  }
}

TEST(FoldedCompare, AnswersTheByteDifferenceToTheEndOfTheLongestText) {
  EXPECT_EQ(-0x61, KaIStringCmp("", "a", 0, 0, 0)) << "empty: the first bytes, unfolded";
  EXPECT_EQ(0xDF, KaCaseIStringCmp("\xDF", "", 0, kWeigh, 0)) << "... unsigned";
  // The longest texts, one ending in a sharp s: 65535 pairs, the last its second letter.
  const std::string a = std::string(65533, 'q') + '\xDF', b = a.substr(0, 65533) + 's';
  EXPECT_LT(0, KaCaseIStringCmp(a.c_str(), b.c_str(), 0, 0, 0)) << "0 reaches the last pair";
  EXPECT_EQ(0, KaCaseIStringCmp(a.c_str(), b.c_str(), 65534, 0, 0)) << "but not past the limit";
}

// Words that meet on every rule: case, diacritics, expansions, prefixes, bytes of each range.
const char* const kWords[] = {
    nullptr, "",     "a",    "A",    "ab",   "Ab",   "aB",        "b",    "B",         "e",
    "E",     "\xE9", "\xC9", "ete",  "z",    "Z",    "\xE9t\xE9", "ss",   "\xC9T\xC9", "\xDF",
    "ssa",   "SS",   "st",   "\xC6", "\xE6", "ae",   "\x9C",      "OE",   "\x8C",      "0",
    " ",     "\xFF", "\x9F", "Y",    "\xA0", "\x80", "\x7F",      "\xB5", "\xF7",
};

bool Expands(const char* word) {
  return word != nullptr && std::string(word).find_first_of("\x8C\x9C\xDF") != std::string::npos;
}

TEST(FoldedCompare, OrderingLaws) {
  for (const auto& [f, flags] : {Mode{kI, 0}, Mode{kCI, 0}, Mode{kCI, kWeigh}, Mode{kI, kRaw}}) {
    SCOPED_TRACE(::testing::Message() << (f == kI ? "KaIString" : "KaCaseIString") << flags);
    const auto cmp = [&](const char* x, const char* y) { return Sign(f(x, y, 0, flags, flags)); };
    for (const char* a : kWords) {
      for (const char* b : kWords) {
        ASSERT_EQ(cmp(a, b), -cmp(b, a)) << "antisymmetry: " << (a ? a : "<null>") << " / " << b;
        for (const char* c : kWords) {
          // Transitivity holds where no word ends inside an expansion (weighed or raw: none).
          if (flags == 0 && (Expands(a) || Expands(b) || Expands(c))) continue;
          ASSERT_FALSE(cmp(a, b) <= 0 && cmp(b, c) <= 0 && cmp(a, c) > 0) << "transitivity";
        }
      }
    }
  }
}

// --- The walk against a plain reading of it -------------------------------------------------

// The documented walk, one pair at a time, straight from the folding of each byte: the
// compare routines skip equal prefixes and read bytes in step, and must answer the same.
struct RefSide {
  const unsigned char* at;
  bool raw;
  unsigned char pending = 0;
};

int RefTake(RefSide& side, ka::FoldedByte (*fold)(unsigned char), bool weigh) {
  if (side.pending != 0) return std::exchange(side.pending, 0);
  const unsigned char c = *side.at;
  if (c != 0) ++side.at;
  if (side.raw) return c;
  const ka::FoldedByte f = fold(c);
  if (weigh && f.extra != 0) return f.extra < 9 ? f.sort + f.extra : f.sort - 1;
  if (f.extra >= 9) side.pending = f.extra;
  return f.sort;
}

int RefCmp(CmpFn cmp, const char* s1, const char* s2, unsigned short maxLength,
           unsigned short flags1, unsigned short flags2) {
  if (s1 == nullptr || s2 == nullptr) return (s1 != nullptr) - (s2 != nullptr);
  RefSide a{reinterpret_cast<const unsigned char*>(s1), (flags1 & kRaw) != 0};
  RefSide b{reinterpret_cast<const unsigned char*>(s2), (flags2 & kRaw) != 0};
  if (*a.at == 0 || *b.at == 0) return *a.at - *b.at;
  const auto fold = cmp == kI ? ka::FoldIStringByte : ka::FoldCaseIStringByte;
  const bool weigh = cmp == kCI && (flags1 & kWeigh) != 0;
  for (int taken = 0; taken < (maxLength == 0 ? 65535 : maxLength); ++taken) {
    const bool last = *a.at == 0 || *b.at == 0;
    const int difference = RefTake(a, fold, weigh) - RefTake(b, fold, weigh);
    if (difference != 0 || last) return difference;
  }
  return 0;
}

// Bytes that meet on the rules: expansions (and their spelled-out letters), ligatures that
// do not expand, case pairs, accents, and now and then any byte.
std::string RandomText(std::mt19937& rng) {
  static const unsigned char kBytes[] = {0xDF, 0x9C, 0x8C, 0xE6, 0xC6, 's',  'S',  'o',  'O',
                                         'e',  'E',  'a',  'A',  0xE9, 0xC9, 0xFF, 0x9F, 'y'};
  std::string text(rng() % 14, ' ');
  for (char& c : text) {
    const unsigned r = rng() % 8;
    c = static_cast<char>(r == 0 ? 1 + rng() % 255 : kBytes[rng() % sizeof kBytes]);
  }
  return text;
}

// The second text of a pair shares a prefix with the first, as neighbouring keys do, and may
// spell an expansion out or change one byte.
std::string Neighbour(const std::string& text, std::mt19937& rng) {
  std::string out = text.substr(0, rng() % (text.size() + 1));
  switch (rng() % 4) {
    case 0:
      return out + RandomText(rng);
    case 1:
      return out + (rng() % 2 ? "ss" : "\xDF") + text.substr(std::min(out.size() + 1, text.size()));
    case 2:
      return text.substr(0, text.size() - (text.empty() ? 0 : rng() % 2));
    default:
      return text;
  }
}

TEST(FoldedCompare, AnswersAsThePlainWalkOnRandomTexts) {
  std::mt19937 rng(20261125);
  const unsigned short kFlags[] = {0, kRaw, kWeigh, kRaw | kWeigh, 0x7F5F};
  const unsigned short kLimits[] = {0, 1, 2, 3, 4, 7, 65535};
  for (int n = 0; n < 200000; ++n) {
    std::string x = RandomText(rng), y = Neighbour(x, rng);
    if (rng() % 2) std::swap(x, y);
    const CmpFn cmp = rng() % 2 ? kI : kCI;
    const unsigned short flags1 = kFlags[rng() % 5], flags2 = kFlags[rng() % 5];
    const unsigned short limit = rng() % 3 ? kLimits[rng() % 7] : rng() % 30;
    const char* s1 = rng() % 64 ? x.c_str() : nullptr;
    const char* s2 = rng() % 64 ? y.c_str() : nullptr;
    ASSERT_EQ(RefCmp(cmp, s1, s2, limit, flags1, flags2), cmp(s1, s2, limit, flags1, flags2))
        << (cmp == kI ? "KaIString " : "KaCaseIString ") << ::testing::PrintToString(x) << " vs "
        << ::testing::PrintToString(y) << " limit " << limit << " flags " << flags1 << "/"
        << flags2;
  }
}

// Long equal prefixes full of expansions, cut by the limit at every pair around their end.
TEST(FoldedCompare, LimitInsideALongEqualPrefix) {
  for (const char* unit : {"a", "\xDF", "a\x9C",
                           "\xDF\x8C"
                           "A"}) {
    std::string prefix;
    for (int i = 0; i < 40; ++i) prefix += unit;
    for (const char* tail : {"", "s", "x", "\xDF", "ss", "\xE6"}) {
      const std::string x = prefix + "b", y = prefix + tail;
      for (unsigned short limit = 0; limit < 130; ++limit) {
        for (const auto& [cmp, flags] : {Mode{kI, 0}, Mode{kCI, 0}, Mode{kCI, kWeigh}}) {
          ASSERT_EQ(RefCmp(cmp, x.c_str(), y.c_str(), limit, flags, flags),
                    cmp(x.c_str(), y.c_str(), limit, flags, flags))
              << ::testing::PrintToString(unit) << tail << " limit " << limit << " " << flags;
        }
      }
    }
  }
}

KaCaseIString& Flag(KaCaseIString& s) {
  s.SetFlags(0xA0);
  return s;
}

TEST(FoldedFlags, EveryConstructionAndAssignmentClearsThem) {
  KaCaseIString s("y"), source("x");
  EXPECT_EQ(0, KaCaseIString(Flag(source)).GetFlags()) << "copy";
  EXPECT_EQ(0, (Flag(s) = source).GetFlags()) << "copy assignment";
  EXPECT_EQ(0, (Flag(s) = "z").GetFlags()) << "text assignment";
  EXPECT_EQ(0, (Flag(s) = std::as_const(s)).GetFlags()) << "self-assignment";
  ExpectText("z", s);
  EXPECT_EQ(0, (Flag(s) = KaCaseIString("w")).GetFlags()) << "move assignment";
  EXPECT_EQ(0, (Flag(s) + source).GetFlags()) << "operator+ makes a new string";
  EXPECT_EQ(0, s.Copy(0, 1).GetFlags()) << "so does Copy";
  KaCaseIString moved(std::move(source));
  EXPECT_EQ(0, moved.GetFlags()) << "move";
  EXPECT_EQ(nullptr, source.StrGet()) << "the source is left empty";
  s.Insert("u", 0);
  EXPECT_EQ(0xA0, s.ToUpper().GetFlags()) << "edits keep the flags";
  ExpectText("UW", s);
}

// --- Both classes alike ----------------------------------------------------------------------

template <class S>
class FoldedStringTest : public ::testing::Test {};
using BothClasses = ::testing::Types<KaIString, KaCaseIString>;
TYPED_TEST_SUITE(FoldedStringTest, BothClasses);

template <class S>
S Edited(S s, void (*edit)(S&)) {
  edit(s);
  return s;
}

TYPED_TEST(FoldedStringTest, TextAfterConstructionAndEdits) {
  using S = TypeParam;
  using E = void (*)(S&);
  const std::string big(70000, 'x'), x(65534, 'x'), a(40000, 'a');
  const S abc("abc");
  const std::tuple<S, std::string, const char*> cases[] = {
      // value, its text, why
      {S(), "", "default"},
      {S('\0'), "", "a zero byte"},
      {S(static_cast<const char*>(nullptr)), "", "null text"},
      {S(""), "", "empty text"},
      {S(nullptr, 5), "", "null counted text"},
      {S("\0abc", 4), "", "counted text stops at a zero byte"},
      {S("ab\0cd", 5), "ab", "... wherever it is"},
      {S("abcdef", 2), "ab", "counted text stops at n"},
      {S("abcdef", 65535), "abcdef", "65535: up to the terminator"},
      {S(big.c_str()), x, "text cut at 65534"},
      {S('x'), "x", "one byte"},
      {S(static_cast<short>(-32768)), "-32768", "short"},
      {S(INT_MIN), "-2147483648", "int"},
      {S(4294967295u), "4294967295", "unsigned int prints unsigned"},
      {S(0.1), "0.10000000000000001", "double with 17 digits"},
      {S(LLONG_MIN), "-9223372036854775808", "64-bit"},
      {S(ULLONG_MAX), "18446744073709551615", "unsigned 64-bit"},
      {Edited<S>("abc", [](S& s) { s = ""; }), "", "assigned empty"},
      {Edited<S>("abc", [](S& s) { s = nullptr; }), "", "assigned null"},
      {Edited<S>(S(), E([](S& s) { s = std::string(70000, 'x').c_str(); })), x, "assigned, cut"},
      {Edited<S>("abc", [](S& s) { s = s.StrGet() + 1; }), "bc", "assigned from its own buffer"},
      {S("abcdef").Copy(2, 3), "cde", "Copy inside"},
      {S("abcdef").Copy(4, 65535), "ef", "Copy to the end"},
      {S("abcdef").Copy(6, 1), "", "Copy from the end"},
      {Edited<S>("abcdef", [](S& s) { s.Cut(1, 2); }), "adef", "Cut inside"},
      {Edited<S>("abcdef", [](S& s) { s.Cut(3, 65535); }), "abc", "Cut to the end"},
      {Edited<S>("abcdef", [](S& s) { s.Cut(0, 65535); }), "", "Cut all"},
      {Edited<S>("abcdef", [](S& s) { s.Cut(6, 1); }), "abcdef", "Cut from the end"},
      {Edited<S>("abc", [](S& s) { s.Insert("XY", 1); }), "aXYbc", "Insert inside"},
      {Edited<S>("abc", [](S& s) { s.Insert("XY", 65535); }), "abcXY", "Insert past the end"},
      {Edited<S>("abc", [](S& s) { s.Insert(s, 1); }), "aabcbc", "Insert itself"},
      {Edited<S>(x.c_str(), [](S& s) { s.Insert("HEAD", 0); }), "HEAD" + x.substr(4), "... cut"},
      {Edited<S>("abcdef", [](S& s) { s.Replace("XY", 1); }), "aXYdef", "Replace inside"},
      {Edited<S>("abc", [](S& s) { s.Replace("xyz", 2); }), "abxyz", "Replace grows the text"},
      {Edited<S>("abc", [](S& s) { s.Replace("XY", 10); }), "abcXY", "Replace past the end"},
      {Edited<S>("abc", [](S& s) { s.Replace(s, 1); }), "aabc", "Replace with itself"},
      {Edited<S>(x.c_str(), [](S& s) { s.Replace("TAIL", 65533); }), x.substr(1) + "T", "cut"},
      {Edited<S>("ab", [](S& s) { s.Expand(5, '.'); }), "ab...", "Expand pads"},
      {Edited<S>("abc", [](S& s) { s.Expand(1, '.'); }), "abc", "Expand never shortens"},
      {Edited<S>("ab", [](S& s) { s.Expand(5, '\0'); }), "ab", "Expand with a zero byte"},
      {Edited<S>("x", [](S& s) { s.Expand(65535, 'x'); }), x, "Expand cut at 65534"},
      {Edited<S>("abc", [](S& s) { s.Fill(2, 'z'); }), "zz", "Fill"},
      {Edited<S>("abc", [](S& s) { s.Fill(3, '\0'); }), "", "Fill with a zero byte"},
      {Edited<S>("ab", [](S& s) { s += "cd"; }), "abcd", "append"},
      {Edited<S>(S(), E([](S& s) { s += "xy"; })), "xy", "append to empty"},
      {Edited<S>("abc", [](S& s) { s += s; }), "abcabc", "append itself"},
      {Edited<S>(a.c_str(), [](S& s) { s += s; }), a + a.substr(0, 25534), "append cut"},
      {"<" + S("ab") + '>', "<ab>", "join"},
      {Edited<S>(" a 0 ", [](S& s) { s.SpaceToZero(); }), "0a000", "blanks to zeros"},
      {Edited<S>(" 0b0 ", [](S& s) { s.ZeroToSpace(); }), "  b  ", "zeros to blanks"},
      {Edited<S>(S(), E([](S& s) { s.SpaceToZero(), s.ZeroToSpace(), s.ToUpper(); })), "", "empty"},
      {Edited<S>("abc", [](S& s) { s[1] = 'X'; }), "aXc", "index writes the text"},
      {Edited<S>("abc", [](S& s) { s[1] = '\0'; }), "a", "... and may shorten it"},
      {Edited<S>("abc", [](S& s) { s[3] = 'Z'; }), "abc", "the terminator is out of reach"},
      {Edited<S>("abc", [](S& s) { s[-1] = 'Z'; }), "abc", "so is a negative position"},
      {Edited<S>("abc", [](S& s) { s[65535] = 'Z'; }), "abc", "and one far past the end"},
      {Edited<S>(S(), E([](S& s) { s[0] = 'e'; })), "", "an empty string has no bytes"},
      {Edited<S>("abc", [](S& s) { s[1] = (s[7] = 'Z', s[8]); }), "a", "a stray byte reads 0"},
      {S(abc[2]), "c", "index reads the text"},
      {S(abc[3]), "", "... and 0 past it"},
      {S(abc[-1]), "", "... or before it"},
      {S(S("abcabc").SubStringPos("bc", 2)), "4", "SubStringPos from a start"},
      {S(S("abcabc").SubStringPos("abc", 4)), "-1", "... or none"},
      {S(S("aBc").SubStringPos("b")), "-1", "... of exact bytes: case counts"},
      {S(S("abc").SubStringPos("", 3)), "3", "... empty at the end"},
      {S(S("abc").SubStringPos("", 4)), "-1", "... but not past it"},
      {S(S("").SubStringPos("")), "0", "... empty in empty"},
  };
  for (const auto& [value, text, why] : cases) {
    SCOPED_TRACE(why);
    ExpectText(text, value);
  }
}

// Code set 1's case pairs, from the character properties: a byte maps when its case does.
unsigned char CaseInCodeSet1(unsigned char c, bool upper) {
  const KaCodeSet* set = KaCodeSet::Get(1);
  const KaUnicodeProps props = set->GetUnicodeProps(c, 0);
  const unsigned short mapped = upper ? props.upper : props.lower;
  const unsigned short back = mapped == 0 ? '?' : set->FromUnicode(mapped);
  return back == '?' ? c : static_cast<unsigned char>(back);
}

TYPED_TEST(FoldedStringTest, CaseMapsEveryByteAsCodeSet1Does) {
  using S = TypeParam;
  std::string all;
  for (unsigned c = 1; c < 256; ++c) all += static_cast<char>(c);
  S upper(all.c_str()), lower(all.c_str());
  ASSERT_EQ(255, upper.ToUpper().Len());
  ASSERT_EQ(255, lower.ToLower().Len());
  for (unsigned c = 1; c < 256; ++c) {
    SCOPED_TRACE(::testing::Message() << "byte " << c);
    const auto byte = static_cast<unsigned char>(c);
    EXPECT_EQ(CaseInCodeSet1(byte, true), static_cast<unsigned char>(upper[byte - 1]));
    EXPECT_EQ(CaseInCodeSet1(byte, false), static_cast<unsigned char>(lower[byte - 1]));
  }
}

TYPED_TEST(FoldedStringTest, NumbersReadFromTheText) {
  using S = TypeParam;
  // The text, then what it reads as: short, int, long long, double.
  const std::tuple<const char*, short, int, long long, double, const char*> cases[] = {
      {" \v+42abc", 42, 42, 42, 42.0, "blanks and a plus before, text after"},
      {"\t-17", -17, -17, -17, -17.0, "tab and minus"},
      {"-12.5e1", -12, -12, -12, -125.0, "integers stop at the point"},
      {".5", 0, 0, 0, 0.5, "fraction without integer digits"},
      {"-99999999999", -32768, INT_MIN, -99999999999LL, -99999999999.0, "int clamps"},
      {"99999999999999999999", 32767, INT_MAX, LLONG_MAX, 1e20, "long long saturates"},
      {"-9223372036854775808", -32768, INT_MIN, LLONG_MIN, -9223372036854775808.0, "most negative"},
      {"1e400", 1, 1, 1, HUGE_VAL, "double overflows to infinity"},
      {"- 5", 0, 0, 0, 0.0, "the sign must touch the digits"},
      {"0x1A", 0, 0, 0, 0.0, "no hexadecimal"},
      {"inf", 0, 0, 0, 0.0, "no infinity"},
      {"", 0, 0, 0, 0.0, "empty"},
  };
  for (const auto& [text, sh, i, ll, d, why] : cases) {
    SCOPED_TRACE(why);
    const S s(text);
    EXPECT_EQ(sh, static_cast<short>(s));
    EXPECT_EQ(i, static_cast<int>(s));
    EXPECT_EQ(ll, static_cast<long long>(s));
    EXPECT_DOUBLE_EQ(d, static_cast<double>(s));
  }
  EXPECT_EQ(0.1, static_cast<double>(S(0.1))) << "a printed double reads back exactly";
}

}  // namespace
