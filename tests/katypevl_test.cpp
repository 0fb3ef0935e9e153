// EvalAndBound of the primitive rows: estimates against a brute-force key count,
// key decoding per row and byte order, non-finite keys, and the bound filling.
#include "katypemgr/katypevl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "kabase/assert.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned short kEq = kKaOpEqual, kLt = kKaOpLess, kGt = kKaOpGreater;

// The low `width` bytes of `v` as a key image in `format`: nibble 2 high byte
// first, memory form in host order, any other nibble low byte first.
Bytes Image(uint64_t v, int width, unsigned char format) {
  constexpr bool kBigHost = std::endian::native == std::endian::big;
  Bytes b(width);
  for (int i = 0; i < width; ++i, v >>= 8) b[i] = static_cast<unsigned char>(v);
  if (format == 2 || (kBigHost && (format == 8 || format == 1))) std::reverse(b.begin(), b.end());
  return b;
}

constexpr uint64_t F(float v) { return std::bit_cast<uint32_t>(v); }
constexpr uint64_t D(double v) { return std::bit_cast<uint64_t>(v); }

float Eval(KaEvalFunc f, int width, unsigned char format, uint64_t lower, uint64_t upper,
           uint64_t value, unsigned short op) {
  Bytes lo = Image(lower, width, format), hi = Image(upper, width, format),
        x = Image(value, width, format);
  KaIdxBounds range{lo.data(), hi.data(), static_cast<unsigned char>(width),
                    static_cast<unsigned char>(width)};
  return f(&range, op, x.data(), format, 1, nullptr);
}

struct IntegerRow {
  KaEvalFunc eval;
  int width;
  unsigned char format;
  int64_t min, max;  // the range probed, inside the type
  const char* why;
};

const IntegerRow kIntegerRows[] = {
    {CharEvalAndBound, 1, 8, -3, 9, "o_char across the sign"},
    {ByteEvalAndBound, 1, 3, 200, 250, "o_u1b above the sign bit"},
    {ShortEvalAndBound, 2, 2, -300, -250, "o_2b negative, big-endian"},
    {DwordEvalAndBound, 4, 2, UINT32_MAX - 30, UINT32_MAX - 5, "o_u4b top"},
    {IntEvalAndBound, 4, 8, INT32_MIN + 5, INT32_MIN + 40, "int bottom, memory form"},
    {UnsignedEvalAndBound, 4, 2, 0x7FFFFFF0, 0x80000010, "unsigned across the sign bit"},
    {O_8BEvalAndBound, 8, 0, -10, 10, "o_8b around zero, little-endian"},
};

// Every operator and values around the range against a count of the keys
// k in [min, max] with k == x, k < x or k > x.
TEST(PrimitiveEval, EstimatesMatchAKeyCount) {
  for (const auto& r : kIntegerRows) {
    SCOPED_TRACE(r.why);
    for (int64_t x = r.min - 5; x <= r.max + 5; ++x) {
      for (unsigned short op = 0; op <= 7; ++op) {
        int64_t n = 0;
        for (int64_t k = r.min; k <= r.max; ++k) {
          n += ((op & kEq) && k == x) || ((op & kLt) && k < x) || ((op & kGt) && k > x);
        }
        const auto expected = static_cast<float>(double(n) / double(r.max - r.min + 1));
        EXPECT_FLOAT_EQ(expected, Eval(r.eval, r.width, r.format, r.min, r.max, x, op))
            << "x " << x << " op " << op;
      }
    }
  }
}

struct EvalCase {
  KaEvalFunc eval;
  int width;
  unsigned char format;
  uint64_t lower, upper, value;
  unsigned short op;
  float expected;
  const char* why;
};

const EvalCase kEvalCases[] = {
    {CharEvalAndBound, 1, 8, 0, 9, 5, kEq, 0.1f, "o_char [0,9] equal 5"},
    {CharEvalAndBound, 1, 8, 0, 9, 5, kLt, 0.5f, "less 5"},
    {CharEvalAndBound, 1, 8, 0, 9, 5, kGt, 0.4f, "greater 5"},
    {CharEvalAndBound, 1, 8, 0, 9, 5, kLt | kEq, 0.6f, "less-or-equal 5"},
    {CharEvalAndBound, 1, 8, 0, 9, 0xFB, kGt, 1.0f, "-5 below the range, greater"},
    {FloatEvalAndBound, 4, 2, F(0), F(9), F(5), kEq, 0.1f, "o_float big-endian"},
    {FloatEvalAndBound, 4, 3, F(0), F(9), F(5), kLt, 0.5f, "o_float little-endian"},
    {DoubleEvalAndBound, 8, 2, D(0), D(9), D(5), kGt, 0.4f, "o_double big-endian"},
    {DoubleEvalAndBound, 8, 0, D(0), D(9), D(5), kEq, 0.1f, "o_double little-endian"},
    {DoubleEvalAndBound, 8, 8, D(0), D(9), D(5), kLt | kEq, 0.6f, "o_double memory form"},
    {O_8BEvalAndBound, 8, 2, 1ull << 63, INT64_MAX, 0, kLt, 0.5f, "o_8b extremes: no overflow"},
    {O_U8BEvalAndBound, 8, 2, 0, UINT64_MAX, 1ull << 63, kLt, 0.5f, "o_u8b extremes"},
    {O_8BEvalAndBound, 8, 2, 0, UINT64_MAX, 0, kGt, 0.0f, "o_8b [0,-1] is upside down: nothing"},
    {DoubleEvalAndBound, 8, 8, D(-HUGE_VAL), D(HUGE_VAL), D(0), kGt, 1.0f, "unbounded side, range"},
    {DoubleEvalAndBound, 8, 8, D(0), D(9), D(NAN), kGt | kLt, FLT_MAX, "NaN terms saturate"},
    {DoubleEvalAndBound, 8, 8, D(NAN), D(NAN), D(5), kEq, 1.0f, "NaN keys: nothing is known"},
};

