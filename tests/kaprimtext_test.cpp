// Text of the primitive values: printing and scanning through checked
// formats, the special floating texts, round trips, and the string-array
// conversions.
#include "katypemgr/kaprimtext.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kabase/assert.h"
#include "kai18n/langctx.h"
#include "kastring_test_util.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"

namespace {

using ka::test::Text;
using ka::test::Wide;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// One element of any primitive row.
union Value {
  unsigned char bytes[8];
  signed char c;
  unsigned char uc;
  int16_t s;
  uint16_t us;
  int32_t l;
  uint32_t ul;
  int i;
  unsigned u;
  int64_t ll;
  uint64_t ull;
  float f;
  double d;
};

// No slot may reach the internal-inconsistency report, whatever the format.
std::vector<std::string> g_reports;

class PrimTextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    g_reports.clear();
    KaSetAssertReceiver([](const char* text, const char*, int) { g_reports.push_back(text); });
  }
  void TearDown() override {
    KaSetAssertReceiver(nullptr);
    KaLanguageContext::Reset();
    EXPECT_TRUE(g_reports.empty()) << g_reports.front();
  }
};

std::string Print(KaPrintFunc print, const void* value, const char* format,
                  unsigned int count = 1) {
  KaString out("previous text");
  print(out, const_cast<void*>(value), format, count);
  return Text(out);
}

// Scans `text` into a `width`-byte element that starts as `initial` and sits
// between guard bytes, which must survive.
Value Scan(KaScanFunc scan, unsigned width, KaString text, const char* format, Value initial) {
  unsigned char buffer[24];
  std::memset(buffer, 0xA5, sizeof buffer);
  std::memcpy(buffer + 8, initial.bytes, width);
  void* answer = scan(buffer + 8, text, format, 1);
  EXPECT_EQ(buffer + 8, answer) << "the destination is answered";
  for (unsigned i = 0; i < sizeof buffer; ++i) {
    if (i < 8 || i >= 8 + width) {
      EXPECT_EQ(0xA5, buffer[i]) << "guard byte " << i;
    }
  }
  Value result{};
  std::memcpy(result.bytes, buffer + 8, width);
  return result;
}

bool SameBits(const Value& a, const Value& b, unsigned width) {
  return std::memcmp(a.bytes, b.bytes, width) == 0;
}

// --- Printing every row -------------------------------------------------------------------

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

struct PrintCase {
  const Family& family;
  Value value;
  const char* format;
  const char* text;
  const char* why;
};

constexpr float kFloatInf = std::numeric_limits<float>::infinity();

