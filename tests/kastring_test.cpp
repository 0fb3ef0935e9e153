// KaString: the edit routine and its 65532-byte limit, searching, numbers, code sets.
#include "katypemgr/kastring.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "kabase/assert.h"
#include "kabase/config.h"
#include "kai18n/langctx.h"
#include "kastring_test_util.h"

namespace {

using ka::test::Text;
using ka::test::Units;
using ka::test::UnitsOf;
using ka::test::Wide;

// Captures "String overflow" reports; the configuration switch is set per test.
std::vector<std::string> g_reports;

class StringTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_reports.clear();
    KaSetAssertReceiver([](const char* text, const char* source, int line) {
      g_reports.push_back(std::string(text) + "|" + source + "|" + std::to_string(line));
    });
    DefaultConfig().SetInt("debug", "stringOverflow", 1);
  }
  void TearDown() override {
    KaSetAssertReceiver(nullptr);
    DefaultConfig().Remove("debug", "stringOverflow");
    KaLanguageContext::Reset();
  }
};

// Defined first, so that the two threads make the first fetch of the process.
TEST_F(StringTest, WildcardsDefaultToTheOrdersOfCodeSet1EvenFromTwoThreads) {
  unsigned short seen[2] = {};
  std::thread a([&] { seen[0] = KaString::GetAsterisk(); });
  std::thread b([&] { seen[1] = KaString::GetAsterisk(); });
  a.join();
  b.join();
  EXPECT_EQ(80 + 79, seen[0]);
  EXPECT_EQ(80 + 79, seen[1]);
  EXPECT_EQ(80 + 42, KaString::GetQuestion());
  EXPECT_EQ(80 + 80, KaString::GetEscape());
}

TEST_F(StringTest, EmptyContentHasNoBuffer) {
  const KaString cases[] = {KaString(char(0)), KaString(static_cast<unsigned short>(0)),
                            KaString(static_cast<const char*>(nullptr)),
                            KaString("abc", static_cast<unsigned short>(0)),
                            KaString("abc").Copy(3, 1)};
  for (const KaString& s : cases) {
    EXPECT_EQ(nullptr, s.StrGet());
    EXPECT_EQ(0, s.Size());
  }
}

TEST_F(StringTest, NumbersPrintAsTheirTypes) {
  EXPECT_EQ("-32768", Text(KaString(static_cast<short>(-32768))));
  EXPECT_EQ("2147483647", Text(KaString(2147483647)));
  EXPECT_EQ("-1", Text(KaString(4294967295u))) << "unsigned int prints signed, deliberately";
  EXPECT_EQ("0.10000000000000001", Text(KaString(0.1))) << "%.17g";
  EXPECT_EQ("-9223372036854775808", Text(KaString(LLONG_MIN)));
  EXPECT_EQ("18446744073709551615", Text(KaString(ULLONG_MAX)));
}

TEST_F(StringTest, TextEndsAtItsFirstZeroUnit) {
  const KaString s("ab\0cd", 5);
  EXPECT_EQ(2, s.Len());
  EXPECT_EQ(3, s.Size()) << "the size matches what a scan for the terminator finds";
  const unsigned short wide[] = {'p', 0, 'q'};
  EXPECT_EQ(1, KaString(wide, 3).Len());
  EXPECT_EQ(nullptr, KaString("\0abc", 4).StrGet()) << "nothing before the zero";
}

struct LimitCase {
  const char* why;
  void (*edit)(KaString&);
  bool wide;
};

KaString Long(bool wide, unsigned short units) {
  KaString s = wide ? Wide(u"x") : KaString("x");
  s.Fill(units, static_cast<unsigned short>('x'));
  return s;
}

