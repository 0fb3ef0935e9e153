// Order descriptions: the text of each order class, the representative
// character with and without the accented-letter search, and the extraction
// of digit values, symbol indices and letter fields at their class bounds.
#include "katypemgr/kaorder.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "kai18n/codeset.h"
#include "katypemgr/kastring.h"

namespace {

std::string Describe(unsigned short order, unsigned char language = 0) {
  KaString text;
  text = "previous text";
  EXPECT_EQ(0, KaConvertOrderToString(order, language, text));
  return text.StrGet() == nullptr ? "" : text.StrGet();
}

unsigned short Letter(unsigned char caseField, unsigned char diacritic, unsigned char base,
                      unsigned char extension) {
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

// --- KaConvertOrderToString -----------------------------------------------------------

struct DescriptionCase {
  unsigned short order;
  unsigned char language;
  const char* text;
  const char* why;
};

const DescriptionCase kDescriptionCases[] = {
    {0, 0, "space", "end of text is told as a space"},
    {13, 0, "undefined ordering indicator", "the undefined order"},
    {12, 0, "space", "just below the undefined order"},
    {79, 0, "space", "last space order"},
    {80, 0, "symbol ", "symbol index 0 has no name"},
    {80 + 32, 0, "symbol _", "first named symbol"},
    {80 + 33, 0, "symbol ", "unnamed index between named ones"},
    {80 + 44, 0, "symbol solidus", "solidus is named in words"},
    {80 + 52, 0, "symbol apostrophe", "apostrophe in words"},
    {80 + 55, 0, "symbol \"", "double quotation mark"},
    {80 + 58, 0, "symbol left pointing o_double angle quotation mark", "spelling kept"},
    {80 + 59, 0, "symbol right pointing o_double angle quotation mark", "spelling kept"},
    {80 + 80, 0, "symbol reverse solidus", "index 80"},
    {80 + 88, 0, "symbol '", "apostrophe as a character"},
    {80 + 107, 0, "symbol |", "vertical line"},
    {80 + 110, 0, "symbol micron sign", "last of the run from 98"},
    {80 + 111, 0, "symbol ", "gap from 111 to 138"},
    {80 + 139, 0, "symbol inverted question mark", "last named symbol"},
    {80 + 140, 0, "symbol ", "first index past the named range"},
    {16127, 0, "symbol ", "last symbol order"},
    {16128, 0, "digit 0", "first digit order"},
    {16129, 0, "digit 0 with expand", "bit 0 is the expand flag"},
    {16128 + 25, 0, "digit 2 with expand", "value from the order with bit 0 cleared"},
    {16128 + 90, 0, "digit 9", "nine"},
    {16137, 0, "digit 0 with expand", "truncating division"},
    {16383, 0, "digit 25 with expand", "last digit order"},
    {20749, 0, "lower letter a with accent acute with extension", "all four fields, literal"},
    {0x8000, 0, "HAN character 0x8000\n", "first Han order"},
    {0xFFFF, 0, "HAN character 0xffff\n", "last order, lower-case hex"},
    {13, 20, "HAN character 0x000d\n", "language 20 describes every order by number"},
    {0x511C, 22, "HAN character 0x511c\n", "Korean"},
    {0x511C, 148, "HAN character 0x511c\n", "148 is 20 in the low seven bits"},
    {0x400C, 255, "HAN character 0x400c\n", "255 is 127 in the low seven bits"},
    {0x511C, 19, "lower letter e with accent acute", "19 is alphabetic"},
    {0x511C, 128, "lower letter e with accent acute", "128 is 0 in the low seven bits"},
};

TEST(OrderDescription, EachClassByTable) {
  for (const auto& c : kDescriptionCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.text, Describe(c.order, c.language)) << "order " << c.order;
  }
}

struct LetterCase {
  unsigned char caseField, diacritic, base, extension;
  const char* text;
};

const LetterCase kLetterCases[] = {
    {0, 0, 3, 0, "upper letter A"},
    {1, 0, 3, 0, "lower letter a"},
    {2, 0, 28, 0, "lower letter z"},  // every non-zero case is lower case
    {3, 0, 28, 0, "lower letter z"},
    {0, 0, 28, 0, "upper letter Z"},
    {1, 1, 7, 0, "lower letter e with cedilla"},
    {1, 2, 7, 0, "lower letter e with accent acute"},
    {1, 3, 7, 0, "lower letter e with accent grave"},
    {1, 4, 7, 0, "lower letter e with accent circumflex"},
    {1, 5, 7, 0, "lower letter e with tilde"},
    {1, 6, 7, 0, "lower letter e with diaeresis"},
    {1, 7, 7, 0, "lower letter e with ring above"},
    {1, 8, 7, 0, "lower letter e with stroke"},
    {1, 9, 7, 0, "lower letter e with accent caron"},
    {1, 10, 7, 0, "lower letter e with accent macron"},
    {1, 11, 7, 0, "lower letter e with accent breve"},
    {1, 12, 7, 0, "lower letter e with dot above"},
    {1, 13, 7, 0, "lower letter e with ogonek"},
    {0, 14, 17, 0, "upper letter O with accent o_double acute"},
    {0, 15, 3, 0, "upper letter A with "},  // marks above 14 have no name
    {0, 31, 3, 3, "upper letter A with  with extension"},
    {0, 0, 3, 2, "upper letter A with extension"},
    // Bases outside A..Z still print base + 62: the letters past Z (thorn is
    // 29) come out as the ASCII characters that follow "Z" and "z".
    {0, 0, 0, 0, "upper letter >"},
    {0, 0, 29, 0, "upper letter ["},
    {1, 0, 29, 0, "lower letter {"},
    {3, 31, 31, 3, "lower letter } with  with extension"},  // order 32767
};

TEST(OrderDescription, LetterFields) {
  for (const auto& c : kLetterCases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.text, Describe(Letter(c.caseField, c.diacritic, c.base, c.extension)));
  }
  EXPECT_EQ(16384, Letter(0, 0, 0, 0));
  EXPECT_EQ(32767, Letter(3, 31, 31, 3));
}

