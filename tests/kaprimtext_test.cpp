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
#include <memory>
#include <random>
#include <span>
#include <string>
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
constexpr double kInf = INFINITY;
constexpr float kFloatInf = INFINITY;

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

struct PrintCase {
  const Family& family;
  Value value;
  const char* format;
  const char* text;
  const char* why;
};

const PrintCase kPrintCases[] = {
    {kShort, {.s = SHRT_MIN}, "%hd", "-32768", "o_2b default, minimum"},
    {kShort, {.s = SHRT_MAX}, "%hd", "32767", "o_2b default, maximum"},
    {kShort, {.s = -1}, "%hu", "65535", "o_u2b default: %hu reads unsigned"},
    {kLong, {.l = INT32_MIN}, "%ld", "-2147483648", "o_4b default: %ld is 32 bits"},
    {kLong, {.l = INT32_MAX}, "%ld", "2147483647", "o_4b maximum"},
    {kLong, {.ul = 0xFFFFFFFF}, "%lu", "4294967295", "o_u4b default, maximum"},
    {kLong, {.ul = 0xFFFFFFFF}, "#%lu", "#4294967295", "BlockId default: literal"},
    {kLong, {.l = -1}, "%08lx", "ffffffff", "flags and width kept; 32 bits"},
    {kLong, {.l = 8}, "%#o", "010", "# with octal"},
    {kInt, {.l = INT_MIN}, "%d", "-2147483648", "int and enum default"},
    {kInt, {.l = INT_MAX}, "%d", "2147483647", "int maximum"},
    {kInt, {.ul = UINT_MAX}, "%u", "4294967295", "unsigned default"},
    {kInt, {.l = -7}, nullptr, "-7", "null format: the default"},
    {kInt, {.l = 7}, "100%% %-4.3i|", "100% 007 |", "%%, flags, precision, literal"},
    {kInt, {.l = 70000}, "%hd", "70000", "the row's width decides, not h"},
    {kO8B, {.ll = INT64_MIN}, "%I64d", "-9223372036854775808", "o_8b default"},
    {kO8B, {.ll = INT64_MAX}, "%I64d", "9223372036854775807", "o_8b maximum"},
    {kO8B, {.ull = UINT64_MAX}, "%I64u", "18446744073709551615", "o_u8b default"},
    {kO8B, {.ull = UINT64_MAX}, "%lld", "-1", "the other runtime's spelling"},
    {kDouble, {.d = DBL_MAX}, "%.17g", "1.7976931348623157e+308", "o_double maximum"},
    {kDouble, {.d = -DBL_MAX}, "%.17g", "-1.7976931348623157e+308", "o_double minimum"},
    {kDouble, {.d = DBL_TRUE_MIN}, "%.17g", "4.9406564584124654e-324", "smallest subnormal"},
    {kDouble, {.d = -0.0}, "%.17g", "-0", "negative zero keeps its sign"},
    {kDouble, {.d = -kInf}, "%.17g", "-Infinity", "negative infinity"},
    {kDouble, {.d = kInf}, "%e", "Infinity", "infinity whatever the format"},
    {kDouble, {.d = NAN}, "%f", "NaN", "NaN whatever the format"},
    {kDouble, {.d = 6.0}, "ldexp(%.17g,%d)", "ldexp(0.75,3)", "frexp split"},
    {kDouble, {.d = DBL_TRUE_MIN}, "ldexp(%.17g,%i)", "ldexp(0.5,-1073)", "subnormal"},
    {kDouble, {.d = 2.5}, "%08.3Lf", "0002.500", "flags, precision, L dropped"},
    {kFloat, {.f = FLT_MAX}, "%.17g", "3.4028234663852886e+38", "o_float maximum"},
    {kFloat, {.f = -FLT_MAX}, "%.17g", "-3.4028234663852886e+38", "o_float minimum"},
    {kFloat, {.f = FLT_TRUE_MIN}, "%.17g", "1.4012984643248171e-45", "float subnormal"},
    {kFloat, {.f = NAN}, "ldexp(%.17g,%d)", "NaN", "NaN"},
};

