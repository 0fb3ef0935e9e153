// KaString: the library's text value, a string of 1-byte or 2-byte code units
// tagged with a code set and a language.
//
// The unit width follows from the code set: 2 above 224, else 1. The buffer is
// owned exclusively, zero-terminated, at most 65532 bytes (terminator
// included); a null buffer is the empty string. Size() counts the text and its
// terminator only: the allocation may be larger, so that a text built piece by
// piece is not reallocated at every edit. Every operation that changes the
// text goes through EditUnits, which converts between code sets, enforces the
// 65532-byte limit (cutting the text and, when "stringOverflow" in section
// "debug" of the default configuration is non-zero, reporting "String
// overflow") and owns the buffer's life; only appending text of the string's
// own code set into room it already has skips it, having nothing to decide.
//
// Positions and counts are in code units; a count of 65535 means "to the end".
// A position past the end is taken as the end. Nothing here throws; a failed
// allocation goes to KaCallMemoryHandler and leaves the string as it was.
#ifndef KATYPEMGR_KASTRING_H_
#define KATYPEMGR_KASTRING_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "katypemgr/kaexport.h"

class KaChar;
class KaCharOperation;
class KaStringIterator;

class KATYPEMGR_API KaString {
 public:
  // The largest buffer, in bytes, terminator included.
  static constexpr unsigned short kMaxSize = 65532;
  // The language byte of a null string.
  static constexpr unsigned char kNullLanguage = 254;

  KaString();                           // default code set and language, empty
  KaString(const KaString& other);      // deep copy
  KaString(KaString&& other) noexcept;  // takes the buffer
  KaString(char c);                     // one unit (empty for 0), default 8-bit set
  KaString(unsigned char c);            // likewise
  KaString(unsigned char codeSet, unsigned char language);  // empty, as given
  KaString(short value);                                    // "%d", default 8-bit set
  KaString(unsigned short unit);                            // one 16-bit unit (empty for 0)
  KaString(int value);                                      // "%d"
  KaString(unsigned int value);                             // "%d" too: above INT_MAX negative
  KaString(double value);                                   // "%.17g"
  KaString(long long value);                                // decimal
  KaString(unsigned long long value);                       // decimal, unsigned
  KaString(const char* text);                               // up to the first zero; null: empty
  KaString(const char* text, unsigned short n);             // n units; above 65534: to the zero
  KaString(const unsigned short* text);                     // 16-bit units, default 16-bit set
  KaString(const unsigned short* text, unsigned short n);
  ~KaString();

  KaString& operator=(const KaString& other);
  KaString& operator=(KaString&& other) noexcept;
  KaString& operator=(const char* text);            // default 8-bit set and language
  KaString& operator=(const unsigned short* text);  // default 16-bit set and language

  // --- Reading ---------------------------------------------------------------
  // Units before the terminator. Every edit ends the text at its first zero
  // unit, so the terminator is the buffer's last unit and the length follows
  // from the size.
  unsigned short Len() const {
    // A shift, not a division: this runs in every edit and search.
    return buffer_ == nullptr ? 0 : static_cast<unsigned short>((size_ >> (UnitWidth() - 1)) - 1);
  }
  bool IsEmpty() const;
  bool operator!() const { return IsEmpty(); }
  const char* StrGet() const { return reinterpret_cast<const char*>(buffer_); }
  unsigned short Size() const { return size_; }  // bytes, terminator included
  unsigned char CodeSet() const { return codeSet_; }
  unsigned char Language() const { return language_; }
  void SetLanguage(unsigned char language) { language_ = language; }
  unsigned char UnitWidth() const { return codeSet_ > 224 ? 2 : 1; }
  // The unit at `position`; 0 past the end.
  unsigned short UnitAt(unsigned short position) const;
  // The character at `position` (pointing into the buffer; past the end it
  // points at the terminator, or holds 0 for an empty string).
  KaChar operator[](int position);

  // --- Appending ---------------------------------------------------------------
  KaString& operator<<(const KaString& s);
  KaString& operator<<(char c);
  KaString& operator<<(unsigned short unit);
  KaString& operator<<(short value);
  KaString& operator<<(int value);
  KaString& operator<<(unsigned int value);
  KaString& operator<<(float value);
  KaString& operator<<(double value);
  KaString& operator<<(long long value);
  KaString& operator<<(unsigned long long value);
  // Text in the default 8-bit code set. Inline: building text piece by piece
  // is mostly appending short literals to a buffer with room for them.
  KaString& operator<<(const char* text) {
    if (text == nullptr) return *this;
    const size_t n = std::strlen(text);
    if (buffer_ != nullptr && codeSet_ <= 224 && size_ + n <= capacity_ &&
        codeSet_ == KaLanguageContext::GetDefault8BitCodeSet()) {
      // A text inside this buffer ends at its terminator: no overlap.
      std::memcpy(buffer_ + size_ - 1, text, n);
      buffer_[size_ - 1 + n] = 0;
      size_ = static_cast<unsigned short>(size_ + n);
      return *this;
    }
    return AppendSlow(text, n);
  }
  KaString& operator<<(const unsigned short* text);
  KaString& operator+=(const KaString& s) { return *this << s; }