// The orders code set 1 gives its characters, described: ties the texts to the
// layout the collation tables actually use.
TEST(OrderDescription, CharactersOfCodeSet1) {
  const std::pair<unsigned char, const char*> cases[] = {
      {0xE9, "lower letter e with accent acute"},
      {0xC7, "upper letter C with cedilla"},
      {0xD8, "upper letter O with stroke"},
      {0x8A, "upper letter S with accent caron"},
      {0xC5, "upper letter A with ring above"},
      {0xF1, "lower letter n with tilde"},
      {0x83, "lower letter f with extension"},
      {0xE6, "lower letter a with "},
      {0xB5, "symbol micron sign"},
      {0xA7, "symbol section sign"},
      {0xA0, "space"},
      {0x81, "undefined ordering indicator"},
      {'7', "digit 7"},
      {'/', "symbol solidus"},
  };
  for (const auto& [byte, text] : cases) EXPECT_EQ(text, Describe(OrderOfByte(byte))) << text;
}

TEST(OrderDescription, AsciiLettersNameThemselves) {
  for (unsigned char c = 'A'; c <= 'Z'; ++c) {
    EXPECT_EQ(std::string("upper letter ") + static_cast<char>(c), Describe(OrderOfByte(c)));
    const unsigned char lower = static_cast<unsigned char>(c + 32);
    EXPECT_EQ(std::string("lower letter ") + static_cast<char>(lower),
              Describe(OrderOfByte(lower)));
  }
}

// --- KaConvertOrderToChar ----------------------------------------------------------------

// Symbol indices whose name is one character, and those named in words.
constexpr char kOneCharSymbols[] = "_-,;:!?\"()[]{}@$*&#%+'`^~<=>|";
constexpr unsigned short kOneCharSymbolIndices[] = {32, 36, 37, 38, 39, 40,  42,  55,  60, 62,
                                                    64, 65, 66, 67, 73, 76,  79,  81,  82, 83,
                                                    85, 88, 89, 91, 96, 101, 103, 105, 107};
static_assert(std::size(kOneCharSymbols) - 1 == std::size(kOneCharSymbolIndices));
constexpr unsigned short kWordSymbolIndices[] = {34, 35, 41, 46,  49,  50,  58,  59, 68,
                                                 69, 70, 71, 74,  75,  77,  78,  80, 87,
                                                 94, 98, 99, 106, 108, 109, 110, 139};

TEST(OrderToChar, EverySymbolIndex) {
  std::map<unsigned short, unsigned char> expected;
  for (size_t i = 0; i < std::size(kOneCharSymbolIndices); ++i) {
    expected[kOneCharSymbolIndices[i]] = static_cast<unsigned char>(kOneCharSymbols[i]);
  }
  for (unsigned short index : kWordSymbolIndices) expected[index] = '.';
  expected[44] = '/';
  expected[52] = '\'';
  for (unsigned order = 80; order < 16128; ++order) {
    const auto it = expected.find(static_cast<unsigned short>(order - 80));
    const unsigned char want = it == expected.end() ? 7 : it->second;
    ASSERT_EQ(want, ToChar(static_cast<unsigned short>(order)).ch) << "symbol index " << order - 80;
  }
}

