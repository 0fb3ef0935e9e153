// The internationalisation library: language context, code sets, unit
// conversion, orders and case mappings.
#include "kai18n/kai18n.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// --- Language context ------------------------------------------------------------

class LanguageContext : public ::testing::Test {
 protected:
  void TearDown() override { KaLanguageContext::Reset(); }
};

TEST_F(LanguageContext, StartsWithExactComparisonAndWindows1252) {
  EXPECT_EQ(1, KaLanguageContext::GetDefaultCodeSet());
  EXPECT_EQ(1, KaLanguageContext::GetDefault8BitCodeSet());
  EXPECT_EQ(253, KaLanguageContext::GetDefault16BitCodeSet());
  EXPECT_EQ(1, KaLanguageContext::GetNativeCodeSet());
  EXPECT_EQ(0, KaLanguageContext::GetDefaultLanguage());
  EXPECT_EQ(16, KaLanguageContext::GetDefaultCmpOp());
}

struct SetterCase {
  bool (*set)(unsigned char);
  unsigned char (*get)();
  unsigned char value;
  bool accepted;
  const char* why;
};
const SetterCase kSetterCases[] = {
    {KaLanguageContext::SetDefault8BitCodeSet, KaLanguageContext::GetDefault8BitCodeSet, 3, true,
     "ISO-8859-2 is an 8-bit set"},
    {KaLanguageContext::SetDefault8BitCodeSet, KaLanguageContext::GetDefault8BitCodeSet, 253, false,
     "Unicode is not an 8-bit set"},
    {KaLanguageContext::SetDefault8BitCodeSet, KaLanguageContext::GetDefault8BitCodeSet, 27, false,
     "unknown number"},
    {KaLanguageContext::SetDefault16BitCodeSet, KaLanguageContext::GetDefault16BitCodeSet, 254,
     false, "orders are not text"},
    {KaLanguageContext::SetDefault16BitCodeSet, KaLanguageContext::GetDefault16BitCodeSet, 1, false,
     "1-byte set"},
    {KaLanguageContext::SetNativeCodeSet, KaLanguageContext::GetNativeCodeSet, 0, false,
     "native cannot be native"},
    {KaLanguageContext::SetNativeCodeSet, KaLanguageContext::GetNativeCodeSet, 25, true, "KOI8-R"},
    {KaLanguageContext::SetDefaultCodeSet, KaLanguageContext::GetDefaultCodeSet, 253, true,
     "Unicode as the default"},
    {KaLanguageContext::SetDefaultCodeSet, KaLanguageContext::GetDefaultCodeSet, 0, false,
     "a default must be a real set"},
    {KaLanguageContext::SetDefaultLanguage, KaLanguageContext::GetDefaultLanguage, 22, true,
     "Korean"},
    {KaLanguageContext::SetDefaultLanguage, KaLanguageContext::GetDefaultLanguage, 23, false,
     "past the language table"},
    {KaLanguageContext::SetDefaultLanguage, KaLanguageContext::GetDefaultLanguage, 254, false,
     "the null mark is no language"},
};

TEST_F(LanguageContext, SettersRefuseWhatDoesNotFit) {
  for (const SetterCase& c : kSetterCases) {
    SCOPED_TRACE(c.why);
    KaLanguageContext::Reset();
    const unsigned char before = c.get();
    EXPECT_EQ(c.accepted, c.set(c.value));
    EXPECT_EQ(c.accepted ? c.value : before, c.get());
  }
}

TEST_F(LanguageContext, EndingTheContextRestoresTheDefaults) {
  KaLanguageContext::SetDefaultCmpOp(0x60);
  ASSERT_TRUE(KaLanguageContext::SetNativeCodeSet(6));
  EXPECT_EQ(0, ___KaI18NContext(1));
  EXPECT_EQ(0x60, KaLanguageContext::GetDefaultCmpOp()) << "starting keeps what the host set";
  EXPECT_EQ(0, ___KaI18NContext(0));
  EXPECT_EQ(16, KaLanguageContext::GetDefaultCmpOp());
  EXPECT_EQ(1, KaLanguageContext::GetNativeCodeSet());
}