  // --- Editing -----------------------------------------------------------------
  KaString Copy(unsigned short start, unsigned short count) const;
  KaString Left(unsigned short n) const;
  KaString Right(unsigned short n) const;
  void Cut(unsigned short start, unsigned short count);
  void Insert(const KaString& s, unsigned short position);
  void Replace(const KaString& s, unsigned short position);
  // Every occurrence from `start` on; answers the number replaced. An empty
  // `from` replaces nothing.
  int ReplaceAll(const KaString& from, const KaString& to, unsigned short start = 0);
  int ReplaceAll(char from, char to, unsigned short start = 0);
  int ReplaceAll(unsigned short from, unsigned short to, unsigned short start = 0);
  // Removes blanks: the units 0x09..0x0D and 0x20.
  KaString& Trim();
  KaString& LeftTrim();
  KaString& RightTrim();
  KaString& ToUpper();
  KaString& ToLower();
  KaString& Transform(KaCharOperation& operation);
  void Fill(unsigned short n, char c);
  void Fill(unsigned short n, unsigned short unit);
  void Expand(unsigned short n, char c);
  void Expand(unsigned short n, unsigned short unit);

  // --- Searching ---------------------------------------------------------------
  // Position of the first occurrence that starts at or after `start` and ends
  // at or before `end` (65535: the end of the text), or -1. An empty `s` is
  // found at `start` when start is not past the end. `s` in another code set
  // is converted into this one first.
  int Find(const KaString& s, unsigned short start = 0, unsigned short end = 65535) const {
    if (s.codeSet_ == codeSet_ && UnitWidth() == 1) return FindBytes(s, start, end);
    return FindUnits(s, start, end);
  }
  int Find(char c, unsigned short start = 0, unsigned short end = 65535) const {
    if (UnitWidth() == 1) return FindByte(static_cast<unsigned char>(c), start, end);
    return FindWideChar(c, start, end);
  }
  int Find(unsigned short unit, unsigned short start = 0, unsigned short end = 65535) const;
  int SubStringPos(const KaString& s, unsigned short start = 0) const {
    return Find(s, start, 65535);
  }

  // --- Comparison --------------------------------------------------------------
  // Through KaStrCmp with mode 1 and the default options (an exact comparison
  // unless changed: equality is then not a pattern match, and a null string
  // never equals an empty one). A string always equals itself.
  bool operator==(const KaString& other) const;
  bool operator!=(const KaString& other) const { return !(*this == other); }
  bool operator<(const KaString& other) const;
  bool operator<=(const KaString& other) const;
  bool operator>(const KaString& other) const;
  bool operator>=(const KaString& other) const;
  // KaStrCmp's answer over at most `maxLength` characters (-1: all) with
  // `cmpOp` (65535: the default options); `other` is the pattern.
  int Compare(const KaString& other, short maxLength = -1, unsigned short cmpOp = 65535) const;
  // Keys one by one (the simple comparison), under the common language when
  // both have the same one and under language 0 otherwise.
  bool EqualsIgnoreLanguage(const KaString& other) const;

  // --- Numbers -----------------------------------------------------------------
  // Result 0 first; -1 when the first unit is neither a digit nor "-", else 0
  // with the decimal value (Atol, Atoll) or the value in the base its prefix
  // gives (Strtol, Strtoll: "0x" hexadecimal, a leading "0" octal). The 32-bit
  // forms parse in 64 bits and clamp to the range of int.
  int Atol(int& result) const;
  int Atoll(long long& result) const;
  int Strtol(int& result) const;
  int Strtoll(long long& result) const;
  // The value of the text as the C library reads it (leading blanks skipped,
  // 0 when no number starts it; out-of-range values clamp).
  explicit operator short() const;
  explicit operator int() const;
  explicit operator double() const;
  explicit operator long long() const;

