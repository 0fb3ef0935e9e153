// KaChar, KaStringIterator and the character operations: units, orders, case, iteration.
#include <gtest/gtest.h>

#include <string>

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

TEST_F(CharTest, ConstructionFillsIn255AndReadsThroughTheByteOrderFlag) {
  ASSERT_TRUE(KaLanguageContext::SetDefault8BitCodeSet(4));
  ASSERT_TRUE(KaLanguageContext::SetDefaultLanguage(13));
  const KaChar c('\xE9', 255, 255);
  EXPECT_EQ(4, c.CodeSet());
  EXPECT_EQ(13, c.Language());
  EXPECT_EQ(0xE9, c.Unit()) << "bytes above 0x7F stay unsigned";
  EXPECT_EQ(253, KaChar(static_cast<unsigned short>(0x20AC)).CodeSet());
  EXPECT_EQ(0x34, KaChar(static_cast<unsigned short>(0x1234), 1, 0).Unit()) << "the low byte";
  const char buffer[] = {0x01, 0x02, 0x00, 0x00};
  EXPECT_EQ(0x0201, KaChar(buffer, 253, 0, 1).Unit()) << "memory order";
  EXPECT_EQ(0x0102, KaChar(buffer, 253, 0, 2).Unit()) << "big-endian";
  EXPECT_EQ(0x0201, KaChar(buffer, 254, 0, 2).Unit()) << "orders are low byte first";
}

TEST_F(CharTest, ClassesFollowTheOrder) {
  EXPECT_TRUE(KaChar(' ', 1, 0).IsSpace());
  EXPECT_TRUE(KaChar('*', 1, 0).IsSymbol());
  EXPECT_TRUE(KaChar('7', 1, 0).IsDigit());
  EXPECT_TRUE(KaChar('\xE9', 1, 0).IsAlpha());
  EXPECT_TRUE(KaChar(static_cast<unsigned short>(0x4E00), 253, 0).IsHan());
  EXPECT_EQ(0x2000, KaChar(static_cast<unsigned short>(0x2000), 240, 0).Order()) << "unknown set";
  EXPECT_EQ(13, KaChar('a', 200, 0).Order()) << "a byte of an unknown set is undefined";
}

TEST_F(CharTest, MapToConvertsThroughUnicode) {
  const KaChar e('\xE9', 1, 5);
  EXPECT_EQ(0xE9, e.MapTo(253).Unit());
  EXPECT_EQ('?', e.MapTo(16).Unit());
  EXPECT_EQ(0xC0, KaChar(static_cast<unsigned short>(0x0410), 253, 0).MapTo(7).Unit());
}

struct CaseCase {
  unsigned short codeSet, unit, upper, lower;
  const char* why;
};
constexpr CaseCase kCaseCases[] = {
    {1, 0xFF, 0x9F, 0xFF, "ÿ has its capital at 0x9F in Windows-1252"},
    {2, 0xFF, 0xFF, 0xFF, "ISO-8859-1 has no capital ÿ: unchanged"},
    {25, 0xC1, 0xE1, 0xC1, "KOI8-R а"},
    {253, 0x03C3, 0x03A3, 0x03C3, "Greek sigma"},
    {0, 'a', 'A', 'a', "native: the C library's mapping"},
    {254, 0x500C, 0x500C, 0x500C, "orders have no case"},
};

TEST_F(CharTest, CaseMappingsStayInTheCodeSet) {
  for (const CaseCase& c : kCaseCases) {
    SCOPED_TRACE(c.why);
    const KaChar upper = KaChar(c.unit, static_cast<unsigned char>(c.codeSet), 0).ToUpper(nullptr);
    EXPECT_EQ(c.upper, upper.Unit());
    EXPECT_EQ(c.lower, upper.ToLower(nullptr).Unit());
    EXPECT_EQ(c.codeSet, upper.CodeSet());
  }
  const KaChar sharp('\xDF', 1, 0);
  EXPECT_EQ(0xDF, sharp.ToUpper(nullptr).Unit()) << "an expansion needs an iterator";
  KaString text("\xDF");
  KaStringIterator it(text);
  EXPECT_EQ('S', sharp.ToUpper(&it).Unit());
  EXPECT_TRUE(it.OverflowActive());
}

