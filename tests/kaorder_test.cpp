// Order descriptions: the text of each order class, the representative
// character with and without the accented-letter search, and the extraction
// of digit values and symbol indices at their class bounds.
#include "katypemgr/kaorder.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "kai18n/codeset.h"
#include "katypemgr/kastring.h"
#include "string/order_fields.h"

namespace {

std::string Describe(unsigned short order, unsigned char language = 0) {
  KaString text;
  text = "previous text";
  EXPECT_EQ(0, KaConvertOrderToString(order, language, text));
  return text.StrGet() == nullptr ? "" : text.StrGet();
}

constexpr unsigned short Letter(unsigned char caseField, unsigned char diacritic,
                                unsigned char base, unsigned char extension) {
  return KaMakeLetterOrder({caseField, diacritic, base, extension});
}

unsigned short OrderOfByte(unsigned char b) { return KaCodeSet::Get(1)->GetOrder(b); }

struct Representative {
  unsigned char ch;
  const char* name;
};

Representative ToChar(unsigned short order, int searchAccented = 0, unsigned char language = 0) {
  Representative r{0, "not written"};
  EXPECT_EQ(0, KaConvertOrderToChar(order, language, r.ch, searchAccented, &r.name));
  return r;
}

struct DescriptionCase {
  unsigned short order;
  unsigned char language;
  const char* text;
  const char* why;
};
// Rows that take their order from code set 1 tie the texts to the layout the
// collation tables actually use.
const DescriptionCase kDescriptionCases[] = {
    {0, 0, "space", "end of text is told as a space"},
    {13, 0, "undefined ordering indicator", "the undefined order"},
    {79, 0, "space", "last space order"},
    {80 + 32, 0, "symbol _", "first named symbol"},
    {80 + 33, 0, "symbol ", "unnamed index between named ones"},
    {80 + 44, 0, "symbol solidus", "named in words"},
    {80 + 58, 0, "symbol left pointing o_double angle quotation mark", "spelling kept"},
    {OrderOfByte(0xB5), 0, "symbol micron sign", "micro sign, last of the run from 98"},
    {80 + 139, 0, "symbol inverted question mark", "last named symbol"},
    {80 + 140, 0, "symbol ", "first index past the named range"},
    {16127, 0, "symbol ", "last symbol order"},
    {16128, 0, "digit 0", "first digit order"},
    {16128 + 25, 0, "digit 2 with expand", "bit 0 is the expand flag, cleared for the value"},
    {16383, 0, "digit 25 with expand", "last digit order"},
    {20749, 0, "lower letter a with accent acute with extension", "all four fields"},
    {Letter(2, 0, 28, 0), 0, "lower letter z", "every non-zero case is lower case"},
    {Letter(0, 14, 17, 0), 0, "upper letter O with accent o_double acute", "last named mark"},
    {OrderOfByte(0xE6), 0, "lower letter a with ", "æ: marks above 14 have no name"},
    {OrderOfByte(0x83), 0, "lower letter f with extension", "f with hook"},
    {Letter(0, 0, 0, 0), 0, "upper letter >", "base 0 still prints base + 62"},
    {Letter(1, 0, 29, 0), 0, "lower letter {", "thorn, the base past z"},
    {0x8000, 0, "HAN character 0x8000\n", "first Han order"},
    {0xFFFF, 0, "HAN character 0xffff\n", "last order, lower-case hex"},
    {13, 20, "HAN character 0x000d\n", "language 20 describes every order by number"},
    {0x511C, 148, "HAN character 0x511c\n", "148 is 20 in the low seven bits"},
    {0x511C, 19, "lower letter e with accent acute", "19 is alphabetic"},
    {0x511C, 128, "lower letter e with accent acute", "128 is 0 in the low seven bits"},
};

TEST(OrderDescription, EachClassByTable) {
  for (const auto& c : kDescriptionCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.text, Describe(c.order, c.language)) << "order " << c.order;
  }
}

TEST(OrderDescription, AsciiLettersAndEveryNamedMark) {
  for (char c = 'A'; c <= 'Z'; ++c) {
    EXPECT_EQ(std::string("upper letter ") + c, Describe(OrderOfByte(c)));
    EXPECT_EQ(std::string("lower letter ") + char(c + 32), Describe(OrderOfByte(c + 32)));
  }
  const char* const marks[] = {"cedilla",      "accent acute",  "accent grave", "accent circumflex",
                               "tilde",        "diaeresis",     "ring above",   "stroke",
                               "accent caron", "accent macron", "accent breve", "dot above",
                               "ogonek"};
  for (unsigned char d = 1; d <= 13; ++d) {
    EXPECT_EQ(std::string("lower letter e with ") + marks[d - 1], Describe(Letter(1, d, 7, 0)));
  }
}

// Every symbol order against the rule: a one-character name is the
// character, solidus and apostrophe have their own, other names give ".".
TEST(OrderToChar, EverySymbolIndex) {
  constexpr char kOneChar[] = "_-,;:!?\"()[]{}@$*&#%+'`^~<=>|";
  constexpr unsigned short kOneCharIndices[] = {32, 36, 37, 38, 39, 40,  42,  55,  60, 62,
                                                64, 65, 66, 67, 73, 76,  79,  81,  82, 83,
                                                85, 88, 89, 91, 96, 101, 103, 105, 107};
  static_assert(std::size(kOneChar) - 1 == std::size(kOneCharIndices));
  std::map<unsigned short, unsigned char> expected = {{44, '/'}, {52, '\''}};
  for (unsigned short i : {34, 35, 41, 46, 49, 50, 58, 59, 68,  69,  70,  71,  74,
                           75, 77, 78, 80, 87, 94, 98, 99, 106, 108, 109, 110, 139}) {
    expected[i] = '.';
  }
  for (size_t i = 0; i < std::size(kOneCharIndices); ++i) {
    expected[kOneCharIndices[i]] = static_cast<unsigned char>(kOneChar[i]);
    EXPECT_EQ(expected[kOneCharIndices[i]], ToChar(OrderOfByte(kOneChar[i])).ch) << kOneChar[i];
  }
  for (unsigned order = 80; order < 16128; ++order) {
    const auto it = expected.find(static_cast<unsigned short>(order - 80));
    ASSERT_EQ(it == expected.end() ? 7 : it->second, ToChar(static_cast<unsigned short>(order)).ch)
        << "symbol index " << order - 80;
  }
}

