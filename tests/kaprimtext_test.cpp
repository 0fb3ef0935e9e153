// Text of the primitive values: checked print and scan formats, the special
// floating texts, round trips and the string-array conversions.
#include "katypemgr/kaprimtext.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kabase/assert.h"
#include "kastring_test_util.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"

namespace {

using ka::test::Text;
using ka::test::Wide;

// One element of any primitive row.
union Value {
  unsigned char uc;
  int16_t s;
  int32_t l;
  uint32_t ul;
  int64_t ll;
  uint64_t ull;
  float f;
  double d;
};

// No slot may reach the internal-inconsistency report, whatever the format.
class PrimTextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    KaSetAssertReceiver([](const char* text, const char*, int) { ADD_FAILURE() << text; });
  }
  void TearDown() override { KaSetAssertReceiver(nullptr); }
};

// The print and scan functions of a family of rows, and its element width.
struct Family {
  KaPrintFunc print;
  KaScanFunc scan;
  unsigned width;
};
constexpr Family kChar = {CharPrintToKaString, CharScanFromKaString, 1};
constexpr Family kShort = {ShortPrintToKaString, ShortScanFromKaString, 2};
constexpr Family kLong = {LongPrintToKaString, LongScanFromKaString, 4};
constexpr Family kInt = {IntPrintToKaString, IntScanFromKaString, 4};
constexpr Family kO8B = {O_8BPrintToKaString, O_8BScanFromKaString, 8};
constexpr Family kFloat = {FloatPrintToKaString, FloatScanFromKaString, 4};
constexpr Family kDouble = {DoublePrintToKaString, DoubleScanFromKaString, 8};

// Prints from an array of exactly `count` elements, so that the address
// sanitizer catches a read wider than the row.
std::string Print(const Family& f, const void* values, const char* format, unsigned count = 1) {
  const auto* first = static_cast<const unsigned char*>(values);
  std::vector<unsigned char> exact(first, first + f.width * count);
  KaString out("previous text");
  f.print(out, exact.data(), format, count);
  return Text(out);
}

// Scans `text` into an element that starts as `initial` and sits between
// guard bytes, which must survive.
Value Scan(const Family& f, KaString text, const char* format, Value initial) {
  unsigned char buffer[24];
  std::memset(buffer, 0xA5, sizeof buffer);
  std::memcpy(buffer + 8, &initial, f.width);
  EXPECT_EQ(buffer + 8, f.scan(buffer + 8, text, format, 1)) << "the destination is answered";
  EXPECT_EQ(0xA5, buffer[7]) << "guard before";
  EXPECT_EQ(0xA5, buffer[8 + f.width]) << "guard after";
  Value result{};
  std::memcpy(&result, buffer + 8, f.width);
  return result;
}

// Scanning starts from this pattern, which a text that matches nothing keeps.
constexpr Value kKept = {.ll = 0x5A5A5A5A5A5A5A5A};

struct PrintCase {
  const Family& family;
  Value value;
  const char* format;
  const char* text;
  const char* why;
};

// What the C library oracles below cannot say: defaults, dropped flags, the
// "ldexp(" split and the special floating words.
const PrintCase kPrintCases[] = {
    {kInt, {.l = -7}, nullptr, "-7", "null format: the default"},
    {kLong, {.l = -5}, "%#d", "-5", "# with d is undefined: dropped"},
    {kDouble, {.d = 6.5}, "ldexp(%.17g)", "ldexp(6.5)", "ldexp( with one conversion: plain"},
    {kDouble, {.d = DBL_TRUE_MIN}, "ldexp(%.17g,%hhd)", "ldexp(0.5,-49)", "exponent as char"},
    {kDouble, {.d = 6.0}, "ldexp(%.17g,%d)", "ldexp(0.75,3)", "frexp split"},
    {kDouble, {.d = DBL_TRUE_MIN}, "ldexp(%.17g,%i)", "ldexp(0.5,-1073)", "subnormal"},
    {kDouble, {.d = -INFINITY}, "%.17g", "-Infinity", "negative infinity"},
    {kDouble, {.d = INFINITY}, "%e", "Infinity", "infinity whatever the format"},
    {kDouble, {.d = NAN}, "%f", "NaN", "NaN whatever the format"},
    {kFloat, {.f = NAN}, "ldexp(%.17g,%d)", "NaN", "NaN"},
    {kDouble, {.d = NAN}, "n/a", "NaN", "the special words win over literal text"},
};

