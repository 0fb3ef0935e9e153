// Text of the primitive values: the print, scan and string-array conversion
// slots of the one-byte, integer and floating rows. Knows no table; the rows
// pick these functions by name.
//
// Every format comes from outside (engine code, tool users) and is checked and
// rewritten here before the C library sees it; the rewritten format names
// exactly the argument types that this file then passes (see CheckedFormat).
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <type_traits>

#include "kabase/assert.h"
#include "kabase/memory.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kaprimtext.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"
#include "table/arrays.h"

namespace {

constexpr const char* kSource = "src/kaprimtext";

// --- Checked formats ------------------------------------------------------------------
//
// A caller's format is used as the C library would use it with a variable of
// the row's type, wherever that cannot read or write outside the element. It
// is rewritten so that every value conversion takes the one argument type of
// its shape (long long, unsigned long long, double, int or a character
// buffer); this file narrows the value to the type the conversion names
// itself, the way the C library converts its argument.

// Longer formats are refused; with this bound and fields of at most 255
// characters every printed text fits in kTextSize.
constexpr size_t kMaxFormat = 255;
constexpr int kMaxField = 255;
constexpr size_t kTextSize = 1024;

constexpr const char* kByteLetters = "cdiouxX";
constexpr const char* kIntegerLetters = "diouxX";
constexpr const char* kFloatingLetters = "eEfFgGaA";
constexpr const char* kExponentLetters = "di";
// What a suppressed scan conversion may skip: it stores nothing.
constexpr const char* kSkipLetters = "diouxXeEfFgGaAcs[";
constexpr const char* kLdexpPrefix = "ldexp(";

enum class Use : unsigned char { kPrint, kScan };

// The arguments a rewritten format takes. The calls into the C library check
// it, so a format is only ever used with the arguments it was written for.
enum class Shape : unsigned char {
  kNone,           // refused: nothing is printed or read
  kPrintText,      // no argument: literal text and "%%" only
  kPrintChar,      // int
  kPrintSigned,    // long long
  kPrintUnsigned,  // unsigned long long
  kPrintDouble,    // double
  kPrintLdexp,     // double, long long
  kScanText,       // no argument, so nothing is stored
  kScanChar,       // char[kMaxField + 1]
  kScanSigned,     // long long*
  kScanUnsigned,   // unsigned long long*
  kScanFloat,      // float*
  kScanDouble,     // double*
  kScanLdexp,      // double*, long long*
};

struct CheckedFormat {
  char text[kMaxFormat + 16] = {};  // a rewrite adds at most two bytes per value conversion
  size_t length = 0;
  Shape shape = Shape::kNone;
  // Bytes of the C type that the integer conversion names (the exponent's
  // in an "ldexp(" format); its value passes through that type.
  unsigned bytes = 8;
};

bool IsIn(char c, const char* set) { return c != '\0' && std::strchr(set, c) != nullptr; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Length modifiers, sized as in the runtime the stored formats were written
// for: its long (and so "%ld" on the 32-bit rows), size_t and ptrdiff_t are
// 32 bits, its long double is a double.
enum class Modifier : unsigned char { kNone, kHH, kH, kL, kLL, kBigL, k32, k64 };

Modifier ReadModifier(const char*& p) {
  const auto take = [&p](int n, Modifier m) {
    p += n;
    return m;
  };
  switch (p[0]) {
    case 'h':
      return p[1] == 'h' ? take(2, Modifier::kHH) : take(1, Modifier::kH);
    case 'l':
      return p[1] == 'l' ? take(2, Modifier::kLL) : take(1, Modifier::kL);
    case 'L':
      return take(1, Modifier::kBigL);
    case 'j':
      return take(1, Modifier::k64);
    case 'z':
    case 't':
      return take(1, Modifier::k32);
    case 'I':
      if (p[1] == '6' && p[2] == '4') return take(3, Modifier::k64);
      if (p[1] == '3' && p[2] == '2') return take(3, Modifier::k32);
      return take(1, Modifier::k32);  // pointer-sized, 32 bits there
    default:
      return Modifier::kNone;
  }
}

unsigned IntegerBytes(Modifier m) {
  switch (m) {
    case Modifier::kHH:
      return 1;
    case Modifier::kH:
      return 2;
    case Modifier::kLL:
    case Modifier::k64:
      return 8;
    default:
      return 4;
  }
}

// Digits of a width or precision; false above kMaxField, which also keeps a
// hostile "%999999999d" from asking the C library for a giant field.
bool SkipField(const char*& p) {
  int value = 0;
  while (IsDigit(*p)) {
    value = value * 10 + (*p - '0');
    if (value > kMaxField) return false;
    ++p;
  }
  return true;
}

using Span = std::string_view;

// One conversion of a caller's format, as read.
struct Conversion {
  bool suppressed = false;  // scanning's "%*": read and skipped
  Span flags, width, precision;
  bool hasPrecision = false;
  Span scanset;  // "[...]" of a '[' conversion
  Modifier modifier = Modifier::kNone;
  char letter = '\0';
};

Span Between(const char* begin, const char* end) {
  return Span(begin, static_cast<size_t>(end - begin));
}

// Reads the conversion after a "%". False when it is not well formed, or when
// it would take an argument this file does not pass: a positional "n$", and
// a width or precision of "*" in printing.
bool ReadConversion(const char*& p, Use use, Conversion& c) {
  const char* digits = p;
  while (IsDigit(*digits)) ++digits;
  if (digits != p && *digits == '$') return false;
  if (use == Use::kScan && *p == '*') {
    c.suppressed = true;
    ++p;
  }
  const char* start = p;
  while (IsIn(*p, "-+ #0")) ++p;
  c.flags = Between(start, p);
  start = p;
  if (!SkipField(p)) return false;
  c.width = Between(start, p);
  if (*p == '.') {
    start = ++p;
    if (!SkipField(p)) return false;
    c.precision = Between(start, p);
    c.hasPrecision = true;
  }
  c.modifier = ReadModifier(p);
  c.letter = *p;
  if (c.letter == '\0') return false;
  start = p++;
  if (c.letter == '[') {  // a scanset: "]" first is one of its characters
    if (*p == '^') ++p;
    if (*p == ']') ++p;
    while (*p != '\0' && *p != ']') ++p;
    if (*p == '\0') return false;
    c.scanset = Between(start, ++p);
  }
  return true;
}

// The modifier is one the C library defines for the letter and that names a
// value this file can pass: "%lc" (a wide character) and "%Ld" are refused.
bool ModifierFits(const Conversion& c) {
  if (IsIn(c.letter, kIntegerLetters)) return c.modifier != Modifier::kBigL;
  if (IsIn(c.letter, kFloatingLetters)) {
    return c.modifier == Modifier::kNone || c.modifier == Modifier::kL ||
           c.modifier == Modifier::kBigL;
  }
  // Characters, strings, scansets: wide ones only where nothing is stored.
  return c.modifier == Modifier::kNone || (c.suppressed && c.modifier == Modifier::kL);
}

class FormatWriter {
 public:
  explicit FormatWriter(CheckedFormat& out) : out_(out) {
    out_.length = 0;
    out_.text[0] = '\0';
  }
  bool Put(Span s) {
    if (s.size() >= sizeof out_.text - out_.length) return false;
    std::memcpy(out_.text + out_.length, s.data(), s.size());
    out_.length += s.size();
    out_.text[out_.length] = '\0';
    return true;
  }

 private:
  CheckedFormat& out_;
};

// Writes a value conversion for the argument of its shape. Printing keeps
// flags, width and precision, less those the C library leaves undefined for
// the letter ("#" with d, i, u or c; "0" or a precision with c). Scanning
// keeps only the width, sscanf's longest field: the row's default formats
// are print formats and are handed to the scan as they are.
bool WriteValue(FormatWriter& w, const Conversion& c, Use use, bool readDouble) {
  const bool isChar = c.letter == 'c';
  const bool floating = IsIn(c.letter, kFloatingLetters);
  if (!w.Put("%")) return false;
  if (use == Use::kPrint) {
    for (const char flag : c.flags) {
      if (flag == '#' && !floating && !IsIn(c.letter, "oxX")) continue;
      if (flag == '0' && isChar) continue;
      if (!w.Put(Span(&flag, 1))) return false;
    }
    if (!w.Put(c.width)) return false;
    if (c.hasPrecision && !isChar && (!w.Put(".") || !w.Put(c.precision))) return false;
  } else if (!w.Put(c.width)) {
    return false;
  }
  Span modifier = "";
  if (floating) {
    modifier = use == Use::kScan && readDouble ? "l" : "";
  } else if (!isChar) {
    modifier = "ll";
  }
  return w.Put(modifier) && w.Put(Span(&c.letter, 1));
}

// A suppressed conversion keeps its width and letter (or scanset); with
// nothing stored, its modifier does not matter.
bool WriteSkip(FormatWriter& w, const Conversion& c) {
  return w.Put("%*") && w.Put(c.width) && w.Put(c.letter == '[' ? c.scanset : Span(&c.letter, 1));
}

// What a walk over a format found.
struct Walk {
  int values = 0;  // value conversions
  Conversion first, second;
};

// Rewrites `format` into `out` when it holds literal text, "%%", suppressed
// conversions (scanning) and at most two value conversions, the i-th one of
// `accepted[i]` (a null entry: no such conversion). A floating scan reads a
// double when `readDouble` is set, or when its modifier names a double.
bool WalkFormat(const char* format, const char* const* accepted, Use use, bool readDouble,
                CheckedFormat& out, Walk& walk) {
  FormatWriter w(out);
  const char* p = format;
  while (*p != '\0') {
    const char* literal = p;
    while (*p != '\0' && *p != '%') ++p;
    if (!w.Put(Between(literal, p))) return false;
    if (*p == '\0') break;
    ++p;  // the '%'
    if (*p == '%') {
      ++p;
      if (!w.Put("%%")) return false;
      continue;
    }
    Conversion c;
    if (!ReadConversion(p, use, c) || !ModifierFits(c)) return false;
    if (c.suppressed) {
      if (!IsIn(c.letter, kSkipLetters) || !WriteSkip(w, c)) return false;
      continue;
    }
    if (walk.values == 2 || accepted[walk.values] == nullptr ||
        !IsIn(c.letter, accepted[walk.values])) {
      return false;
    }
    const bool wantsDouble = readDouble || c.modifier != Modifier::kNone;
    if (!WriteValue(w, c, use, wantsDouble)) return false;
    (walk.values == 0 ? walk.first : walk.second) = c;
    ++walk.values;
  }
  return true;
}

Shape ShapeOf(const Walk& walk, Use use, bool readsDouble) {
  const bool print = use == Use::kPrint;
  if (walk.values == 0) return print ? Shape::kPrintText : Shape::kScanText;
  if (walk.values == 2) return print ? Shape::kPrintLdexp : Shape::kScanLdexp;
  const char letter = walk.first.letter;
  if (letter == 'c') return print ? Shape::kPrintChar : Shape::kScanChar;
  if (IsIn(letter, kFloatingLetters)) {
    return print ? Shape::kPrintDouble : readsDouble ? Shape::kScanDouble : Shape::kScanFloat;
  }
  if (IsIn(letter, "di")) return print ? Shape::kPrintSigned : Shape::kScanSigned;
  return print ? Shape::kPrintUnsigned : Shape::kScanUnsigned;
}

// Checks and rewrites `format`; false when it is refused. `floatRow`: a
// floating scan without a modifier reads a float (o_float) rather than a
// double. The mantissa of an "ldexp(" split is a double whatever the row.
bool Rewrite(const char* format, const char* const* accepted, Use use, bool floatRow,
             CheckedFormat& out) {
  out.shape = Shape::kNone;
  if (strnlen(format, kMaxFormat + 1) > kMaxFormat) return false;
  Walk walk;
  if (!WalkFormat(format, accepted, use, !floatRow, out, walk)) return false;
  if (walk.values == 2 && floatRow && use == Use::kScan) {
    walk = Walk{};
    if (!WalkFormat(format, accepted, use, true, out, walk)) return false;
  }
  const Conversion& integer = walk.values == 2 ? walk.second : walk.first;
  out.bytes = IntegerBytes(integer.modifier);
  const bool readsDouble = !floatRow || walk.first.modifier != Modifier::kNone;
  out.shape = ShapeOf(walk, use, readsDouble);
  return true;
}

// Whether the first conversion of a refused format names an unsigned reading;
// it chooses between the signed and the unsigned default of the family, since
// rows of both kinds share one function.
bool NamesUnsigned(const char* format) {
  if (format == nullptr) return false;
  const char* p = format;
  for (size_t n = 0; n < kMaxFormat && *p != '\0'; ++n, ++p) {
    if (*p != '%') continue;
    if (*++p == '%') continue;
    while (IsIn(*p, "-+ #0123456789.hlLIjztq")) ++p;
    return IsIn(*p, "ouxX");
  }
  return false;
}

// A family of rows that share one print and one scan function.
struct IntegerFamily {
  unsigned bytes;
  const char* accepted;
  const char* signedDefault;
  const char* unsignedDefault;
};

constexpr IntegerFamily kByteFamily = {1, kByteLetters, "%c", "%c"};
constexpr IntegerFamily kShortFamily = {2, kIntegerLetters, "%hd", "%hu"};
constexpr IntegerFamily kLongFamily = {4, kIntegerLetters, "%ld", "%lu"};
constexpr IntegerFamily kIntFamily = {4, kIntegerLetters, "%d", "%u"};
constexpr IntegerFamily kO8BFamily = {8, kIntegerLetters, "%I64d", "%I64u"};
constexpr const char* kFloatingDefault = "%.17g";

// Printing: the caller's format, or the family's default when it is null or
// refused. Scanning: the caller's format, the default when it is null, and
// shape kNone (nothing is read) when it is refused.
CheckedFormat CheckInteger(const char* format, const IntegerFamily& family, Use use) {
  const char* const accepted[] = {family.accepted, nullptr};
  CheckedFormat f;
  if (format != nullptr) {
    if (Rewrite(format, accepted, use, false, f)) return f;
    if (use == Use::kScan) return CheckedFormat{};
  }
  const char* fallback = NamesUnsigned(format) ? family.unsignedDefault : family.signedDefault;
  if (!Rewrite(fallback, accepted, use, false, f)) {
    KAMO_assert("default print format refused", kSource, __LINE__);
  }
  return f;
}

CheckedFormat CheckFloating(const char* format, Use use, bool floatRow) {
  static constexpr const char* kPlain[] = {kFloatingLetters, nullptr};
  static constexpr const char* kLdexp[] = {kFloatingLetters, kExponentLetters};
  CheckedFormat f;
  if (format != nullptr) {
    const bool ldexp = std::strncmp(format, kLdexpPrefix, std::strlen(kLdexpPrefix)) == 0;
    if (Rewrite(format, ldexp ? kLdexp : kPlain, use, floatRow, f)) return f;
    if (use == Use::kScan) return CheckedFormat{};
  }
  if (!Rewrite(kFloatingDefault, kPlain, use, floatRow, f)) {
    KAMO_assert("default print format refused", kSource, __LINE__);
  }
  return f;
}

// --- The calls into the C library --------------------------------------------------------
//
// The one place where a format built at run time reaches printf and scanf.
// The compiler cannot check such a format, so its warning is silenced for
// these few lines only: every format here was written by Rewrite for exactly
// the arguments of its shape, and each call refuses a format of another shape.
// Answers: the length printed, or the number of fields sscanf stored; -1 for a
// shape mismatch (an internal inconsistency, reported).

int Mismatch() {
  KAMO_assert("format shape does not match its arguments", kSource, __LINE__);
  return -1;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

int PrintText(char* out, size_t size, const CheckedFormat& f) {
  return f.shape == Shape::kPrintText ? std::snprintf(out, size, f.text) : Mismatch();
}
int PrintChar(char* out, size_t size, const CheckedFormat& f, int c) {
  return f.shape == Shape::kPrintChar ? std::snprintf(out, size, f.text, c) : Mismatch();
}
int PrintSigned(char* out, size_t size, const CheckedFormat& f, long long v) {
  return f.shape == Shape::kPrintSigned ? std::snprintf(out, size, f.text, v) : Mismatch();
}
int PrintUnsigned(char* out, size_t size, const CheckedFormat& f, unsigned long long v) {
  return f.shape == Shape::kPrintUnsigned ? std::snprintf(out, size, f.text, v) : Mismatch();
}
int PrintDouble(char* out, size_t size, const CheckedFormat& f, double v) {
  return f.shape == Shape::kPrintDouble ? std::snprintf(out, size, f.text, v) : Mismatch();
}
int PrintLdexp(char* out, size_t size, const CheckedFormat& f, double mantissa,
               long long exponent) {
  return f.shape == Shape::kPrintLdexp ? std::snprintf(out, size, f.text, mantissa, exponent)
                                       : Mismatch();
}
// `chars` holds kMaxField + 1 bytes: a "%c" field is at most kMaxField wide.
int ScanChars(const char* text, const CheckedFormat& f, char (&chars)[kMaxField + 1]) {
  return f.shape == Shape::kScanChar ? std::sscanf(text, f.text, chars) : Mismatch();
}
int ScanSigned(const char* text, const CheckedFormat& f, long long* v) {
  return f.shape == Shape::kScanSigned ? std::sscanf(text, f.text, v) : Mismatch();
}
int ScanUnsigned(const char* text, const CheckedFormat& f, unsigned long long* v) {
  return f.shape == Shape::kScanUnsigned ? std::sscanf(text, f.text, v) : Mismatch();
}
int ScanFloat(const char* text, const CheckedFormat& f, float* v) {
  return f.shape == Shape::kScanFloat ? std::sscanf(text, f.text, v) : Mismatch();
}
int ScanDouble(const char* text, const CheckedFormat& f, double* v) {
  return f.shape == Shape::kScanDouble ? std::sscanf(text, f.text, v) : Mismatch();
}
int ScanLdexp(const char* text, const CheckedFormat& f, double* mantissa, long long* exponent) {
  return f.shape == Shape::kScanLdexp ? std::sscanf(text, f.text, mantissa, exponent) : Mismatch();
}

#pragma GCC diagnostic pop

// --- Element access --------------------------------------------------------------------

// Elements are read and written through memcpy: a caller's array need not be
// aligned for the element type.
uint64_t LoadBits(const void* p, unsigned bytes) {
  switch (bytes) {
    case 1: {
      uint8_t v;
      std::memcpy(&v, p, 1);
      return v;
    }
    case 2: {
      uint16_t v;
      std::memcpy(&v, p, 2);
      return v;
    }
    case 4: {
      uint32_t v;
      std::memcpy(&v, p, 4);
      return v;
    }
    default: {
      uint64_t v;
      std::memcpy(&v, p, 8);
      return v;
    }
  }
}

// Keeps the low `bytes` bytes: the value modulo 2^width, as the C library
// stores a converted number into a narrower variable.
void StoreBits(void* p, unsigned bytes, uint64_t bits) {
  switch (bytes) {
    case 1: {
      const auto v = static_cast<uint8_t>(bits);
      std::memcpy(p, &v, 1);
      break;
    }
    case 2: {
      const auto v = static_cast<uint16_t>(bits);
      std::memcpy(p, &v, 2);
      break;
    }
    case 4: {
      const auto v = static_cast<uint32_t>(bits);
      std::memcpy(p, &v, 4);
      break;
    }
    default:
      std::memcpy(p, &bits, 8);
      break;
  }
}

// The low `bytes` bytes of `bits` as a signed or an unsigned number of that
// width: the value of a variable of that size, or of a conversion's type.
long long SignExtend(uint64_t bits, unsigned bytes) {
  const unsigned shift = 64 - 8 * bytes;
  return static_cast<long long>(bits << shift) >> shift;
}
uint64_t ZeroExtend(uint64_t bits, unsigned bytes) {
  return bytes >= 8 ? bits : bits & ((uint64_t{1} << (8 * bytes)) - 1);
}

// --- Text in and out -------------------------------------------------------------------

// The C locale's isprint, whatever locale the host has set.
bool IsPrintable(unsigned char byte) { return byte >= 0x20 && byte <= 0x7E; }

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The text to read: 1-byte text as it is; 2-byte text converted into the
// default 8-bit code set first (kept alive in `narrow`). The buffer ends at
// the string's length, so sscanf reads no further.
const char* TextToScan(const KaString& text, KaString& narrow) {
  const KaString* source = &text;
  if (text.UnitWidth() == 2) {
    narrow = KaString(KaString::GetDefault8CodeSet(), text.Language());
    narrow << text;
    source = &narrow;
  }
  return source->StrGet() != nullptr ? source->StrGet() : "";
}

// The output becomes `text` (default 8-bit code set and language); a failed
// print leaves it empty.
KaString& Assign(KaString& out, const char* text, int printed) {
  out = printed >= 0 ? text : "";
  return out;
}

// The one-byte rows print a byte that is not printable as "0x%02x", whatever
// the format; this reads that form back: -1 unless `text` is exactly it.
int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

int NonPrintableByte(const char* text) {
  if (text[0] != '0' || text[1] != 'x') return -1;
  const int high = HexDigit(text[2]);
  const int low = high < 0 ? -1 : HexDigit(text[3]);
  if (low < 0 || text[4] != '\0') return -1;
  const int byte = high * 16 + low;
  return IsPrintable(static_cast<unsigned char>(byte)) ? -1 : byte;
}

// --- Integer rows ------------------------------------------------------------------------

// Prints an element of `rowBytes` bytes. The conversion's letter says how the
// bits read (d and i signed, the others unsigned: the rows sharing a function
// differ only there), and the value then passes through the type that the
// conversion names, as printf converts a variable of the row's type: "%hd"
// prints the low 16 bits of an o_4b, "%lld" the whole o_2b sign-extended.
int PrintBits(char* text, size_t size, const CheckedFormat& f, uint64_t bits, unsigned rowBytes) {
  const unsigned bytes = rowBytes < f.bytes ? rowBytes : f.bytes;
  switch (f.shape) {
    case Shape::kPrintText:
      return PrintText(text, size, f);
    case Shape::kPrintChar:
      return PrintChar(text, size, f, static_cast<unsigned char>(bits));
    case Shape::kPrintSigned:
      return PrintSigned(text, size, f, SignExtend(bits, bytes));
    case Shape::kPrintUnsigned:
      return PrintUnsigned(text, size, f, ZeroExtend(bits, bytes));
    default:
      return Mismatch();
  }
}

KaString& PrintInteger(KaString& out, const void* values, const char* format,
                       const IntegerFamily& family) {
  if (values == nullptr) return out;
  const CheckedFormat f = CheckInteger(format, family, Use::kPrint);
  char text[kTextSize];
  const int n = PrintBits(text, sizeof text, f, LoadBits(values, family.bytes), family.bytes);
  return Assign(out, text, n);
}

// Reads a number through the type that the conversion names (sscanf's
// storing into that type: modulo 2^width), and answers it sign- or
// zero-extended from there, as assigning that type to the row's type would.
// The caller stores the low bytes only, so no write passes the element.
// True when sscanf stored a number.
bool ScanNumber(const char* text, const CheckedFormat& f, uint64_t& bits) {
  if (f.shape == Shape::kScanSigned) {
    long long v = 0;
    if (ScanSigned(text, f, &v) != 1) return false;
    bits = static_cast<uint64_t>(SignExtend(static_cast<uint64_t>(v), f.bytes));
    return true;
  }
  if (f.shape == Shape::kScanUnsigned) {
    unsigned long long v = 0;
    if (ScanUnsigned(text, f, &v) != 1) return false;
    bits = ZeroExtend(v, f.bytes);
    return true;
  }
  return false;  // a refused format or one without a value conversion
}

void* ScanInteger(void* values, KaString& text, const char* format, const IntegerFamily& family) {
  if (values == nullptr) return nullptr;
  const CheckedFormat f = CheckInteger(format, family, Use::kScan);
  KaString narrow;
  const char* s = TextToScan(text, narrow);
  uint64_t bits = 0;
  if (ScanNumber(s, f, bits)) StoreBits(values, family.bytes, bits);
  return values;
}

// --- Floating rows -----------------------------------------------------------------------

KaString& PrintFloating(KaString& out, double value, const char* format) {
  // The special values have words of their own, so that every format (an
  // "ldexp(" one too) gives a text that reads back.
  if (std::isnan(value)) {
    out = "NaN";
    return out;
  }
  if (std::isinf(value)) {
    out = value < 0 ? "-Infinity" : "Infinity";
    return out;
  }
  const CheckedFormat f = CheckFloating(format, Use::kPrint, false);
  char text[kTextSize];
  int n;
  if (f.shape == Shape::kPrintLdexp) {
    int exponent = 0;
    const double mantissa = std::frexp(value, &exponent);
    // The exponent passes through the type its conversion names, as an int would.
    n = PrintLdexp(text, sizeof text, f, mantissa,
                   SignExtend(static_cast<uint64_t>(exponent), f.bytes));
  } else if (f.shape == Shape::kPrintText) {
    n = PrintText(text, sizeof text, f);
  } else {
    n = PrintDouble(text, sizeof text, f, value);
  }
  return Assign(out, text, n);
}

// "Infinity", "-Infinity" or "NaN" after leading blanks, ending the text or
// followed by a blank.
bool ReadSpecialWord(const char* text, double& value) {
  struct Word {
    const char* text;
    double value;
  };
  static constexpr Word kWords[] = {
      {"-Infinity", -std::numeric_limits<double>::infinity()},
      {"Infinity", std::numeric_limits<double>::infinity()},
      {"NaN", std::numeric_limits<double>::quiet_NaN()},
  };
  while (IsBlank(*text)) ++text;
  for (const Word& w : kWords) {
    const size_t n = std::strlen(w.text);
    if (std::strncmp(text, w.text, n) == 0 && (text[n] == '\0' || IsBlank(text[n]))) {
      value = w.value;
      return true;
    }
  }
  return false;
}

// A double narrowed to float the way the hardware rounds, without the
// out-of-range conversion the language leaves undefined: from FLT_MAX plus
// half its last place on, the value rounds to infinity.
float NarrowToFloat(double value) {
  constexpr double kRoundsToInfinity = 0x1.ffffffp+127;
  if (value >= kRoundsToInfinity) return std::numeric_limits<float>::infinity();
  if (value <= -kRoundsToInfinity) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(value);
}

template <typename T>
void StoreFloating(void* values, double value) {
  const T v = std::is_same_v<T, float> ? NarrowToFloat(value) : static_cast<T>(value);
  std::memcpy(values, &v, sizeof v);
}

// A floating conversion reads into the type it names: float without a
// modifier on o_float, double with "l" or "L" (that runtime's long double is
// a double), and the result is then rounded to the row's type. Without a
// modifier o_double reads a double too: the rows' shared default "%.17g" is
// handed to the scan, and must read a double back.
template <typename T>
void* ScanFloating(void* values, KaString& text, const char* format) {
  if (values == nullptr) return nullptr;
  constexpr bool kIntoFloat = std::is_same_v<T, float>;
  const CheckedFormat f = CheckFloating(format, Use::kScan, kIntoFloat);
  if (f.shape == Shape::kNone) return values;  // refused: reads nothing
  KaString narrow;
  const char* s = TextToScan(text, narrow);
  double special = 0;
  if (ReadSpecialWord(s, special)) {
    StoreFloating<T>(values, special);
    return values;
  }
  if (f.shape == Shape::kScanLdexp) {
    double mantissa = 0;
    long long exponent = 0;
    if (ScanLdexp(s, f, &mantissa, &exponent) == 2) {
      exponent = SignExtend(static_cast<uint64_t>(exponent), f.bytes);
      // Far beyond every finite result, and small enough for ldexp's int.
      constexpr long long kExponentBound = 100000;
      if (exponent > kExponentBound) exponent = kExponentBound;
      if (exponent < -kExponentBound) exponent = -kExponentBound;
      StoreFloating<T>(values, std::ldexp(mantissa, static_cast<int>(exponent)));
    }
  } else if (f.shape == Shape::kScanFloat) {
    float v = 0;
    if (ScanFloat(s, f, &v) == 1) StoreFloating<T>(values, v);
  } else if (f.shape == Shape::kScanDouble) {
    double v = 0;
    if (ScanDouble(s, f, &v) == 1) StoreFloating<T>(values, v);
  }
  return values;
}

// --- Conversion to and from string arrays --------------------------------------------------

KaTypeConvertData* ConvertToStrings(void* values, unsigned int count, size_t elementSize,
                                    KaPrintFunc print, const char* format) {
  if (values == nullptr) return nullptr;
  KaString* strings = ka::NewStringArray(count);
  if (strings == nullptr && count > 0) return nullptr;
  auto* bytes = static_cast<unsigned char*>(values);
  for (unsigned int i = 0; i < count; ++i) {
    print(strings[i], bytes + size_t{i} * elementSize, format, 1);
    // Every primitive value has a text of at least one character; an empty
    // one means the string could not get its memory (the handler has been
    // told). Half an array of texts would read back as other values: none.
    if (strings[i].Len() == 0) {
      ka::DeleteStringArray(strings);
      return nullptr;
    }
  }
  KaTypeConvertData* holder = KaTypeConvertData::Make(KaSTRING_T, count, strings, nullptr);
  if (holder == nullptr) ka::DeleteStringArray(strings);
  return holder;
}

template <typename T>
void* ConvertFromStrings(KaTypeConvertData* holder, unsigned int count, KaScanFunc scan,
                         const char* format) {
  if (holder == nullptr) return nullptr;
  // The rows' own allocation, so that their Delete frees the result.
  T* values = ka::NewArray<T>(count);
  if (values == nullptr) return nullptr;
  // GetString takes an int index: ask only for indices the holder has.
  const unsigned int available = holder->count > 0 ? static_cast<unsigned int>(holder->count) : 0;
  for (unsigned int i = 0; i < count && i < available; ++i) {
    if (KaString* s = holder->GetString(static_cast<int>(i))) scan(values + i, *s, format, 1);
  }
  return values;
}

}  // namespace

// --- PrintToString ---------------------------------------------------------------------

KaString& CharPrintToKaString(KaString& out, void* values, const char* format, unsigned int count) {
  if (values == nullptr) return out;
  const CheckedFormat f = CheckInteger(format, kByteFamily, Use::kPrint);
  const auto* bytes = static_cast<const unsigned char*>(values);
  KaString text(KaString::GetDefault8CodeSet(), KaString::GetDefaultLanguage());
  for (unsigned int i = 0; i < count; ++i) {
    // A full string takes no more; the string layer has reported the overflow.
    if (text.Len() >= KaString::kMaxSize - 1) break;
    const unsigned char byte = bytes[i];
    char piece[kTextSize];
    int n;
    if (!IsPrintable(byte)) {
      n = std::snprintf(piece, sizeof piece, "0x%02x", static_cast<unsigned int>(byte));
    } else {
      n = PrintBits(piece, sizeof piece, f, byte, 1);
    }
    if (n > 0) {
      const unsigned short before = text.Len();
      text << piece;
      // Nothing appended: memory ran out, and `out` keeps its old text.
      if (text.Len() == before) return out;
    }
  }
  out = std::move(text);
  return out;
}

KaString& ShortPrintToKaString(KaString& out, void* values, const char* format, unsigned int) {
  return PrintInteger(out, values, format, kShortFamily);
}

KaString& LongPrintToKaString(KaString& out, void* values, const char* format, unsigned int) {
  return PrintInteger(out, values, format, kLongFamily);
}

KaString& IntPrintToKaString(KaString& out, void* values, const char* format, unsigned int) {
  return PrintInteger(out, values, format, kIntFamily);
}

KaString& O_8BPrintToKaString(KaString& out, void* values, const char* format, unsigned int) {
  return PrintInteger(out, values, format, kO8BFamily);
}

KaString& FloatPrintToKaString(KaString& out, void* values, const char* format, unsigned int) {
  if (values == nullptr) return out;
  float v;
  std::memcpy(&v, values, sizeof v);
  return PrintFloating(out, v, format);
}

KaString& DoublePrintToKaString(KaString& out, void* values, const char* format, unsigned int) {
  if (values == nullptr) return out;
  double v;
  std::memcpy(&v, values, sizeof v);
  return PrintFloating(out, v, format);
}

// --- ScanFromString --------------------------------------------------------------------

void* CharScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  if (values == nullptr) return nullptr;
  const CheckedFormat f = CheckInteger(format, kByteFamily, Use::kScan);
  if (f.shape == Shape::kNone) return values;  // refused: reads nothing
  KaString narrow;
  const char* s = TextToScan(text, narrow);
  const int byte = NonPrintableByte(s);
  if (byte >= 0) {
    StoreBits(values, 1, static_cast<uint64_t>(byte));
    return values;
  }
  if (f.shape == Shape::kScanChar) {
    // "%5c" reads five characters, as sscanf does; the element keeps the first.
    char chars[kMaxField + 1];
    if (ScanChars(s, f, chars) == 1) std::memcpy(values, chars, 1);
  } else {
    uint64_t bits = 0;
    if (ScanNumber(s, f, bits)) StoreBits(values, 1, bits);
  }
  return values;
}

void* ShortScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  return ScanInteger(values, text, format, kShortFamily);
}

void* LongScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  return ScanInteger(values, text, format, kLongFamily);
}

void* IntScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  return ScanInteger(values, text, format, kIntFamily);
}

void* O_8BScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  return ScanInteger(values, text, format, kO8BFamily);
}

void* FloatScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  return ScanFloating<float>(values, text, format);
}

void* DoubleScanFromKaString(void* values, KaString& text, const char* format, unsigned int) {
  return ScanFloating<double>(values, text, format);
}

// --- ConvertTo ---------------------------------------------------------------------------

KaTypeConvertData* CharConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 1, CharPrintToKaString, "%c");
}

KaTypeConvertData* O_U1BConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 1, CharPrintToKaString, "%c");
}

KaTypeConvertData* ShortConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 2, ShortPrintToKaString, "%hd");
}

KaTypeConvertData* WordConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 2, ShortPrintToKaString, "%hu");
}

KaTypeConvertData* LongConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 4, LongPrintToKaString, "%ld");
}

// Serves BlockId too, which shares every slot with o_u4b: "%lu", no "#".
KaTypeConvertData* DwordConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 4, LongPrintToKaString, "%lu");
}

KaTypeConvertData* IntConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, sizeof(int), IntPrintToKaString, "%d");
}

KaTypeConvertData* UnsignedConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, sizeof(unsigned), IntPrintToKaString, "%u");
}