const PrintCase kPrintCases[] = {
    {kShort, {.s = SHRT_MIN}, "%hd", "-32768", "o_2b default, minimum"},
    {kShort, {.s = SHRT_MAX}, "%hd", "32767", "o_2b default, maximum"},
    {kShort, {.us = 65535}, "%hu", "65535", "o_u2b default: %hu reads unsigned"},
    {kShort, {.us = 65535}, "%hd", "-1", "the same bits through %hd"},
    {kShort, {.s = -2}, "%hX", "FFFE", "16 bits wide, not sign-extended"},
    {kLong, {.l = INT32_MIN}, "%ld", "-2147483648", "o_4b default: %ld is 32 bits"},
    {kLong, {.l = INT32_MAX}, "%ld", "2147483647", "o_4b maximum"},
    {kLong, {.ul = 0xFFFFFFFF}, "%lu", "4294967295", "o_u4b default, maximum"},
    {kLong, {.ul = 0xFFFFFFFF}, "#%lu", "#4294967295", "BlockId default: literal"},
    {kLong, {.ul = 0xFFFFFFFF}, "%ld", "-1", "the same bits through %ld"},
    {kLong, {.l = -1}, "%08lx", "ffffffff", "flags and width kept; 32 bits"},
    {kLong, {.l = 8}, "%#o", "010", "# with octal"},
    {kInt, {.i = INT_MIN}, "%d", "-2147483648", "int and enum default"},
    {kInt, {.u = UINT_MAX}, "%u", "4294967295", "unsigned default"},
    {kInt, {.i = 7}, "%+d", "+7", "plus flag"},
    {kInt, {.i = 7}, "%-4d|", "7   |", "left adjusted"},
    {kInt, {.i = 7}, "%.3d", "007", "precision"},
    {kInt, {.i = 7}, "100%% %i", "100% 7", "a %% beside the conversion"},
    {kInt, {.i = 70000}, "%hd", "70000", "the row's width decides, not h"},
    {kO8B, {.ll = INT64_MIN}, "%I64d", "-9223372036854775808", "o_8b default"},
    {kO8B, {.ull = UINT64_MAX}, "%I64u", "18446744073709551615", "o_u8b default"},
    {kO8B, {.ull = UINT64_MAX}, "%lld", "-1", "the other runtime's spelling"},
    {kO8B, {.ll = INT64_MAX}, "%I64x", "7fffffffffffffff", "64-bit hexadecimal"},
    {kDouble, {.d = DBL_MAX}, "%.17g", "1.7976931348623157e+308", "o_double maximum"},
    {kDouble, {.d = -DBL_MAX}, "%.17g", "-1.7976931348623157e+308", "o_double minimum"},
    {kDouble, {.d = DBL_TRUE_MIN}, "%.17g", "4.9406564584124654e-324", "smallest subnormal"},
    {kDouble, {.d = -0.0}, "%.17g", "-0", "negative zero keeps its sign"},
    {kDouble, {.d = 0.1}, "%.17g", "0.10000000000000001", "17 digits tell every double"},
    {kDouble, {.d = -kInf}, "%.17g", "-Infinity", "negative infinity"},
    {kDouble, {.d = kInf}, "%e", "Infinity", "infinity whatever the format"},
    {kDouble, {.d = kInf}, "ldexp(%.17g,%d)", "Infinity", "even an ldexp format"},
    {kDouble, {.d = 6.0}, "ldexp(%.17g,%d)", "ldexp(0.75,3)", "frexp split"},
    {kDouble, {.d = -0.0}, "ldexp(%.17g,%d)", "ldexp(-0,0)", "frexp of -0"},
    {kDouble, {.d = DBL_TRUE_MIN}, "ldexp(%.17g,%i)", "ldexp(0.5,-1073)", "subnormal"},
    {kDouble, {.d = 1.5}, "%a", "0x1.8p+0", "hexadecimal floating"},
    {kDouble, {.d = 2.5}, "%08.3Lf", "0002.500", "flags, precision, L dropped"},
    {kFloat, {.f = FLT_MAX}, "%.17g", "3.4028234663852886e+38", "o_float maximum"},
    {kFloat, {.f = FLT_TRUE_MIN}, "%.17g", "1.4012984643248171e-45", "float subnormal"},
    {kFloat, {.f = 0.1f}, "%.17g", "0.10000000149011612", "a float's exact value"},
    {kFloat, {.f = -kFloatInf}, "%.17g", "-Infinity", "float negative infinity"},
    {kFloat, {.f = 6.0f}, "ldexp(%.17g,%d)", "ldexp(0.75,3)", "float frexp split"},
};

TEST_F(PrimTextTest, PrintsEveryRowThroughItsFormat) {
  for (const PrintCase& c : kPrintCases) {
    SCOPED_TRACE(std::string(c.why) + " [" + c.format + "]");
    EXPECT_EQ(c.text, Print(c.family.print, &c.value, c.format));
  }
}

TEST_F(PrimTextTest, ScanReadsBackWhatPrintWrote) {
  for (const PrintCase& c : kPrintCases) {
    SCOPED_TRACE(std::string(c.why) + " [" + c.format + "]");
    const Family& f = c.family;
    const Value back = Scan(f.scan, f.width, KaString(c.text), c.format, Value{.ull = 0});
    EXPECT_TRUE(SameBits(c.value, back, f.width)) << "read back from " << c.text;
  }
}

TEST_F(PrimTextTest, NaNPrintsAsAWordAndReadsBack) {
  const double d = kNaN;
  const float f = std::numeric_limits<float>::quiet_NaN();
  for (const char* format : {"%.17g", "%f", "ldexp(%.17g,%d)", "%s"}) {
    SCOPED_TRACE(format);
    EXPECT_EQ("NaN", Print(DoublePrintToKaString, &d, format));
    EXPECT_EQ("NaN", Print(FloatPrintToKaString, &f, format));
    EXPECT_TRUE(std::isnan(Scan(DoubleScanFromKaString, 8, KaString("NaN"), format, {.d = 1}).d));
    EXPECT_TRUE(std::isnan(Scan(FloatScanFromKaString, 4, KaString("NaN"), format, {.f = 1}).f));
  }
}

