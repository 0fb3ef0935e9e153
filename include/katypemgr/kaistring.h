// KaIString and KaCaseIString: light strings of Windows-1252 bytes that sort in
// a dictionary order without the internationalisation library.
//
// Both hold an owned, zero-terminated byte buffer (null for the empty string)
// and a comparison flags word. They know no code set or language: they compare
// by folding each byte into a sort alphabet through a fixed table
// (KaIStringCmp, KaCaseIStringCmp below). KaIString sorts a lower-case letter
// just before its capital and ignores diacritics; KaCaseIString ignores case
// and, with flag bit 5, weighs diacritics. Apart from comparing, the two classes
// behave alike, byte for byte.
//
// Limits: a text holds at most 65534 bytes before its terminator (its length
// fits the 16-bit length words of the stored string forms); anything longer is
// cut there without a report. Positions and counts are in bytes; a count of
// 65535 means "to the end"; a position past the end is taken as the end.
// Empty content always leaves a null buffer.
//
// Errors: nothing here throws. Memory comes from KaMalloc, which asks
// KaCallMemoryHandler and retries once; when memory stays short an edit leaves
// its object as it was, and a new object (a constructor, Copy, operator+)
// comes out empty.
//
// The flags word is 0 after every construction and every assignment (copies
// and moves included); edits keep it. The descriptor table's string rows set
// it through SetFlags.
#ifndef KATYPEMGR_KAISTRING_H_
#define KATYPEMGR_KAISTRING_H_

#include <cstring>

#include "katypemgr/kaexport.h"

// --- Folding comparison --------------------------------------------------------------

// Compare `s1` with `s2` through the folding of KaIString, resp. KaCaseIString.
// The answer is negative, 0 or positive: the difference of the first differing
// pair of sort bytes (not reduced to -1/+1).
//   - A null text sorts before every other text, an empty one included; two
//     null texts are equal. When either text is empty the answer is the
//     difference of the two first bytes.
//   - maxLength: the most pairs of sort bytes compared (0 means 65535); when
//     they are used up the texts are equal.
//   - Bit 7 of a side's flags (0x80): that side gives its raw bytes, unfolded.
//   - KaCaseIStringCmp only: bit 5 of flags1 (0x20) weighs diacritics on both
//     sides, and a ligature or the sharp s then sorts one below its first
//     letter; bit 5 of flags2 is not looked at. Without it a diacritic counts
//     for nothing and a ligature or the sharp s expands into two sort bytes.
// The walk ends one pair after either side reached its terminator, so a text
// that ends in an expanding byte equals any text that continues the expansion:
// 0xDF equals "ss" and "ssx" alike. With the same flags on both sides the
// order is antisymmetric, but it is not transitive at such ends.
// No allocation; safe to call from several threads.
KATYPEMGR_API int KaIStringCmp(const char* s1, const char* s2, unsigned short maxLength,
                               unsigned short flags1, unsigned short flags2);
KATYPEMGR_API int KaCaseIStringCmp(const char* s1, const char* s2, unsigned short maxLength,
                                   unsigned short flags1, unsigned short flags2);

// --- The two classes ------------------------------------------------------------------

namespace ka::detail {

using FoldedCompare = int (*)(const char*, const char*, unsigned short, unsigned short,
                              unsigned short);

// Everything KaIString and KaCaseIString share; `Derived` is the class itself,
// `kCompare` its compare routine. Instantiated for the two classes only.
template <class Derived, FoldedCompare kCompare>
class KATYPEMGR_API FoldedString {
 public:
  // The longest text, in bytes before the terminator.
  static constexpr unsigned short kMaxLength = 65534;
  // Bits of the flags word.
  static constexpr unsigned short kRawBytes = 0x80;         // compare unfolded
  static constexpr unsigned short kWeighDiacritics = 0x20;  // KaCaseIString only

  FoldedString() = default;                          // empty
  FoldedString(const FoldedString& other);           // deep copy of the text
  FoldedString(FoldedString&& other) noexcept;       // takes the buffer; `other` empty
  FoldedString(char c);                              // one byte; empty for 0
  FoldedString(short value);                         // "%d"
  FoldedString(int value);                           // "%d"
  FoldedString(unsigned int value);                  // "%u"
  FoldedString(double value);                        // "%.17g"
  FoldedString(long long value);                     // "%lld"
  FoldedString(unsigned long long value);            // "%llu"
  FoldedString(const char* text);                    // up to the terminator; null: empty
  FoldedString(const char* text, unsigned short n);  // n bytes, fewer at a zero byte;
                                                     // 65535: up to the terminator
  ~FoldedString();

  // Assignment (operator=, declared by each class) copies or takes the text
  // and sets the flags to 0, also on self-assignment, which keeps the text.
  // From a `const char*`: the text up to its terminator, which may lie in this
  // string's own buffer; null or empty leaves a null buffer.

  // --- Reading -------------------------------------------------------------------
  // Bytes before the terminator; 0 for a null buffer.
  unsigned short Len() const {
    return buffer_ == nullptr ? 0 : static_cast<unsigned short>(strnlen(buffer_, kMaxLength + 1u));
  }
  // True for a null buffer or an empty text.
  bool operator!() const { return buffer_ == nullptr || buffer_[0] == '\0'; }
  // The buffer: null for the empty string, else zero-terminated. Owned by
  // this object; valid until its next edit.
  const char* StrGet() const { return buffer_; }
  unsigned short GetFlags() const { return flags_; }
  void SetFlags(unsigned short flags) { flags_ = flags; }