const LimitCase kLimitCases[] = {
    {"append", [](KaString& s) { s << KaString("0123456789"); }, false},
    {"append wide", [](KaString& s) { s << Wide(u"0123456789"); }, true},
    {"insert wide", [](KaString& s) { s.Insert(KaString("0123456789"), 3); }, true},
    {"fill", [](KaString& s) { s.Fill(65535, 'y'); }, false},
    {"expand", [](KaString& s) { s.Expand(65535, 'y'); }, false},
    {"replace past the end", [](KaString& s) { s.Replace(KaString("0123456789"), 65530); }, false},
};

TEST_F(StringTest, EveryEditStopsAtTheLimitAndReportsWhenSwitchedOn) {
  for (const LimitCase& c : kLimitCases) {
    SCOPED_TRACE(c.why);
    g_reports.clear();
    KaString s = Long(c.wide, c.wide ? 32760 : 65525);
    c.edit(s);
    EXPECT_EQ(KaString::kMaxSize, s.Size());
    EXPECT_EQ(c.wide ? 32765 : 65531, s.Len()) << "the terminator is kept";
    EXPECT_EQ("String overflow|src/kastring|1110", g_reports.empty() ? "" : g_reports.back());
  }
  g_reports.clear();
  KaString s = Long(false, 65530);
  s << 'z';
  EXPECT_EQ(65532, s.Size());
  EXPECT_EQ('z', s.UnitAt(65530));
  EXPECT_TRUE(g_reports.empty()) << "exactly the limit";
  DefaultConfig().SetInt("debug", "stringOverflow", 0);
  s.Cut(65529, 2);
  s << "more";
  EXPECT_EQ(KaString::kMaxSize, s.Size());
  EXPECT_TRUE(g_reports.empty()) << "silent when switched off";
}

TEST_F(StringTest, AppendingConvertsIntoTheTargetsCodeSet) {
  KaString narrow("caf");
  narrow << Wide(u"\u00e9\u20ac\u4e00");
  EXPECT_EQ(1, narrow.CodeSet()) << "the target never changes width";
  EXPECT_EQ("caf\xE9\x80?", Text(narrow)) << "é and € exist in Windows-1252, 一 does not";
  KaString wide = Wide(u"x");
  wide << KaString("\xE9\x80");
  EXPECT_EQ((Units{'x', 0xE9, 0x20AC}), UnitsOf(wide));
  KaString latin2("a");
  ASSERT_EQ(0, latin2.SetCodeSetCode(3));
  latin2 << KaString("\xE9");                     // é from Windows-1252 is 0xE9 in ISO-8859-2 too
  latin2 << static_cast<unsigned short>(0x0142);  // ł, a Unicode unit
  EXPECT_EQ("a\xE9\xB3", Text(latin2));
}

struct EditCase {
  const char* start;
  void (*edit)(KaString&);
  const char* result;
  const char* why;
};
const EditCase kEditCases[] = {
    {"abcdef", [](KaString& s) { s = s.Copy(2, 65535); }, "cdef", "copy clips the count"},
    {"abcdef", [](KaString& s) { s.Cut(4, 65535); }, "abcd", "cut to the end"},
    {"a--b", [](KaString& s) { s.ReplaceAll(KaString("--"), KaString("")); }, "ab", "all by none"},
    {"xax", [](KaString& s) { s.ReplaceAll(KaString("x"), KaString("y"), 1); }, "xay", "all from"},
    {"a.b.c", [](KaString& s) { s.ReplaceAll('.', ','); }, "a,b,c", "replace characters"},
    {" \t ab c \r\n", [](KaString& s) { s.Trim(); }, "ab c", "trim"},
    {"   ", [](KaString& s) { s.Trim(); }, "", "only blanks"},
    {"abc", [](KaString& s) { s.Fill(4, '*'); }, "****", "fill replaces"},
    {"abc", [](KaString& s) { s.Fill(0, '*'); }, "", "fill with nothing"},
    {"ab", [](KaString& s) { s.Expand(5, '.'); }, "ab...", "expand"},
    {"abcdef", [](KaString& s) { s.Expand(3, '.'); }, "abcdef", "expand shorter does nothing"},
};