  // --- Code sets -----------------------------------------------------------------
  // Relabels without converting; -2002 if `codeSet` has the other unit width.
  int SetCodeSetCode(unsigned char codeSet);
  // Converts the buffer when the unit width changes (0 meaning the native set),
  // then stores `codeSet` as given.
  void SetCodeSet(unsigned char codeSet);
  // Converts every character into `codeSet` (0: native) and relabels.
  void MapToCodeSet(unsigned char codeSet);
  // This string becomes the first `n` units (65535: all) of `source`, converted
  // into `codeSet`.
  void CopyMapped(const KaString& source, unsigned char codeSet, unsigned short n = 65535);

  // --- Life --------------------------------------------------------------------
  void Destroy();  // frees the buffer; code set and language stay
  void d_deactivate() { Destroy(); }
  void SetNullValue();  // no buffer, code set 0, language 254
  bool IsNullValue() const {
    return language_ == kNullLanguage || (codeSet_ == 254 && language_ == 0);
  }

  // --- Defaults (forwarded to the language context) -----------------------------
  static bool SetDefaultCodeSet(unsigned char codeSet);
  static bool SetDefaultLanguage(unsigned char language);
  static void SetDefaultCmpOp(unsigned short cmpOp);
  static unsigned char GetDefaultCodeSet();
  static unsigned char GetDefault8CodeSet();
  static unsigned char GetDefault16CodeSet();
  static unsigned char GetDefaultLanguage();
  static unsigned short GetDefaultCmpOp();

  // --- Wildcards ---------------------------------------------------------------
  // The collation orders that stand for "*", "?" and the escape character in
  // patterns. Until set they are the orders code set 1 gives "*", "?" and "\".
  // Setting takes the first order of the character in its own code set and
  // language; answers 0. Reading is safe from several threads at once.
  static int SetAsterisk(const KaChar& c);
  static int SetQuestion(const KaChar& c);
  static int SetEscape(const KaChar& c);
  static unsigned short GetAsterisk();
  static unsigned short GetQuestion();
  static unsigned short GetEscape();

  // The shared empty string: no buffer, the default code set and language of
  // the time the library was first asked for it.
  static const KaString& EmptyString();

  // --- The edit routine -----------------------------------------------------------
  enum EditMode : unsigned char { kOverwrite = 1, kInsert = 2, kSetFrom = 3 };
  // Rebuilds the buffer: takes `count` units of `source` (code set
  // `sourceCodeSet`) from `sourcePosition`, repeated `repeat` times, and
  // overwrites them at `position`, inserts them there, or makes the text the
  // first `position` units followed by them. A source in another code set is
  // converted first. `flag` is kept for the unit copier (255 stands for 1).
  void EditUnits(const void* source, unsigned char sourceCodeSet, unsigned short position,
                 unsigned short sourcePosition, unsigned short count, unsigned short repeat,
                 EditMode mode, unsigned char flag = 255);

 private:
  // Search in 1-byte text of one code set: inline, since it runs per key.
  // The length of 1-byte text is its size less the terminator; without a
  // buffer (size 0) that is -1, which every start is past: signed arithmetic
  // spares a branch.
  int FindBytes(const KaString& s, unsigned short start, unsigned short end) const {
    const int len = static_cast<int>(size_) - 1;
    const int stop = end < len ? end : len;
    const int n = s.size_ != 0 ? static_cast<int>(s.size_) - 1 : 0;
    if (start > stop - n) {
      // Past the end, but an empty text still holds the empty needle at 0.
      return n == 0 && start == 0 && stop < 0 ? 0 : -1;
    }
    if (n == 0) return start;
    const std::string_view hay(reinterpret_cast<const char*>(buffer_), static_cast<size_t>(stop));
    const size_t at = hay.find(
        std::string_view(reinterpret_cast<const char*>(s.buffer_), static_cast<size_t>(n)), start);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
  }
  int FindByte(unsigned char c, unsigned short start, unsigned short end) const {
    const int len = static_cast<int>(size_) - 1;
    const int stop = end < len ? end : len;
    if (c == 0 || start >= stop) return -1;
    const void* at = std::memchr(buffer_ + start, c, static_cast<size_t>(stop - start));
    return at == nullptr ? -1 : static_cast<int>(static_cast<const unsigned char*>(at) - buffer_);
  }
  int FindUnits(const KaString& s, unsigned short start, unsigned short end) const;
  int FindWideChar(char c, unsigned short start, unsigned short end) const;
  KATYPEMGR_LOCAL bool AppendInPlace(const unsigned char* text, unsigned short position,
                                     unsigned short count);
  KATYPEMGR_LOCAL bool EditInPlace(const unsigned char* source, size_t sourceAt, size_t p,
                                   size_t run, unsigned short repeat, EditMode mode,
                                   size_t newSize);
  KATYPEMGR_LOCAL void Rebuild(const unsigned char* source, size_t sourceAt, size_t p, size_t run,
                               unsigned short repeat, EditMode mode, size_t newSize,
                               bool truncated);
  KATYPEMGR_LOCAL bool Reserve(size_t bytes);
  KATYPEMGR_LOCAL void Adopt(unsigned char* buffer, unsigned short size, unsigned short capacity);
  KATYPEMGR_LOCAL void EndAtFirstZero(size_t from, size_t to);
  KATYPEMGR_LOCAL void AppendText(const char* text, size_t n);
  KaString& AppendSlow(const char* text, size_t n);
  KATYPEMGR_LOCAL void AppendUnits(const void* text, unsigned char codeSet, size_t count);
  KATYPEMGR_LOCAL void AppendUnit(unsigned short unit, unsigned char codeSet);
  KATYPEMGR_LOCAL void SetUnits(const void* text, unsigned char codeSet, size_t count);
  KATYPEMGR_LOCAL void SetFromText(const char* text, unsigned char codeSet, unsigned char language);
  KATYPEMGR_LOCAL void AssignUnits(const void* text, unsigned char codeSet, unsigned char language,
                                   unsigned short count);

