// The internationalisation library: language context, code sets, unit
// conversion, orders and case mappings.
#include "kai18n/kai18n.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Ctx = KaLanguageContext;

std::vector<unsigned short> Units(const KaWCharList& list) {
  return {list.chars, list.chars + list.count};
}

class LanguageContext : public ::testing::Test {
 protected:
  void TearDown() override { Ctx::Reset(); }
};

TEST_F(LanguageContext, StartsWithExactComparisonAndWindows1252) {
  EXPECT_EQ(1, Ctx::GetDefaultCodeSet());
  EXPECT_EQ(1, Ctx::GetDefault8BitCodeSet());
  EXPECT_EQ(253, Ctx::GetDefault16BitCodeSet());
  EXPECT_EQ(1, Ctx::GetNativeCodeSet());
  EXPECT_EQ(0, Ctx::GetDefaultLanguage());
  EXPECT_EQ(16, Ctx::GetDefaultCmpOp());
}

struct SetterCase {
  bool (*set)(unsigned char);
  unsigned char (*get)();
  unsigned char value;
  bool accepted;
  const char* why;
};
const SetterCase kSetterCases[] = {
    {Ctx::SetDefault8BitCodeSet, Ctx::GetDefault8BitCodeSet, 3, true, "ISO-8859-2 is 8-bit"},
    {Ctx::SetDefault8BitCodeSet, Ctx::GetDefault8BitCodeSet, 253, false, "Unicode is not"},
    {Ctx::SetDefault8BitCodeSet, Ctx::GetDefault8BitCodeSet, 27, false, "unknown number"},
    {Ctx::SetDefault16BitCodeSet, Ctx::GetDefault16BitCodeSet, 254, false, "orders are not text"},
    {Ctx::SetDefault16BitCodeSet, Ctx::GetDefault16BitCodeSet, 1, false, "1-byte set"},
    {Ctx::SetNativeCodeSet, Ctx::GetNativeCodeSet, 0, false, "native cannot be native"},
    {Ctx::SetNativeCodeSet, Ctx::GetNativeCodeSet, 25, true, "KOI8-R"},
    {Ctx::SetDefaultCodeSet, Ctx::GetDefaultCodeSet, 253, true, "Unicode as the default"},
    {Ctx::SetDefaultCodeSet, Ctx::GetDefaultCodeSet, 0, false, "a default is a real set"},
    {Ctx::SetDefaultLanguage, Ctx::GetDefaultLanguage, 22, true, "Korean, the last language"},
    {Ctx::SetDefaultLanguage, Ctx::GetDefaultLanguage, 23, false, "past the language table"},
};

TEST_F(LanguageContext, SettersRefuseWhatDoesNotFit) {
  for (const SetterCase& c : kSetterCases) {
    SCOPED_TRACE(c.why);
    Ctx::Reset();
    const unsigned char before = c.get();
    EXPECT_EQ(c.accepted, c.set(c.value));
    EXPECT_EQ(c.accepted ? c.value : before, c.get());
  }
}

TEST_F(LanguageContext, EndingTheContextRestoresTheDefaults) {
  Ctx::SetDefaultCmpOp(0x60);
  ASSERT_TRUE(Ctx::SetNativeCodeSet(6));
  EXPECT_EQ(0, ___KaI18NContext(1));
  EXPECT_EQ(0x60, Ctx::GetDefaultCmpOp()) << "starting keeps what the host set";
  EXPECT_EQ(0, ___KaI18NContext(0));
  EXPECT_EQ(16, Ctx::GetDefaultCmpOp());
  EXPECT_EQ(1, Ctx::GetNativeCodeSet());
}

TEST_F(LanguageContext, AnswersCodeSetAndLanguageQueries) {
  EXPECT_STREQ("Windows-1252", Ctx::GetCodeSetName(1));
  EXPECT_STREQ("Unicode", Ctx::GetCodeSetName(253));
  EXPECT_STREQ("native", Ctx::GetCodeSetName(0));
  EXPECT_EQ(nullptr, Ctx::GetCodeSetName(27));
  for (int cs = 0; cs < 256; ++cs) {
    const auto number = static_cast<unsigned char>(cs);
    EXPECT_EQ(cs <= 26 || cs == 253 || cs == 254, Ctx::IsCodeSetKnown(number)) << cs;
    EXPECT_EQ(cs > 224 ? 2 : 1, Ctx::GetCodeSetUnitWidth(number)) << cs;
  }
  EXPECT_STREQ("Japanese", Ctx::GetLanguageName(20));
  EXPECT_EQ(nullptr, Ctx::GetLanguageName(99));
  EXPECT_FALSE(Ctx::IsIdeographicLanguage(19));
  EXPECT_TRUE(Ctx::IsIdeographicLanguage(20 + 128)) << "low seven bits decide";
  EXPECT_FALSE(Ctx::IsIdeographicLanguage(128));
}