TEST_F(PrimTextTest, NonCharRowsPrintTheFirstElementOnly) {
  const int32_t three[] = {-17, 42, 99};
  EXPECT_EQ("-17", Print(LongPrintToKaString, three, "%ld", 3));
  const double two[] = {1.5, 2.5};
  EXPECT_EQ("1.5", Print(DoublePrintToKaString, two, "%.17g", 2));
}

TEST_F(PrimTextTest, IntegerRowsReadExactlyTheirWidth) {
  // Exact-size objects: a wider read would be caught by the address sanitizer.
  const int16_t s = -2;
  const uint32_t u = 0x80000000u;
  const int i = -1;
  const int64_t l = -1;
  EXPECT_EQ("fffe", Print(ShortPrintToKaString, &s, "%hx"));
  EXPECT_EQ("2147483648", Print(LongPrintToKaString, &u, "%lu"));
  EXPECT_EQ("-2147483648", Print(LongPrintToKaString, &u, "%ld"));
  EXPECT_EQ("37777777777", Print(IntPrintToKaString, &i, "%o"));
  EXPECT_EQ("ffffffffffffffff", Print(O_8BPrintToKaString, &l, "%I64x"));
}

TEST_F(PrimTextTest, PrintedTextsAgreeWithTheCLibrary) {
  std::mt19937_64 random(20160219);
  char expected[64];
  for (int n = 0; n < 2000; ++n) {
    const uint64_t bits = random();
    const auto l = static_cast<int32_t>(bits);
    std::snprintf(expected, sizeof expected, "%d", l);
    ASSERT_EQ(expected, Print(LongPrintToKaString, &l, "%ld"));
    const auto ull = static_cast<unsigned long long>(bits);
    std::snprintf(expected, sizeof expected, "%llu", ull);
    ASSERT_EQ(expected, Print(O_8BPrintToKaString, &ull, "%I64u"));
    double d;
    std::memcpy(&d, &bits, sizeof d);
    if (!std::isfinite(d)) continue;
    std::snprintf(expected, sizeof expected, "%.17g", d);
    ASSERT_EQ(expected, Print(DoublePrintToKaString, &d, "%.17g"));
  }
}

TEST_F(PrimTextTest, PrintReplacesTheOutput) {
  KaString out = Wide(u"wide previous text");
  const int value = 5;
  IntPrintToKaString(out, const_cast<int*>(&value), "%d", 1);
  EXPECT_EQ("5", Text(out));
  EXPECT_EQ(KaString::GetDefault8CodeSet(), out.CodeSet()) << "the text is 1-byte text";
  KaString untouched("keep");
  IntPrintToKaString(untouched, nullptr, "%d", 1);
  EXPECT_EQ("keep", Text(untouched)) << "no values, nothing printed";
  EXPECT_EQ("5", Print(IntPrintToKaString, &value, nullptr)) << "null format: the default";
}

// --- Formats that fail the check ---------------------------------------------------------

struct HostileCase {
  const char* format;
  const char* text;
  const char* why;
};

// An o_4b/o_u4b value of -5; the fallback is "%ld", or "%lu" when the refused
// format's first conversion reads unsigned.
const HostileCase kHostileLong[] = {
    {"%s", "-5", "a string conversion would read the number as a pointer"},
    {"%n", "-5", "%n writes through its argument"},
    {"%hhn", "-5", "%n with a modifier"},
    {"%p", "-5", "pointer"},
    {"%*d", "-5", "width from an argument"},
    {"%.*d", "-5", "precision from an argument"},
    {"%1$d", "-5", "positional argument"},
    {"%d%d", "-5", "two conversions"},
    {"%d %s", "-5", "a second, dangerous conversion"},
    {"no conversion", "-5", "literal text only"},
    {"", "-5", "empty"},
    {"%", "-5", "a lone % at the end"},
    {"%5", "-5", "a conversion cut off"},
    {"%c", "-5", "a character conversion on a number row"},
    {"%e", "-5", "a floating conversion on a number row"},
    {"%Lf", "-5", "long double"},
    {"%qd", "-5", "unknown modifier"},
    {"%'d", "-5", "grouping flag"},
    {"%#d", "-5", "# is undefined with d"},
    {"%Ld", "-5", "L is for floating conversions"},
    {"%.256d", "-5", "precision above 255"},
    {"%9999999999999999999d", "-5", "width that overflows"},
    {"%lu%n", "4294967291", "refused, but names an unsigned reading"},
    {"%x %x", "4294967291", "two unsigned conversions"},
};