KaTypeConvertData* FloatConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, sizeof(float), FloatPrintToKaString, kFloatingDefault);
}

KaTypeConvertData* DoubleConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, sizeof(double), DoublePrintToKaString, kFloatingDefault);
}

KaTypeConvertData* O_8BConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 8, O_8BPrintToKaString, "%I64d");
}

KaTypeConvertData* O_U8BConvertToKaString(void* values, unsigned int count) {
  return ConvertToStrings(values, count, 8, O_8BPrintToKaString, "%I64u");
}

// --- ConvertFrom -------------------------------------------------------------------------

void* CharConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<signed char>(strings, count, CharScanFromKaString, "%c");
}

void* O_U1BConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<unsigned char>(strings, count, CharScanFromKaString, "%c");
}

void* ShortConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<int16_t>(strings, count, ShortScanFromKaString, "%hd");
}

void* WordConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<uint16_t>(strings, count, ShortScanFromKaString, "%hu");
}

void* LongConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<int32_t>(strings, count, LongScanFromKaString, "%ld");
}

void* DwordConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<uint32_t>(strings, count, LongScanFromKaString, "%lu");
}

void* IntConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<int>(strings, count, IntScanFromKaString, "%d");
}

void* UnsignedConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<unsigned>(strings, count, IntScanFromKaString, "%u");
}

void* FloatConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<float>(strings, count, FloatScanFromKaString, kFloatingDefault);
}

void* DoubleConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<double>(strings, count, DoubleScanFromKaString, kFloatingDefault);
}

void* O_8BConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<int64_t>(strings, count, O_8BScanFromKaString, "%I64d");
}

void* O_U8BConvertFromKaString(KaTypeConvertData* strings, unsigned int count) {
  return ConvertFromStrings<uint64_t>(strings, count, O_8BScanFromKaString, "%I64u");
}