TEST_F(LanguageContext, NativeCodeSetFollowsIt) {
  ASSERT_TRUE(Ctx::SetNativeCodeSet(3));
  EXPECT_EQ(3, KaCodeSet::Get(0)->Number());
  // 0xB1 is ą in ISO-8859-2 and ± in Windows-1252.
  EXPECT_EQ(0x0105, KaCodeSet::Get(253)->ConvertUnit(0xB1, 0));
}

struct ConvertCase {
  unsigned char to, from;
  unsigned short unit, expected;
  const char* why;
};
constexpr ConvertCase kConvertCases[] = {
    {3, 1, 0x80, '?', "the euro sign is not in ISO-8859-2"},
    {4, 1, 0x80, 0xA4, "ISO-8859-15 has the euro at 0xA4"},
    {7, 16, 0xB0, 0xC0, "Cyrillic А from ISO-8859-5 into Windows-1251"},
    {25, 7, 0xC0, 0xE1, "Cyrillic А into KOI8-R"},
    {1, 253, 0x20AC, 0x80, "euro from Unicode"},
    {1, 253, 0x4E00, '?', "an ideograph has no byte"},
    {253, 1, 0x81, 0xFFFD, "a byte Windows-1252 leaves undefined"},
    {253, 1, 0x141, 0xFFFD, "an 8-bit set has no unit above 0xFF"},
    {1, 99, 'A', '?', "unknown source set"},
    {253, 254, 0x400C, 0xFFFD, "an order is no character"},
    {254, 1, 'A', 0x400C, "a character into the order set is its order"},
    {1, 1, 0x81, 0x81, "same set: unchanged, even undefined"},
};

TEST(CodeSet, ConvertsUnitsThroughUnicode) {
  for (const ConvertCase& c : kConvertCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.expected, KaCodeSet::Get(c.to)->ConvertUnit(c.unit, c.from));
  }
  EXPECT_EQ(kKaOrderUndefined, KaCodeSet::Get(1)->GetOrder(0x141)) << "a unit above 0xFF";
  EXPECT_EQ(kKaOrderUndefined, KaCodeSet::Get(1)->GetUnicodeProps(0x141, 0).order);
}

constexpr unsigned short Letter(unsigned char caseField, unsigned char diacritic,
                                unsigned char base, unsigned char extension = 0) {
  return KaMakeLetterOrder({caseField, diacritic, base, extension});
}

struct OrderCase {
  unsigned short character;
  KaOrderClass kind;
  unsigned short order;  // 0: only the class is fixed
  const char* why;
};
constexpr OrderCase kOrderCases[] = {
    {'A', KaOrderClass::kLetter, Letter(0, 0, 3), "A: upper case, base 3"},
    {'a', KaOrderClass::kLetter, Letter(1, 0, 3), "a: lower case"},
    {0xE9, KaOrderClass::kLetter, Letter(1, kKaDiacriticAcute, 7), "é: e with acute"},
    {0xC9, KaOrderClass::kLetter, Letter(0, kKaDiacriticAcute, 7), "É"},
    {0xDF, KaOrderClass::kLetter, Letter(1, kKaDiacriticLigature, 21), "ß: s, then s"},
    {0x0131, KaOrderClass::kLetter, Letter(1, 0, 11, 1), "dotless i: a letter after i"},
    {0x00FE, KaOrderClass::kLetter, Letter(1, 0, kKaBaseLetterThorn), "þ after z"},
    {'0', KaOrderClass::kDigit, kKaOrderDigitBase, "0"},
    {'9', KaOrderClass::kDigit, kKaOrderDigitBase + 90, "9"},
    {0x0663, KaOrderClass::kDigit, kKaOrderDigitBase + 30, "Arabic-Indic three"},
    {'*', KaOrderClass::kSymbol, kKaOrderSymbolBase + 79, "asterisk"},
    {'?', KaOrderClass::kSymbol, kKaOrderSymbolBase + 42, "question mark"},
    {'\\', KaOrderClass::kSymbol, kKaOrderSymbolBase + 80, "reverse solidus"},
    {'_', KaOrderClass::kSymbol, kKaOrderSymbolBase + 32, "underscore"},
    {0x00BF, KaOrderClass::kSymbol, kKaOrderSymbolBase + 139, "inverted question mark"},
    {' ', KaOrderClass::kSpace, 0, "blank"},
    {0x4E00, KaOrderClass::kHan, 0, "the first unified ideograph"},
    {0x03B1, KaOrderClass::kHan, 0, "Greek sorts in the upper range"},
};

TEST(Orders, DecodeIntoTheirClassAndFields) {
  for (const OrderCase& c : kOrderCases) {
    SCOPED_TRACE(c.why);
    const unsigned short o = KaGetUnicodeProps(c.character).order;
    EXPECT_EQ(c.kind, KaClassOfOrder(o)) << "order " << o;
    if (c.order != 0) {
      EXPECT_EQ(c.order, o);
    }
    EXPECT_NE(kKaOrderUndefined, o);
  }
}