TEST_F(PrimTextTest, RefusedFormatsFallBackToTheDefault) {
  const int32_t value = -5;
  for (const HostileCase& c : kHostileLong) {
    SCOPED_TRACE(std::string(c.why) + " [" + c.format + "]");
    EXPECT_EQ(c.text, Print(LongPrintToKaString, &value, c.format));
  }
  const std::string tooLong = std::string(250, 'x') + "%ld" + std::string(10, 'y');
  EXPECT_EQ("-5", Print(LongPrintToKaString, &value, tooLong.c_str())) << "above 255 bytes";
  const std::string longest = std::string(252, 'x') + "%ld";
  EXPECT_EQ(std::string(252, 'x') + "-5", Print(LongPrintToKaString, &value, longest.c_str()))
      << "255 bytes are accepted";
  const std::string wide = "%255ld";
  EXPECT_EQ(std::string(253, ' ') + "-5", Print(LongPrintToKaString, &value, wide.c_str()));
}

TEST_F(PrimTextTest, RefusedFloatingFormatsFallBackToTheDefault) {
  const HostileCase cases[] = {
      {"%d", "6.5", "an integer conversion on a floating row"},
      {"%s", "6.5", "string"},
      {"%n", "6.5", "%n"},
      {"%g%g", "6.5", "two conversions"},
      {"%.300f", "6.5", "precision above 255"},
      {"ldexp(%.17g)", "6.5", "ldexp without the exponent"},
      {"ldexp(%d,%.17g)", "6.5", "ldexp conversions in the wrong order"},
      {"ldexp(%.17g,%d,%d)", "6.5", "ldexp with a third conversion"},
      {"ldexp(%.17g,%u)", "6.5", "the exponent is signed"},
      {"ldexp(%.17g,%s)", "6.5", "string exponent"},
      {"%.17g,%d", "6.5", "two conversions without the ldexp prefix"},
  };
  const double d = 6.5;
  const float f = 6.5f;
  for (const HostileCase& c : cases) {
    SCOPED_TRACE(std::string(c.why) + " [" + c.format + "]");
    EXPECT_EQ(c.text, Print(DoublePrintToKaString, &d, c.format));
    EXPECT_EQ(c.text, Print(FloatPrintToKaString, &f, c.format));
  }
}

// --- One-byte rows -------------------------------------------------------------------------

TEST_F(PrimTextTest, CharRowsPrintTheWholeArray) {
  const unsigned char abc[] = {'A', 7, 'b'};
  EXPECT_EQ("A0x07b", Print(CharPrintToKaString, abc, "%c", 3));
  EXPECT_EQ("", Print(CharPrintToKaString, abc, "%c", 0)) << "no bytes: emptied";
  const unsigned char edges[] = {0x00, 0x1F, 0x20, 0x7E, 0x7F, 0x80, 0xE9, 0xFF};
  EXPECT_EQ("0x000x1f ~0x7f0x800xe90xff", Print(CharPrintToKaString, edges, "%c", 8))
      << "printable is 0x20..0x7E of the unsigned byte";
}

TEST_F(PrimTextTest, CharFormatsApplyToPrintableBytesOnly) {
  const unsigned char a7[] = {'A', 7};
  const HostileCase cases[] = {
      {"%d", "650x07", "numeric value of a printable byte"},
      {"%x", "410x07", "hexadecimal"},
      {"[%c]", "[A]0x07", "literal text around it"},
      {"%3c", "  A0x07", "width"},
      {"%-3c", "A  0x07", "left adjusted"},
      {"%s", "A0x07", "string conversion refused"},
      {"%.2c", "A0x07", "precision is undefined with c"},
      {"%#c", "A0x07", "# is undefined with c"},
      {"%05c", "A0x07", "0 is undefined with c"},
      {"%lc", "A0x07", "wide character refused"},
      {"%c%c", "A0x07", "two conversions"},
      {"%e", "A0x07", "floating"},
  };
  for (const HostileCase& c : cases) {
    SCOPED_TRACE(std::string(c.why) + " [" + c.format + "]");
    EXPECT_EQ(c.text, Print(CharPrintToKaString, a7, c.format, 2));
  }
}

TEST_F(PrimTextTest, EveryByteRoundTrips) {
  for (int b = 0; b < 256; ++b) {
    SCOPED_TRACE(b);
    const Value v{.uc = static_cast<unsigned char>(b)};
    const std::string text = Print(CharPrintToKaString, &v, "%c");
    EXPECT_EQ(b >= 0x20 && b <= 0x7E ? 1u : 4u, text.size());
    EXPECT_EQ(b, Scan(CharScanFromKaString, 1, KaString(text.c_str()), "%c", {.uc = 0x55}).uc);
  }
}