// Formats that could make the C library read or write outside the value.
// Printing with one gives the family's default text; scanning with one
// reads nothing, as a text that matches nothing.
const PrintCase kRefusedCases[] = {
    {kLong, {.l = -5}, "%hhn", "-5", "%n writes through its argument"},
    {kLong, {.l = -5}, "%*d", "-5", "width from an argument"},
    {kLong, {.l = -5}, "%1$d", "-5", "positional argument"},
    {kLong, {.l = -5}, "%d %d", "-5", "a second value conversion"},
    {kLong, {.l = -5}, "%s", "-5", "%s on a number"},
    {kLong, {.l = -5}, "%", "-5", "a lone % at the end"},
    {kLong, {.l = -5}, "%Ld", "-5", "L is for floating conversions"},
    {kLong, {.l = -5}, "%.256d", "-5", "precision above 255"},
    {kLong, {.l = -5}, "%9999999999999999999d", "-5", "width that overflows"},
    {kLong, {.l = -5}, "%lu%n", "4294967291", "names an unsigned reading"},
    {kInt, {.l = -5}, "%g", "-5", "a floating conversion on an integer row"},
    {kDouble, {.d = 6.5}, "%d", "6.5", "an integer conversion on a floating row"},
    {kDouble, {.d = 6.5}, "%hf", "6.5", "h is for integer conversions"},
    {kDouble, {.d = 6.5}, "ldexp(%d,%.17g)", "6.5", "ldexp conversions in the wrong order"},
    {kFloat, {.f = 6.5f}, "ldexp(%.17g,%u)", "6.5", "the exponent is signed"},
    {kChar, {.uc = 'A'}, "%lc", "A", "wide character"},
};

TEST_F(PrimTextTest, RefusedFormatsPrintTheDefaultAndScanNothing) {
  for (const PrintCase& c : kRefusedCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.text, Print(c.family, &c.value, c.format));
    const Value kept = Scan(c.family, KaString(c.text), c.format, kKept);
    EXPECT_EQ(0, std::memcmp(&kKept, &kept, c.family.width)) << "scanned " << c.text;
  }
  const int32_t v = -5;
  const std::string pad(252, 'x');
  EXPECT_EQ(pad + "-5", Print(kLong, &v, (pad + "%ld").c_str())) << "255 bytes";
  EXPECT_EQ("-5", Print(kLong, &v, (pad + "%ld!").c_str())) << "256 bytes: the default";
  EXPECT_EQ(std::string(253, ' ') + "-5", Print(kLong, &v, "%255ld")) << "widest field";
}

TEST_F(PrimTextTest, TextIsOneByteOnTheWayOutAndIn) {
  const int32_t three[] = {-17, 42, 99};
  EXPECT_EQ("-17", Print(kLong, three, "%ld", 3)) << "non-char rows print the first only";
  KaString out = Wide(u"wide previous text");
  IntPrintToKaString(out, const_cast<int32_t*>(three), "%d", 1);
  EXPECT_EQ("-17", Text(out));
  EXPECT_EQ(KaString::GetDefault8CodeSet(), out.CodeSet());
  IntPrintToKaString(out, nullptr, "%d", 1);
  EXPECT_EQ("-17", Text(out)) << "no values, nothing printed";
  EXPECT_EQ(42, Scan(kInt, Wide(u"42"), "%d", {.l = 0}).l);
  EXPECT_EQ(0xE9, Scan(kChar, Wide(u"\u00e9"), "%c", {.uc = 0}).uc) << "into the 8-bit code set";
  KaString text("1");
  EXPECT_EQ(nullptr, IntScanFromKaString(nullptr, text, "%d", 1));
  EXPECT_EQ(nullptr, CharScanFromKaString(nullptr, text, "%c", 1));
  EXPECT_EQ(nullptr, DoubleScanFromKaString(nullptr, text, "%g", 1));
}