TEST_F(LanguageContext, AnswersCodeSetAndLanguageQueries) {
  EXPECT_STREQ("Windows-1252", KaLanguageContext::GetCodeSetName(1));
  EXPECT_STREQ("KOI8-U", KaLanguageContext::GetCodeSetName(26));
  EXPECT_STREQ("Unicode", KaLanguageContext::GetCodeSetName(253));
  EXPECT_STREQ("native", KaLanguageContext::GetCodeSetName(0));
  EXPECT_EQ(nullptr, KaLanguageContext::GetCodeSetName(27));
  EXPECT_EQ(nullptr, KaLanguageContext::GetCodeSetName(255));
  for (int cs = 0; cs < 256; ++cs) {
    const bool known = cs <= 26 || cs == 253 || cs == 254;
    EXPECT_EQ(known, KaLanguageContext::IsCodeSetKnown(static_cast<unsigned char>(cs))) << cs;
    EXPECT_EQ(cs > 224 ? 2 : 1,
              KaLanguageContext::GetCodeSetUnitWidth(static_cast<unsigned char>(cs)));
  }
  EXPECT_STREQ("neutral", KaLanguageContext::GetLanguageName(0));
  EXPECT_STREQ("Japanese", KaLanguageContext::GetLanguageName(20));
  EXPECT_EQ(nullptr, KaLanguageContext::GetLanguageName(99));
  EXPECT_FALSE(KaLanguageContext::IsIdeographicLanguage(19));
  EXPECT_TRUE(KaLanguageContext::IsIdeographicLanguage(22));
  EXPECT_TRUE(KaLanguageContext::IsIdeographicLanguage(20 + 128)) << "low seven bits decide";
  EXPECT_FALSE(KaLanguageContext::IsIdeographicLanguage(128));
}

// --- Code sets and conversion ----------------------------------------------------

TEST(CodeSet, NativeFollowsTheLanguageContext) {
  EXPECT_EQ(1, KaCodeSet::Get(0)->Number());
  ASSERT_TRUE(KaLanguageContext::SetNativeCodeSet(3));
  EXPECT_EQ(3, KaCodeSet::Get(0)->Number());
  // 0xB1 is ą in ISO-8859-2 and ± in Windows-1252.
  EXPECT_EQ(0x0105, KaCodeSet::Get(253)->ConvertUnit(0xB1, 0));
  KaLanguageContext::Reset();
  EXPECT_EQ(0x00B1, KaCodeSet::Get(253)->ConvertUnit(0xB1, 0));
}

TEST(CodeSet, UnknownNumbersHaveNoObject) {
  for (int cs : {27, 100, 224, 225, 252, 255}) {
    EXPECT_EQ(nullptr, KaCodeSet::Get(static_cast<unsigned char>(cs))) << cs;
  }
}

struct ConvertCase {
  unsigned char to, from;
  unsigned short unit, expected;
  const char* why;
};
constexpr ConvertCase kConvertCases[] = {
    {3, 1, 0xE9, 0xE9, "é sits at 0xE9 in both Latin sets"},
    {3, 1, 0x80, '?', "the euro sign is not in ISO-8859-2"},
    {4, 1, 0x80, 0xA4, "ISO-8859-15 has the euro at 0xA4"},
    {7, 16, 0xB0, 0xC0, "Cyrillic А from ISO-8859-5 into Windows-1251"},
    {25, 7, 0xC0, 0xE1, "Cyrillic А into KOI8-R"},
    {1, 253, 0x20AC, 0x80, "euro from Unicode"},
    {1, 253, 0x4E00, '?', "an ideograph has no byte"},
    {253, 1, 0x81, 0xFFFD, "a byte Windows-1252 leaves undefined"},
    {253, 5, 0xC4, 0xFFFD, "ASCII has nothing above 0x7F"},
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
}