TEST_F(StringTest, EditsAsDocumented) {
  for (const EditCase& c : kEditCases) {
    SCOPED_TRACE(c.why);
    KaString s(c.start);
    c.edit(s);
    EXPECT_EQ(c.result, Text(s));
    EXPECT_EQ(s.IsEmpty(), s.StrGet() == nullptr) << "an empty result keeps no buffer";
  }
}

// Many edits on one string against std::string doing the same: the spare
// room behind the text must never show (size, terminator, content). Text
// taken from the string's own buffer must be read before the buffer is
// released or shifted; the strings outgrow a heap block's header, so a read
// of freed memory shows as wrong text even without a sanitizer.
TEST_F(StringTest, EditSequencesAgreeWithStdString) {
  for (const bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "2-byte" : "1-byte");
    KaString s = wide ? Wide(u"") : KaString("");
    std::u16string model;
    uint32_t seed = 12345;
    auto next = [&seed](uint32_t bound) {
      seed = seed * 1103515245u + 12345u;
      return (seed >> 8) % bound;
    };
    for (int step = 0; step < 3000; ++step) {
      std::u16string piece(next(12), u'a');
      for (char16_t& c : piece) c = static_cast<char16_t>(wide ? 0x3B1 + next(20) : 'a' + next(26));
      const KaString ka =
          wide ? Wide(piece) : KaString(std::string(piece.begin(), piece.end()).c_str());
      const size_t len = model.size();
      const std::u16string copy = model;
      const auto pos = static_cast<unsigned short>(next(static_cast<uint32_t>(len) + 3));
      switch (next(7)) {
        case 0:
          s << ka;
          model += piece;
          break;
        case 1:
          s.Insert(ka, pos);
          model.insert(std::min<size_t>(pos, len), piece);
          break;
        case 2:
          s.Replace(ka, pos);
          model.replace(std::min<size_t>(pos, len), piece.size(), piece);
          break;
        case 3: {
          const auto n = static_cast<unsigned short>(next(8));
          s.Cut(pos, n);
          if (pos < len) model.erase(pos, n);
          break;
        }
        case 4:  // the string itself as the source
          if (len >= 200) break;
          if (pos % 3 == 0) s << s;
          if (pos % 3 == 1) s.Insert(s, pos);
          if (pos % 3 == 2) s.Replace(s, pos);
          model.replace(pos % 3 == 0 ? len : std::min<size_t>(pos, len), pos % 3 == 1 ? 0 : len,
                        copy);
          break;
        case 5: {  // a text inside the own buffer: assigned or appended
          if (len == 0 || len >= 200) break;
          const unsigned k = next(static_cast<uint32_t>(len));
          const char* own = s.StrGet() + k * s.UnitWidth();
          const auto* ownWide = reinterpret_cast<const unsigned short*>(own);
          if (pos % 2 == 0) {
            wide ? (s = ownWide) : (s = own);
            model.erase(0, k);
          } else {
            wide ? (s << ownWide) : (s << own);
            model += copy.substr(k);
          }
          break;
        }
        default:
          s = s.Copy(0, pos);
          model.resize(std::min<size_t>(pos, len));
          break;
      }
      ASSERT_EQ(Units(model.begin(), model.end()), UnitsOf(s)) << "step " << step;
      ASSERT_EQ(model.empty() ? 0u : (model.size() + 1) * s.UnitWidth(), s.Size());
      ASSERT_EQ(model.empty(), s.StrGet() == nullptr);
      ASSERT_EQ(0, s.UnitAt(static_cast<unsigned short>(model.size()))) << "terminated";
    }
  }
}

TEST_F(StringTest, AnUnknownEditModeLeavesTheStringAsItWas) {
  for (const unsigned char mode : {0, 4, 200}) {
    SCOPED_TRACE(static_cast<int>(mode));
    KaString s("abc");
    s.EditUnits("xyz", s.CodeSet(), 1, 0, 3, 1, static_cast<KaString::EditMode>(mode));
    EXPECT_EQ("abc", Text(s));
    EXPECT_EQ(4, s.Size());
  }
}