// Formats that fail the check give the family's default; with the same
// format, scanning falls back alike and reads the text back.
const PrintCase kRefusedCases[] = {
    {kLong, {.l = -5}, "%hhn", "-5", "%n writes through its argument"},
    {kLong, {.l = -5}, "%*d", "-5", "width from an argument"},
    {kLong, {.l = -5}, "%d %s", "-5", "a second, dangerous conversion"},
    {kLong, {.l = -5}, "no conversion", "-5", "literal text only"},
    {kLong, {.l = -5}, "%", "-5", "a lone % at the end"},
    {kLong, {.l = -5}, "%Ld", "-5", "L is for floating conversions"},
    {kLong, {.l = -5}, "%#d", "-5", "# is undefined with d"},
    {kLong, {.l = -5}, "%.256d", "-5", "precision above 255"},
    {kLong, {.l = -5}, "%9999999999999999999d", "-5", "width that overflows"},
    {kLong, {.l = -5}, "%lu%n", "4294967291", "names an unsigned reading"},
    {kLong, {.l = -5}, "%x %x", "4294967291", "two unsigned conversions"},
    {kDouble, {.d = 6.5}, "%d", "6.5", "an integer conversion on a floating row"},
    {kDouble, {.d = 6.5}, "%.300f", "6.5", "precision above 255"},
    {kDouble, {.d = 6.5}, "ldexp(%.17g)", "6.5", "ldexp without the exponent"},
    {kDouble, {.d = 6.5}, "ldexp(%d,%.17g)", "6.5", "ldexp conversions in the wrong order"},
    {kDouble, {.d = 6.5}, "%.17g,%d", "6.5", "two conversions, no ldexp prefix"},
    {kFloat, {.f = 6.5f}, "ldexp(%.17g,%u)", "6.5", "the exponent is signed"},
    {kChar, {.uc = 'A'}, "%s", "A", "string conversion refused"},
    {kChar, {.uc = 'A'}, "%.2c", "A", "precision is undefined with c"},
    {kChar, {.uc = 'A'}, "%05c", "A", "0 is undefined with c"},
    {kChar, {.uc = 'A'}, "%lc", "A", "wide character refused"},
};

TEST_F(PrimTextTest, PrintsEveryRowAndReadsItBack) {
  for (const auto& table :
       {std::span<const PrintCase>(kPrintCases), std::span<const PrintCase>(kRefusedCases)}) {
    for (const PrintCase& c : table) {
      SCOPED_TRACE(c.why);
      EXPECT_EQ(c.text, Print(c.family, &c.value, c.format));
      const Value back = Scan(c.family, KaString(c.text), c.format, Value{.ull = 0});
      EXPECT_EQ(0, std::memcmp(&c.value, &back, c.family.width)) << "read back from " << c.text;
    }
  }
}

TEST_F(PrimTextTest, FormatLengthsAreBounded) {
  const int32_t v = -5;
  const std::string pad(252, 'x');
  EXPECT_EQ(pad + "-5", Print(kLong, &v, (pad + "%ld").c_str())) << "255 bytes";
  EXPECT_EQ("-5", Print(kLong, &v, (pad + "%ld!").c_str())) << "256 bytes: the default";
  EXPECT_EQ(std::string(253, ' ') + "-5", Print(kLong, &v, "%255ld")) << "widest field";
}

TEST_F(PrimTextTest, OutputIsReplacedByOneByteText) {
  const int32_t three[] = {-17, 42, 99};
  EXPECT_EQ("-17", Print(kLong, three, "%ld", 3)) << "non-char rows print the first only";
  KaString out = Wide(u"wide previous text");
  IntPrintToKaString(out, const_cast<int32_t*>(three), "%d", 1);
  EXPECT_EQ("-17", Text(out));
  EXPECT_EQ(KaString::GetDefault8CodeSet(), out.CodeSet());
  IntPrintToKaString(out, nullptr, "%d", 1);
  EXPECT_EQ("-17", Text(out)) << "no values, nothing printed";
}

