// The order descriptions: an order told as text, as a representative 1-byte
// character, or as the digit value or symbol index it carries. Reads the
// order layout and code set 1, nothing else of the collation tables.
#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "katypemgr/kaorder.h"
#include "katypemgr/kastring.h"
#include "string/order_fields.h"

namespace {

constexpr int kNotInClass = -2002;

// The character that says "no representative character".
constexpr unsigned char kUnknownChar = 7;

// Code set 1 supplies the accented letters and the character names: it is the
// default 8-bit set, and its letters are the ones the letter fields describe.
constexpr unsigned char kWesternCodeSet = 1;

// The letter of base index i is the character i + 62 ("A" is index 3);
// lower case adds 32, as in ASCII.
constexpr unsigned char kBaseToUpper = 62;
constexpr unsigned char kLowerCaseOffset = 32;

// Names of the symbols, by symbol index; every other index has none. The
// names are part of the descriptions' text, spelling included.
struct NamedSymbol {
  unsigned short index;
  const char* name;
};
constexpr NamedSymbol kNamedSymbols[] = {
    {32, "_"},
    {34, "macron sign"},
    {35, "soft hyphen"},
    {36, "-"},
    {37, ","},
    {38, ";"},
    {39, ":"},
    {40, "!"},
    {41, "inverted exclamation mark"},
    {42, "?"},
    {44, "solidus"},
    {46, "full stop"},
    {49, "middle dot"},
    {50, "cedilla"},
    {52, "apostrophe"},
    {55, "\""},
    {58, "left pointing o_double angle quotation mark"},
    {59, "right pointing o_double angle quotation mark"},
    {60, "("},
    {62, ")"},
    {64, "["},
    {65, "]"},
    {66, "{"},
    {67, "}"},
    {68, "section sign"},
    {69, "pilcrow sign"},
    {70, "copyright sign"},
    {71, "registered sign"},
    {73, "@"},
    {74, "currency sign"},
    {75, "cent sign"},
    {76, "$"},
    {77, "pound sign"},
    {78, "yen sign"},
    {79, "*"},
    {80, "reverse solidus"},
    {81, "&"},
    {82, "#"},
    {83, "%"},
    {85, "+"},
    {87, "plus minus sign"},
    {88, "'"},
    {89, "`"},
    {91, "^"},
    {94, "diaeresis"},
    {96, "~"},
    {98, "division sign"},
    {99, "multiplication sign"},
    {101, "<"},
    {103, "="},
    {105, ">"},
    {106, "not sign"},
    {107, "|"},
    {108, "broken bar"},
    {109, "degree sign"},
    {110, "micron sign"},
    {139, "inverted question mark"},
};

static_assert(
    [] {
      for (size_t i = 1; i < std::size(kNamedSymbols); ++i) {
        if (kNamedSymbols[i].index <= kNamedSymbols[i - 1].index) return false;
      }
      return true;
    }(),
    "one name per symbol index, in order");

// The same names by index, for lookup: 0..139, null where there is no name.
constexpr std::array<const char*, 140> kSymbolNames = [] {
  std::array<const char*, 140> byIndex{};
  for (const NamedSymbol& s : kNamedSymbols) byIndex[s.index] = s.name;
  return byIndex;
}();

// Names of the diacritic field's values 1..14 (see KaDiacritic); the
// library's own marks above 14 have no name here.
constexpr std::array<const char*, 15> kDiacriticNames = {
    "",                       // 0  no mark
    "cedilla",                // 1
    "accent acute",           // 2
    "accent grave",           // 3
    "accent circumflex",      // 4
    "tilde",                  // 5
    "diaeresis",              // 6
    "ring above",             // 7
    "stroke",                 // 8
    "accent caron",           // 9
    "accent macron",          // 10
    "accent breve",           // 11
    "dot above",              // 12
    "ogonek",                 // 13
    "accent o_double acute",  // 14
};

// Unicode names of the characters of code set 1 (Windows-1252), by byte; null
// for the controls and the five bytes the set leaves undefined.
constexpr std::array<const char*, 256> kCharNames = {
    nullptr,                                       // 0x00
    nullptr,                                       // 0x01
    nullptr,                                       // 0x02
    nullptr,                                       // 0x03
    nullptr,                                       // 0x04
    nullptr,                                       // 0x05
    nullptr,                                       // 0x06
    nullptr,                                       // 0x07
    nullptr,                                       // 0x08
    nullptr,                                       // 0x09
    nullptr,                                       // 0x0A
    nullptr,                                       // 0x0B
    nullptr,                                       // 0x0C
    nullptr,                                       // 0x0D
    nullptr,                                       // 0x0E
    nullptr,                                       // 0x0F
    nullptr,                                       // 0x10
    nullptr,                                       // 0x11
    nullptr,                                       // 0x12
    nullptr,                                       // 0x13
    nullptr,                                       // 0x14
    nullptr,                                       // 0x15
    nullptr,                                       // 0x16
    nullptr,                                       // 0x17
    nullptr,                                       // 0x18
    nullptr,                                       // 0x19
    nullptr,                                       // 0x1A
    nullptr,                                       // 0x1B
    nullptr,                                       // 0x1C
    nullptr,                                       // 0x1D
    nullptr,                                       // 0x1E
    nullptr,                                       // 0x1F
    "SPACE",                                       // 0x20
    "EXCLAMATION MARK",                            // 0x21
    "QUOTATION MARK",                              // 0x22
    "NUMBER SIGN",                                 // 0x23
    "DOLLAR SIGN",                                 // 0x24
    "PERCENT SIGN",                                // 0x25
    "AMPERSAND",                                   // 0x26
    "APOSTROPHE",                                  // 0x27
    "LEFT PARENTHESIS",                            // 0x28
    "RIGHT PARENTHESIS",                           // 0x29
    "ASTERISK",                                    // 0x2A
    "PLUS SIGN",                                   // 0x2B
    "COMMA",                                       // 0x2C
    "HYPHEN-MINUS",                                // 0x2D
    "FULL STOP",                                   // 0x2E
    "SOLIDUS",                                     // 0x2F
    "DIGIT ZERO",                                  // 0x30
    "DIGIT ONE",                                   // 0x31
    "DIGIT TWO",                                   // 0x32
    "DIGIT THREE",                                 // 0x33
    "DIGIT FOUR",                                  // 0x34
    "DIGIT FIVE",                                  // 0x35
    "DIGIT SIX",                                   // 0x36
    "DIGIT SEVEN",                                 // 0x37
    "DIGIT EIGHT",                                 // 0x38
    "DIGIT NINE",                                  // 0x39
    "COLON",                                       // 0x3A
    "SEMICOLON",                                   // 0x3B
    "LESS-THAN SIGN",                              // 0x3C
    "EQUALS SIGN",                                 // 0x3D
    "GREATER-THAN SIGN",                           // 0x3E
    "QUESTION MARK",                               // 0x3F
    "COMMERCIAL AT",                               // 0x40
    "LATIN CAPITAL LETTER A",                      // 0x41
    "LATIN CAPITAL LETTER B",                      // 0x42
    "LATIN CAPITAL LETTER C",                      // 0x43
    "LATIN CAPITAL LETTER D",                      // 0x44
    "LATIN CAPITAL LETTER E",                      // 0x45
    "LATIN CAPITAL LETTER F",                      // 0x46
    "LATIN CAPITAL LETTER G",                      // 0x47
    "LATIN CAPITAL LETTER H",                      // 0x48
    "LATIN CAPITAL LETTER I",                      // 0x49
    "LATIN CAPITAL LETTER J",                      // 0x4A
    "LATIN CAPITAL LETTER K",                      // 0x4B
    "LATIN CAPITAL LETTER L",                      // 0x4C
    "LATIN CAPITAL LETTER M",                      // 0x4D
    "LATIN CAPITAL LETTER N",                      // 0x4E
    "LATIN CAPITAL LETTER O",                      // 0x4F
    "LATIN CAPITAL LETTER P",                      // 0x50
    "LATIN CAPITAL LETTER Q",                      // 0x51
    "LATIN CAPITAL LETTER R",                      // 0x52
    "LATIN CAPITAL LETTER S",                      // 0x53
    "LATIN CAPITAL LETTER T",                      // 0x54
    "LATIN CAPITAL LETTER U",                      // 0x55
    "LATIN CAPITAL LETTER V",                      // 0x56
    "LATIN CAPITAL LETTER W",                      // 0x57
    "LATIN CAPITAL LETTER X",                      // 0x58
    "LATIN CAPITAL LETTER Y",                      // 0x59
    "LATIN CAPITAL LETTER Z",                      // 0x5A
    "LEFT SQUARE BRACKET",                         // 0x5B
    "REVERSE SOLIDUS",                             // 0x5C
    "RIGHT SQUARE BRACKET",                        // 0x5D
    "CIRCUMFLEX ACCENT",                           // 0x5E
    "LOW LINE",                                    // 0x5F
    "GRAVE ACCENT",                                // 0x60
    "LATIN SMALL LETTER A",                        // 0x61
    "LATIN SMALL LETTER B",                        // 0x62
    "LATIN SMALL LETTER C",                        // 0x63
    "LATIN SMALL LETTER D",                        // 0x64
    "LATIN SMALL LETTER E",                        // 0x65
    "LATIN SMALL LETTER F",                        // 0x66
    "LATIN SMALL LETTER G",                        // 0x67
    "LATIN SMALL LETTER H",                        // 0x68
    "LATIN SMALL LETTER I",                        // 0x69
    "LATIN SMALL LETTER J",                        // 0x6A
    "LATIN SMALL LETTER K",                        // 0x6B
    "LATIN SMALL LETTER L",                        // 0x6C
    "LATIN SMALL LETTER M",                        // 0x6D
    "LATIN SMALL LETTER N",                        // 0x6E
    "LATIN SMALL LETTER O",                        // 0x6F
    "LATIN SMALL LETTER P",                        // 0x70
    "LATIN SMALL LETTER Q",                        // 0x71
    "LATIN SMALL LETTER R",                        // 0x72
    "LATIN SMALL LETTER S",                        // 0x73
    "LATIN SMALL LETTER T",                        // 0x74
    "LATIN SMALL LETTER U",                        // 0x75
    "LATIN SMALL LETTER V",                        // 0x76
    "LATIN SMALL LETTER W",                        // 0x77
    "LATIN SMALL LETTER X",                        // 0x78
    "LATIN SMALL LETTER Y",                        // 0x79
    "LATIN SMALL LETTER Z",                        // 0x7A
    "LEFT CURLY BRACKET",                          // 0x7B
    "VERTICAL LINE",                               // 0x7C
    "RIGHT CURLY BRACKET",                         // 0x7D
    "TILDE",                                       // 0x7E
    nullptr,                                       // 0x7F
    "EURO SIGN",                                   // 0x80
    nullptr,                                       // 0x81
    "SINGLE LOW-9 QUOTATION MARK",                 // 0x82
    "LATIN SMALL LETTER F WITH HOOK",              // 0x83
    "DOUBLE LOW-9 QUOTATION MARK",                 // 0x84
    "HORIZONTAL ELLIPSIS",                         // 0x85
    "DAGGER",                                      // 0x86
    "DOUBLE DAGGER",                               // 0x87
    "MODIFIER LETTER CIRCUMFLEX ACCENT",           // 0x88
    "PER MILLE SIGN",                              // 0x89
    "LATIN CAPITAL LETTER S WITH CARON",           // 0x8A
    "SINGLE LEFT-POINTING ANGLE QUOTATION MARK",   // 0x8B
    "LATIN CAPITAL LIGATURE OE",                   // 0x8C
    nullptr,                                       // 0x8D
    "LATIN CAPITAL LETTER Z WITH CARON",           // 0x8E
    nullptr,                                       // 0x8F
    nullptr,                                       // 0x90
    "LEFT SINGLE QUOTATION MARK",                  // 0x91
    "RIGHT SINGLE QUOTATION MARK",                 // 0x92
    "LEFT DOUBLE QUOTATION MARK",                  // 0x93
    "RIGHT DOUBLE QUOTATION MARK",                 // 0x94
    "BULLET",                                      // 0x95
    "EN DASH",                                     // 0x96
    "EM DASH",                                     // 0x97
    "SMALL TILDE",                                 // 0x98
    "TRADE MARK SIGN",                             // 0x99
    "LATIN SMALL LETTER S WITH CARON",             // 0x9A
    "SINGLE RIGHT-POINTING ANGLE QUOTATION MARK",  // 0x9B
    "LATIN SMALL LIGATURE OE",                     // 0x9C
    nullptr,                                       // 0x9D
    "LATIN SMALL LETTER Z WITH CARON",             // 0x9E
    "LATIN CAPITAL LETTER Y WITH DIAERESIS",       // 0x9F
    "NO-BREAK SPACE",                              // 0xA0
    "INVERTED EXCLAMATION MARK",                   // 0xA1
    "CENT SIGN",                                   // 0xA2
    "POUND SIGN",                                  // 0xA3
    "CURRENCY SIGN",                               // 0xA4
    "YEN SIGN",                                    // 0xA5
    "BROKEN BAR",                                  // 0xA6
    "SECTION SIGN",                                // 0xA7
    "DIAERESIS",                                   // 0xA8
    "COPYRIGHT SIGN",                              // 0xA9
    "FEMININE ORDINAL INDICATOR",                  // 0xAA
    "LEFT-POINTING DOUBLE ANGLE QUOTATION MARK",   // 0xAB
    "NOT SIGN",                                    // 0xAC
    "SOFT HYPHEN",                                 // 0xAD
    "REGISTERED SIGN",                             // 0xAE
    "MACRON",                                      // 0xAF
    "DEGREE SIGN",                                 // 0xB0
    "PLUS-MINUS SIGN",                             // 0xB1
    "SUPERSCRIPT TWO",                             // 0xB2
    "SUPERSCRIPT THREE",                           // 0xB3
    "ACUTE ACCENT",                                // 0xB4
    "MICRO SIGN",                                  // 0xB5
    "PILCROW SIGN",                                // 0xB6
    "MIDDLE DOT",                                  // 0xB7
    "CEDILLA",                                     // 0xB8
    "SUPERSCRIPT ONE",                             // 0xB9
    "MASCULINE ORDINAL INDICATOR",                 // 0xBA
    "RIGHT-POINTING DOUBLE ANGLE QUOTATION MARK",  // 0xBB
    "VULGAR FRACTION ONE QUARTER",                 // 0xBC
    "VULGAR FRACTION ONE HALF",                    // 0xBD
    "VULGAR FRACTION THREE QUARTERS",              // 0xBE
    "INVERTED QUESTION MARK",                      // 0xBF
    "LATIN CAPITAL LETTER A WITH GRAVE",           // 0xC0
    "LATIN CAPITAL LETTER A WITH ACUTE",           // 0xC1
    "LATIN CAPITAL LETTER A WITH CIRCUMFLEX",      // 0xC2
    "LATIN CAPITAL LETTER A WITH TILDE",           // 0xC3
    "LATIN CAPITAL LETTER A WITH DIAERESIS",       // 0xC4
    "LATIN CAPITAL LETTER A WITH RING ABOVE",      // 0xC5
    "LATIN CAPITAL LETTER AE",                     // 0xC6
    "LATIN CAPITAL LETTER C WITH CEDILLA",         // 0xC7
    "LATIN CAPITAL LETTER E WITH GRAVE",           // 0xC8
    "LATIN CAPITAL LETTER E WITH ACUTE",           // 0xC9
    "LATIN CAPITAL LETTER E WITH CIRCUMFLEX",      // 0xCA
    "LATIN CAPITAL LETTER E WITH DIAERESIS",       // 0xCB
    "LATIN CAPITAL LETTER I WITH GRAVE",           // 0xCC
    "LATIN CAPITAL LETTER I WITH ACUTE",           // 0xCD
    "LATIN CAPITAL LETTER I WITH CIRCUMFLEX",      // 0xCE
    "LATIN CAPITAL LETTER I WITH DIAERESIS",       // 0xCF
    "LATIN CAPITAL LETTER ETH",                    // 0xD0
    "LATIN CAPITAL LETTER N WITH TILDE",           // 0xD1
    "LATIN CAPITAL LETTER O WITH GRAVE",           // 0xD2
    "LATIN CAPITAL LETTER O WITH ACUTE",           // 0xD3
    "LATIN CAPITAL LETTER O WITH CIRCUMFLEX",      // 0xD4
    "LATIN CAPITAL LETTER O WITH TILDE",           // 0xD5
    "LATIN CAPITAL LETTER O WITH DIAERESIS",       // 0xD6
    "MULTIPLICATION SIGN",                         // 0xD7
    "LATIN CAPITAL LETTER O WITH STROKE",          // 0xD8
    "LATIN CAPITAL LETTER U WITH GRAVE",           // 0xD9
    "LATIN CAPITAL LETTER U WITH ACUTE",           // 0xDA
    "LATIN CAPITAL LETTER U WITH CIRCUMFLEX",      // 0xDB
    "LATIN CAPITAL LETTER U WITH DIAERESIS",       // 0xDC
    "LATIN CAPITAL LETTER Y WITH ACUTE",           // 0xDD
    "LATIN CAPITAL LETTER THORN",                  // 0xDE
    "LATIN SMALL LETTER SHARP S",                  // 0xDF
    "LATIN SMALL LETTER A WITH GRAVE",             // 0xE0
    "LATIN SMALL LETTER A WITH ACUTE",             // 0xE1
    "LATIN SMALL LETTER A WITH CIRCUMFLEX",        // 0xE2
    "LATIN SMALL LETTER A WITH TILDE",             // 0xE3
    "LATIN SMALL LETTER A WITH DIAERESIS",         // 0xE4
    "LATIN SMALL LETTER A WITH RING ABOVE",        // 0xE5
    "LATIN SMALL LETTER AE",                       // 0xE6
    "LATIN SMALL LETTER C WITH CEDILLA",           // 0xE7
    "LATIN SMALL LETTER E WITH GRAVE",             // 0xE8
    "LATIN SMALL LETTER E WITH ACUTE",             // 0xE9
    "LATIN SMALL LETTER E WITH CIRCUMFLEX",        // 0xEA
    "LATIN SMALL LETTER E WITH DIAERESIS",         // 0xEB
    "LATIN SMALL LETTER I WITH GRAVE",             // 0xEC
    "LATIN SMALL LETTER I WITH ACUTE",             // 0xED
    "LATIN SMALL LETTER I WITH CIRCUMFLEX",        // 0xEE
    "LATIN SMALL LETTER I WITH DIAERESIS",         // 0xEF
    "LATIN SMALL LETTER ETH",                      // 0xF0
    "LATIN SMALL LETTER N WITH TILDE",             // 0xF1
    "LATIN SMALL LETTER O WITH GRAVE",             // 0xF2
    "LATIN SMALL LETTER O WITH ACUTE",             // 0xF3
    "LATIN SMALL LETTER O WITH CIRCUMFLEX",        // 0xF4
    "LATIN SMALL LETTER O WITH TILDE",             // 0xF5
    "LATIN SMALL LETTER O WITH DIAERESIS",         // 0xF6
    "DIVISION SIGN",                               // 0xF7
    "LATIN SMALL LETTER O WITH STROKE",            // 0xF8
    "LATIN SMALL LETTER U WITH GRAVE",             // 0xF9
    "LATIN SMALL LETTER U WITH ACUTE",             // 0xFA
    "LATIN SMALL LETTER U WITH CIRCUMFLEX",        // 0xFB
    "LATIN SMALL LETTER U WITH DIAERESIS",         // 0xFC
    "LATIN SMALL LETTER Y WITH ACUTE",             // 0xFD
    "LATIN SMALL LETTER THORN",                    // 0xFE
    "LATIN SMALL LETTER Y WITH DIAERESIS",         // 0xFF
};

constexpr size_t LongestName(const auto& names) {
  size_t longest = 0;
  for (const char* n : names) {
    if (n != nullptr && std::string_view(n).size() > longest) longest = std::string_view(n).size();
  }
  return longest;
}

// Every description is composed on the stack and stored with one assignment.
// The longest is a letter with both a named diacritic and an extension.
constexpr size_t kDescriptionSize = 96;
static_assert(sizeof "symbol " + LongestName(kSymbolNames) <= kDescriptionSize);
static_assert(sizeof "lower letter x with " + LongestName(kDiacriticNames) +
                  sizeof " with extension" <=
              kDescriptionSize);

// Han orders carry no fields, and in an ideographic language the fields are
// not the Latin letter layout; both are told by number only.
bool DescribedByNumber(unsigned short order, unsigned char language) {
  return order >= kKaOrderHanBase || KaLanguageContext::IsIdeographicLanguage(language);
}

const char* SymbolName(unsigned short index) {
  return index < kSymbolNames.size() ? kSymbolNames[index] : nullptr;
}

// A symbol's character: its name when the name is one character; the solidus
// and the apostrophe have characters of their own though named in words; the
// other symbols named in words have none in ASCII and show as ".".
unsigned char SymbolChar(unsigned short index) {
  const char* name = SymbolName(index);
  if (name == nullptr) return kUnknownChar;
  if (name[0] != '\0' && name[1] == '\0') return static_cast<unsigned char>(name[0]);
  if (index == 44) return '/';
  if (index == 52) return '\'';
  return '.';
}

unsigned char PlainLetter(const KaLetterFields& f) {
  const unsigned char upper = static_cast<unsigned char>(f.base + kBaseToUpper);
  return f.caseField != 0 ? static_cast<unsigned char>(upper + kLowerCaseOffset) : upper;
}

// The first byte of 128..255 in code set 1 whose order is `order`, else
// `fallback`. The bytes below 128 are ASCII and carry no diacritics.
unsigned char AccentedLetter(unsigned short order, unsigned char fallback) {
  const KaCodeSet* western = KaCodeSet::Get(kWesternCodeSet);
  if (western == nullptr) return fallback;
  for (unsigned short b = 128; b <= 255; ++b) {
    if (western->GetOrder(b) == order) return static_cast<unsigned char>(b);
  }
  return fallback;
}

void DescribeSymbol(unsigned short order, char (&out)[kDescriptionSize]) {
  const char* name = SymbolName(static_cast<unsigned short>(order - kKaOrderSymbolBase));
  std::snprintf(out, sizeof out, "symbol %s", name != nullptr ? name : "");
}

void DescribeDigit(unsigned short order, char (&out)[kDescriptionSize]) {
  std::snprintf(out, sizeof out, "digit %u%s", static_cast<unsigned>(KaDigitValueOfOrder(order)),
                (order & 1) != 0 ? " with expand" : "");
}

// `order` is below the Han orders, so the split succeeds.
void DescribeLetter(unsigned short order, char (&out)[kDescriptionSize]) {
  KaLetterFields f{};
  ka::detail::SplitLetterOrder(order, f);
  // Marks above the named fourteen still say that there is a mark.
  const char* with = f.diacritic != 0 ? " with " : "";
  const char* mark = f.diacritic < kDiacriticNames.size() ? kDiacriticNames[f.diacritic] : "";
  std::snprintf(out, sizeof out, "%s letter %c%s%s%s", f.caseField != 0 ? "lower" : "upper",
                static_cast<int>(PlainLetter(f)), with, mark,
                f.extension != 0 ? " with extension" : "");
}

void Describe(unsigned short order, unsigned char language, char (&out)[kDescriptionSize]) {
  if (DescribedByNumber(order, language)) {
    std::snprintf(out, sizeof out, "HAN character 0x%04x\n", static_cast<unsigned>(order));
  } else if (order < kKaOrderSymbolBase) {
    std::snprintf(out, sizeof out, "%s",
                  order == kKaOrderUndefined ? "undefined ordering indicator" : "space");
  } else if (order < kKaOrderDigitBase) {
    DescribeSymbol(order, out);
  } else if (order < kKaOrderLetterBase) {
    DescribeDigit(order, out);
  } else {
    DescribeLetter(order, out);
  }
}

unsigned char RepresentativeChar(unsigned short order, unsigned char language, int searchAccented) {
  if (DescribedByNumber(order, language) || order < kKaOrderSymbolBase) return kUnknownChar;
  if (order < kKaOrderDigitBase) {
    return SymbolChar(static_cast<unsigned short>(order - kKaOrderSymbolBase));
  }
  if (order < kKaOrderLetterBase) {
    return static_cast<unsigned char>('0' + KaDigitValueOfOrder(order));
  }
  KaLetterFields f{};
  ka::detail::SplitLetterOrder(order, f);
  const unsigned char plain = PlainLetter(f);
  if (f.diacritic == 0 || searchAccented == 0) return plain;
  return AccentedLetter(order, plain);
}

}  // namespace