TEST_F(PrimTextTest, CharRowsPrintEveryByteAndNonPrintableOnesInHex) {
  const unsigned char abc[] = {'A', 7, 'b'};
  EXPECT_EQ("A0x07b", Print(kChar, abc, "%c", 3));
  EXPECT_EQ("-0x07-", Print(kChar, abc, "-", 3)) << "literal text once per printable byte";
  const unsigned char edges[] = {0x00, 0x1F, 0x20, 0x7E, 0x7F, 0x80, 0xFF};
  EXPECT_EQ("0x000x1f321260x7f0x800xff", Print(kChar, edges, "%d", 7)) << "0x20..0x7E print";
  EXPECT_EQ("[A  ]0x07", Print(kChar, abc, "[%-3c]", 2)) << "literal text, flags and width";
  for (int b = 0; b < 256; ++b) {
    const Value v{.uc = static_cast<unsigned char>(b)};
    const std::string text = Print(kChar, &v, "%c");
    EXPECT_EQ(b, Scan(kChar, KaString(text.c_str()), "%c", {.uc = 0x55}).uc) << text;
  }
  // 400 pieces of 200 characters do not fit into one string.
  const std::vector<unsigned char> bytes(400, 'A');
  KaString out;
  CharPrintToKaString(out, const_cast<unsigned char*>(bytes.data()), "%200c", 400);
  EXPECT_EQ(KaString::kMaxSize - 1, out.Len());
  EXPECT_EQ('A', out.UnitAt(199)) << "the pieces are whole up to the limit";
}

// A non-printable byte prints as "0x%02x" whatever the format; the one-byte
// rows read exactly that form back, whatever the (accepted) format.
const PrintCase kScanCases[] = {
    {kChar, {.uc = 7}, "%d", "0x07", "not the 0 that %d would read"},
    {kChar, {.uc = 0xFF}, "%x", "0xFF", "upper-case digits"},
    {kChar, {.uc = '0'}, "%c", "0x41", "a printable byte prints as itself: read by the format"},
    {kChar, {.uc = 0x41}, "%x", "0x41", "the format reads hex"},
    {kChar, {.uc = '0'}, "%c", "0x7", "one digit: the format"},
    {kChar, {.uc = '0'}, "%c", "0x07 ", "exactly the printed form"},
    {kChar, kKept, "%s", "0x07", "a refused format reads nothing"},
    {kChar, kKept, "%c", "", "empty text: unchanged"},
    {kChar, {.uc = 'A'}, "%5c", "ABCDE", "one byte stored, not five"},
    {kLong, {.l = 12}, "%*s %d", "5 12", "a suppressed conversion is skipped"},
    {kShort, {.s = 4464}, "%*[^,],%hd", "abc,70000", "a suppressed scanset"},
    {kO8B, {.ll = 7}, "%*d%*c%lld", "1;7", "several suppressed"},
    {kLong, kKept, "%*d", "12", "suppressed only: nothing stored"},
    {kInt, {.l = 12}, "%2d", "12345", "a width is the longest field"},
    {kDouble, {.d = -INFINITY}, "%.17g", "  -Infinity", "blanks before a word"},
    {kDouble, {.d = INFINITY}, "v=%g", "Infinity", "words come before the format"},
    {kDouble, {.d = INFINITY}, "ldexp(%g,%lld)", "ldexp(0.5,4294967297)", "exponent clamped"},
    {kDouble, {.d = 1}, "ldexp(%g,%d)", "ldexp(0.5,4294967297)", "exponent through an int"},
    {kDouble, kKept, "ldexp(%g,%d)", "ldexp(0.75)", "half a text: unchanged"},
    {kFloat, {.f = FLT_MAX}, "ldexp(%g,%d)", "ldexp(0x1.fffffefp-1,128)", "rounds down"},
    {kFloat, {.f = INFINITY}, "ldexp(%g,%d)", "ldexp(0x1.ffffffp-1,128)", "half a place up"},
};

TEST_F(PrimTextTest, GoldenTextsThroughTheCallersFormat) {
  for (const PrintCase& c : kPrintCases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.text, Print(c.family, &c.value, c.format));
  }
  for (const PrintCase& c : kScanCases) {
    SCOPED_TRACE(c.why);
    const Value got = Scan(c.family, KaString(c.text), c.format, kKept);
    EXPECT_EQ(0, std::memcmp(&c.value, &got, c.family.width));
  }
}