  unsigned char* buffer_ = nullptr;
  unsigned short size_ = 0;
  unsigned char codeSet_ = 0;
  unsigned char language_ = 0;
  // Bytes allocated for the buffer (0 without one): at least size_, so that
  // edits grow geometrically instead of reallocating each time. Nothing
  // outside the edit routine sees it; it sits in what was padding.
  unsigned short capacity_ = 0;
};
static_assert(sizeof(KaString) == 16, "the string row's memory length");

KATYPEMGR_API KaString operator+(const KaString& a, const KaString& b);

// One character of a code set and language: inline, or pointing into a
// string's buffer (then read through the byte-order flag for 2-byte units).
class KATYPEMGR_API KaChar {
 public:
  KaChar() = default;
  KaChar(KaString& s, int position);
  // Code set 255: the default 8-bit set; language 255: the default language.
  KaChar(char c, unsigned char codeSet = 255, unsigned char language = 255);
  // Code set 255: the default 16-bit set. Above 224 the unit keeps 16 bits,
  // otherwise its low byte.
  KaChar(unsigned short unit, unsigned char codeSet = 255, unsigned char language = 255);
  // Points at `position`; 255 arguments take the defaults (flag 1).
  KaChar(const char* position, unsigned char codeSet, unsigned char language,
         unsigned char byteOrder = 255);

  // The code unit (for code set 254 the order itself, low byte first).
  unsigned short Unit() const;
  unsigned char CodeSet() const { return codeSet_; }
  unsigned char Language() const { return language_; }
  unsigned char UnitWidth() const { return codeSet_ > 224 ? 2 : 1; }
  const char* Position() const { return position_; }

  // KaStrCmp over the one character of each (maximum length 1, mode 1) with
  // the default options; `char` and `unsigned short` operands are characters
  // of the default 8-bit and 16-bit code sets and the default language.
  bool operator==(const KaChar& other) const;
  bool operator!=(const KaChar& other) const;
  bool operator<(const KaChar& other) const;
  bool operator<=(const KaChar& other) const;
  bool operator>(const KaChar& other) const;
  bool operator>=(const KaChar& other) const;
  bool operator==(char c) const;
  bool operator!=(char c) const;
  bool operator<(char c) const;
  bool operator<=(char c) const;
  bool operator>(char c) const;
  bool operator>=(char c) const;
  bool operator==(unsigned short unit) const;
  bool operator!=(unsigned short unit) const;
  bool operator<(unsigned short unit) const;
  bool operator<=(unsigned short unit) const;
  bool operator>(unsigned short unit) const;
  bool operator>=(unsigned short unit) const;
  // KaStrCmp's answer with `cmpOp` (65535: the default options).
  int Compare(const KaChar& other, unsigned short cmpOp = 65535) const;

  // The first collation order of the character.
  unsigned short Order() const;
  bool IsSpace() const;
  bool IsSymbol() const;
  bool IsDigit() const;
  bool IsAlpha() const;
  bool IsHan() const;

  // The same character in `codeSet` (0 or the own set: unchanged).
  KaChar MapTo(unsigned char codeSet) const;
  // Case mappings. A mapping to several characters is installed on the
  // iterator as its overflow list, and the first of them is answered. A
  // mapped character the code set cannot hold leaves the character unchanged.
  KaChar ToUpper(KaStringIterator* it) const;
  KaChar ToLower(KaStringIterator* it) const;

