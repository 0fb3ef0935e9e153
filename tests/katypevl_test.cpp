// EvalAndBound of the primitive rows: estimates against a brute-force count of
// the keys in the range, key decoding per row and byte order, the corner cases
// of the estimator (NaN, infinity, 64-bit extremes), and the bound filling.
#include "katypemgr/katypevl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "kabase/assert.h"

namespace {

using Bytes = std::vector<unsigned char>;
using ka::detail::Estimate;
using ka::detail::RangeFraction;

constexpr unsigned short kEq = kKaOpEqual, kLt = kKaOpLess, kGt = kKaOpGreater;
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The low `width` bytes of `v`, high byte first.
Bytes BigEndian(uint64_t v, int width) {
  Bytes b(width);
  for (int i = width - 1; i >= 0; --i, v >>= 8) b[i] = static_cast<unsigned char>(v);
  return b;
}

Bytes Reversed(Bytes b) {
  std::reverse(b.begin(), b.end());
  return b;
}

template <typename T>
Bytes Memory(T v) {
  Bytes b(sizeof v);
  std::memcpy(b.data(), &v, sizeof v);
  return b;
}

// A read-only range over test-owned key images.
KaIdxBounds RangeOver(Bytes& lower, Bytes& upper) {
  KaIdxBounds r;
  r.lower = lower.data();
  r.upper = upper.data();
  r.lowerLength = static_cast<unsigned char>(lower.size());
  r.upperLength = static_cast<unsigned char>(upper.size());
  return r;
}

float Eval(KaEvalFunc f, unsigned char format, Bytes lower, Bytes upper, Bytes value,
           unsigned short op) {
  KaIdxBounds range = RangeOver(lower, upper);
  return f(&range, op, value.data(), format, 1, nullptr);
}

// Keys k in [min, max] with k == x, k < x or k > x as `op` asks, over the
// number of keys in the range.
double BruteFraction(unsigned short op, int64_t x, int64_t min, int64_t max) {
  int64_t n = 0;
  for (int64_t k = min; k <= max; ++k) {
    if (((op & kEq) && k == x) || ((op & kLt) && k < x) || ((op & kGt) && k > x)) ++n;
  }
  return static_cast<double>(n) / static_cast<double>(max - min + 1);
}

struct IntegerRow {
  KaEvalFunc eval;
  int width;
  int64_t lowest, highest;  // the type's own extremes
  int64_t min, max;         // the range probed
  const char* why;
};

const IntegerRow kIntegerRows[] = {
    {CharEvalAndBound, 1, -128, 127, 0, 9, "o_char, the range of the worked example"},
    {CharEvalAndBound, 1, -128, 127, -128, 127, "o_char, the whole type"},
    {CharEvalAndBound, 1, -128, 127, -5, -5, "o_char, one key"},
    {ByteEvalAndBound, 1, 0, 255, 200, 255, "o_u1b above the sign bit"},
    {ShortEvalAndBound, 2, -32768, 32767, -300, -250, "o_2b negative"},
    {WordEvalAndBound, 2, 0, 65535, 65500, 65535, "o_u2b top"},
    {LongEvalAndBound, 4, INT32_MIN, INT32_MAX, -20, 20, "o_4b around zero"},
    {DwordEvalAndBound, 4, 0, UINT32_MAX, UINT32_MAX - 30, UINT32_MAX, "o_u4b top"},
    {IntEvalAndBound, 4, INT32_MIN, INT32_MAX, INT32_MIN, INT32_MIN + 40, "int bottom"},
    {UnsignedEvalAndBound, 4, 0, UINT32_MAX, 0x7FFFFFF0, 0x80000010, "unsigned sign bit"},
    {O_8BEvalAndBound, 8, INT64_MIN, INT64_MAX, -10, 10, "o_8b around zero"},
    {O_U8BEvalAndBound, 8, 0, INT64_MAX, 1000, 1040, "o_u8b"},
};

TEST(PrimitiveEval, EstimatesMatchAKeyCount) {
  for (const auto& row : kIntegerRows) {
    SCOPED_TRACE(row.why);
    const int64_t from = std::max(row.lowest, row.min - 5);
    const int64_t to = std::min(row.highest, row.max + 5);
    for (int64_t x = from; x <= to; ++x) {
      for (unsigned short op = 0; op <= 7; ++op) {
        const float got = Eval(row.eval, 2, BigEndian(row.min, row.width),
                               BigEndian(row.max, row.width), BigEndian(x, row.width), op);
        EXPECT_FLOAT_EQ(static_cast<float>(BruteFraction(op, x, row.min, row.max)), got)
            << "x " << x << " op " << op;
      }
    }
  }
}

struct EvalCase {
  KaEvalFunc eval;
  unsigned char format;
  Bytes lower, upper, value;
  unsigned short op;
  float expected;
  const char* why;
};

const EvalCase kEvalCases[] = {
    {CharEvalAndBound, 8, {0}, {9}, {5}, kEq, 0.1f, "o_char [0,9] equal 5"},
    {CharEvalAndBound, 8, {0}, {9}, {5}, kLt, 0.5f, "less 5"},
    {CharEvalAndBound, 8, {0}, {9}, {5}, kGt, 0.4f, "greater 5"},
    {CharEvalAndBound, 8, {0}, {9}, {5}, kLt | kEq, 0.6f, "less-or-equal 5"},
    {CharEvalAndBound, 8, {0}, {9}, {0xFB}, kGt, 1.0f, "-5 below the range, greater"},
    {CharEvalAndBound, 3, {0}, {0x7F}, {0xFF}, kGt, 1.0f, "o_char 0xFF is -1, below"},
    {ByteEvalAndBound, 3, {0}, {0x7F}, {0xFF}, kGt, 0.0f, "o_u1b 0xFF is 255, above"},
    {ShortEvalAndBound, 2, {0, 0}, {1, 0}, {0, 0x80}, kGt, 128.0f / 257, "big-endian 0..256"},
    {ShortEvalAndBound, 3, {0, 0}, {1, 0}, {0, 0x80}, kGt, 1.0f, "same bytes little: 0..1, -32768"},
    {LongEvalAndBound,
     2,
     {0, 0, 0, 0},
     {0x7F, 0xFF, 0xFF, 0xFF},
     {0xFF, 0xFF, 0xFF, 0xFF},
     kGt,
     1.0f,
     "o_4b 0xFFFFFFFF is -1"},
    {DwordEvalAndBound,
     2,
     {0, 0, 0, 0},
     {0x7F, 0xFF, 0xFF, 0xFF},
     {0xFF, 0xFF, 0xFF, 0xFF},
     kGt,
     0.0f,
     "o_u4b 0xFFFFFFFF is the top"},
    {IntEvalAndBound,
     3,
     {0, 0, 0, 0},
     {10, 0, 0, 0},
     {0xFF, 0xFF, 0xFF, 0xFF},
     kGt,
     1.0f,
     "int -1 below [0,10]"},
    {UnsignedEvalAndBound,
     3,
     {0, 0, 0, 0},
     {10, 0, 0, 0},
     {0xFF, 0xFF, 0xFF, 0xFF},
     kGt,
     0.0f,
     "unsigned 0xFFFFFFFF above [0,10]"},
    {FloatEvalAndBound,
     2,
     {0, 0, 0, 0},
     {0x41, 0x10, 0, 0},
     {0x40, 0xA0, 0, 0},
     kEq,
     0.1f,
     "o_float big-endian [0,9] equal 5"},
    {FloatEvalAndBound,
     3,
     {0, 0, 0, 0},
     {0, 0, 0x10, 0x41},
     {0, 0, 0xA0, 0x40},
     kLt,
     0.5f,
     "o_float little-endian less 5"},
    {DoubleEvalAndBound, 2, BigEndian(0, 8), BigEndian(0x4022000000000000, 8),
     BigEndian(0x4014000000000000, 8), kGt, 0.4f, "o_double [0,9] greater 5: divisor 10"},
    {DoubleEvalAndBound, 0, Reversed(BigEndian(0, 8)), Reversed(BigEndian(0x4022000000000000, 8)),
     Reversed(BigEndian(0x4014000000000000, 8)), kEq, 0.1f, "o_double little-endian"},
    {O_8BEvalAndBound, 2, BigEndian(INT64_MIN, 8), BigEndian(INT64_MAX, 8), BigEndian(0, 8), kLt,
     0.5f, "o_8b extremes: the span is computed without overflow"},
    {O_U8BEvalAndBound, 2, BigEndian(0, 8), BigEndian(UINT64_MAX, 8), BigEndian(1ull << 63, 8), kLt,
     0.5f, "o_u8b extremes"},
    {O_U8BEvalAndBound, 2, BigEndian(0, 8), BigEndian(UINT64_MAX, 8), BigEndian(0, 8), kGt, 1.0f,
     "o_u8b all but one key of 2^64"},
    {O_8BEvalAndBound, 2, BigEndian(0, 8), BigEndian(UINT64_MAX, 8), BigEndian(0, 8), kGt, 0.0f,
     "o_8b reads the top key as -1: a range upside down says nothing"},
};

TEST(PrimitiveEval, DecodesKeysPerRowAndFormat) {
  for (const auto& c : kEvalCases) {
    SCOPED_TRACE(c.why);
    EXPECT_FLOAT_EQ(c.expected, Eval(c.eval, c.format, c.lower, c.upper, c.value, c.op));
  }
}

TEST(PrimitiveEval, MemoryFormReadsHostOrderKeys) {
  EXPECT_FLOAT_EQ(128.0f / 257, Eval(ShortEvalAndBound, 8, Memory<int16_t>(0), Memory<int16_t>(256),
                                     Memory<int16_t>(128), kGt));
  EXPECT_FLOAT_EQ(0.5f, Eval(O_8BEvalAndBound, 1, Memory<int64_t>(-10), Memory<int64_t>(9),
                             Memory<int64_t>(0), kLt));
  EXPECT_FLOAT_EQ(0.1f, Eval(DoubleEvalAndBound, 8, Memory(0.0), Memory(9.0), Memory(5.0), kEq));
}

TEST(PrimitiveEval, NonFiniteDoublesGiveFiniteFractions) {
  const auto eval = [](double lo, double hi, double x, unsigned short op) {
    return Eval(DoubleEvalAndBound, 8, Memory(lo), Memory(hi), Memory(x), op);
  };
  EXPECT_FLOAT_EQ(1.0f, eval(-kInf, kInf, 0.0, kGt)) << "unbounded side of an unbounded range";
  EXPECT_FLOAT_EQ(1.0f, eval(-kInf, kInf, 0.0, kLt));
  EXPECT_FLOAT_EQ(0.0f, eval(-kInf, kInf, 0.0, kEq)) << "one key of an unbounded range";
  EXPECT_FLOAT_EQ(1.0f, eval(-DBL_MAX, DBL_MAX, 0.0, kGt)) << "span beyond the double range";
  EXPECT_EQ(FLT_MAX, eval(0.0, 9.0, kNaN, kGt)) << "NaN term saturates, never infinite";
  EXPECT_EQ(FLT_MAX, eval(0.0, 9.0, kNaN, kGt | kLt)) << "two unbounded terms";
  EXPECT_FLOAT_EQ(0.0f, eval(9.0, 0.0, 5.0, kEq)) << "range upside down";
  EXPECT_FLOAT_EQ(1.0f, eval(kNaN, kNaN, 5.0, kEq)) << "NaN keys: nothing is known";
}

TEST(RangeEstimator, CountsAndUnboundedTerms) {
  EXPECT_DOUBLE_EQ(3.0, Estimate(kEq, 3, 5, 0, 9, 1)) << "an interval value";
  EXPECT_DOUBLE_EQ(7.0, Estimate(kLt | kGt, 3, 5, 0, 9, 1)) << "outside an interval";
  EXPECT_DOUBLE_EQ(0.5, Estimate(kEq, 5, 5, 0, 9, 0.5)) << "equal counts one step";
  EXPECT_DOUBLE_EQ(9.5, Estimate(kGt, -3, -3, 0, 9, 0.5)) << "below: the whole range, by step";
  EXPECT_DOUBLE_EQ(0.0, Estimate(0, 5, 5, 0, 9, 1)) << "no operator bit";
  EXPECT_DOUBLE_EQ(0.0, Estimate(kKaOpWildcard, 5, 5, 0, 9, 1)) << "wildcard bit alone";
  EXPECT_EQ(DBL_MAX, Estimate(kGt, kNaN, kNaN, 0, 9, 1)) << "NaN counts as the largest double";
  EXPECT_EQ(DBL_MAX, Estimate(kGt, kInf, kInf, 0, 9, 1)) << "infinite whatever its sign";
  EXPECT_EQ(DBL_MAX, Estimate(kEq, 5, 5, kNaN, kNaN, 1));
  EXPECT_EQ(kInf, Estimate(kLt | kGt, kNaN, kNaN, 0, 9, 1)) << "the sum is not corrected";
  EXPECT_FLOAT_EQ(0.5f, RangeFraction(5, 0, 9));
  EXPECT_EQ(FLT_MAX, RangeFraction(kInf, 0, 9));
  EXPECT_FLOAT_EQ(1.0f, RangeFraction(kInf, -kInf, kInf));
  EXPECT_FLOAT_EQ(0.0f, RangeFraction(1, 9, 0));
}

// Bound filling, with the malloc'd keys released after each test.
class BoundFilling : public ::testing::Test {
 protected:
  void SetUp() override {
    reports_.clear();
    KaSetAssertReceiver([](const char* text, const char* source, int) {
      reports_.push_back(std::string(source) + ": " + text);
    });
  }
  void TearDown() override {
    KaSetAssertReceiver(nullptr);
    Release();
  }
  void Release() {
    std::free(bounds_.lower);
    std::free(bounds_.upper);
    bounds_ = KaIdxBounds{};
  }
  float Char(unsigned short op, signed char v, KaIdxBounds* range = nullptr) {
    return CharEvalAndBound(range, op, &v, 8, 1, &bounds_);
  }
  static Bytes Key(const unsigned char* p, unsigned char n) {
    return p == nullptr ? Bytes{} : Bytes(p, p + n);
  }
  Bytes Lower() const { return Key(bounds_.lower, bounds_.lowerLength); }
  Bytes Upper() const { return Key(bounds_.upper, bounds_.upperLength); }