TEST_F(PrimTextTest, CharPrintStopsAtTheStringLimit) {
  // 400 bytes of 200 characters each do not fit into one string.
  const std::vector<unsigned char> bytes(400, 'A');
  KaString out;
  CharPrintToKaString(out, const_cast<unsigned char*>(bytes.data()), "%200c", 400);
  EXPECT_EQ(KaString::kMaxSize - 1, out.Len());
  EXPECT_EQ('A', out.UnitAt(199)) << "the pieces are whole up to the limit";
}

struct ScanCase {
  const Family& family;
  const char* text;
  const char* format;
  Value initial;
  Value expected;
  const char* why;
};

const ScanCase kScanCases[] = {
    {kChar, "A", "%c", {.uc = 1}, {.uc = 'A'}, "one character"},
    {kChar, " ", "%c", {.uc = 1}, {.uc = ' '}, "%c does not skip blanks"},
    {kChar, "0x41", "%c", {.uc = 1}, {.uc = '0'}, "'A' never prints as 0x41"},
    {kChar, "0xE9", "%c", {.uc = 1}, {.uc = 0xE9}, "upper-case hex digits"},
    {kChar, "0x7", "%c", {.uc = 1}, {.uc = '0'}, "not the printed form"},
    {kChar, "0x07 ", "%c", {.uc = 1}, {.uc = '0'}, "exactly the printed form"},
    {kChar, "", "%c", {.uc = 9}, {.uc = 9}, "empty text: unchanged"},
    {kChar, "ABCDE", "%5c", {.uc = 1}, {.uc = 'A'}, "one byte stored, not five"},
    {kChar, "-1", "%d", {.uc = 1}, {.uc = 0xFF}, "a byte's number"},
    {kChar, "x=Q", "x=%c", {.uc = 1}, {.uc = 'Q'}, "literal text"},
    {kChar, "Z", "%s", {.uc = 1}, {.uc = 'Z'}, "%s falls back to %c"},
    {kShort, "70000", "%hd", {.s = 1}, {.s = 4464}, "stored modulo 2^16"},
    {kShort, "-1", "%hu", {.s = 1}, {.us = 65535}, "unsigned reading of -1"},
    {kLong, "#42", "#%lu", {.l = 1}, {.ul = 42}, "BlockId's literal"},
    {kLong, "42", "#%lu", {.l = 1}, {.l = 1}, "literal missing: unchanged"},
    {kLong, "4294967296", "%lu", {.l = 1}, {.ul = 0}, "2^32 wraps"},
    {kLong, "4294967295", "%lu%n", {.i = 7}, {.ul = 0xFFFFFFFF}, "refused, unsigned"},
    {kInt, "ff", "%x", {.i = 1}, {.i = 255}, "hexadecimal"},
    {kInt, "0x10", "%i", {.i = 1}, {.i = 16}, "%i reads the prefix"},
    {kInt, "12345", "%2d", {.i = 1}, {.i = 12}, "a width is the longest field"},
    {kInt, "  -3", "%d", {.i = 1}, {.i = -3}, "leading blanks"},
    {kInt, "value=9", "value=%d", {.i = 1}, {.i = 9}, "literal text"},
    {kInt, "abc", "%d", {.i = 7}, {.i = 7}, "no number: unchanged"},
    {kInt, "", "%d", {.i = 7}, {.i = 7}, "empty: unchanged"},
    {kInt, "5", nullptr, {.i = 7}, {.i = 5}, "null format: the default"},
    {kInt, "123456789012", "%s", {.i = 7}, {.i = -1097262572}, "%s read as %d, wrapped"},
    {kInt, "12", "%n", {.i = 7}, {.i = 12}, "%n falls back"},
    {kInt, "12", "%[0-9]", {.i = 7}, {.i = 12}, "scan sets fall back"},
    {kInt, "12", "%*d", {.i = 7}, {.i = 12}, "suppression falls back"},
    {kO8B, "9223372036854775807", "%I64d", {.ll = 0}, {.ll = INT64_MAX}, "o_8b maximum"},
    {kDouble, "  -Infinity", "%.17g", {.d = 1}, {.d = -kInf}, "blanks before a word"},
    {kDouble, "Infinity", "v=%g", {.d = 1}, {.d = kInf}, "words come before the format"},
    {kDouble, "1e400", "%.17g", {.d = 1}, {.d = kInf}, "overflow"},
    {kDouble, "x", "%.17g", {.d = 1}, {.d = 1}, "no number: unchanged"},
    {kDouble, "2.5", "%08.3Lf", {.d = 1}, {.d = 2.5}, "print-only parts dropped"},
    {kDouble,
     "ldexp(0.5,99999999999)",
     "ldexp(%g,%d)",
     {.d = 1},
     {.d = kInf},
     "a huge exponent is clamped, not wrapped"},
    {kDouble,
     "ldexp(-0.5,-99999999999)",
     "ldexp(%g,%d)",
     {.d = 1},
     {.d = -0.0},
     "a huge negative exponent"},
    {kDouble, "ldexp(0.75,3", "ldexp(%g,%d)", {.d = 1}, {.d = 6}, "sscanf needs no ')'"},
    {kDouble, "ldexp(0.75)", "ldexp(%g,%d)", {.d = 1}, {.d = 1}, "half a text: unchanged"},
    {kFloat, "1e39", "%.17g", {.f = 1}, {.f = kFloatInf}, "above the float range"},
    {kFloat,
     "ldexp(0x1.fffffefp-1,128)",
     "ldexp(%g,%d)",
     {.f = 1},
     {.f = FLT_MAX},
     "less than half a place above FLT_MAX rounds down"},
    {kFloat,
     "ldexp(0x1.ffffffp-1,128)",
     "ldexp(%g,%d)",
     {.f = 1},
     {.f = kFloatInf},
     "half a place above FLT_MAX rounds to infinity"},
};

