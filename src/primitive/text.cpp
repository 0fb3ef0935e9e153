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

// Longer formats are refused; with this bound and fields of at most 255
// characters every printed text fits in kTextSize.
constexpr size_t kMaxFormat = 255;
constexpr int kMaxField = 255;
constexpr size_t kTextSize = 1024;

constexpr const char* kByteLetters = "cdiouxX";
constexpr const char* kIntegerLetters = "diouxX";
constexpr const char* kFloatingLetters = "eEfFgGaA";
constexpr const char* kExponentLetters = "di";
constexpr const char* kLdexpPrefix = "ldexp(";

enum class Use : unsigned char { kPrint, kScan };

// The arguments a rewritten format takes. The calls into the C library check
// it, so a format is only ever used with the arguments it was written for.
enum class Shape : unsigned char {
  kNone,
  kPrintChar,      // int
  kPrintSigned,    // long long
  kPrintUnsigned,  // unsigned long long
  kPrintDouble,    // double
  kPrintLdexp,     // double, long long
  kScanChar,       // char*
  kScanSigned,     // long long*
  kScanUnsigned,   // unsigned long long*
  kScanFloat,      // float*
  kScanDouble,     // double*
  kScanLdexp,      // double*, long long*
};

struct CheckedFormat {
  char text[kMaxFormat + 16] = {};  // a rewrite adds at most two bytes per conversion
  size_t length = 0;
  Shape shape = Shape::kNone;
};

bool IsIn(char c, const char* set) { return c != '\0' && std::strchr(set, c) != nullptr; }

// Which conversions a length modifier may stand before. The modifiers of both
// runtimes are accepted and then dropped: the row's width decides the size.
constexpr unsigned kIntegerSizes = 1;
constexpr unsigned kFloatingSizes = 2;
constexpr unsigned kNoModifier = kIntegerSizes | kFloatingSizes;

unsigned ReadLengthModifier(const char*& p) {
  if (p[0] == 'h') {
    p += p[1] == 'h' ? 2 : 1;
    return kIntegerSizes;
  }
  if (p[0] == 'l') {
    if (p[1] == 'l') {
      p += 2;
      return kIntegerSizes;
    }
    ++p;
    return kIntegerSizes | kFloatingSizes;  // "%ld" and "%lf" alike
  }
  if (p[0] == 'L') {
    ++p;
    return kFloatingSizes;
  }
  if (p[0] == 'I' && ((p[1] == '6' && p[2] == '4') || (p[1] == '3' && p[2] == '2'))) {
    p += 3;
    return kIntegerSizes;
  }
  return kNoModifier;
}

// Digits of a width or precision; false above kMaxField, which also keeps a
// hostile "%999999999d" from asking the C library for a giant field.
bool SkipField(const char*& p) {
  int value = 0;
  while (*p >= '0' && *p <= '9') {
    value = value * 10 + (*p - '0');
    if (value > kMaxField) return false;
    ++p;
  }
  return true;
}

// One conversion of a caller's format, as read.
struct Conversion {
  const char* flags = nullptr;
  const char* flagsEnd = nullptr;
  const char* width = nullptr;
  const char* widthEnd = nullptr;
  const char* precision = nullptr;  // after the '.'; null without one
  const char* precisionEnd = nullptr;
  unsigned sizes = kNoModifier;
  char letter = '\0';
};

// Reads the conversion after a "%". False when it is not well formed.
bool ReadConversion(const char*& p, Conversion& c) {
  c.flags = p;
  while (IsIn(*p, "-+ #0")) ++p;
  c.flagsEnd = p;
  c.width = p;
  if (!SkipField(p)) return false;
  c.widthEnd = p;
  if (*p == '.') {
    c.precision = ++p;
    if (!SkipField(p)) return false;
    c.precisionEnd = p;
  }
  c.sizes = ReadLengthModifier(p);
  c.letter = *p;
  if (c.letter == '\0') return false;
  ++p;
  return true;
}

// The letter is one of `accepted`, and the flags, precision and modifier are
// ones the C library defines for it.
bool Fits(const Conversion& c, const char* accepted) {
  if (!IsIn(c.letter, accepted)) return false;
  const bool isChar = c.letter == 'c';
  const bool floating = IsIn(c.letter, kFloatingLetters);
  if (isChar && (c.sizes != kNoModifier || c.precision != nullptr)) return false;
  if ((c.sizes & (floating ? kFloatingSizes : kIntegerSizes)) == 0) return false;
  for (const char* f = c.flags; f != c.flagsEnd; ++f) {
    if (*f == '#' && !floating && !IsIn(c.letter, "oxX")) return false;
    if (*f == '0' && isChar) return false;
  }
  return true;
}