// The C library as the oracle: a caller's conversion is applied by snprintf
// and sscanf to the row's value converted to the type the conversion names.
// `libc` spells it for this platform (that runtime's long is 32 bits, its long
// double a double).
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

template <typename T>
std::string LibcText(const char* libc, T v) {
  char text[512];
  std::snprintf(text, sizeof text, libc, v);
  return text;
}

// The row's `width` bytes of `bits`, read as signed or not as Conv is.
template <typename Conv>
std::string LibcPrint(const char* libc, uint64_t bits, unsigned width) {
  const unsigned shift = 64 - 8 * width;
  const uint64_t row = std::is_signed_v<Conv>
                           ? static_cast<uint64_t>(static_cast<int64_t>(bits << shift) >> shift)
                           : bits << shift >> shift;
  return LibcText(libc, static_cast<Conv>(row));
}

// The element's bits after sscanf stored into a Conv and that was assigned
// to the row's type; false when nothing was stored.
template <typename Conv>
bool LibcScan(const char* text, const char* libc, uint64_t& bits) {
  Conv v{};
  if (std::sscanf(text, libc, &v) != 1) return false;
  bits = static_cast<uint64_t>(v);
  return true;
}

// sscanf into a T; false when nothing was stored.
template <typename T>
bool LibcScanInto(const char* text, const char* libc, T& v) {
  return std::sscanf(text, libc, &v) == 1;
}

#pragma GCC diagnostic pop

struct IntegerFormat {
  const char* caller;
  const char* libc;
  std::string (*print)(const char*, uint64_t, unsigned);
  bool (*scan)(const char*, const char*, uint64_t&);
};
#define CONV(T) LibcPrint<T>, LibcScan<T>

// Formats valid for both printf and scanf.
const IntegerFormat kIntegerFormats[] = {
    {"%hd", "%hd", CONV(short)},
    {"%hu", "%hu", CONV(unsigned short)},
    {"%hhd", "%hhd", CONV(signed char)},
    {"%hhx", "%hhx", CONV(unsigned char)},
    {"%d", "%d", CONV(int)},
    {"%i", "%i", CONV(int)},
    {"%ld", "%d", CONV(int)},
    {"%lu", "%u", CONV(unsigned)},
    {"#%lu", "#%u", CONV(unsigned)},
    {"%I32d", "%d", CONV(int)},
    {"%zu", "%u", CONV(unsigned)},
    {"%lld", "%lld", CONV(long long)},
    {"%I64d", "%lld", CONV(long long)},
    {"%I64u", "%llu", CONV(unsigned long long)},
    {"%jd", "%lld", CONV(long long)},
    {"%llo", "%llo", CONV(unsigned long long)},
    {"<%3hd>", "<%3hd>", CONV(short)},
    {"n/a 100%%", "n/a 100%%", CONV(int)},
};
// Flags and precision: printing only.
const IntegerFormat kPrintOnlyFormats[] = {
    {"%+08hd", "%+08hd", CONV(short)},
    {"%#hx", "%#hx", CONV(unsigned short)},
    {"[%-7.3hhi]", "[%-7.3hhi]", CONV(signed char)},
    {"% .12lld", "% .12lld", CONV(long long)},
};

const Family* const kIntegerFamilies[] = {&kChar, &kShort, &kLong, &kInt, &kO8B};
constexpr uint64_t kBits[] = {0x0000000000000000, 0x0000000000000005, 0x0000000000010005,
                              0x000000000000007F, 0x0000000000000080, 0x000000000000FFFF,
                              0x0000000000008000, 0x000000007FFFFFFF, 0x0000000080000000,
                              0x00000000FFFFFFFF, 0x123456789ABCDEF0, 0x8000000000000000,
                              0xFFFFFFFFFFFFFFFF};

TEST_F(PrimTextTest, PrintMatchesTheCLibraryThroughTheConversionsType) {
  for (const auto& table : {std::span<const IntegerFormat>(kIntegerFormats),
                            std::span<const IntegerFormat>(kPrintOnlyFormats)}) {
    for (const IntegerFormat& format : table) {
      for (const Family* family : kIntegerFamilies) {
        for (uint64_t bits : kBits) {
          // The one-byte rows print a byte that is not printable as hex.
          if (family->width == 1) bits = 0x20 + (bits & 0x3F);
          SCOPED_TRACE(std::string(format.caller) + " width " + std::to_string(family->width) +
                       " bits " + std::to_string(bits));
          EXPECT_EQ(format.print(format.libc, bits, family->width),
                    Print(*family, &bits, format.caller));
        }
      }
    }
  }
}