TEST(PrimitiveEval, DecodesKeysPerRowAndFormat) {
  for (const auto& c : kEvalCases) {
    SCOPED_TRACE(c.why);
    const float got = Eval(c.eval, c.width, c.format, c.lower, c.upper, c.value, c.op);
    EXPECT_FLOAT_EQ(c.expected, got);
    EXPECT_TRUE(std::isfinite(got)) << "never infinite: " << got;
  }
}

// Bound keys are malloc'd copies of the value, freed with their holder.
struct Bounds : KaIdxBounds {
  ~Bounds() {
    for (unsigned char* key : {lower, upper}) std::free(key);
  }
  Bytes Lower() const { return lower ? Bytes(lower, lower + lowerLength) : Bytes{}; }
  Bytes Upper() const { return upper ? Bytes(upper, upper + upperLength) : Bytes{}; }
};

// Bounds after `op` with 5 and then equal with 7: 5 where `op` set the side.
struct BoundCase {
  unsigned short op;
  unsigned char lower, upper;
  const char* why;
};
const BoundCase kBoundCases[] = {
    {kEq, 5, 5, "equal bounds both sides"}, {kLt, 7, 5, "less: the upper"},
    {kGt, 5, 7, "greater: the lower"},      {kLt | kEq, 7, 5, "less-or-equal"},
    {kGt | kEq, 5, 7, "greater-or-equal"},  {kLt | kGt, 7, 7, "not-equal: none"},
};

TEST(BoundFilling, OperatorChoosesTheSidesAndTheFirstBoundWins) {
  for (const auto& c : kBoundCases) {
    SCOPED_TRACE(c.why);
    Bounds b;
    unsigned short op = c.op, eq = kEq;
    signed char five = 5, seven = 7;
    EXPECT_EQ(0.0f, CharEvalAndBound(nullptr, op, &five, 8, 1, &b)) << "null range: no estimate";
    CharEvalAndBound(nullptr, eq, &seven, 8, 1, &b);
    EXPECT_EQ(Bytes{c.lower}, b.Lower());
    EXPECT_EQ(Bytes{c.upper}, b.Upper());
  }
}

TEST(BoundFilling, BoundsCopyEveryElementAsGiven) {
  Bytes shortKey = {0}, lower = {0, 0}, upper = {0, 9};  // exact size: a read past is caught
  KaIdxBounds shortRange{shortKey.data(), upper.data(), 1, 2},
      range{lower.data(), upper.data(), 2, 2};
  Bytes value = {0x00, 0x01, 0x80, 0x00, 0xFF, 0xFE};  // three o_2b, big-endian
  unsigned short op = kEq;
  Bounds none, b;
  EXPECT_EQ(0.0f, ShortEvalAndBound(&range, op, nullptr, 2, 1, &none)) << "no value";
  EXPECT_EQ(0.0f, ShortEvalAndBound(&range, op, value.data(), 2, 0, &none)) << "count 0";
  EXPECT_EQ(nullptr, none.lower) << "no value, no bounds";
  EXPECT_EQ(0.0f, ShortEvalAndBound(&shortRange, op, value.data(), 2, 3, nullptr)) << "short key";
  EXPECT_FLOAT_EQ(0.1f, ShortEvalAndBound(&range, op, value.data(), 2, 3, &b))
      << "the first element alone is estimated";
  EXPECT_EQ(kEq, op) << "operator left as given";
  const Bytes given = value;
  value.assign(value.size(), 0xAA);
  EXPECT_EQ(given, b.Lower());
  EXPECT_EQ(given, b.Upper());
}

TEST(BoundFilling, KeyLongerThanItsLengthFieldIsRefused) {
  static int reports = 0;
  KaSetAssertReceiver([](const char*, const char*, int) { ++reports; });
  std::vector<int64_t> wide(32, 7);
  Bytes bytes(255, 1);
  unsigned short op = kEq;
  Bounds refused, fits;
  O_8BEvalAndBound(nullptr, op, wide.data(), 8, 32, &refused);
  CharEvalAndBound(nullptr, op, bytes.data(), 3, 255, &fits);
  KaSetAssertReceiver(nullptr);
  EXPECT_EQ(nullptr, refused.lower);
  EXPECT_EQ(2, reports) << "one report per side";
  EXPECT_EQ(bytes, fits.Lower()) << "255 bytes still fit";
}

}  // namespace