class FormatWriter {
 public:
  explicit FormatWriter(CheckedFormat& out) : out_(out) { out_.length = 0; }
  bool Put(const char* begin, const char* end) {
    const size_t n = static_cast<size_t>(end - begin);
    if (n >= sizeof out_.text - out_.length) return false;
    std::memcpy(out_.text + out_.length, begin, n);
    out_.length += n;
    out_.text[out_.length] = '\0';
    return true;
  }
  bool Put(const char* text) { return Put(text, text + std::strlen(text)); }

 private:
  CheckedFormat& out_;
};

// Writes `c` for the arguments this file passes. Printing keeps flags, width
// and precision; scanning keeps only the width (sscanf's longest field),
// except for "%c", where a width would make sscanf store that many bytes into
// a one-byte element.
bool WriteConversion(FormatWriter& w, const Conversion& c, Use use, bool floatDestination) {
  const bool isChar = c.letter == 'c';
  const bool floating = IsIn(c.letter, kFloatingLetters);
  if (!w.Put("%")) return false;
  if (use == Use::kPrint) {
    if (!w.Put(c.flags, c.flagsEnd) || !w.Put(c.width, c.widthEnd)) return false;
    if (c.precision != nullptr && (!w.Put(".") || !w.Put(c.precision, c.precisionEnd))) {
      return false;
    }
  } else if (!isChar && !w.Put(c.width, c.widthEnd)) {
    return false;
  }
  const char* modifier = "";
  if (floating) {
    modifier = use == Use::kScan && !floatDestination ? "l" : "";
  } else if (!isChar) {
    modifier = "ll";
  }
  const char letter[2] = {c.letter, '\0'};
  return w.Put(modifier) && w.Put(letter);
}