TEST_F(PrimTextTest, ScanFollowsSscanfIntoTheFirstElement) {
  for (const ScanCase& c : kScanCases) {
    SCOPED_TRACE(std::string(c.why) + " [" + c.text + "]");
    const Family& f = c.family;
    const Value got = Scan(f.scan, f.width, KaString(c.text), c.format, c.initial);
    EXPECT_TRUE(SameBits(c.expected, got, f.width));
  }
}

TEST_F(PrimTextTest, ScanConvertsTwoByteTextFirst) {
  EXPECT_EQ(42, Scan(IntScanFromKaString, 4, Wide(u"42"), "%d", {.i = 0}).i);
  EXPECT_EQ(-2.5, Scan(DoubleScanFromKaString, 8, Wide(u"-2.5"), "%.17g", {.d = 0}).d);
  EXPECT_EQ(-kInf, Scan(DoubleScanFromKaString, 8, Wide(u"-Infinity"), "%g", {.d = 0}).d);
  EXPECT_EQ(7, Scan(CharScanFromKaString, 1, Wide(u"0x07"), "%c", {.uc = 0}).uc);
  EXPECT_EQ(0xE9, Scan(CharScanFromKaString, 1, Wide(u"\u00e9"), "%c", {.uc = 0}).uc)
      << "converted into the default 8-bit code set";
  KaString text("1");
  EXPECT_EQ(nullptr, IntScanFromKaString(nullptr, text, "%d", 1));
  EXPECT_EQ(nullptr, CharScanFromKaString(nullptr, text, "%c", 1));
  EXPECT_EQ(nullptr, DoubleScanFromKaString(nullptr, text, "%g", 1));
}

// --- Floating round trips ------------------------------------------------------------------

TEST_F(PrimTextTest, EveryDoubleRoundTrips) {
  std::vector<double> values = {
      0.0,   -0.0, DBL_TRUE_MIN, -DBL_TRUE_MIN, DBL_MIN, DBL_MIN - DBL_TRUE_MIN, DBL_MAX,
      -kInf, kInf, 0.1,          1.0 / 3.0,     1e23,    9007199254740993.0};
  std::mt19937_64 random(19);
  while (values.size() < 5000) {
    const uint64_t bits = random();
    double d;
    std::memcpy(&d, &bits, sizeof d);
    if (!std::isnan(d)) values.push_back(d);
  }
  for (const char* format : {"%.17g", "ldexp(%.17g,%d)", "%a", "%.16e"}) {
    SCOPED_TRACE(format);
    for (const double d : values) {
      const Value v{.d = d};
      const std::string text = Print(DoublePrintToKaString, &v, format);
      const Value back = Scan(DoubleScanFromKaString, 8, KaString(text.c_str()), format, {});
      ASSERT_TRUE(SameBits(v, back, 8)) << text;
    }
  }
}