  KaIdxBounds bounds_;
  static std::vector<std::string> reports_;
};
std::vector<std::string> BoundFilling::reports_;

struct BoundCase {
  unsigned short op;
  bool lower, upper;
  const char* why;
};
const BoundCase kBoundCases[] = {
    {kEq, true, true, "equal bounds both sides"},
    {kLt, false, true, "less: keys up to the value"},
    {kGt, true, false, "greater: keys from the value"},
    {kLt | kEq, false, true, "less-or-equal"},
    {kGt | kEq, true, false, "greater-or-equal"},
    {kLt | kGt, false, false, "not-equal bounds nothing"},
};

TEST_F(BoundFilling, OperatorChoosesTheSides) {
  for (const auto& c : kBoundCases) {
    SCOPED_TRACE(c.why);
    Release();
    Char(c.op, 5);
    EXPECT_EQ(c.lower ? Bytes{5} : Bytes{}, Lower());
    EXPECT_EQ(c.upper ? Bytes{5} : Bytes{}, Upper());
  }
}

TEST_F(BoundFilling, FirstComparisonWins) {
  Char(kLt, 5);
  Char(kGt, 2);
  Char(kEq, 7);
  EXPECT_EQ(Bytes{2}, Lower());
  EXPECT_EQ(Bytes{5}, Upper());
}

TEST_F(BoundFilling, NullRangeEstimatesNothingButBounds) {
  EXPECT_EQ(0.0f, Char(kEq, 5));
  EXPECT_EQ(Bytes{5}, Lower());
  EXPECT_EQ(Bytes{5}, Upper());
}

TEST_F(BoundFilling, BoundsCopyEveryElementAsGiven) {
  Bytes value = {0x00, 0x01, 0x80, 0x00, 0xFF, 0xFE};  // three o_2b, big-endian
  Bytes lower = {0, 0}, upper = {0, 9};
  KaIdxBounds range = RangeOver(lower, upper);
  unsigned short op = kEq;
  EXPECT_FLOAT_EQ(0.1f, ShortEvalAndBound(&range, op, value.data(), 2, 3, &bounds_))
      << "the first element alone is estimated";
  EXPECT_EQ(kEq, op) << "operator left as given";
  const Bytes given = value;
  value.assign(value.size(), 0xAA);
  EXPECT_EQ(given, Lower());
  EXPECT_EQ(given, Upper());
}

TEST_F(BoundFilling, KeyLongerThanItsLengthFieldIsRefused) {
  std::vector<int64_t> wide(32, 7);
  unsigned short op = kEq;
  O_8BEvalAndBound(nullptr, op, wide.data(), 8, 32, &bounds_);
  EXPECT_EQ(nullptr, bounds_.lower);
  EXPECT_EQ(nullptr, bounds_.upper);
  ASSERT_EQ(2u, reports_.size());
  EXPECT_EQ(0u, reports_[0].rfind("src/katypevl: ", 0)) << reports_[0];
  Bytes bytes(255, 1);
  CharEvalAndBound(nullptr, op, bytes.data(), 3, 255, &bounds_);
  EXPECT_EQ(bytes, Lower()) << "255 bytes still fit";
  EXPECT_EQ(2u, reports_.size());
}

TEST_F(BoundFilling, NoValueNoBoundsAndNoRead) {
  Bytes lower = {0}, upper = {9};
  KaIdxBounds range = RangeOver(lower, upper);
  unsigned short op = kEq;
  EXPECT_EQ(0.0f, CharEvalAndBound(&range, op, nullptr, 8, 1, &bounds_));
  signed char v = 5;
  EXPECT_EQ(0.0f, CharEvalAndBound(&range, op, &v, 8, 0, &bounds_));
  EXPECT_EQ(nullptr, bounds_.lower);
  EXPECT_EQ(nullptr, bounds_.upper);
}

TEST_F(BoundFilling, ShortRangeKeyCountsAsUnknown) {
  Bytes lower = {0}, upper = {0, 0, 0, 9};  // exact-size heap keys: a read past is caught
  KaIdxBounds range = RangeOver(lower, upper);
  int32_t v = 5;
  unsigned short op = kEq;
  EXPECT_EQ(0.0f, LongEvalAndBound(&range, op, &v, 8, 1, &bounds_));
  EXPECT_EQ(Memory(v), Lower()) << "the bounds are still filled";
  EXPECT_EQ(0.0f, LongEvalAndBound(&range, op, &v, 8, 1, nullptr)) << "no bounds record";
}

}  // namespace
