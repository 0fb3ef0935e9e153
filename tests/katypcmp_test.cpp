// The Compare slots of the scalar rows: the array walk and its bound reports,
// memory and stored forms of both byte orders, and each row's order.
#include "katypemgr/katypcmp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr int kBound = kKaArrayBoundExceeded;
using Bytes = std::vector<unsigned char>;

template <typename T>
Bytes MemoryBytes(T v) {
  Bytes out(sizeof v);
  std::memcpy(out.data(), &v, sizeof v);
  return out;
}

// A row and values in ascending order; equal keys are equal values with
// different bytes (the two zeros, NaNs). o_2b and o_u2b store high byte first
// under nibble 2 and the host's order under every other nibble.
struct Member {
  const char* name;
  KaCompareFunc compare;
  unsigned stride;
  std::vector<Bytes> pool;  // memory form
  std::vector<int> keys;
  bool hostOrder = false;
};

template <typename T>
Member Ascending(const char* name, KaCompareFunc compare, std::vector<T> values) {
  Member m{name, compare, sizeof(T), {}, {}, sizeof(T) == 2};
  for (T v : values) {
    m.keys.push_back(static_cast<int>(m.pool.size()));
    m.pool.push_back(MemoryBytes(v));
  }
  return m;
}

// Floating rank: every NaN < -infinity < finite values < +infinity; -0 == +0.
template <typename F>
Member Floating(const char* name, KaCompareFunc compare) {
  using L = std::numeric_limits<F>;
  const F nan = L::quiet_NaN(), inf = L::infinity(), tiny = L::denorm_min();
  const F values[] = {nan, -nan, L::signaling_NaN(), -inf, L::lowest(), -1, -tiny, -0.0, 0, tiny,
                      1,   2,    L::max(),           inf};
  Member m{name, compare, sizeof(F), {}, {0, 0, 0, 1, 2, 3, 4, 5, 5, 6, 7, 8, 9, 10}};
  for (F v : values) m.pool.push_back(MemoryBytes(v));
  return m;
}