 private:
  KaChar MapCase(KaStringIterator* it, bool upper) const;
  // An iterator hands out the characters of its text with the text's own code
  // set and language, which the constructors would read as defaults when 255.
  friend class KaStringIterator;

  const char* position_ = nullptr;
  unsigned short unit_ = 0;
  unsigned char codeSet_ = 0;
  unsigned char language_ = 0;
  unsigned char byteOrder_ = 1;
};

// A character operation applied along an iterator (KaString::Transform).
class KATYPEMGR_API KaCharOperation {
 public:
  // Defined in the library, so that the class's vtable and type information
  // are emitted there once, in every build.
  virtual ~KaCharOperation();
  // The transformed character of `c`, which stands at `it`.
  virtual KaChar Apply(const KaChar& c, KaStringIterator& it) = 0;
};

class KATYPEMGR_API KaCharToUpper : public KaCharOperation {
 public:
  KaChar Apply(const KaChar& c, KaStringIterator& it) override { return c.ToUpper(&it); }
};

class KATYPEMGR_API KaCharToLower : public KaCharOperation {
 public:
  KaChar Apply(const KaChar& c, KaStringIterator& it) override { return c.ToLower(&it); }
};

// Walks a buffer of code units character by character and yields characters
// and collation orders.
//
// Overflow list: the characters that replace the current one when it expands
// (a case mapping to several characters, installed by SetOverflow). While the
// list is unfinished the iterator yields from it, and Step(1) moves along the
// list without moving in the buffer; the step that finishes the list moves
// past the replaced character. GetNextOrder delivers an order expansion the
// same way, after the character's first order.
class KATYPEMGR_API KaStringIterator {
 public:
  KaStringIterator() = default;
  explicit KaStringIterator(const KaString& s);
  explicit KaStringIterator(const KaChar& c);
  // 255 arguments take the defaults (for the overflow code set: the own set).
  KaStringIterator(const char* buffer, unsigned char codeSet, unsigned char language,
                   unsigned char overflowCodeSet = 255);
  KaStringIterator(const unsigned short* buffer, unsigned char codeSet, unsigned char language,
                   unsigned char overflowCodeSet = 255);
  KaStringIterator(const KaStringIterator& other);
  KaStringIterator& operator=(const KaStringIterator& other);

  KaChar operator*() const;
  KaStringIterator& operator++() { return Step(1); }
  KaStringIterator operator++(int);
  KaStringIterator& operator--() { return Step(0); }
  KaStringIterator operator--(int);
  // Forward (non-zero) or back by one character. Back does not reach before
  // the start of the buffer.
  KaStringIterator& Step(unsigned short forward);
  bool IsEOS() const;
  bool operator==(const KaStringIterator& other) const { return position_ == other.position_; }

  void SetOverflow(const KaWCharList* list, unsigned char codeSet);
  bool OverflowActive() const;

  // The collation order of the current character (code set 254: the unit);
  // with `advance`, moves on, through any order expansion first. 0 at the end.
  unsigned short GetNextOrder(unsigned short advance);

  // Applies `operation` to every character up to the end and writes the
  // results through `out`, converted into its code set, until `out` reaches
  // its limit (see SetLimit). Answers the number of units written.
  unsigned int Transform(KaStringIterator& out, KaCharOperation& operation);
  // Writes one character at the position (converted into this iterator's code
  // set) and moves on; false, and nothing written, at the limit.
  bool Put(const KaChar& c);
  // The end of the writable buffer for Put; null (the default) refuses writes.
  void SetLimit(char* end) { limit_ = end; }

  unsigned char CodeSet() const { return codeSet_; }
  unsigned char Language() const { return language_; }
  const char* Position() const { return position_; }

 private:
  unsigned short CurrentUnit() const;
  unsigned char Width() const { return codeSet_ > 224 ? 2 : 1; }
  void StoreOwnUnit(unsigned short unit);

  unsigned char codeSet_ = 0;
  unsigned char language_ = 0;
  unsigned char overflowCodeSet_ = 0;
  short overflowIndex_ = 0;
  bool listReplacesCharacter_ = false;
  bool ownsUnit_ = false;  // the text is the one character in own_
  char own_[4] = {0, 0, 0, 0};
  KaWCharList expansion_{0, nullptr};  // the order expansion being delivered
  const char* start_ = nullptr;
  const char* position_ = nullptr;
  char* limit_ = nullptr;
  const KaWCharList* overflow_ = nullptr;
};

#endif  // KATYPEMGR_KASTRING_H_