TEST_F(PrimTextTest, EveryFloatRoundTrips) {
  std::vector<float> values = {0.0f, -0.0f, FLT_TRUE_MIN, FLT_MIN, FLT_MAX, -FLT_MAX, 0.1f};
  std::mt19937 random(23);
  while (values.size() < 5000) {
    const uint32_t bits = random();
    float f;
    std::memcpy(&f, &bits, sizeof f);
    if (!std::isnan(f)) values.push_back(f);
  }
  for (const char* format : {"%.17g", "%.9g", "ldexp(%.17g,%d)"}) {
    SCOPED_TRACE(format);
    for (const float f : values) {
      const Value v{.f = f};
      const std::string text = Print(FloatPrintToKaString, &v, format);
      const Value back = Scan(FloatScanFromKaString, 4, KaString(text.c_str()), format, {});
      ASSERT_TRUE(SameBits(v, back, 4)) << text;
    }
  }
}

// --- String arrays -------------------------------------------------------------------------

// Holders made by the slots carry no manager, so their strings are released
// here.
struct HolderRelease {
  void operator()(KaTypeConvertData* holder) const {
    if (holder->typeId == KaSTRING_T) ka::DeleteStringArray(static_cast<KaString*>(holder->data));
    holder->data = nullptr;
    delete holder;
  }
};
using Holder = std::unique_ptr<KaTypeConvertData, HolderRelease>;

template <typename T>
void ExpectConvertRoundTrip(KaConvertToFunc to, KaConvertFromFunc from,
                            const std::vector<T>& values, const std::vector<std::string>& texts) {
  std::vector<T> copy = values;
  Holder holder(to(copy.data(), static_cast<unsigned>(copy.size())));
  ASSERT_NE(nullptr, holder);
  EXPECT_EQ(KaSTRING_T, holder->typeId);
  ASSERT_EQ(static_cast<int>(values.size()), holder->count);
  for (size_t i = 0; i < texts.size(); ++i) {
    ASSERT_NE(nullptr, holder->GetString(static_cast<int>(i)));
    EXPECT_EQ(texts[i], Text(*holder->GetString(static_cast<int>(i)))) << "element " << i;
  }
  // Two more than the holder has: those are missing strings, so 0.
  const auto n = static_cast<unsigned>(values.size() + 2);
  T* back = static_cast<T*>(from(holder.get(), n));
  ASSERT_NE(nullptr, back);
  for (size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(0, std::memcmp(&values[i], &back[i], sizeof(T))) << "element " << i;
  }
  EXPECT_EQ(T{}, back[values.size()]);
  EXPECT_EQ(T{}, back[values.size() + 1]);
  delete[] back;  // allocated as the rows' Create allocates
}

TEST_F(PrimTextTest, ConvertToAndFromRoundTripEveryRow) {
  {
    SCOPED_TRACE("o_char");
    ExpectConvertRoundTrip<signed char>(CharConvertToKaString, CharConvertFromKaString,
                                        {'A', 7, -128, 127}, {"A", "0x07", "0x80", "0x7f"});
  }
  {
    SCOPED_TRACE("o_u1b");
    ExpectConvertRoundTrip<unsigned char>(O_U1BConvertToKaString, O_U1BConvertFromKaString,
                                          {' ', 0, 255}, {" ", "0x00", "0xff"});
  }
  {
    SCOPED_TRACE("o_2b");
    ExpectConvertRoundTrip<int16_t>(ShortConvertToKaString, ShortConvertFromKaString,
                                    {SHRT_MIN, -1, SHRT_MAX}, {"-32768", "-1", "32767"});
  }
  {
    SCOPED_TRACE("o_u2b");
    ExpectConvertRoundTrip<uint16_t>(WordConvertToKaString, WordConvertFromKaString, {0, 65535},
                                     {"0", "65535"});
  }
  {
    SCOPED_TRACE("o_4b");
    ExpectConvertRoundTrip<int32_t>(LongConvertToKaString, LongConvertFromKaString,
                                    {INT32_MIN, INT32_MAX}, {"-2147483648", "2147483647"});
  }
  {
    SCOPED_TRACE("o_u4b and BlockId");
    ExpectConvertRoundTrip<uint32_t>(DwordConvertToKaString, DwordConvertFromKaString,
                                     {0xFFFFFFFF, 1}, {"4294967295", "1"});
  }
  {
    SCOPED_TRACE("int and enum");
    ExpectConvertRoundTrip<int>(IntConvertToKaString, IntConvertFromKaString, {INT_MIN, -7},
                                {"-2147483648", "-7"});
  }
  {
    SCOPED_TRACE("unsigned");
    ExpectConvertRoundTrip<unsigned>(UnsignedConvertToKaString, UnsignedConvertFromKaString,
                                     {UINT_MAX}, {"4294967295"});
  }
  {
    SCOPED_TRACE("o_float");
    ExpectConvertRoundTrip<float>(FloatConvertToKaString, FloatConvertFromKaString,
                                  {0.1f, -0.0f, -std::numeric_limits<float>::infinity()},
                                  {"0.10000000149011612", "-0", "-Infinity"});
  }
  {
    SCOPED_TRACE("o_double");
    ExpectConvertRoundTrip<double>(DoubleConvertToKaString, DoubleConvertFromKaString,
                                   {DBL_TRUE_MIN, kInf, -0.0},
                                   {"4.9406564584124654e-324", "Infinity", "-0"});
  }
  {
    SCOPED_TRACE("o_8b");
    ExpectConvertRoundTrip<int64_t>(O_8BConvertToKaString, O_8BConvertFromKaString,
                                    {INT64_MIN, INT64_MAX},
                                    {"-9223372036854775808", "9223372036854775807"});
  }
  {
    SCOPED_TRACE("o_u8b");
    ExpectConvertRoundTrip<uint64_t>(O_U8BConvertToKaString, O_U8BConvertFromKaString, {UINT64_MAX},
                                     {"18446744073709551615"});
  }
}