#if defined(__SANITIZE_ADDRESS__)
#define KA_TEST_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KA_TEST_UNDER_ASAN 1
#endif
#endif

// Every unit of a full-size text replaced by a full-size text would be four
// gigabytes uncut. The result is cut at the limit like every other edit's,
// the answer is the number of occurrences, and the edit succeeds under an
// address-space limit of a gigabyte (not under the address sanitizer, whose
// shadow memory cannot live under such a limit).
TEST_F(StringTest, ReplaceAllPastTheLimitIsCutAndNeverBuiltBeyondIt) {
  const auto replaceAll = [] {
    KaString s = Long(false, 65531);
    KaString to;
    to.Fill(65531, 'y');
    return s.ReplaceAll(KaString("x"), to) == 65531 && s.Size() == KaString::kMaxSize &&
           s.Find('x') < 0;
  };
  EXPECT_TRUE(replaceAll());
  EXPECT_EQ(1u, g_reports.size());
#ifndef KA_TEST_UNDER_ASAN
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        rlimit limit{};
        getrlimit(RLIMIT_AS, &limit);
        limit.rlim_cur = rlim_t{1} << 30;
        setrlimit(RLIMIT_AS, &limit);
        std::exit(replaceAll() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
#endif
}

struct CaseSetCase {
  unsigned char codeSet;
  const char16_t* upper;  // "abcd" through ToUpper
  const char* why;
};
const CaseSetCase kCaseSetCases[] = {
    {1, u"ABCD", "8-bit set with a table"},
    {100, u"abcd", "1-byte set without a table: unchanged"},
    {253, u"ABCD", "Unicode"},
    {240, u"abcd", "2-byte set without a table: unchanged"},
    {255, u"abcd", "255 is a 2-byte set of its own, not the default 8-bit set"},
};

TEST_F(StringTest, CaseMappingsWriteTheStringsOwnCodeSet) {
  for (const CaseSetCase& c : kCaseSetCases) {
    SCOPED_TRACE(c.why);
    KaString s(c.codeSet, static_cast<unsigned char>(0));
    for (const char unit : {'a', 'b', 'c', 'd'}) {
      c.codeSet > 224 ? s << static_cast<unsigned short>(unit) : s << unit;
    }
    ASSERT_EQ(4, s.Len());
    const Units upper(c.upper, c.upper + 4);
    s.ToUpper();
    EXPECT_EQ(upper, UnitsOf(s));
    EXPECT_EQ(5 * s.UnitWidth(), s.Size());
    EXPECT_EQ(c.codeSet, s.CodeSet());
    s.ToLower();
    EXPECT_EQ((Units{'a', 'b', 'c', 'd'}), UnitsOf(s));
    KaCharToUpper toUpper;
    s.Transform(toUpper);
    EXPECT_EQ(upper, UnitsOf(s)) << "Transform";
  }
}

TEST_F(StringTest, FindsWithinTheRange) {
  const KaString s("abcabcab");
  EXPECT_EQ(3, s.Find(KaString("abc"), 1));
  EXPECT_EQ(-1, s.Find(KaString("abc"), 1, 5)) << "must end before the end position";
  EXPECT_EQ(3, s.Find(KaString("abc"), 1, 6));
  EXPECT_EQ(0, KaString().Find(KaString(""))) << "the empty text holds the empty needle";
  EXPECT_EQ(-1, KaString().Find(KaString(""), 1));
  EXPECT_EQ(-1, KaString().Find('a'));
  EXPECT_EQ(8, s.Find(KaString(""), 8)) << "at the very end";
  EXPECT_EQ(-1, s.Find(KaString(""), 9));
  EXPECT_EQ(-1, s.Find(KaString("a"), 60000));
  EXPECT_EQ(5, s.Find('c', 3));
  EXPECT_EQ(6, s.SubStringPos(KaString("ab"), 4));
  EXPECT_EQ(-1, Wide(u"abcabcab").Find(Wide(u"abc"), 1, 5)) << "the same bounds for 2-byte text";
}

TEST_F(StringTest, FindsAcrossCodeSets) {
  const KaString wide = Wide(u"na\u00efve caf\u00e9");
  EXPECT_EQ(2, wide.Find(KaString("\xEF")));
  EXPECT_EQ(9, wide.Find(KaString("\xE9")));
  EXPECT_EQ(9, wide.Find('\xE9'));
  EXPECT_EQ(1, KaString("caf\xE9").Find(Wide(u"af\u00e9")));
}

// What is read agrees with the C library; a blank or a plus sign first, or no
// text, is refused and the result cleared. The 32-bit forms clamp like a long.
TEST_F(StringTest, NumbersReadAsTheCLibraryReadsThem) {
  for (const char* text : {"42", "-17xyz", "0x1F", "017", "08", "-", "0x", "9223372036854775807",
                           "-9223372036854775808"}) {
    SCOPED_TRACE(text);
    long long a = 99, b = 99;
    EXPECT_EQ(0, KaString(text).Atoll(a));
    EXPECT_EQ(0, KaString(text).Strtoll(b));
    EXPECT_EQ(std::strtoll(text, nullptr, 10), a);
    EXPECT_EQ(std::strtoll(text, nullptr, 0), b);
  }
  for (const char* text : {" 5", "+5", ""}) {
    SCOPED_TRACE(text);
    long long a = 99, b = 99;
    EXPECT_EQ(-1, KaString(text).Atoll(a));
    EXPECT_EQ(-1, KaString(text).Strtoll(b));
    EXPECT_EQ(0, a);
    EXPECT_EQ(0, b);
  }
  int v = 0;
  EXPECT_EQ(0, KaString("2147483648").Atol(v));
  EXPECT_EQ(INT_MAX, v);
  EXPECT_EQ(0, KaString("-2147483649").Strtol(v));
  EXPECT_EQ(INT_MIN, v);
}

TEST_F(StringTest, CodeSetsRelabelWithinAWidthAndConvertAcrossWidths) {
  KaString s("abc");
  EXPECT_EQ(-2002, s.SetCodeSetCode(253));
  EXPECT_EQ(1, s.CodeSet());
  EXPECT_EQ(0, s.SetCodeSetCode(3));
  EXPECT_EQ(3, s.CodeSet());
  KaString w = Wide(u"\u00e9t\u00e9");
  w.SetCodeSet(0);
  EXPECT_EQ(0, w.CodeSet()) << "the byte stays 0";
  EXPECT_EQ("\xE9t\xE9", Text(w)) << "converted into the native set";
  w.SetCodeSet(3);
  EXPECT_EQ("\xE9t\xE9", Text(w)) << "same width: relabelled only";
  KaString m("\xE4\x80");  // ä and € in Windows-1252
  m.MapToCodeSet(16);      // ISO-8859-5 has neither
  EXPECT_EQ(16, m.CodeSet());
  EXPECT_EQ("??", Text(m));
  KaString cyr("\xC0");  // А in Windows-1251
  ASSERT_EQ(0, cyr.SetCodeSetCode(7));
  KaString koi;
  koi.CopyMapped(cyr, 25);
  EXPECT_EQ("\xE1", Text(koi));
  koi.CopyMapped(KaString("abcdef"), 253, 3);
  EXPECT_EQ((Units{'a', 'b', 'c'}), UnitsOf(koi));
}

TEST_F(StringTest, NullValueIsLanguage254) {
  KaString s("x");
  s.SetNullValue();
  EXPECT_TRUE(s.IsNullValue());
  EXPECT_EQ(nullptr, s.StrGet());
  EXPECT_EQ(0, s.CodeSet());
  EXPECT_FALSE(KaString().IsNullValue()) << "empty is not null";
}

}  // namespace
