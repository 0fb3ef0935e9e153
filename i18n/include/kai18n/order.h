// The layout of a 16-bit collation order.
//
// The value range of an order tells what kind of character it is, and the
// bit fields of a letter order give its base letter, diacritic and case, so
// that comparison can weigh them at different levels:
//
//       0            end of text
//       1 ..    79   spaces and controls; 13 is the undefined ordering indicator,
//                    the order of every unassigned character and noncharacter
//      80 .. 16127   symbols; symbol index = order - 80
//   16128 .. 16383   digits: 16128 + 10 * value; bit 0 is the expand flag
//   16384 .. 32767   Latin letters (bit 14 set):
//                      bits  0-1  extension (a letter of its own after the base)
//                      bits  2-6  base letter; A is 3 ... Z is 28, thorn 29
//                      bits  7-11 diacritic (KaDiacritic), 0 for none
//                      bits 12-13 case: 0 upper case, nonzero lower case
//   32768 .. 65519   letters of other scripts, each script together, then the
//                    ideographs
//   65520 .. 65535   implicit leads: a character without an order of its own
//                    (surrogates, private use, the ideographs that did not fit)
//                    sorts as the lead 65520 + (cp >> 12) followed by the order
//                    32768 + (cp & 0xFFF)
#ifndef KAI18N_ORDER_H_
#define KAI18N_ORDER_H_

inline constexpr unsigned short kKaOrderUndefined = 13;
inline constexpr unsigned short kKaOrderSymbolBase = 80;
inline constexpr unsigned short kKaOrderDigitBase = 16128;
inline constexpr unsigned short kKaOrderLetterBase = 16384;
inline constexpr unsigned short kKaOrderHanBase = 32768;
inline constexpr unsigned short kKaOrderImplicitLead = 0xFFF0;

// Base letter index of "A"; the upper-case ASCII letter is index + 62.
inline constexpr unsigned char kKaBaseLetterA = 3;
inline constexpr unsigned char kKaBaseLetterThorn = 29;

// Values of the diacritic field. 1..14 are the marks the order descriptions
// name; the others are this library's: ligature marks the first order of a
// ligature's expansion (æ as a + e), variant a compatibility form of a letter
// (fullwidth, superscript), eth the letter eth sorting with d; 18..31 are
// further marks, by how many letters carry them.
enum KaDiacritic : unsigned char {
  kKaDiacriticNone = 0,
  kKaDiacriticCedilla = 1,
  kKaDiacriticAcute = 2,
  kKaDiacriticGrave = 3,
  kKaDiacriticCircumflex = 4,
  kKaDiacriticTilde = 5,
  kKaDiacriticDiaeresis = 6,
  kKaDiacriticRingAbove = 7,
  kKaDiacriticStroke = 8,
  kKaDiacriticCaron = 9,
  kKaDiacriticMacron = 10,
  kKaDiacriticBreve = 11,
  kKaDiacriticDotAbove = 12,
  kKaDiacriticOgonek = 13,
  kKaDiacriticDoubleAcute = 14,
  kKaDiacriticLigature = 15,
  kKaDiacriticVariant = 16,
  kKaDiacriticEth = 17,
};

enum class KaOrderClass : unsigned char { kEnd, kSpace, kSymbol, kDigit, kLetter, kHan };

constexpr KaOrderClass KaClassOfOrder(unsigned short order) {
  if (order == 0) return KaOrderClass::kEnd;
  if (order < kKaOrderSymbolBase) return KaOrderClass::kSpace;
  if (order < kKaOrderDigitBase) return KaOrderClass::kSymbol;
  if (order < kKaOrderLetterBase) return KaOrderClass::kDigit;
  if (order < kKaOrderHanBase) return KaOrderClass::kLetter;
  return KaOrderClass::kHan;
}

// The fields of a letter order (meaningful for KaOrderClass::kLetter).
struct KaLetterFields {
  unsigned char caseField;  // 0 upper case
  unsigned char diacritic;
  unsigned char base;
  unsigned char extension;
};

constexpr KaLetterFields KaSplitLetterOrder(unsigned short order) {
  return {static_cast<unsigned char>((order >> 12) & 3),
          static_cast<unsigned char>((order >> 7) & 31),
          static_cast<unsigned char>((order >> 2) & 31), static_cast<unsigned char>(order & 3)};
}

constexpr unsigned short KaMakeLetterOrder(KaLetterFields f) {
  return static_cast<unsigned short>(kKaOrderLetterBase | (f.caseField & 3) << 12 |
                                     (f.diacritic & 31) << 7 | (f.base & 31) << 2 |
                                     (f.extension & 3));
}

// Digit value of a digit order (bit 0, the expand flag, cleared first).
constexpr unsigned short KaDigitValueOfOrder(unsigned short order) {
  return static_cast<unsigned short>(((order & ~1u) - kKaOrderDigitBase) / 10);
}

#endif  // KAI18N_ORDER_H_
