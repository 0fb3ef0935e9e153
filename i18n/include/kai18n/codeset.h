// Code sets and the Unicode properties of their characters.
//
// A code set is numbered 0..255. 1..224 have 1-byte code units, 225..255
// 2-byte units. The sets this library knows:
//   0         the native code set (KaLanguageContext::GetNativeCodeSet)
//   1 .. 26   8-bit sets, ASCII below 0x80 (see KaLanguageContext names)
//   253       Unicode, 16-bit units of the Basic Multilingual Plane; surrogate
//             units pass through as units
//   254       a buffer whose 16-bit units are collation orders themselves
//
// In an 8-bit set a byte the set leaves undefined stands for U+FFFD, which
// converts back to "?", as does every character the set lacks.
#ifndef KAI18N_CODESET_H_
#define KAI18N_CODESET_H_

#include "kai18n/export.h"
#include "kai18n/order.h"

// Characters that one character expands into: the further orders of an order
// expansion (code set 254) or the characters of a case mapping (code set 253).
// The units are static data of the library.
struct KaWCharList {
  unsigned short count;
  const unsigned short* chars;
};

// Full case mappings of a character that maps to several characters.
struct KaCaseExpansion {
  KaWCharList upper;  // count 0 when the upper-case mapping is one character
  KaWCharList lower;
};

// What the library knows of one character.
struct KaUnicodeProps {
  // Collation order; the first of several when `expansion` lists more.
  unsigned short order = kKaOrderUndefined;
  // Simple case mappings as Unicode characters; 0 where there is none (also
  // where the full mapping is several characters: see caseExpansion).
  unsigned short upper = 0;
  unsigned short lower = 0;
  // The orders that follow `order` (ligatures, sharp s, Hangul syllables into
  // jamo, implicit orders); count 0 for most characters.
  KaWCharList expansion{0, nullptr};
  // Full case mappings of several characters (sharp s to "SS"), or null.
  const KaCaseExpansion* caseExpansion = nullptr;
};

class KAI18N_API KaCodeSet {
 public:
  enum class Kind : unsigned char { kByte, kUnicode, kOrders };

  // The code set object of `number`; 0 answers the native code set's object.
  // Null for numbers this library does not know.
  static const KaCodeSet* Get(unsigned char number);

  constexpr unsigned char Number() const { return number_; }
  const char* Name() const { return name_; }
  unsigned char UnitWidth() const { return kind_ == Kind::kByte ? 1 : 2; }
  Kind GetKind() const { return kind_; }

  // The Unicode character of a unit: the byte's character in an 8-bit set
  // (U+FFFD for an undefined byte or a unit above 255), the unit itself in
  // Unicode, U+FFFD for a collation order.
  unsigned short ToUnicode(unsigned short unit) const;
  // The unit of a Unicode character: the byte in an 8-bit set ("?" when the
  // set lacks it), the character itself in Unicode, its collation order in
  // the order set.
  unsigned short FromUnicode(unsigned short character) const;
  // A unit of code set `from` (0: native) as a unit of this set, through
  // Unicode. An unknown `from` gives what U+FFFD gives.
  unsigned short ConvertUnit(unsigned short unit, unsigned char from) const;

  // Collation order and case mappings of a unit. The language does not change
  // the answer in this release. The order set answers the unit as its order
  // and no case mappings; a unit above 255 in an 8-bit set is undefined, as
  // is a byte the set leaves undefined.
  KaUnicodeProps GetUnicodeProps(unsigned short unit, unsigned char language) const {
    if (kind_ == Kind::kByte) return unit < 256 ? byteProps_[unit] : KaUnicodeProps{};
    return WideUnicodeProps(unit, language);
  }

  // The (first) collation order of a unit: the fast path of GetUnicodeProps
  // for walking text; expansions need GetUnicodeProps.
  unsigned short GetOrder(unsigned short unit) const {
    if (kind_ == Kind::kByte) return unit < 256 ? byteOrders_[unit] : kKaOrderUndefined;
    if (kind_ == Kind::kOrders) return unit;
    return unicodeOrderPages_[unit >> 8][unit & 0xFF];
  }

  // Built by the library only; public for its constant tables.
  constexpr KaCodeSet(unsigned char number, const char* name, Kind kind,
                      const unsigned short* toUnicode, const void* fromUnicode,
                      unsigned short fromUnicodeCount, const KaUnicodeProps* byteProps,
                      const unsigned short* byteOrders,
                      const unsigned short* const* unicodeOrderPages)
      : number_(number),
        kind_(kind),
        fromUnicodeCount_(fromUnicodeCount),
        name_(name),
        toUnicode_(toUnicode),
        fromUnicode_(fromUnicode),
        byteProps_(byteProps),
        byteOrders_(byteOrders),
        unicodeOrderPages_(unicodeOrderPages) {}

 private:
  KaUnicodeProps WideUnicodeProps(unsigned short unit, unsigned char language) const;

  unsigned char number_;
  Kind kind_;
  unsigned short fromUnicodeCount_;
  const char* name_;
  const unsigned short* toUnicode_;                 // 8-bit sets: 256 characters
  const void* fromUnicode_;                         // 8-bit sets: sorted (character, byte)
  const KaUnicodeProps* byteProps_;                 // 8-bit sets: 256 records
  const unsigned short* byteOrders_;                // 8-bit sets: 256 orders
  const unsigned short* const* unicodeOrderPages_;  // Unicode: 256 pages of 256 orders
};

// Properties of a Unicode character (code set 253), for code that has one.
KAI18N_API KaUnicodeProps KaGetUnicodeProps(unsigned short character);

#endif  // KAI18N_CODESET_H_