TEST_F(CharTest, StepFinishesAnOverflowListFirstAndStaysWithinTheText) {
  const KaString s = Wide(u"xy");
  KaStringIterator it(s);
  static const unsigned short kList[] = {'P', 'Q'};
  const KaWCharList list{2, kList};
  it.SetOverflow(&list, 253);
  const char* at = it.Position();
  it.Step(1);
  EXPECT_EQ(at, it.Position()) << "the list is consumed first";
  EXPECT_EQ('Q', (*it).Unit());
  it.Step(1);
  EXPECT_EQ('y', (*it).Unit()) << "finishing the list passes the replaced character";
  it.Step(1).Step(1);
  EXPECT_TRUE(it.IsEOS()) << "never past the terminator";
  --it;
  EXPECT_EQ('y', (*it).Unit());
  it.Step(0).Step(0);
  EXPECT_EQ('x', (*it).Unit()) << "never before the start";
  EXPECT_TRUE(KaStringIterator(KaString()).IsEOS());
}

TEST_F(CharTest, GetNextOrderDeliversExpansions) {
  EXPECT_EQ((Units{OrderOf(0xE6), OrderOf('e'), OrderOf('b')}),
            OrdersOf(KaStringIterator(KaString("\xE6\x62"))));  // æ is a, then e
  EXPECT_EQ((Units{OrderOf(0x1100), OrderOf(0x1161), OrderOf(0x11A8)}),
            OrdersOf(KaStringIterator(Wide(u"\uac01"))));  // a Hangul syllable is its jamo
  const unsigned short orders[] = {0x500C, 0x3F00, 0};
  EXPECT_EQ((Units{0x500C, 0x3F00}), OrdersOf(KaStringIterator(orders, 254, 0)));
}

TEST_F(CharTest, AnIteratorOverAnInlineCharacterOwnsIt) {
  KaStringIterator copy;
  {
    KaStringIterator it(KaChar('*', 1, 0));
    copy = it;
  }
  EXPECT_EQ(80 + 79, copy.GetNextOrder(0)) << "0: without advancing";
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
  EXPECT_EQ("\xE9\x62", std::string(buffer));
}

std::string g_report;

TEST_F(CharTest, WholeStringCaseMayGrowUpToTheLimit) {
  KaString street("Stra\xDF\x65");
  street.ToUpper();
  EXPECT_EQ("STRASSE", Text(street));
  KaString dotted = Wide(u"\u0130");
  dotted.ToLower();
  EXPECT_EQ((Units{'i', 0x0307}), UnitsOf(dotted));
  EXPECT_EQ(6, dotted.Size()) << "the size counts the terminator";
  DefaultConfig().SetInt("debug", "stringOverflow", 1);
  KaSetAssertReceiver([](const char* text, const char*, int) { g_report = text; });
  KaString s("x");
  s.Fill(40000, '\xDF');
  s.ToUpper();
  EXPECT_EQ(KaString::kMaxSize, s.Size());
  EXPECT_EQ('S', s.UnitAt(65530));
  EXPECT_EQ("String overflow", g_report);
  KaSetAssertReceiver(nullptr);
  DefaultConfig().Remove("debug", "stringOverflow");
}

// Stars vowels: an operation of the caller's own.
struct StarVowels : KaCharOperation {
  KaChar Apply(const KaChar& c, KaStringIterator&) override {
    if (std::string("aeiou").find(static_cast<char>(c.Unit())) == std::string::npos) return c;
    return KaChar('*', c.CodeSet(), c.Language());
  }
};

TEST_F(CharTest, TransformAppliesAnyOperation) {
  StarVowels stars;
  EXPECT_EQ("*p*r*t**n", Text(KaString("operation").Transform(stars)));
}

}  // namespace