template <typename T>
void ExpectZeros(KaConvertFromFunc from, KaTypeConvertData* holder, const char* why) {
  SCOPED_TRACE(why);
  T* values = static_cast<T*>(from(holder, 3));
  ASSERT_NE(nullptr, values);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(T{}, values[i]) << "element " << i;
  delete[] values;
}

TEST_F(PrimTextTest, EmptyStringsConvertToZeros) {
  // What the rows' DefaultValue builds on: empty text gives 0 in every row.
  KaString* strings = ka::NewStringArray(3);
  ASSERT_NE(nullptr, strings);
  Holder holder(KaTypeConvertData::Make(KaSTRING_T, 3, strings, nullptr));
  ASSERT_NE(nullptr, holder);
  KaTypeConvertData* h = holder.get();
  ExpectZeros<signed char>(CharConvertFromKaString, h, "o_char");
  ExpectZeros<unsigned char>(O_U1BConvertFromKaString, h, "o_u1b");
  ExpectZeros<int16_t>(ShortConvertFromKaString, h, "o_2b");
  ExpectZeros<uint16_t>(WordConvertFromKaString, h, "o_u2b");
  ExpectZeros<int32_t>(LongConvertFromKaString, h, "o_4b");
  ExpectZeros<uint32_t>(DwordConvertFromKaString, h, "o_u4b");
  ExpectZeros<int>(IntConvertFromKaString, h, "int");
  ExpectZeros<unsigned>(UnsignedConvertFromKaString, h, "unsigned");
  ExpectZeros<float>(FloatConvertFromKaString, h, "o_float");
  ExpectZeros<double>(DoubleConvertFromKaString, h, "o_double");
  ExpectZeros<int64_t>(O_8BConvertFromKaString, h, "o_8b");
  ExpectZeros<uint64_t>(O_U8BConvertFromKaString, h, "o_u8b");
}

TEST_F(PrimTextTest, ConversionsRefuseNullInput) {
  EXPECT_EQ(nullptr, IntConvertToKaString(nullptr, 3));
  EXPECT_EQ(nullptr, DoubleConvertToKaString(nullptr, 1));
  EXPECT_EQ(nullptr, IntConvertFromKaString(nullptr, 3));
  EXPECT_EQ(nullptr, CharConvertFromKaString(nullptr, 1));
  // A holder of another type has no strings: every element is 0.
  int numbers[2] = {5, 6};
  Holder holder(KaTypeConvertData::Make(KaINT_T, 2, numbers, nullptr));
  ASSERT_NE(nullptr, holder);
  int* values = static_cast<int*>(IntConvertFromKaString(holder.get(), 2));
  ASSERT_NE(nullptr, values);
  EXPECT_EQ(0, values[0]);
  EXPECT_EQ(0, values[1]);
  delete[] values;
}

}  // namespace