TEST(OrderToChar, AsciiSymbolsRoundTripThroughCodeSet1) {
  for (const char* p = kOneCharSymbols; *p != '\0'; ++p) {
    EXPECT_EQ(static_cast<unsigned char>(*p),
              ToChar(OrderOfByte(static_cast<unsigned char>(*p))).ch)
        << *p;
  }
}

TEST(OrderToChar, NoCharacterGivesSevenWithoutName) {
  const std::pair<unsigned short, unsigned char> cases[] = {
      {0, 0},      {13, 0},     {79, 0},     {80, 0},      {80 + 33, 0}, {0x8000, 0},
      {0xFFFF, 0}, {16396, 20}, {16396, 22}, {16396, 148}, {16128, 150}, {80 + 44, 127},
  };
  for (const auto& [order, language] : cases) {
    const Representative r = ToChar(order, 1, language);
    EXPECT_EQ(7, r.ch) << order << " in language " << int{language};
    EXPECT_EQ(nullptr, r.name) << order;
  }
  EXPECT_EQ('A', ToChar(16396, 0, 128).ch) << "128 is alphabetic";
  EXPECT_EQ('A', ToChar(16396, 0, 19).ch);
}

TEST(OrderToChar, DigitsAddTheirValueToZero) {
  EXPECT_EQ('0', ToChar(16128).ch);
  EXPECT_EQ('0', ToChar(16129).ch) << "the expand flag is not part of the value";
  EXPECT_EQ('2', ToChar(16128 + 25).ch);
  EXPECT_EQ('9', ToChar(16128 + 90).ch);
  EXPECT_STREQ("DIGIT NINE", ToChar(16128 + 90).name);
  // Values above 9 are not made by the collation tables; they run on in ASCII.
  EXPECT_EQ('I', ToChar(16383).ch);
}

TEST(OrderToChar, LettersWithAndWithoutSearch) {
  const unsigned short eAcute = OrderOfByte(0xE9);
  Representative r = ToChar(eAcute, 0);
  EXPECT_EQ('e', r.ch);
  EXPECT_STREQ("LATIN SMALL LETTER E", r.name);
  r = ToChar(eAcute, 1);
  EXPECT_EQ(0xE9, r.ch);
  EXPECT_STREQ("LATIN SMALL LETTER E WITH ACUTE", r.name);
  EXPECT_EQ(0xC9, ToChar(OrderOfByte(0xC9), -1).ch) << "any non-zero switch searches";
  EXPECT_EQ('O', ToChar(OrderOfByte(0xD8), 0).ch);

  // A diacritic code set 1 lacks (o with double acute) falls back to the base.
  EXPECT_EQ('o', ToChar(Letter(1, 14, 17, 0), 1).ch);
  // Without a diacritic there is no search, even for a byte above 127 (f with
  // hook has only an extension).
  EXPECT_EQ('f', ToChar(OrderOfByte(0x83), 1).ch);
  EXPECT_EQ('A', ToChar(Letter(0, 0, 3, 0), 1).ch);
  EXPECT_EQ('a', ToChar(Letter(2, 0, 3, 0)).ch);
  EXPECT_EQ('>', ToChar(Letter(0, 0, 0, 0)).ch) << "base 0";
  EXPECT_STREQ("GREATER-THAN SIGN", ToChar(Letter(0, 0, 0, 0)).name);
  EXPECT_EQ('{', ToChar(OrderOfByte(0xFE)).ch) << "thorn is base 29";
}

// Brute force over code set 1: the search finds each accented letter's own
// byte. No two letters of code set 1 share an order, so which match comes
// first never shows here.
TEST(OrderToChar, SearchFindsEveryAccentedLetterOfCodeSet1) {
  int searched = 0;
  for (unsigned b = 128; b < 256; ++b) {
    const unsigned short order = OrderOfByte(static_cast<unsigned char>(b));
    if (KaClassOfOrder(order) != KaOrderClass::kLetter ||
        KaSplitLetterOrder(order).diacritic == 0) {
      continue;
    }
    ++searched;
    const Representative r = ToChar(order, 1);
    EXPECT_EQ(b, r.ch) << "byte " << b;
    ASSERT_NE(nullptr, r.name);
  }
  EXPECT_GT(searched, 60) << "the loop must reach the accented letters";
}