// Rewrites `format` into `out` when it holds literal text, "%%" and exactly
// `count` conversions, the i-th one of `accepted[i]`. For scanning, a single
// floating conversion stores into a float when `floatDestination` is set.
bool Rewrite(const char* format, const char* const* accepted, int count, Use use,
             bool floatDestination, CheckedFormat& out) {
  if (format == nullptr || strnlen(format, kMaxFormat + 1) > kMaxFormat) return false;
  FormatWriter w(out);
  char letters[2] = {};
  int found = 0;
  const char* p = format;
  while (*p != '\0') {
    const char* literal = p;
    while (*p != '\0' && *p != '%') ++p;
    if (!w.Put(literal, p)) return false;
    if (*p == '\0') break;
    ++p;  // the '%'
    if (*p == '%') {
      ++p;
      if (!w.Put("%%")) return false;
      continue;
    }
    Conversion c;
    if (found == count || !ReadConversion(p, c) || !Fits(c, accepted[found])) return false;
    // The mantissa of an "ldexp(" format is a double whatever the row.
    if (!WriteConversion(w, c, use, floatDestination && count == 1)) return false;
    letters[found++] = c.letter;
  }
  if (found != count) return false;

  if (count == 2) {
    out.shape = use == Use::kPrint ? Shape::kPrintLdexp : Shape::kScanLdexp;
  } else if (letters[0] == 'c') {
    out.shape = use == Use::kPrint ? Shape::kPrintChar : Shape::kScanChar;
  } else if (IsIn(letters[0], kFloatingLetters)) {
    out.shape = use == Use::kPrint ? Shape::kPrintDouble
                : floatDestination ? Shape::kScanFloat
                                   : Shape::kScanDouble;
  } else if (IsIn(letters[0], "di")) {
    out.shape = use == Use::kPrint ? Shape::kPrintSigned : Shape::kScanSigned;
  } else {
    out.shape = use == Use::kPrint ? Shape::kPrintUnsigned : Shape::kScanUnsigned;
  }
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

// The caller's format, or the family's default when it is null or refused.
CheckedFormat CheckInteger(const char* format, const IntegerFamily& family, Use use) {
  CheckedFormat f;
  if (Rewrite(format, &family.accepted, 1, use, false, f)) return f;
  const char* fallback = NamesUnsigned(format) ? family.unsignedDefault : family.signedDefault;
  if (!Rewrite(fallback, &family.accepted, 1, use, false, f)) {
    KAMO_assert("default print format refused", kSource, __LINE__);
  }
  return f;
}

CheckedFormat CheckFloating(const char* format, Use use, bool floatDestination) {
  static constexpr const char* kPlain[] = {kFloatingLetters};
  static constexpr const char* kLdexp[] = {kFloatingLetters, kExponentLetters};
  CheckedFormat f;
  const bool ldexp =
      format != nullptr && std::strncmp(format, kLdexpPrefix, std::strlen(kLdexpPrefix)) == 0;
  if (ldexp ? Rewrite(format, kLdexp, 2, use, floatDestination, f)
            : Rewrite(format, kPlain, 1, use, floatDestination, f)) {
    return f;
  }
  if (!Rewrite(kFloatingDefault, kPlain, 1, use, floatDestination, f)) {
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
int ScanChar(const char* text, const CheckedFormat& f, char* c) {
  return f.shape == Shape::kScanChar ? std::sscanf(text, f.text, c) : Mismatch();
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

long long SignExtend(uint64_t bits, unsigned bytes) {
  const unsigned shift = 64 - 8 * bytes;
  return static_cast<long long>(bits << shift) >> shift;
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

KaString& PrintInteger(KaString& out, const void* values, const char* format,
                       const IntegerFamily& family) {
  if (values == nullptr) return out;
  const CheckedFormat f = CheckInteger(format, family, Use::kPrint);
  const uint64_t bits = LoadBits(values, family.bytes);
  char text[kTextSize];
  const int n = f.shape == Shape::kPrintSigned
                    ? PrintSigned(text, sizeof text, f, SignExtend(bits, family.bytes))
                    : PrintUnsigned(text, sizeof text, f, bits);
  return Assign(out, text, n);
}

// Reads into a 64-bit number in the signedness the conversion names; true
// when sscanf stored it.
bool ScanNumber(const char* text, const CheckedFormat& f, uint64_t& bits) {
  if (f.shape == Shape::kScanSigned) {
    long long v = 0;
    if (ScanSigned(text, f, &v) != 1) return false;
    bits = static_cast<uint64_t>(v);
    return true;
  }
  unsigned long long v = 0;
  if (ScanUnsigned(text, f, &v) != 1) return false;
  bits = v;
  return true;
}

void* ScanInteger(void* values, KaString& text, const char* format, const IntegerFamily& family) {
  if (values == nullptr) return nullptr;
  KaString narrow;
  const char* s = TextToScan(text, narrow);
  const CheckedFormat f = CheckInteger(format, family, Use::kScan);
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
    n = PrintLdexp(text, sizeof text, f, mantissa, static_cast<long long>(exponent));
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

template <typename T>
void* ScanFloating(void* values, KaString& text, const char* format) {
  if (values == nullptr) return nullptr;
  KaString narrow;
  const char* s = TextToScan(text, narrow);
  double special = 0;
  if (ReadSpecialWord(s, special)) {
    StoreFloating<T>(values, special);
    return values;
  }
  constexpr bool kIntoFloat = std::is_same_v<T, float>;
  const CheckedFormat f = CheckFloating(format, Use::kScan, kIntoFloat);
  if (f.shape == Shape::kScanLdexp) {
    double mantissa = 0;
    long long exponent = 0;
    if (ScanLdexp(s, f, &mantissa, &exponent) == 2) {
      // Far beyond every finite result, and small enough for ldexp's int.
      constexpr long long kExponentBound = 100000;
      if (exponent > kExponentBound) exponent = kExponentBound;
      if (exponent < -kExponentBound) exponent = -kExponentBound;
      StoreFloating<T>(values, std::ldexp(mantissa, static_cast<int>(exponent)));
    }
  } else if constexpr (kIntoFloat) {
    float v = 0;
    if (ScanFloat(s, f, &v) == 1) std::memcpy(values, &v, sizeof v);
  } else {
    double v = 0;
    if (ScanDouble(s, f, &v) == 1) std::memcpy(values, &v, sizeof v);
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
    } else if (f.shape == Shape::kPrintChar) {
      n = PrintChar(piece, sizeof piece, f, byte);
    } else if (f.shape == Shape::kPrintSigned) {
      n = PrintSigned(piece, sizeof piece, f, static_cast<signed char>(byte));
    } else {
      n = PrintUnsigned(piece, sizeof piece, f, byte);
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
  KaString narrow;
  const char* s = TextToScan(text, narrow);
  const int byte = NonPrintableByte(s);
  if (byte >= 0) {
    StoreBits(values, 1, static_cast<uint64_t>(byte));
    return values;
  }
  const CheckedFormat f = CheckInteger(format, kByteFamily, Use::kScan);
  if (f.shape == Shape::kScanChar) {
    char c = 0;
    if (ScanChar(s, f, &c) == 1) std::memcpy(values, &c, 1);
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