// Unassigned characters and noncharacters, and nothing else, are undefined:
// Unicode 14 leaves 1,456 code points of the plane unassigned.
TEST(Orders, EveryAssignedCharacterHasOne) {
  const KaCodeSet* unicode = KaCodeSet::Get(253);
  int undefined = 0;
  for (unsigned c = 1; c < 0x10000; ++c) {
    const KaUnicodeProps p = KaGetUnicodeProps(static_cast<unsigned short>(c));
    ASSERT_NE(0, p.order) << std::hex << c;
    ASSERT_EQ(p.order, unicode->GetOrder(static_cast<unsigned short>(c))) << std::hex << c;
    for (unsigned i = 0; i < p.expansion.count; ++i) ASSERT_NE(0, p.expansion.chars[i]);
    undefined += p.order == kKaOrderUndefined;
  }
  EXPECT_EQ(1456, undefined);
  EXPECT_EQ(0, KaGetUnicodeProps(0).order) << "the terminator ends the text";
}

TEST(Orders, ImplicitPairsKeepUnplacedCharactersApart) {
  for (unsigned short c : {0xD800, 0xDBFF, 0xDC00, 0xE000, 0xF8FF, 0xFA29}) {
    SCOPED_TRACE(c);  // surrogates, private use, an ideograph past the single orders
    const KaUnicodeProps p = KaGetUnicodeProps(c);
    EXPECT_EQ(kKaOrderImplicitLead + (c >> 12), p.order);
    ASSERT_EQ(1, p.expansion.count);
    EXPECT_EQ(kKaOrderHanBase + (c & 0xFFF), p.expansion.chars[0]);
  }
}

TEST(Orders, LigaturesAndSyllablesExpand) {
  auto o = [](unsigned short c) { return KaGetUnicodeProps(c).order; };
  const struct {
    unsigned short c;
    std::vector<unsigned short> orders;
    const char* why;
  } cases[] = {
      {0x00E6, {Letter(1, kKaDiacriticLigature, 3), o('e')}, "æ: a, e"},
      {0x00DF, {o(0x00DF), o('s')}, "ß: s, s"},
      {0xAC00, {o(0x1100), o(0x1161)}, "가: two jamo"},
      {0xD7A3, {o(0x1112), o(0x1175), o(0x11C2)}, "the last syllable: three jamo"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const KaUnicodeProps p = KaGetUnicodeProps(c.c);
    EXPECT_EQ(c.orders[0], p.order);
    EXPECT_EQ(std::vector(c.orders.begin() + 1, c.orders.end()), Units(p.expansion));
  }
}

TEST(CaseMapping, SimpleAndFullMappings) {
  EXPECT_EQ('A', KaGetUnicodeProps('a').upper);
  EXPECT_EQ('a', KaGetUnicodeProps('A').lower);
  EXPECT_EQ(0, KaGetUnicodeProps('A').upper);
  EXPECT_EQ(0x0178, KaGetUnicodeProps(0x00FF).upper) << "ÿ to Ÿ, outside Latin-1";
  EXPECT_EQ(nullptr, KaGetUnicodeProps('x').caseExpansion);

  const KaUnicodeProps sharp = KaGetUnicodeProps(0x00DF);
  EXPECT_EQ(0, sharp.upper) << "no single upper-case character";
  ASSERT_NE(nullptr, sharp.caseExpansion);
  EXPECT_EQ((std::vector<unsigned short>{'S', 'S'}), Units(sharp.caseExpansion->upper));
  EXPECT_EQ(0, sharp.caseExpansion->lower.count);

  const KaUnicodeProps dotted = KaGetUnicodeProps(0x0130);
  ASSERT_NE(nullptr, dotted.caseExpansion);
  EXPECT_EQ((std::vector<unsigned short>{'i', 0x0307}), Units(dotted.caseExpansion->lower))
      << "İ lowers to i and a combining dot";
}

TEST(CaseMapping, EightBitSetsAnswerInUnicodeAndOrdersHaveNoCase) {
  // KOI8-R 0xC1 is а; its upper case is Unicode А, which the caller maps back.
  const KaCodeSet* koi8 = KaCodeSet::Get(25);
  const KaUnicodeProps p = koi8->GetUnicodeProps(0xC1, 0);
  EXPECT_EQ(0x0410, p.upper);
  EXPECT_EQ(0xE1, koi8->FromUnicode(p.upper));
  EXPECT_EQ(KaGetUnicodeProps(0x0430).order, p.order);
  const KaUnicodeProps sharp = KaCodeSet::Get(1)->GetUnicodeProps(0xDF, 0);
  EXPECT_EQ(1, sharp.expansion.count);
  EXPECT_NE(nullptr, sharp.caseExpansion);

  const KaUnicodeProps order = KaCodeSet::Get(254)->GetUnicodeProps(0x500C, 0);
  EXPECT_EQ(0x500C, order.order);
  EXPECT_EQ(0, order.upper + order.lower + order.expansion.count);
}

}  // namespace