TEST(OrderToChar, CharacterAndNameByTable) {
  const struct {
    unsigned short order;
    int search;
    unsigned char language, ch;
    const char* name;
    const char* why;
  } cases[] = {
      {13, 1, 0, 7, nullptr, "no character for the undefined order"},
      {80 + 33, 1, 0, 7, nullptr, "nor for an unnamed symbol"},
      {0x8000, 1, 0, 7, nullptr, "nor for a Han order"},
      {16396, 1, 20, 7, nullptr, "nor in an ideographic language"},
      {16396, 1, 148, 7, nullptr, "148 is 20 in the low seven bits"},
      {16396, 0, 128, 'A', "LATIN CAPITAL LETTER A", "128 is alphabetic"},
      {80 + 44, 0, 0, '/', "SOLIDUS", "named in words, yet a character"},
      {80 + 139, 0, 0, '.', "FULL STOP", "named in words"},
      {16129, 0, 0, '0', "DIGIT ZERO", "the expand flag is not part of the value"},
      {16383, 0, 0, 'I', "LATIN CAPITAL LETTER I", "values above 9 run on in ASCII"},
      {0x511C, 0, 0, 'e', "LATIN SMALL LETTER E", "no search: the plain letter"},
      {0x511C, 1, 0, 0xE9, "LATIN SMALL LETTER E WITH ACUTE", "search finds the byte"},
      {0x411C, -1, 0, 0xC9, "LATIN CAPITAL LETTER E WITH ACUTE", "any non-zero switch"},
      {Letter(1, 14, 17, 0), 1, 0, 'o', "LATIN SMALL LETTER O", "a mark code set 1 lacks"},
      {OrderOfByte(0x83), 1, 0, 'f', "LATIN SMALL LETTER F", "no mark, no search"},
      {Letter(2, 0, 3, 0), 0, 0, 'a', "LATIN SMALL LETTER A", "case 2 is lower case"},
      {Letter(0, 0, 0, 0), 0, 0, '>', "GREATER-THAN SIGN", "base 0"},
      {OrderOfByte(0xFE), 0, 0, '{', "LEFT CURLY BRACKET", "thorn is base 29"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const Representative r = ToChar(c.order, c.search, c.language);
    EXPECT_EQ(c.ch, r.ch);
    EXPECT_STREQ(c.name, r.name);  // both null where there is no character
  }
  unsigned char ch = 0;
  EXPECT_EQ(0, KaConvertOrderToChar(16396, 0, ch, 1, nullptr)) << "the name is optional";
}

// Brute force over code set 1: the search finds each accented letter's own named byte.
TEST(OrderToChar, SearchFindsEveryAccentedLetterOfCodeSet1) {
  int searched = 0;
  for (unsigned b = 128; b < 256; ++b) {
    const unsigned short order = OrderOfByte(static_cast<unsigned char>(b));
    const KaLetterFields f = KaSplitLetterOrder(order);
    if (KaClassOfOrder(order) != KaOrderClass::kLetter || f.diacritic == 0) continue;
    ++searched;
    const Representative r = ToChar(order, 1);
    EXPECT_EQ(b, r.ch) << "byte " << b;
    EXPECT_NE(nullptr, r.name) << "byte " << b;
  }
  EXPECT_GT(searched, 60) << "the loop must reach the accented letters";
}

TEST(OrderExtraction, DigitsAndSymbolsAtTheirBounds) {
  constexpr int kRefused = -1;
  const struct {
    unsigned short order;
    int value, expand, index;
  } cases[] = {{0, kRefused, 0, kRefused},     {79, kRefused, 0, kRefused},
               {80, kRefused, 0, 0},           {16127, kRefused, 0, 16047},
               {16128, 0, 0, kRefused},        {16128 + 25, 2, 1, kRefused},
               {16138, 1, 0, kRefused},        {16383, 25, 1, kRefused},
               {16384, kRefused, 0, kRefused}, {65535, kRefused, 0, kRefused}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.order);
    unsigned short value = 999, expand = 999, index = 999;  // untouched when refused
    EXPECT_EQ(c.value == kRefused ? -2002 : 0, KaExtractDigitFromOrder(c.order, value, expand));
    EXPECT_EQ(c.value == kRefused ? 999 : c.value, value);
    EXPECT_EQ(c.value == kRefused ? 999 : c.expand, expand);
    EXPECT_EQ(c.index == kRefused ? -2002 : 0, KaExtractSymbolFromOrder(c.order, index));
    EXPECT_EQ(c.index == kRefused ? 999 : c.index, index);
  }
  KaLetterFields f{};
  EXPECT_EQ(-2002, ka::detail::SplitLetterOrder(0x8000, f)) << "only Han orders are refused";
  EXPECT_EQ(0, ka::detail::SplitLetterOrder(0x7FFF, f));
}

}  // namespace