namespace ka::detail {

int SplitLetterOrder(unsigned short order, KaLetterFields& fields) {
  if (order >= kKaOrderHanBase) return kNotInClass;
  fields = KaSplitLetterOrder(order);
  return 0;
}

}  // namespace ka::detail

int KaConvertOrderToString(unsigned short order, unsigned char language, KaString& text) {
  // Set first so that a description that fails to allocate leaves a text
  // that says so, not the caller's previous text.
  text = "unknown";
  char description[kDescriptionSize];
  Describe(order, language, description);
  text = description;
  return 0;
}

int KaConvertOrderToChar(unsigned short order, unsigned char language, unsigned char& ch,
                         int searchAccented, const char** name) {
  ch = RepresentativeChar(order, language, searchAccented);
  if (name != nullptr) *name = kCharNames[ch];
  return 0;
}

int KaExtractDigitFromOrder(unsigned short order, unsigned short& value, unsigned short& expand) {
  if (order < kKaOrderDigitBase || order >= kKaOrderLetterBase) return kNotInClass;
  value = KaDigitValueOfOrder(order);
  expand = order & 1;
  return 0;
}

int KaExtractSymbolFromOrder(unsigned short order, unsigned short& index) {
  // Computed in 16 bits on purpose: a space order wraps to a large index and
  // is refused by the same test as the orders above the symbols.
  const unsigned short candidate = static_cast<unsigned short>(order - kKaOrderSymbolBase);
  if (candidate > kKaOrderDigitBase - kKaOrderSymbolBase - 1) return kNotInClass;
  index = candidate;
  return 0;
}