TEST_F(PrimTextTest, CharRowsPrintEveryByteAndNonPrintableOnesInHex) {
  const unsigned char abc[] = {'A', 7, 'b'};
  EXPECT_EQ("A0x07b", Print(kChar, abc, "%c", 3));
  const unsigned char edges[] = {0x00, 0x1F, 0x20, 0x7E, 0x7F, 0x80, 0xFF};
  EXPECT_EQ("0x000x1f ~0x7f0x800xff", Print(kChar, edges, "%c", 7)) << "0x20..0x7E print";
  EXPECT_EQ("650x07", Print(kChar, abc, "%d", 2)) << "a printable byte's number";
  EXPECT_EQ("410x07", Print(kChar, abc, "%x", 2));
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

// Scanning starts from this pattern, which a text that matches nothing keeps.
constexpr Value kKept = {.ll = 0x5A5A5A5A5A5A5A5A};
const PrintCase kScanCases[] = {
    {kChar, {.uc = '0'}, "%c", "0x41", "'A' never prints as 0x41"},
    {kChar, {.uc = 0xE9}, "%c", "0xE9", "upper-case hex digits"},
    {kChar, {.uc = '0'}, "%c", "0x07 ", "exactly the printed form"},
    {kChar, kKept, "%c", "", "empty text: unchanged"},
    {kChar, {.uc = 'A'}, "%5c", "ABCDE", "one byte stored, not five"},
    {kChar, {.uc = 0xFF}, "%d", "-1", "a byte's number"},
    {kChar, {.uc = 'Q'}, "%s", "Q", "%s falls back to %c"},
    {kShort, {.s = 4464}, "%hd", "70000", "stored modulo 2^16"},
    {kShort, {.s = -1}, "%hu", "-1", "unsigned reading of -1"},
    {kLong, {.ul = 42}, "#%lu", "#42", "BlockId's literal"},
    {kLong, kKept, "#%lu", "42", "literal missing: unchanged"},
    {kLong, {.ul = 0xFFFFFFFF}, "%lu%n", "4294967295", "refused, unsigned"},
    {kInt, {.l = 12}, "%2d", "12345", "a width is the longest field"},
    {kInt, kKept, "%d", "abc", "no number: unchanged"},
    {kInt, {.l = 12}, "%*d", "12", "suppression falls back"},
    {kDouble, {.d = -kInf}, "%.17g", "  -Infinity", "blanks before a word"},
    {kDouble, {.d = kInf}, "v=%g", "Infinity", "words come before the format"},
    {kDouble, kKept, "%.17g", "x", "no number: unchanged"},
    {kDouble, {.d = kInf}, "ldexp(%g,%d)", "ldexp(0.5,4294967297)", "exponent clamped"},
    {kDouble, kKept, "ldexp(%g,%d)", "ldexp(0.75)", "half a text: unchanged"},
    {kFloat, {.f = kFloatInf}, "%.17g", "1e39", "above the float range"},
    {kFloat, {.f = FLT_MAX}, "ldexp(%g,%d)", "ldexp(0x1.fffffefp-1,128)", "rounds down"},
    {kFloat, {.f = kFloatInf}, "ldexp(%g,%d)", "ldexp(0x1.ffffffp-1,128)", "half a place up"},
};

TEST_F(PrimTextTest, ScanFollowsSscanfIntoTheFirstElement) {
  for (const PrintCase& c : kScanCases) {
    SCOPED_TRACE(c.why);
    const Value got = Scan(c.family, KaString(c.text), c.format, kKept);
    EXPECT_EQ(0, std::memcmp(&c.value, &got, c.family.width));
  }
}

TEST_F(PrimTextTest, ScanConvertsTwoByteTextFirst) {
  EXPECT_EQ(42, Scan(kInt, Wide(u"42"), "%d", {.l = 0}).l);
  EXPECT_EQ(0xE9, Scan(kChar, Wide(u"\u00e9"), "%c", {.uc = 0}).uc) << "into the 8-bit code set";
  KaString text("1");
  EXPECT_EQ(nullptr, IntScanFromKaString(nullptr, text, "%d", 1));
  EXPECT_EQ(nullptr, CharScanFromKaString(nullptr, text, "%c", 1));
  EXPECT_EQ(nullptr, DoubleScanFromKaString(nullptr, text, "%g", 1));
}

TEST_F(PrimTextTest, RandomFloatingValuesRoundTrip) {
  const char* ldexp = "ldexp(%.17g,%d)";
  const std::pair<const Family&, const char*> trips[] = {
      {kDouble, "%.17g"}, {kDouble, ldexp}, {kFloat, "%.9g"}, {kFloat, ldexp}};
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
      if (format == trips[0].second && std::isfinite(v.d)) {
        std::snprintf(expected, sizeof expected, "%.17g", v.d);  // the C library as oracle
        ASSERT_EQ(expected, text);
      }
    }
  }
}

// Holders made by the slots carry no manager: their strings are released here.
void ReleaseHolder(KaTypeConvertData* holder) {
  KaTypeMgr().Delete(KaSTRING_T, holder->data, static_cast<unsigned int>(holder->count));
  holder->data = nullptr;
  delete holder;
}

template <typename T>
void ExpectConvertRoundTrip(const char* why, KaConvertToFunc to, KaConvertFromFunc from,
                            std::vector<T> values, const std::vector<std::string>& texts) {
  SCOPED_TRACE(why);
  std::unique_ptr<KaTypeConvertData, void (*)(KaTypeConvertData*)> holder(
      to(values.data(), static_cast<unsigned>(values.size())), ReleaseHolder);
  ASSERT_NE(nullptr, holder);
  EXPECT_EQ(KaSTRING_T, holder->typeId);
  ASSERT_EQ(static_cast<int>(values.size()), holder->count);
  for (int i = 0; i < holder->count; ++i) {
    ASSERT_NE(nullptr, holder->GetString(i));
    EXPECT_EQ(texts[i], Text(*holder->GetString(i))) << "element " << i;
  }
  // Two more than the holder has: those strings are missing, so 0.
  values.resize(values.size() + 2);
  T* back = static_cast<T*>(from(holder.get(), static_cast<unsigned>(values.size())));
  ASSERT_NE(nullptr, back);
  EXPECT_EQ(0, std::memcmp(values.data(), back, values.size() * sizeof(T)));
  delete[] back;  // allocated as the rows' Create allocates
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