TEST(CodeSet, EightBitSetsRejectWideUnits) {
  const KaCodeSet* cs1 = KaCodeSet::Get(1);
  EXPECT_EQ(0xFFFD, cs1->ToUnicode(0x141));
  EXPECT_EQ(kKaOrderUndefined, cs1->GetOrder(0x141));
  EXPECT_EQ(kKaOrderUndefined, cs1->GetUnicodeProps(0x141, 0).order);
}

// --- Orders --------------------------------------------------------------------

struct OrderCase {
  unsigned short character;
  KaOrderClass kind;
  // Letters: case, diacritic, base, extension. Digits: value. Symbols: index.
  int a, b, c, d;
  const char* why;
};
constexpr OrderCase kOrderCases[] = {
    {'A', KaOrderClass::kLetter, 0, 0, 3, 0, "A: upper case, base 3"},
    {'a', KaOrderClass::kLetter, 1, 0, 3, 0, "a: lower case"},
    {0xE9, KaOrderClass::kLetter, 1, kKaDiacriticAcute, 7, 0, "é: e with acute"},
    {0xC9, KaOrderClass::kLetter, 0, kKaDiacriticAcute, 7, 0, "É"},
    {0xDF, KaOrderClass::kLetter, 1, kKaDiacriticLigature, 21, 0, "ß: s, then s"},
    {'Z', KaOrderClass::kLetter, 0, 0, 28, 0, "Z: base 28"},
    {0x0142, KaOrderClass::kLetter, 1, kKaDiacriticStroke, 14, 0, "ł: l with stroke"},
    {0x0131, KaOrderClass::kLetter, 1, 0, 11, 1, "dotless i: a letter after i"},
    {0x00FE, KaOrderClass::kLetter, 1, 0, kKaBaseLetterThorn, 0, "þ after z"},
    {'0', KaOrderClass::kDigit, 0, 0, 0, 0, "0"},
    {'9', KaOrderClass::kDigit, 9, 0, 0, 0, "9"},
    {0x0663, KaOrderClass::kDigit, 3, 0, 0, 0, "Arabic-Indic three"},
    {0x00B2, KaOrderClass::kDigit, 2, 0, 0, 0, "superscript two"},
    {'*', KaOrderClass::kSymbol, 79, 0, 0, 0, "asterisk"},
    {'?', KaOrderClass::kSymbol, 42, 0, 0, 0, "question mark"},
    {'\\', KaOrderClass::kSymbol, 80, 0, 0, 0, "reverse solidus"},
    {'_', KaOrderClass::kSymbol, 32, 0, 0, 0, "underscore"},
    {0x00BF, KaOrderClass::kSymbol, 139, 0, 0, 0, "inverted question mark"},
    {0x00B4, KaOrderClass::kSymbol, 88, 0, 0, 0, "acute accent as a symbol"},
    {0x20AC, KaOrderClass::kSymbol, -1, 0, 0, 0, "euro: a symbol from 140 on"},
    {' ', KaOrderClass::kSpace, 0, 0, 0, 0, "blank"},
    {0x3000, KaOrderClass::kSpace, 0, 0, 0, 0, "ideographic space"},
    {0x4E00, KaOrderClass::kHan, 0, 0, 0, 0, "the first unified ideograph"},
    {0x03B1, KaOrderClass::kHan, 0, 0, 0, 0, "Greek sorts in the upper range"},
};