// Byte-order sensitive values (1 against 256, 2^24 against 1) and the sign bit.
const std::vector<Member>& Members() {
  const std::vector<int32_t> longs = {INT32_MIN, -65536, -1, 0, 1, 256, 1 << 24, INT32_MAX};
  const std::vector<uint32_t> dwords = {0, 1, 256, 1u << 24, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  static const std::vector<Member> members = {
      Ascending<signed char>("CharCompare", CharCompare, {-128, -1, 0, 1, 127}),
      Ascending<unsigned char>("ByteCompare", ByteCompare, {0, 1, 0x7F, 0x80, 0xFF}),
      Ascending<int16_t>("ShortCompare", ShortCompare, {-32768, -256, -1, 0, 1, 255, 256, 32767}),
      Ascending<uint16_t>("WordCompare", WordCompare, {0, 1, 255, 256, 0x7FFF, 0x8000, 0xFFFF}),
      Ascending<int32_t>("LongCompare", LongCompare, longs),
      Ascending<uint32_t>("DwordCompare", DwordCompare, dwords),
      Ascending<int>("IntCompare", IntCompare, longs),
      Ascending<unsigned>("UnsignedCompare", UnsignedCompare, dwords),
      Ascending<int64_t>("O_8BCompare", O_8BCompare,
                         {INT64_MIN, -1, 0, 1, 256, int64_t{1} << 32, int64_t{1} << 56, INT64_MAX}),
      Ascending<uint64_t>("O_U8BCompare", O_U8BCompare,
                          {0, 1, 256, uint64_t{1} << 56, INT64_MAX, uint64_t{1} << 63, UINT64_MAX}),
      Floating<float>("FloatCompare", FloatCompare),
      Floating<double>("DoubleCompare", DoubleCompare),
  };
  return members;
}

// Elements in `format`, written byte by byte without the kabase writers:
// memory form as is, nibble 2 big-endian, other stored nibbles little-endian.
// Cut to exactly `bytes` bytes in a buffer of that size, so that the sanitizer
// sees any read past it.
Bytes Encode(const Member& m, const std::vector<Bytes>& elements, unsigned char format,
             size_t bytes) {
  const unsigned nibble = format & 0x0F;
  constexpr bool kBig = std::endian::native == std::endian::big;
  const bool reverse = nibble != 8 && nibble != 1 && (nibble == 2 ? !kBig : kBig && !m.hostOrder);
  Bytes all;
  for (const Bytes& e : elements) {
    reverse ? all.insert(all.end(), e.rbegin(), e.rend())
            : all.insert(all.end(), e.begin(), e.end());
  }
  all.resize(std::max(bytes, all.size()));
  return Bytes(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(bytes));
}

using Outcome = std::pair<int, int>;  // result, error

Outcome Call(KaCompareFunc compare, unsigned char format, unsigned length1, Bytes& first,
             unsigned length2, Bytes& second, unsigned count) {
  int error = -7;  // stale: every call sets it
  // Every option bit set: the scalar rows ignore them.
  const int result = compare(format, length1, first.empty() ? nullptr : first.data(), length2,
                             second.empty() ? nullptr : second.data(), 0xFFFF, count, error);
  return {result, error};
}

int Sign(int a, int b) { return (a > b) - (a < b); }

// Memory forms, both stored byte orders, and flag bits above the nibble.
constexpr unsigned char kFormats[] = {8, 1, 2, 3, 0, 15, 0x12, 0xF8};

struct WalkCase {
  std::vector<int32_t> first, second;
  unsigned length1, length2, count;
  Outcome expected;
  const char* why;
};

const WalkCase kWalkCases[] = {
    {{}, {}, 0, 0, 0, {0, 0}, "count 0: null arrays untouched, error cleared"},
    {{1, 2, 3}, {1, 2, 3}, 0, 0, 3, {0, 0}, "lengths 0: count elements each, all equal"},
    {{1, 2, 3}, {1, 2, 4}, 0, 0, 3, {-1, 0}, "lengths 0: the last pair decides"},
    {{7}, {5, 9}, 4, 8, 2, {1, kBound}, "decided, yet 2101: the bound is checked first"},
    {{5, 9}, {7}, 8, 4, 2, {-1, kBound}, "decided, yet 2101: the second array ends"},
    {{1, 2}, {1, 2}, 8, 8, 2, {0, 0}, "arrays exactly count long: no check after the last"},
    {{1, 2}, {2, 2}, 8, 12, 3, {-1, 0}, "decided early: the walk stops before the bound"},
    {{1, 2, 3}, {1, 2, 9}, 12, 12, 2, {0, 0}, "elements past count are not compared"},
    {{1, 2, 3}, {1, 2}, 0, 8, 3, {0, kBound}, "length 0 on one side, the other ends"},
    {{1, 2}, {1, 3}, 8, 7, 2, {0, kBound}, "a part of the last element is never read"},
    {{1, 2, 3}, {1, 2, 4}, 10, 10, 3, {0, kBound}, "2.5 elements each: the half is not compared"},
    {{3}, {4}, 4, 2, 1, {0, kBound}, "no whole element on one side: no result"},
};

TEST(ScalarCompare, WalkChecksBoundsAfterEveryPair) {
  const Member& longs = Members()[4];
  for (const WalkCase& c : kWalkCases) {
    SCOPED_TRACE(c.why);
    for (unsigned char format : {8, 2, 3}) {
      auto encode = [&](const std::vector<int32_t>& values, unsigned length) {
        std::vector<Bytes> elements;
        for (int32_t v : values) elements.push_back(MemoryBytes(v));
        return Encode(longs, elements, format, length != 0 ? length : c.count * 4u);
      };
      Bytes first = encode(c.first, c.length1);
      Bytes second = encode(c.second, c.length2);
      EXPECT_EQ(c.expected, Call(LongCompare, format, c.length1, first, c.length2, second, c.count))
          << "format " << int{format};
    }
  }
}

// A null array holds no element: with pairs asked for it is an array too
// short (0 and 2101, as the hash answers), whatever length comes with it.
TEST(ScalarCompare, NullArraysEndBeforeTheFirstPair) {
  for (const Member& m : Members()) {
    SCOPED_TRACE(m.name);
    for (unsigned char format : {8, 2}) {
      Bytes none, one = Encode(m, {m.pool[1]}, format, m.stride);
      EXPECT_EQ((Outcome{0, kBound}), Call(m.compare, format, 0, none, 0, none, 3));
      EXPECT_EQ((Outcome{0, kBound}), Call(m.compare, format, 0, none, m.stride, one, 1));
      EXPECT_EQ((Outcome{0, kBound}), Call(m.compare, format, m.stride, one, 8, none, 1));
      EXPECT_EQ((Outcome{0, 0}), Call(m.compare, format, 0, none, 0, none, 0)) << "count 0";
    }
  }
}

// Every pool value against every other in every format: signedness, floating
// rank (NaN, infinities, -0) and how each form is read.
TEST(ScalarCompare, OrdersEveryPairOfValuesInEveryForm) {
  for (const Member& m : Members()) {
    SCOPED_TRACE(m.name);
    for (unsigned char format : kFormats) {
      for (size_t i = 0; i < m.pool.size(); ++i) {
        for (size_t j = 0; j < m.pool.size(); ++j) {
          Bytes first = Encode(m, {m.pool[i]}, format, m.stride);
          Bytes second = Encode(m, {m.pool[j]}, format, m.stride);
          EXPECT_EQ((Outcome{Sign(m.keys[i], m.keys[j]), 0}),
                    Call(m.compare, format, m.stride, first, m.stride, second, 1))
              << "format " << int{format} << ", values " << i << " and " << j;
        }
      }
    }
  }
}

// Bytes that differ but values that do not (-0 and +0, two NaNs) must not end
// the walk: the pair after them decides.
TEST(ScalarCompare, EqualValuesWithDifferentBytesDoNotDecide) {
  for (const Member& m : {Members()[10], Members()[11]}) {
    SCOPED_TRACE(m.name);
    // Pool: 0 and 2 NaNs, 7 -0, 8 +0, 10 one, 11 two.
    for (unsigned char format : {8, 2, 3}) {
      Bytes first = Encode(m, {m.pool[7], m.pool[0], m.pool[10]}, format, 3 * m.stride);
      Bytes second = Encode(m, {m.pool[8], m.pool[2], m.pool[11]}, format, 3 * m.stride);
      EXPECT_EQ((Outcome{-1, 0}), Call(m.compare, format, 0, first, 0, second, 3));
    }
  }
}

// The walk told pair by pair over order keys: compare, then, while pairs are
// still asked for, check that both arrays hold a next whole element.
Outcome WalkPairByPair(const std::vector<int>& keys1, const std::vector<int>& keys2,
                       unsigned count) {
  if (count == 0) return {0, 0};
  if (keys1.empty() || keys2.empty()) return {0, kBound};
  for (size_t i = 0;; ++i) {
    const int result = Sign(keys1[i], keys2[i]);
    if (i + 1 == count) return {result, 0};
    if (i + 1 >= keys1.size() || i + 1 >= keys2.size()) return {result, kBound};
    if (result != 0) return {result, 0};
  }
}

// Long arrays that differ in up to two elements anywhere: the equal-prefix
// scan must stop at exactly the first difference, whatever its offset.
TEST(ScalarCompare, MatchesAPairByPairWalkOnRandomArrays) {
  std::mt19937 rng(20240611);
  auto uniform = [&rng](size_t hi) { return std::uniform_int_distribution<size_t>(0, hi)(rng); };
  for (const Member& m : Members()) {
    SCOPED_TRACE(m.name);
    for (int trial = 0; trial < 180; ++trial) {
      const unsigned char format = kFormats[trial % std::size(kFormats)];
      const auto count = static_cast<unsigned>(uniform(90));
      // A side is length 0 (`count` elements), or whole elements and maybe a
      // part of one more.
      unsigned lengths[2];
      size_t whole[2];
      for (int s = 0; s < 2; ++s) {
        const size_t n = uniform(90), part = uniform(1) != 0 ? uniform(m.stride - 1) : 0;
        lengths[s] = uniform(2) == 0 ? 0 : static_cast<unsigned>(n * m.stride + part);
        whole[s] = lengths[s] == 0 ? count : n;
      }
      std::vector<size_t> picks[2];
      picks[0].resize(std::max(whole[0], whole[1]) + 1);
      for (size_t& p : picks[0]) p = uniform(m.pool.size() - 1);
      picks[1] = picks[0];
      for (size_t n = uniform(2); n > 0; --n) {
        picks[1][uniform(picks[1].size() - 1)] = uniform(m.pool.size() - 1);
      }
      std::vector<int> keys[2];
      Bytes arrays[2];
      for (int s = 0; s < 2; ++s) {
        std::vector<Bytes> values;
        for (size_t p : picks[s]) values.push_back(m.pool[p]);
        for (size_t i = 0; i < whole[s]; ++i) keys[s].push_back(m.keys[picks[s][i]]);
        arrays[s] = Encode(m, values, format, lengths[s] != 0 ? lengths[s] : count * m.stride);
      }
      EXPECT_EQ(WalkPairByPair(keys[0], keys[1], count),
                Call(m.compare, format, lengths[0], arrays[0], lengths[1], arrays[1], count))
          << "trial " << trial << ", format " << int{format};
    }
  }
}

}  // namespace