TEST_F(PrimTextTest, ScanMatchesTheCLibraryThroughTheConversionsType) {
  for (const IntegerFormat& format : kIntegerFormats) {
    for (const Family* family : kIntegerFamilies) {
      for (const char* text :
           {"", "+", "abc", "n/a 100%", "5", "-1", "077", "0x1F", "  42xyz", "<  7>", "#42", "-129",
            "70000", "4294967297", "-2147483649", "9223372036854775807", "-9223372036854775808",
            "18446744073709551615", "99999999999999999999"}) {
        // The one-byte rows read "0x" and two hex digits as a byte of their own.
        if (family->width == 1 && std::strncmp(text, "0x", 2) == 0) continue;
        SCOPED_TRACE(std::string(format.caller) + " width " + std::to_string(family->width) +
                     " text " + text);
        uint64_t bits = 0;
        const Value expected = format.scan(text, format.libc, bits) ? Value{.ull = bits} : kKept;
        const Value got = Scan(*family, KaString(text), format.caller, kKept);
        EXPECT_EQ(0, std::memcmp(&expected, &got, family->width));
      }
    }
  }
}

struct FloatingFormat {
  const char* caller;
  const char* libc;      // printing, the value passed as a double
  const char* scanLibc;  // reading a double; null for print-only formats
  bool floatReading;     // o_float reads through a float (`libc`), not a double
};
const FloatingFormat kFloatingFormats[] = {
    {"%g", "%g", "%lg", true},
    {"%lf", "%f", "%lf", false},
    {"%Le", "%e", "%le", false},
    {"x=%lG;", "x=%G;", "x=%lG;", false},
    {"%.3LA", "%.3A", nullptr, false},
    {"%+012.4E", "%+012.4E", nullptr, true},
    {"n/a 100%%", "n/a 100%%", "n/a 100%%", true},
};

TEST_F(PrimTextTest, FloatingRowsMatchTheCLibrary) {
  const double doubles[] = {0.1,          -2.5,         DBL_MAX, 1e300,
                            DBL_TRUE_MIN, FLT_TRUE_MIN, -0.0,    123456789.125};
  for (const FloatingFormat& format : kFloatingFormats) {
    SCOPED_TRACE(format.caller);
    for (double d : doubles) {
      EXPECT_EQ(LibcText(format.libc, d), Print(kDouble, &d, format.caller));
      const auto f = static_cast<float>(d > FLT_MAX ? FLT_MAX : d);
      EXPECT_EQ(LibcText(format.libc, f), Print(kFloat, &f, format.caller));
    }
  }
  // Scanning: through the conversion's type, then rounded to the row's.
  for (const FloatingFormat& format : kFloatingFormats) {
    if (format.scanLibc == nullptr) continue;
    for (const char* text : {"0.1", "1.000000059604644775390625001", "-2.5e3", "0x1.8p1", "1e-46",
                             "x=7;", "abc", "n/a 100%"}) {
      SCOPED_TRACE(std::string(format.caller) + " text " + text);
      double d = 0;
      const bool read = LibcScanInto(text, format.scanLibc, d);
      float f = 0;
      LibcScanInto(text, format.libc, f);
      const Value gotDouble = Scan(kDouble, KaString(text), format.caller, kKept);
      const Value gotFloat = Scan(kFloat, KaString(text), format.caller, kKept);
      EXPECT_EQ(read ? Value{.d = d}.ull : kKept.ull, gotDouble.ull);
      const Value wantFloat = !read                 ? kKept
                              : format.floatReading ? Value{.f = f}
                                                    : Value{.f = static_cast<float>(d)};
      EXPECT_EQ(0, std::memcmp(&wantFloat, &gotFloat, 4));
    }
  }
}

