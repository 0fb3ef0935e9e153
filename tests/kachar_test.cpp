// KaChar, KaStringIterator and the character operations: units, classes,
// mapping between code sets, case mappings with expansions, order walks.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kabase/assert.h"
#include "kabase/config.h"
#include "kai18n/langctx.h"
#include "kastring_test_util.h"
#include "katypemgr/kastring.h"

namespace {

using ka::test::Text;
using ka::test::Units;
using ka::test::UnitsOf;
using ka::test::Wide;

Units OrdersOf(KaStringIterator it) {
  Units orders;
  for (unsigned short o; (o = it.GetNextOrder(1)) != 0;) orders.push_back(o);
  return orders;
}

unsigned short OrderOf(unsigned short unicode) { return KaGetUnicodeProps(unicode).order; }

class CharTest : public ::testing::Test {
 protected:
  void TearDown() override { KaLanguageContext::Reset(); }
};

// --- KaChar ----------------------------------------------------------------------

TEST_F(CharTest, DefaultsFillIn255) {
  ASSERT_TRUE(KaLanguageContext::SetDefault8BitCodeSet(4));
  ASSERT_TRUE(KaLanguageContext::SetDefaultLanguage(13));
  const KaChar c('a', 255, 255);
  EXPECT_EQ(4, c.CodeSet());
  EXPECT_EQ(13, c.Language());
  EXPECT_EQ('a', c.Unit());
  EXPECT_EQ(253, KaChar(static_cast<unsigned short>(0x20AC)).CodeSet());
  EXPECT_EQ(0x34, KaChar(static_cast<unsigned short>(0x1234), 1, 0).Unit())
      << "a 1-byte set keeps the low byte";
  EXPECT_EQ(0xE9, KaChar('\xE9', 1, 0).Unit()) << "bytes above 0x7F stay unsigned";
}

TEST_F(CharTest, UnitsAreReadThroughTheByteOrderFlag) {
  const char buffer[] = {0x01, 0x02, 0x00, 0x00};
  EXPECT_EQ(0x0201, KaChar(buffer, 253, 0, 1).Unit()) << "memory order";
  EXPECT_EQ(0x0102, KaChar(buffer, 253, 0, 2).Unit()) << "big-endian";
  EXPECT_EQ(0x0201, KaChar(buffer, 254, 0, 2).Unit()) << "orders are low byte first";
  EXPECT_EQ(0x01, KaChar(buffer, 1, 0).Unit());
}

TEST_F(CharTest, ClassesFollowTheOrder) {
  EXPECT_TRUE(KaChar(' ', 1, 0).IsSpace());
  EXPECT_TRUE(KaChar('*', 1, 0).IsSymbol());
  EXPECT_TRUE(KaChar('7', 1, 0).IsDigit());
  EXPECT_TRUE(KaChar('\xE9', 1, 0).IsAlpha());
  EXPECT_TRUE(KaChar(static_cast<unsigned short>(0x4E00), 253, 0).IsHan());
  EXPECT_FALSE(KaChar('a', 1, 0).IsDigit());
  EXPECT_EQ(0x2000, KaChar(static_cast<unsigned short>(0x2000), 240, 0).Order())
      << "a wide unit of an unknown set is its own order";
  EXPECT_EQ(13, KaChar('a', 200, 0).Order()) << "a byte of an unknown set is undefined";
}

TEST_F(CharTest, MapToConvertsThroughUnicode) {
  const KaChar e('\xE9', 1, 5);
  EXPECT_EQ(0xE9, e.MapTo(253).Unit());
  EXPECT_EQ(253, e.MapTo(253).CodeSet());
  EXPECT_EQ(5, e.MapTo(253).Language());
  EXPECT_EQ('?', e.MapTo(16).Unit());
  EXPECT_EQ(1, e.MapTo(0).CodeSet()) << "0: unchanged";
  EXPECT_EQ(0xC0, KaChar(static_cast<unsigned short>(0x0410), 253, 0).MapTo(7).Unit());
}

struct CaseCase {
  unsigned short unit;
  unsigned char codeSet;
  unsigned short upper, lower;
  const char* why;
};
constexpr CaseCase kCaseCases[] = {
    {'a', 1, 'A', 'a', "ASCII"},
    {0xE9, 1, 0xC9, 0xE9, "é"},
    {0xFF, 1, 0x9F, 0xFF, "ÿ has its capital at 0x9F in Windows-1252"},
    {0xFF, 2, 0xFF, 0xFF, "ISO-8859-1 has no capital ÿ: unchanged"},
    {0xC1, 25, 0xE1, 0xC1, "KOI8-R а"},
    {0x03C3, 253, 0x03A3, 0x03C3, "Greek sigma"},
    {'7', 1, '7', '7', "no case"},
    {'a', 0, 'A', 'a', "native: the C library's mapping"},
    {0x500C, 254, 0x500C, 0x500C, "orders have no case"},
};

TEST_F(CharTest, CaseMappingsStayInTheCodeSet) {
  for (const CaseCase& c : kCaseCases) {
    SCOPED_TRACE(c.why);
    const KaChar ch(c.unit, c.codeSet, 0);
    EXPECT_EQ(c.upper, ch.ToUpper(nullptr).Unit());
    EXPECT_EQ(c.lower, ch.ToUpper(nullptr).ToLower(nullptr).Unit());
    EXPECT_EQ(c.codeSet, ch.ToUpper(nullptr).CodeSet());
  }
}

TEST_F(CharTest, ExpandingMappingsNeedAnIterator) {
  const KaChar sharp('\xDF', 1, 0);
  EXPECT_EQ(0xDF, sharp.ToUpper(nullptr).Unit()) << "nowhere to put the second S";
  KaString text("\xDF");
  KaStringIterator it(text);
  EXPECT_EQ('S', sharp.ToUpper(&it).Unit());
  EXPECT_TRUE(it.OverflowActive());
}

// --- KaStringIterator -------------------------------------------------------------------

TEST_F(CharTest, StepWalksCharactersAndStopsAtTheEnd) {
  const KaString s = Wide(u"ab");
  KaStringIterator it(s);
  EXPECT_EQ('a', (*it).Unit());
  ++it;
  EXPECT_EQ('b', (*it).Unit());
  it.Step(1);
  EXPECT_TRUE(it.IsEOS());
  it.Step(1);
  EXPECT_TRUE(it.IsEOS()) << "never past the terminator";
  --it;
  EXPECT_EQ('b', (*it).Unit());
  it.Step(0).Step(0).Step(0);
  EXPECT_EQ('a', (*it).Unit()) << "never before the start";
  EXPECT_TRUE(KaStringIterator(KaString()).IsEOS());
}

TEST_F(CharTest, AnUnfinishedOverflowListHoldsThePosition) {
  const KaString s("xy");
  KaStringIterator it(s);
  static const unsigned short kList[] = {'P', 'Q'};
  const KaWCharList list{2, kList};
  it.SetOverflow(&list, 253);
  const char* at = it.Position();
  EXPECT_EQ('P', (*it).Unit());
  EXPECT_EQ(253, (*it).CodeSet());
  it.Step(1);
  EXPECT_EQ(at, it.Position()) << "the list is consumed first";
  EXPECT_EQ('Q', (*it).Unit());
  EXPECT_FALSE(it.IsEOS());
  it.Step(1);
  EXPECT_EQ('y', (*it).Unit()) << "finishing the list passes the replaced character";
}

TEST_F(CharTest, GetNextOrderDeliversExpansions) {
  EXPECT_EQ((Units{OrderOf(0xE6), OrderOf('e'), OrderOf('b')}),
            OrdersOf(KaStringIterator(KaString("\xE6"
                                               "b"))))
      << "æ is a, then e";
  EXPECT_EQ((Units{OrderOf(0x1100), OrderOf(0x1161), OrderOf(0x11A8)}),
            OrdersOf(KaStringIterator(Wide(u"\uac01"))))
      << "a Hangul syllable is its jamo";
  const unsigned short orders[] = {0x500C, 0x3F00, 0};
  EXPECT_EQ((Units{0x500C, 0x3F00}), OrdersOf(KaStringIterator(orders, 254, 0)))
      << "an order buffer yields its units";
  const KaString ab("ab");
  KaStringIterator peek(ab);
  EXPECT_EQ(OrderOf('a'), peek.GetNextOrder(0));
  EXPECT_EQ(OrderOf('a'), peek.GetNextOrder(0)) << "without advancing";
}

TEST_F(CharTest, AnIteratorOverAnInlineCharacterOwnsIt) {
  KaStringIterator copy;
  {
    const KaChar star('*', 1, 0);
    KaStringIterator it(star);
    copy = it;
  }
  EXPECT_EQ('*', (*copy).Unit());
  EXPECT_EQ(80 + 79, copy.GetNextOrder(1));
  EXPECT_TRUE(copy.IsEOS());
}

TEST_F(CharTest, PutStopsAtTheLimit) {
  char buffer[4] = {};
  KaStringIterator out(buffer, 1, 0);
  EXPECT_FALSE(out.Put(KaChar('a', 1, 0))) << "no limit: no writing";
  out.SetLimit(buffer + 2);
  EXPECT_TRUE(out.Put(KaChar(static_cast<unsigned short>(0xE9), 253, 0)));
  EXPECT_TRUE(out.Put(KaChar('b', 1, 0)));
  EXPECT_FALSE(out.Put(KaChar('c', 1, 0)));
  EXPECT_EQ(
      "\xE9"
      "b",
      std::string(buffer));
}

// --- Transform, ToUpper, ToLower -----------------------------------------------------------

struct TransformCase {
  KaString text;
  bool upper;
  KaString expected;
  const char* why;
};

TEST_F(CharTest, CaseOfWholeStrings) {
  const TransformCase cases[] = {
      {KaString("Stra\xDF"
                "e"),
       true, KaString("STRASSE"), "sharp s grows into SS"},
      {Wide(u"stra\u00dfe"), true, Wide(u"STRASSE"), "the same in Unicode"},
      {KaString("\xC0\xC9\xCE xyz"), false, KaString("\xE0\xE9\xEE xyz"), "Latin-1 capitals"},
      {Wide(u"\u0130"), false, Wide(u"i\u0307"), "dotted capital I lowers to two"},
      {Wide(u"\u03a3\u03b9\u03b3\u03bc\u03b1"), true, Wide(u"\u03a3\u0399\u0393\u039c\u0391"),
       "Greek"},
      {KaString(), true, KaString(), "empty stays empty"},
  };
  for (const TransformCase& c : cases) {
    SCOPED_TRACE(c.why);
    KaString s = c.text;
    if (c.upper) {
      s.ToUpper();
    } else {
      s.ToLower();
    }
    EXPECT_EQ(UnitsOf(c.expected), UnitsOf(s));
    EXPECT_EQ(c.text.CodeSet(), s.CodeSet());
    EXPECT_EQ(size_t{s.Len()} * s.UnitWidth() + s.UnitWidth() * !s.IsEmpty(), s.Size())
        << "the size counts the terminator";
  }
}

// Replaces vowels by "*": a caller's own operation.
class StarVowels : public KaCharOperation {
 public:
  KaChar Apply(const KaChar& c, KaStringIterator&) override {
    const unsigned short u = c.Unit();
    const bool vowel = u == 'a' || u == 'e' || u == 'i' || u == 'o' || u == 'u';
    return vowel ? KaChar('*', c.CodeSet(), c.Language()) : c;
  }
};

TEST_F(CharTest, TransformAppliesAnyOperation) {
  KaString s("operation");
  StarVowels stars;
  s.Transform(stars);
  EXPECT_EQ("*p*r*t**n", Text(s));
}

std::vector<std::string> g_reports;

TEST_F(CharTest, GrowthStopsAtTheLimit) {
  DefaultConfig().SetInt("debug", "stringOverflow", 1);
  KaSetAssertReceiver([](const char* text, const char*, int) { g_reports.push_back(text); });
  KaString s("x");
  s.Fill(40000, '\xDF');
  s.ToUpper();
  EXPECT_EQ(KaString::kMaxSize, s.Size());
  EXPECT_EQ('S', s.UnitAt(65530));
  ASSERT_FALSE(g_reports.empty());
  EXPECT_EQ("String overflow", g_reports.back());
  KaSetAssertReceiver(nullptr);
  DefaultConfig().Remove("debug", "stringOverflow");
}

}  // namespace