TEST(Orders, DecodeIntoTheirClassAndFields) {
  for (const OrderCase& c : kOrderCases) {
    SCOPED_TRACE(c.why);
    const unsigned short o = KaGetUnicodeProps(c.character).order;
    ASSERT_EQ(c.kind, KaClassOfOrder(o)) << "order " << o;
    switch (c.kind) {
      case KaOrderClass::kLetter: {
        const KaLetterFields f = KaSplitLetterOrder(o);
        EXPECT_EQ(c.a, f.caseField);
        EXPECT_EQ(c.b, f.diacritic);
        EXPECT_EQ(c.c, f.base);
        EXPECT_EQ(c.d, f.extension);
        break;
      }
      case KaOrderClass::kDigit:
        EXPECT_EQ(kKaOrderDigitBase + 10 * c.a, o);
        EXPECT_EQ(c.a, KaDigitValueOfOrder(o));
        break;
      case KaOrderClass::kSymbol:
        if (c.a >= 0) {
          EXPECT_EQ(c.a, o - kKaOrderSymbolBase);
        } else {
          EXPECT_GE(o - kKaOrderSymbolBase, 140);
        }
        break;
      case KaOrderClass::kSpace:
        EXPECT_NE(kKaOrderUndefined, o);
        break;
      default:
        break;
    }
  }
}

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
  // Unassigned characters and noncharacters, and nothing else, are undefined:
  // Unicode 14 leaves 1,456 code points of the plane unassigned.
  EXPECT_EQ(1456, undefined);
  EXPECT_EQ(kKaOrderUndefined, KaGetUnicodeProps(0x0378).order) << "unassigned";
  EXPECT_EQ(kKaOrderUndefined, KaGetUnicodeProps(0xFFFF).order) << "noncharacter";
  EXPECT_EQ(kKaOrderUndefined, KaGetUnicodeProps(0xFDD0).order) << "noncharacter";
  EXPECT_EQ(0, KaGetUnicodeProps(0).order) << "the terminator ends the text";
}

TEST(Orders, ScriptsSortInTheirBlocks) {
  auto order = [](unsigned short c) { return KaGetUnicodeProps(c).order; };
  EXPECT_LT(order(' '), order('!')) << "spaces before symbols";
  EXPECT_LT(order('~'), order('0')) << "symbols before digits";
  EXPECT_LT(order('9'), order('A')) << "digits before letters";
  EXPECT_LT(KaSplitLetterOrder(order('z')).base, kKaBaseLetterThorn);
  EXPECT_LT(order(0x0416), order(0x0417)) << "Cyrillic Ж before З";
  EXPECT_LT(order(0x03C9), order(0x0430)) << "Greek before Cyrillic";
  EXPECT_LT(order(0x05D0), order(0x4E00)) << "other scripts before ideographs";
  // Lower case before upper case inside a script of the upper range.
  EXPECT_EQ(order(0x03B1) + 1, order(0x0391));
}

TEST(Orders, ImplicitPairsKeepUnplacedCharactersApart) {
  for (unsigned short c : {0xD800, 0xDBFF, 0xDC00, 0xE000, 0xF8FF}) {
    SCOPED_TRACE(c);
    const KaUnicodeProps p = KaGetUnicodeProps(c);
    EXPECT_EQ(kKaOrderImplicitLead + (c >> 12), p.order);
    ASSERT_EQ(1, p.expansion.count);
    EXPECT_EQ(kKaOrderHanBase + (c & 0xFFF), p.expansion.chars[0]);
  }
  // Ideographs past the end of the single-order range take the same form.
  const KaUnicodeProps last = KaGetUnicodeProps(0xFA29);
  EXPECT_EQ(kKaOrderImplicitLead + 0xF, last.order);
}