TEST_F(PrimTextTest, RandomFloatingValuesRoundTrip) {
  const char* ldexp = "ldexp(%.17g,%d)";
  const std::pair<const Family&, const char*> trips[] = {
      {kDouble, "%.17g"}, {kDouble, ldexp}, {kFloat, "%.17g"}, {kFloat, ldexp}};
  std::mt19937_64 random(19);
  char expected[64];
  for (const auto& [family, format] : trips) {
    SCOPED_TRACE(format);
    for (int n = 0; n < 1000; ++n) {
      Value v{.ull = random()};
      if (family.width == 4) v.ull &= 0xFFFFFFFF;
      if (family.width == 4 ? std::isnan(v.f) : std::isnan(v.d)) continue;
      const std::string text = Print(family, &v, format);
      const Value back = Scan(family, KaString(text.c_str()), format, {});
      ASSERT_EQ(0, std::memcmp(&v, &back, family.width)) << text;
      const double d = family.width == 4 ? v.f : v.d;
      if (format[0] == '%' && std::isfinite(d)) {
        std::snprintf(expected, sizeof expected, "%.17g", d);  // the C library as oracle
        ASSERT_EQ(expected, text);
      }
    }
  }
}

template <typename T>
void ExpectConvertRoundTrip(const char* why, KaConvertToFunc to, KaConvertFromFunc from,
                            std::vector<T> values, const std::vector<std::string>& texts) {
  SCOPED_TRACE(why);
  KaTypeConvertData* holder = to(values.data(), static_cast<unsigned>(values.size()));
  ASSERT_NE(nullptr, holder);
  EXPECT_EQ(KaSTRING_T, holder->typeId);
  ASSERT_EQ(static_cast<int>(values.size()), holder->count);
  for (int i = 0; i < holder->count; ++i) {
    ASSERT_NE(nullptr, holder->GetString(i));
    EXPECT_EQ(texts[i], Text(*holder->GetString(i))) << "element " << i;
  }
  // Two more than the holder has: those strings are missing, so 0.
  values.resize(values.size() + 2);
  T* back = static_cast<T*>(from(holder, static_cast<unsigned>(values.size())));
  ASSERT_NE(nullptr, back);
  EXPECT_EQ(0, std::memcmp(values.data(), back, values.size() * sizeof(T)));
  delete[] back;  // allocated as the rows' Create allocates
  // The holder carries no manager: its strings are released here.
  KaTypeMgr().Delete(KaSTRING_T, holder->data, static_cast<unsigned int>(holder->count));
  holder->data = nullptr;
  delete holder;
}

// The trace name and the ConvertTo/ConvertFrom pair of a row.
#define PAIR(Prefix) #Prefix, Prefix##ConvertToKaString, Prefix##ConvertFromKaString

TEST_F(PrimTextTest, ConvertToAndFromRoundTripEveryRow) {
  ExpectConvertRoundTrip<signed char>(PAIR(Char), {'A', 7, -128}, {"A", "0x07", "0x80"});
  ExpectConvertRoundTrip<unsigned char>(PAIR(O_U1B), {' ', 255}, {" ", "0xff"});
  ExpectConvertRoundTrip<int16_t>(PAIR(Short), {SHRT_MIN, -1}, {"-32768", "-1"});
  ExpectConvertRoundTrip<uint16_t>(PAIR(Word), {65535}, {"65535"});
  ExpectConvertRoundTrip<int32_t>(PAIR(Long), {INT32_MIN}, {"-2147483648"});
  ExpectConvertRoundTrip<uint32_t>(PAIR(Dword), {0xFFFFFFFF}, {"4294967295"});  // BlockId too
  ExpectConvertRoundTrip<int>(PAIR(Int), {INT_MIN}, {"-2147483648"});
  ExpectConvertRoundTrip<unsigned>(PAIR(Unsigned), {UINT_MAX}, {"4294967295"});
  ExpectConvertRoundTrip<float>(PAIR(Float), {0.1f}, {"0.10000000149011612"});
  ExpectConvertRoundTrip<double>(PAIR(Double), {DBL_TRUE_MIN}, {"4.9406564584124654e-324"});
  ExpectConvertRoundTrip<int64_t>(PAIR(O_8B), {INT64_MIN}, {"-9223372036854775808"});
  ExpectConvertRoundTrip<uint64_t>(PAIR(O_U8B), {UINT64_MAX}, {"18446744073709551615"});
  EXPECT_EQ(nullptr, IntConvertToKaString(nullptr, 3));
  EXPECT_EQ(nullptr, IntConvertFromKaString(nullptr, 3));
}

}  // namespace