TEST(OrderToChar, NamesOfResults) {
  EXPECT_STREQ("SOLIDUS", ToChar(80 + 44).name);
  EXPECT_STREQ("APOSTROPHE", ToChar(80 + 52).name);
  EXPECT_STREQ("FULL STOP", ToChar(80 + 139).name);
  EXPECT_STREQ("QUOTATION MARK", ToChar(80 + 55).name);
  EXPECT_STREQ("LATIN CAPITAL LETTER A", ToChar(16396).name);
  EXPECT_STREQ("LATIN CAPITAL LETTER AE", ToChar(OrderOfByte(0xC6), 1).name);
  EXPECT_STREQ("LATIN SMALL LETTER Y WITH DIAERESIS", ToChar(OrderOfByte(0xFF), 1).name);

  unsigned char ch = 0;
  EXPECT_EQ(0, KaConvertOrderToChar(16396, 0, ch, 1, nullptr)) << "the name is optional";
  EXPECT_EQ('A', ch);
}

// Every order, both switches: a name exactly when there is a character.
TEST(OrderToChar, NameIsNullOnlyForTheUnknownMarker) {
  std::set<unsigned char> seen;
  for (unsigned order = 0; order < 65536; ++order) {
    for (int search = 0; search < 2; ++search) {
      const Representative r = ToChar(static_cast<unsigned short>(order), search);
      ASSERT_EQ(r.ch == 7, r.name == nullptr) << "order " << order;
      seen.insert(r.ch);
    }
  }
  EXPECT_TRUE(seen.count(0xE9)) << "the sweep reaches the searched letters";
}

// --- Extraction -------------------------------------------------------------------------

TEST(OrderExtraction, DigitBounds) {
  unsigned short value = 999;
  unsigned short expand = 999;
  for (unsigned short order : {0, 79, 16127, 16384, 32768, 65535}) {
    EXPECT_EQ(-2002, KaExtractDigitFromOrder(order, value, expand)) << order;
  }
  EXPECT_EQ(999, value) << "outputs untouched on failure";
  EXPECT_EQ(999, expand);

  EXPECT_EQ(0, KaExtractDigitFromOrder(16128, value, expand));
  EXPECT_EQ(0, value);
  EXPECT_EQ(0, expand);
  EXPECT_EQ(0, KaExtractDigitFromOrder(16128 + 25, value, expand));
  EXPECT_EQ(2, value);
  EXPECT_EQ(1, expand);
  EXPECT_EQ(0, KaExtractDigitFromOrder(16138, value, expand));
  EXPECT_EQ(1, value);
  EXPECT_EQ(0, expand);
  EXPECT_EQ(0, KaExtractDigitFromOrder(16383, value, expand));
  EXPECT_EQ(25, value);
  EXPECT_EQ(1, expand);
}

TEST(OrderExtraction, SymbolBounds) {
  unsigned short index = 999;
  for (unsigned order = 0; order < 80; ++order) {
    ASSERT_EQ(-2002, KaExtractSymbolFromOrder(static_cast<unsigned short>(order), index))
        << "space " << order << " wraps above the last index";
  }
  for (unsigned short order : {16128, 16384, 32768, 65535}) {
    EXPECT_EQ(-2002, KaExtractSymbolFromOrder(order, index)) << order;
  }
  EXPECT_EQ(999, index);
  EXPECT_EQ(0, KaExtractSymbolFromOrder(80, index));
  EXPECT_EQ(0, index);
  EXPECT_EQ(0, KaExtractSymbolFromOrder(16127, index));
  EXPECT_EQ(16047, index);
}

TEST(OrderExtraction, LetterSplitter) {
  KaLetterFields f{9, 9, 9, 9};
  EXPECT_EQ(-2002, ka::detail::SplitLetterOrder(0x8000, f));
  EXPECT_EQ(-2002, ka::detail::SplitLetterOrder(0xFFFF, f));
  EXPECT_EQ(9, f.caseField) << "fields untouched on failure";

  ASSERT_EQ(0, ka::detail::SplitLetterOrder(20749, f));  // 0x510D
  EXPECT_EQ(1, f.caseField);
  EXPECT_EQ(2, f.diacritic);
  EXPECT_EQ(3, f.base);
  EXPECT_EQ(1, f.extension);
  ASSERT_EQ(0, ka::detail::SplitLetterOrder(0x7FFF, f));
  EXPECT_EQ(3, f.caseField);
  EXPECT_EQ(31, f.diacritic);
  EXPECT_EQ(31, f.base);
  EXPECT_EQ(3, f.extension);
  // Not a letter's order, but split all the same: only bit 15 is refused.
  ASSERT_EQ(0, ka::detail::SplitLetterOrder(13, f));
  EXPECT_EQ(3, f.base);
  EXPECT_EQ(1, f.extension);
}

}  // namespace