  // The byte at `position`. Only the bytes of the text (0 .. Len()-1) can be
  // reached: any other position, the terminator's included, gives a per-thread
  // scratch byte, set to 0 on each such call, whose writes reach no string.
  // Writing a 0 into the text shortens it (and may leave an empty text in a
  // buffer).
  char& operator[](int position);
  char operator[](int position) const;  // 0 outside the text

  // The number the text starts with: blanks (space, \t \n \v \f \r) are
  // skipped, then an optional sign; the integer conversions read decimal
  // digits and clamp to their type's range, the double conversion reads
  // decimal notation (".5", "1e3"; the point whatever the locale says) as
  // strtod does. Text that does not start so (also "0x1A", "inf" and a null
  // buffer) gives 0; what follows the number is ignored.
  explicit operator short() const;
  explicit operator int() const;
  explicit operator double() const;
  explicit operator long long() const;

  // --- Comparing -----------------------------------------------------------------
  // Through the class's compare routine, all of both texts (maximum length 0),
  // each side with its own flags word.
  friend bool operator==(const Derived& a, const Derived& b) { return Order(a, b) == 0; }
  friend bool operator!=(const Derived& a, const Derived& b) { return Order(a, b) != 0; }
  friend bool operator<(const Derived& a, const Derived& b) { return Order(a, b) < 0; }
  friend bool operator<=(const Derived& a, const Derived& b) { return Order(a, b) <= 0; }
  friend bool operator>(const Derived& a, const Derived& b) { return Order(a, b) > 0; }
  friend bool operator>=(const Derived& a, const Derived& b) { return Order(a, b) >= 0; }

  // --- Editing -------------------------------------------------------------------
  // Appends `s` (which may be this string) into a buffer of exactly the joined
  // length.
  Derived& operator+=(const Derived& s);
  friend Derived operator+(const Derived& a, const Derived& b) { return Join(a, b); }
  // A new string of the bytes start .. start+count-1, count clipped to the
  // end; empty when start is not below Len().
  Derived Copy(unsigned short start, unsigned short count) const;
  // Removes `count` bytes at `start` (clipped to the end); in place.
  void Cut(unsigned short start, unsigned short count);
  // Pads with `c` up to `n` bytes; nothing when n <= Len() or c is 0.
  void Expand(unsigned short n, char c);
  // The text becomes `n` copies of `c` (empty for n 0 or c 0).
  void Fill(unsigned short n, char c);
  // Inserts `s` before `position`; an empty `s` changes nothing.
  void Insert(const Derived& s, unsigned short position);
  // Overwrites s.Len() bytes from `position` with `s`, growing the text where
  // `s` reaches past its end ("abc" with "xyz" at 2 is "abxyz").
  void Replace(const Derived& s, unsigned short position);
  // Position of the first occurrence of `s`'s bytes at or after `start`
  // (exact bytes: no folding), or -1. An empty `s` is found at `start` when
  // start <= Len().
  int SubStringPos(const Derived& s, unsigned short start = 0) const;
  // Map each byte to its capital / small letter in Windows-1252, in place:
  // a..z, 0xE0..0xFE (not 0xF7) with 0xC0..0xDE (not 0xD7), and 0x9A, 0x9C,
  // 0x9E, 0xFF with 0x8A, 0x8C, 0x8E, 0x9F. Every other byte stays, among
  // them 0xDF, whose capital is two letters, and 0xB5 and 0x83, whose capitals
  // the code set lacks. The length never changes.
  Derived& ToUpper();
  Derived& ToLower();
  // Every blank (0x20) becomes "0" / every "0" a blank; in place.
  void SpaceToZero();
  void ZeroToSpace();

 protected:
  FoldedString& operator=(const FoldedString& other);
  FoldedString& operator=(FoldedString&& other) noexcept;
  Derived& Assign(const char* text);

 private:
  static int Order(const FoldedString& a, const FoldedString& b) {
    return kCompare(a.buffer_, b.buffer_, 0, a.flags_, b.flags_);
  }
  static Derived Join(const FoldedString& a, const FoldedString& b);
  void Adopt(char* text);  // frees the own buffer and keeps `text`
  Derived& Self() { return static_cast<Derived&>(*this); }

  char* buffer_ = nullptr;
  unsigned short flags_ = 0;
};

}  // namespace ka::detail

// Sorts lower case just before upper case ("a" < "A" < "b") and ignores
// diacritics (0xE9 equals "e").
class KATYPEMGR_API KaIString : public ka::detail::FoldedString<KaIString, KaIStringCmp> {
 public:
  using FoldedString::FoldedString;
  KaIString& operator=(const char* text) { return Assign(text); }
};

// Ignores case ("Abc" equals "aBC"); with kWeighDiacritics in the flags of the
// left-hand side, a letter with a diacritic sorts after the plain letter.
class KATYPEMGR_API KaCaseIString
    : public ka::detail::FoldedString<KaCaseIString, KaCaseIStringCmp> {
 public:
  using FoldedString::FoldedString;
  KaCaseIString& operator=(const char* text) { return Assign(text); }
};

static_assert(sizeof(KaIString) == 16, "the row's memory length");
static_assert(sizeof(KaCaseIString) == 16, "the row's memory length");

extern template class ka::detail::FoldedString<KaIString, KaIStringCmp>;
extern template class ka::detail::FoldedString<KaCaseIString, KaCaseIStringCmp>;

#endif  // KATYPEMGR_KAISTRING_H_