TEST(Orders, LigaturesAndSyllablesExpand) {
  struct Case {
    unsigned short c;
    std::vector<unsigned short> orders;
    const char* why;
  };
  auto o = [](unsigned short c) { return KaGetUnicodeProps(c).order; };
  const unsigned short aLig =
      KaMakeLetterOrder({1, kKaDiacriticLigature, static_cast<unsigned char>(3), 0});
  const Case cases[] = {
      {0x00E6, {aLig, o('e')}, "æ: a, e"},
      {0x00DF, {o(0x00DF), o('s')}, "ß: s, s"},
      {0xAC00, {o(0x1100), o(0x1161)}, "가: two jamo"},
      {0xAC01, {o(0x1100), o(0x1161), o(0x11A8)}, "각: three jamo"},
      {0xD7A3, {o(0x1112), o(0x1175), o(0x11C2)}, "the last syllable"},
      {0x01C4,
       {KaMakeLetterOrder({0, kKaDiacriticLigature, 6, 0}),
        KaMakeLetterOrder({0, kKaDiacriticCaron, 28, 0})},
       "Ǆ: D, Ž"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    const KaUnicodeProps p = KaGetUnicodeProps(c.c);
    std::vector<unsigned short> got{p.order};
    got.insert(got.end(), p.expansion.chars, p.expansion.chars + p.expansion.count);
    EXPECT_EQ(c.orders, got);
  }
}

// --- Case mappings ---------------------------------------------------------------

TEST(CaseMapping, SimpleAndFullMappings) {
  EXPECT_EQ('A', KaGetUnicodeProps('a').upper);
  EXPECT_EQ('a', KaGetUnicodeProps('A').lower);
  EXPECT_EQ(0, KaGetUnicodeProps('A').upper);
  EXPECT_EQ(0x0178, KaGetUnicodeProps(0x00FF).upper) << "ÿ to Ÿ, outside Latin-1";
  EXPECT_EQ(0, KaGetUnicodeProps('1').upper);

  const KaUnicodeProps sharp = KaGetUnicodeProps(0x00DF);
  EXPECT_EQ(0, sharp.upper) << "no single upper-case character";
  ASSERT_NE(nullptr, sharp.caseExpansion);
  ASSERT_EQ(2, sharp.caseExpansion->upper.count);
  EXPECT_EQ('S', sharp.caseExpansion->upper.chars[0]);
  EXPECT_EQ('S', sharp.caseExpansion->upper.chars[1]);
  EXPECT_EQ(0, sharp.caseExpansion->lower.count);

  const KaUnicodeProps dotted = KaGetUnicodeProps(0x0130);
  ASSERT_NE(nullptr, dotted.caseExpansion);
  ASSERT_EQ(2, dotted.caseExpansion->lower.count) << "İ lowers to i and a combining dot";
  EXPECT_EQ('i', dotted.caseExpansion->lower.chars[0]);
  EXPECT_EQ(0x0307, dotted.caseExpansion->lower.chars[1]);
  EXPECT_EQ(nullptr, KaGetUnicodeProps('x').caseExpansion);
}

TEST(CaseMapping, EightBitSetsAnswerInUnicode) {
  // In KOI8-R 0xC1 is а; its upper-case form is Unicode А, which the caller
  // maps back into the set.
  const KaCodeSet* koi8 = KaCodeSet::Get(25);
  const KaUnicodeProps p = koi8->GetUnicodeProps(0xC1, 0);
  EXPECT_EQ(0x0410, p.upper);
  EXPECT_EQ(0xE1, koi8->FromUnicode(p.upper));
  EXPECT_EQ(KaGetUnicodeProps(0x0430).order, p.order);
  const KaUnicodeProps sharp = KaCodeSet::Get(1)->GetUnicodeProps(0xDF, 0);
  EXPECT_EQ(KaGetUnicodeProps(0x00DF).order, sharp.order);
  EXPECT_EQ(1, sharp.expansion.count);
  EXPECT_NE(nullptr, sharp.caseExpansion);
}

TEST(CaseMapping, OrderSetHasNoCase) {
  const KaUnicodeProps p = KaCodeSet::Get(254)->GetUnicodeProps(0x500C, 0);
  EXPECT_EQ(0x500C, p.order);
  EXPECT_EQ(0, p.upper);
  EXPECT_EQ(0, p.lower);
  EXPECT_EQ(0, p.expansion.count);
}

}  // namespace
