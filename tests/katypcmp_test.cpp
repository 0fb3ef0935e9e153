// The Compare slots of the scalar rows: the array walk and its bound reports,
// reading memory and stored forms, and each row's order.
#include "katypemgr/katypcmp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

#include "kabase/codec.h"

namespace {

constexpr int kBound = kKaArrayBoundExceeded;
using Bytes = std::vector<unsigned char>;
using StoreFn = unsigned int (*)(void*, const void*, unsigned char, unsigned int);

bool IsMemoryForm(unsigned char format) { return (format & 0x0F) == 8 || (format & 0x0F) == 1; }

// o_2b and o_u2b stored: high byte first under nibble 2, the host's order
// under every other nibble.
unsigned int ShortStoreAsRead(void* destination, const void* source, unsigned char format,
                              unsigned int count) {
  if ((format & 0x0F) == 2) return ShortStore(destination, source, format, count);
  std::memcpy(destination, source, 2u * count);
  return 2u * count;
}

template <typename T>
Bytes MemoryBytes(T v) {
  Bytes out(sizeof v);
  std::memcpy(out.data(), &v, sizeof v);
  return out;
}

// One row: its compare slot, how its stored form is written, and a pool of
// values in ascending order. Values with the same key are equal values with
// different bytes (the two zeros, NaNs).
struct Member {
  const char* name;
  KaCompareFunc compare;
  StoreFn store;
  unsigned stride;
  std::vector<Bytes> pool;  // memory form
  std::vector<int> keys;
};

template <typename T>
Member Ascending(const char* name, KaCompareFunc compare, StoreFn store, std::vector<T> values) {
  Member m{name, compare, store, sizeof(T), {}, {}};
  for (T v : values) {
    m.keys.push_back(static_cast<int>(m.pool.size()));
    m.pool.push_back(MemoryBytes(v));
  }
  return m;
}

template <typename F>
Member Floating(const char* name, KaCompareFunc compare, StoreFn store) {
  using L = std::numeric_limits<F>;
  const std::pair<F, int> ranked[] = {
      {L::quiet_NaN(), 0},
      {-L::quiet_NaN(), 0},
      {L::signaling_NaN(), 0},
      {-L::infinity(), 1},
      {L::lowest(), 2},
      {F(-2), 3},
      {F(-1), 4},
      {-L::denorm_min(), 5},
      {F(-0.0), 6},
      {F(0), 6},
      {L::denorm_min(), 7},
      {L::min(), 8},
      {F(1), 9},
      {F(2), 10},
      {L::max(), 11},
      {L::infinity(), 12},
  };
  Member m{name, compare, store, sizeof(F), {}, {}};
  for (const auto& [v, key] : ranked) {
    m.pool.push_back(MemoryBytes(v));
    m.keys.push_back(key);
  }
  return m;
}

// Byte-order sensitive values (1 against 256, 2^24 against 1) so that a
// misread order shows as a wrong result.
const std::vector<Member>& Members() {
  static const std::vector<Member> members = {
      Ascending<signed char>("CharCompare", CharCompare, CharStore, {-128, -1, 0, 1, 127}),
      Ascending<unsigned char>("ByteCompare", ByteCompare, CharStore, {0, 1, 0x7F, 0x80, 0xFF}),
      Ascending<int16_t>("ShortCompare", ShortCompare, ShortStoreAsRead,
                         {-32768, -256, -1, 0, 1, 2, 255, 256, 32767}),
      Ascending<uint16_t>("WordCompare", WordCompare, ShortStoreAsRead,
                          {0, 1, 2, 255, 256, 0x7FFF, 0x8000, 0xFFFF}),
      Ascending<int32_t>("LongCompare", LongCompare, LongStore,
                         {INT32_MIN, -65536, -1, 0, 1, 256, 65536, 1 << 24, INT32_MAX}),
      Ascending<uint32_t>("DwordCompare", DwordCompare, LongStore,
                          {0, 1, 256, 65536, 1u << 24, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF}),
      Ascending<int>("IntCompare", IntCompare, IntStore,
                     {INT32_MIN, -65536, -1, 0, 1, 256, 65536, 1 << 24, INT32_MAX}),
      Ascending<unsigned>("UnsignedCompare", UnsignedCompare, UnsignedStore,
                          {0, 1, 256, 65536, 1u << 24, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF}),
      Ascending<int64_t>("O_8BCompare", O_8BCompare, O_8BStore,
                         {INT64_MIN, -(int64_t{1} << 32), -1, 0, 1, 256, int64_t{1} << 32,
                          int64_t{1} << 56, INT64_MAX}),
      Ascending<uint64_t>("O_U8BCompare", O_U8BCompare, O_8BStore,
                          {0, 1, 256, uint64_t{1} << 32, uint64_t{1} << 56, INT64_MAX,
                           uint64_t{1} << 63, UINT64_MAX}),
      Floating<float>("FloatCompare", FloatCompare, FloatStore),
      Floating<double>("DoubleCompare", DoubleCompare, DoubleStore),
  };
  return members;
}

// Memory-form elements in `format`, cut to exactly `bytes` bytes, in a buffer
// of exactly that size so that the sanitizer sees any read past it.
Bytes Encode(const Member& m, const std::vector<Bytes>& elements, unsigned char format,
             size_t bytes) {
  Bytes all(std::max(bytes, elements.size() * m.stride));
  for (size_t i = 0; i < elements.size(); ++i) {
    unsigned char* at = all.data() + i * m.stride;
    if (IsMemoryForm(format)) {
      std::memcpy(at, elements[i].data(), m.stride);
    } else {
      m.store(at, elements[i].data(), format, 1);
    }
  }
  return Bytes(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(bytes));
}

struct Outcome {
  int result;
  int error;
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& o, std::ostream* os) {
  *os << "{result " << o.result << ", error " << o.error << "}";
}

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
constexpr unsigned char kFormats[] = {8, 1, 2, 3, 0, 0x12, 0xF8};

TEST(ScalarCompare, CountZeroTouchesNothing) {
  for (const Member& m : Members()) {
    SCOPED_TRACE(m.name);
    for (unsigned char format : kFormats) {
      for (unsigned length : {0u, 4u, 64u}) {
        int error = 99;
        EXPECT_EQ(0, m.compare(format, length, nullptr, length, nullptr, 0, 0, error));
        EXPECT_EQ(0, error);
      }
    }
  }
}

struct WalkCase {
  std::vector<int32_t> first, second;
  unsigned length1, length2, count;
  Outcome expected;
  const char* why;
};

const WalkCase kWalkCases[] = {
    {{1, 2, 3}, {1, 2, 3}, 0, 0, 3, {0, 0}, "lengths 0: count elements each, all equal"},
    {{1, 2, 3}, {1, 2, 4}, 0, 0, 3, {-1, 0}, "lengths 0: the last pair decides"},
    {{2}, {1}, 4, 4, 1, {1, 0}, "one pair"},
    {{5}, {5, 9}, 4, 8, 2, {0, kBound}, "first array ends after one of two equal pairs"},
    {{7}, {5, 9}, 4, 8, 2, {1, kBound}, "decided, yet 2101: the bound is checked first"},
    {{5, 9}, {7}, 8, 4, 2, {-1, kBound}, "decided, yet 2101: the second array ends"},
    {{1, 2}, {1, 2}, 8, 8, 2, {0, 0}, "arrays exactly count long: no check after the last"},
    {{1, 2, 3}, {1, 2, 3}, 8, 8, 3, {0, kBound}, "both end after two of three pairs"},
    {{1, 2}, {1, 3}, 8, 8, 3, {-1, kBound}, "decided at the last pair in bounds"},
    {{1, 2, 3}, {2, 2, 3}, 12, 12, 3, {-1, 0}, "decided before any bound"},
    {{1, 2}, {2, 2}, 8, 12, 3, {-1, 0}, "decided early: the walk stops before the bound"},
    {{1, 2, 3}, {1, 2, 9}, 12, 12, 2, {0, 0}, "elements past count are not compared"},
    {{1, 2}, {1, 2, 3}, 0, 12, 2, {0, 0}, "length 0 on one side: count elements there"},
    {{1, 2, 3}, {1, 2}, 0, 8, 3, {0, kBound}, "length 0 on one side, the other ends"},
    {{1, 2}, {1, 2}, 6, 8, 2, {0, kBound}, "half an element is past the end, never read"},
    {{1, 2}, {1, 3}, 8, 7, 2, {0, kBound}, "second array: a part of the last element"},
    {{3}, {3}, 3, 4, 1, {0, kBound}, "no whole element: nothing compared"},
    {{3}, {4}, 4, 2, 1, {0, kBound}, "no whole element on the second side: no result"},
    {{1}, {1}, 4, 4, 0xFFFFFFFF, {0, kBound}, "the largest count"},
};

TEST(ScalarCompare, WalkChecksBoundsAfterEveryPair) {
  const Member& longs = Members()[4];
  ASSERT_EQ(LongCompare, longs.compare);
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

// Every pool value against every other, single elements, in every format:
// the row's order (signedness, floating rank) and how it reads each form.
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

struct LiteralCase {
  KaCompareFunc compare;
  unsigned char format;
  Bytes first, second;
  int expected;
  const char* why;
};

// Stored bytes written out, independent of the kabase writers.
const LiteralCase kLiteralCases[] = {
    {ShortCompare, 2, {0x01, 0x00}, {0x00, 0x02}, 1, "o_2b nibble 2: 256 against 2"},
    {ShortCompare, 3, {0x01, 0x00}, {0x00, 0x02}, -1, "o_2b nibble 3, host order: 1 against 512"},
    {ShortCompare, 2, {0x80, 0x00}, {0x00, 0x01}, -1, "o_2b nibble 2: -32768 against 1"},
    {WordCompare, 2, {0x80, 0x00}, {0x00, 0x01}, 1, "o_u2b nibble 2: 0x8000 against 1"},
    {WordCompare, 0, {0xFF, 0x00}, {0x00, 0xFF}, -1, "o_u2b nibble 0, host order"},
    {CharCompare, 2, {0xFF}, {0x01}, -1, "o_char stored: the byte as is, signed"},
    {ByteCompare, 2, {0xFF}, {0x01}, 1, "o_u1b stored: the byte as is, unsigned"},
    {LongCompare, 2, {0, 0, 0, 0x80}, {0, 0, 0, 0x01}, 1, "o_4b big-endian: 128 against 1"},
    {LongCompare, 3, {0, 0, 0, 0x80}, {0, 0, 0, 0x01}, -1, "o_4b little-endian: sign bit"},
    {DwordCompare, 3, {0, 0, 0, 0x80}, {0, 0, 0, 0x01}, 1, "o_u4b little-endian: 2^31"},
    {IntCompare, 2, {0x80, 0, 0, 0}, {0, 0, 0, 0x01}, -1, "int big-endian: sign bit"},
    {IntCompare, 4, {0x80, 0, 0, 0}, {0, 0, 0, 0x01}, -1, "int little-endian: 128 and 2^24"},
    {UnsignedCompare, 2, {0xFF, 0xFF, 0xFF, 0xFF}, {0, 0, 0, 1}, 1, "unsigned stored: 2^32-1"},
    {O_8BCompare, 2, {0x80, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 1}, -1, "o_8b sign bit"},
    {O_U8BCompare, 2, {0x80, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 1}, 1, "o_u8b 2^63"},
    {O_8BCompare,
     5,
     {0x80, 0, 0, 0, 0, 0, 0, 0},
     {0, 0, 0, 0, 0, 0, 0, 1},
     -1,
     "o_8b LE: 128 and 2^56"},
    {FloatCompare, 2, {0x3F, 0x80, 0, 0}, {0x40, 0, 0, 0}, -1, "o_float big-endian: 1 and 2"},
    {FloatCompare, 3, {0x3F, 0x80, 0, 0}, {0x40, 0, 0, 0}, 1, "same bytes little-endian"},
    {FloatCompare, 2, {0xFF, 0x80, 0, 0}, {0x7F, 0xC0, 0, 0}, 1, "-infinity above NaN"},
    {DoubleCompare,
     2,
     {0x3F, 0xF0, 0, 0, 0, 0, 0, 0},
     {0x40, 0, 0, 0, 0, 0, 0, 0},
     -1,
     "o_double big-endian: 1 and 2"},
    {DoubleCompare,
     3,
     {0x3F, 0xF0, 0, 0, 0, 0, 0, 0},
     {0x40, 0, 0, 0, 0, 0, 0, 0},
     1,
     "same bytes little-endian: two denormals"},
};

TEST(ScalarCompare, ReadsStoredBytesInTheFormatsOrder) {
  for (const LiteralCase& c : kLiteralCases) {
    SCOPED_TRACE(c.why);
    Bytes first = c.first;
    Bytes second = c.second;
    const auto length = static_cast<unsigned>(first.size());
    EXPECT_EQ((Outcome{c.expected, 0}),
              Call(c.compare, c.format, length, first, length, second, 1));
    EXPECT_EQ((Outcome{-c.expected, 0}),
              Call(c.compare, c.format, length, second, length, first, 1));
  }
}

template <typename F>
struct RankCase {
  F first, second;
  int expected;
  const char* why;
};

template <typename F>
std::vector<RankCase<F>> RankCases() {
  using L = std::numeric_limits<F>;
  const F nan = L::quiet_NaN();
  const F inf = L::infinity();
  return {
      {nan, nan, 0, "two NaNs are equal"},
      {L::signaling_NaN(), nan, 0, "signalling and quiet NaN are equal"},
      {-nan, nan, 0, "the sign of a NaN does not matter"},
      {nan, -inf, -1, "NaN below -infinity"},
      {L::signaling_NaN(), L::lowest(), -1, "NaN below every finite value"},
      {nan, inf, -1, "NaN below +infinity"},
      {-inf, L::lowest(), -1, "-infinity below every finite value"},
      {-inf, -inf, 0, "equal infinities"},
      {inf, L::max(), 1, "+infinity above every finite value"},
      {inf, inf, 0, "equal infinities"},
      {F(-0.0), F(0), 0, "-0 equals +0"},
      {L::denorm_min(), F(0), 1, "denormals are finite numbers"},
      {-L::denorm_min(), F(-0.0), -1, "negative denormal below -0"},
      {F(-1), F(-2), 1, "negatives compare as numbers, not as bit patterns"},
      {F(1), F(2), -1, "positives"},
      {F(-1), F(1), -1, "sign"},
  };
}

template <typename F>
void CheckRanks(const Member& m) {
  for (const RankCase<F>& c : RankCases<F>()) {
    SCOPED_TRACE(c.why);
    for (unsigned char format : {8, 2, 3}) {
      Bytes first = Encode(m, {MemoryBytes(c.first)}, format, sizeof(F));
      Bytes second = Encode(m, {MemoryBytes(c.second)}, format, sizeof(F));
      EXPECT_EQ((Outcome{c.expected, 0}), Call(m.compare, format, 0, first, 0, second, 1));
      EXPECT_EQ((Outcome{-c.expected, 0}), Call(m.compare, format, 0, second, 0, first, 1));
    }
  }
}

TEST(ScalarCompare, FloatingRank) {
  CheckRanks<float>(Members()[10]);
  CheckRanks<double>(Members()[11]);
  int error = -1;
  double inf = std::numeric_limits<double>::infinity();
  double big = 1e308;
  EXPECT_EQ(1, DoubleCompare(8, 8, &inf, 8, &big, 0, 1, error));
  EXPECT_EQ(0, error);
}

// Bytes that differ but values that do not (the zeros, NaN payloads) must not
// end the walk: the pair after them decides.
TEST(ScalarCompare, EqualValuesWithDifferentBytesDoNotDecide) {
  for (const Member& m : {Members()[10], Members()[11]}) {
    SCOPED_TRACE(m.name);
    // Pool: 0/1/2 NaNs, 8 -0, 9 +0, 12 one, 13 two.
    for (unsigned char format : {8, 2, 3}) {
      Bytes first = Encode(m, {m.pool[8], m.pool[0], m.pool[12]}, format, 3 * m.stride);
      Bytes second = Encode(m, {m.pool[9], m.pool[2], m.pool[13]}, format, 3 * m.stride);
      EXPECT_EQ((Outcome{-1, 0}), Call(m.compare, format, 0, first, 0, second, 3));
    }
  }
}

// Long equal arrays with one differing element at each position: the
// equal-prefix scan must stop at exactly that element whatever its offset.
TEST(ScalarCompare, FindsTheDifferenceAtEveryPosition) {
  constexpr size_t kLength = 70;
  for (const Member& m : Members()) {
    SCOPED_TRACE(m.name);
    const size_t base = m.pool.size() / 2;
    for (unsigned char format : {8, 2}) {
      const std::vector<Bytes> same(kLength, m.pool[base]);
      Bytes second = Encode(m, same, format, kLength * m.stride);
      for (size_t at = 0; at < kLength; ++at) {
        for (size_t other : {size_t{0}, m.pool.size() - 1}) {
          std::vector<Bytes> changed = same;
          changed[at] = m.pool[other];
          Bytes first = Encode(m, changed, format, kLength * m.stride);
          const auto length = static_cast<unsigned>(first.size());
          EXPECT_EQ((Outcome{Sign(m.keys[other], m.keys[base]), 0}),
                    Call(m.compare, format, length, first, length, second, kLength))
              << "position " << at << ", format " << int{format};
        }
      }
    }
  }
}

// The walk told pair by pair over order keys: compare, then, while pairs are
// still asked for, check that both arrays hold a next whole element.
Outcome WalkPairByPair(const std::vector<int>& keys1, const std::vector<int>& keys2,
                       unsigned count) {
  if (count == 0) return {0, 0};
  if (keys1.empty() || keys2.empty()) return {0, kBound};
  int result = 0;
  int error = 0;
  size_t i = 0;
  for (unsigned remaining = count;;) {
    --remaining;
    if (result != 0 || error != 0) break;
    result = Sign(keys1[i], keys2[i]);
    if (remaining == 0) break;
    if (i + 1 >= keys1.size() || i + 1 >= keys2.size()) {
      error = kBound;
    } else {
      ++i;
    }
  }
  return {result, error};
}

int LexicographicSign(const std::vector<int>& a, const std::vector<int>& b, size_t n) {
  if (std::lexicographical_compare(a.begin(), a.begin() + n, b.begin(), b.begin() + n)) return -1;
  if (std::lexicographical_compare(b.begin(), b.begin() + n, a.begin(), a.begin() + n)) return 1;
  return 0;
}

TEST(ScalarCompare, MatchesOraclesOnRandomArrays) {
  std::mt19937 rng(20240611);
  auto uniform = [&rng](size_t lo, size_t hi) {
    return std::uniform_int_distribution<size_t>(lo, hi)(rng);
  };
  for (const Member& m : Members()) {
    SCOPED_TRACE(m.name);
    for (unsigned char format : {8, 2, 3}) {
      for (int trial = 0; trial < 150; ++trial) {
        const auto count = static_cast<unsigned>(uniform(0, 90));
        // A side is `count` elements with length 0, whole elements, or whole
        // elements and a part of one more.
        struct Side {
          unsigned length;
          size_t whole;
        } sides[2];
        for (Side& side : sides) {
          const size_t kind = uniform(0, 2);
          const size_t n = uniform(0, 90);
          const size_t part = kind == 2 ? uniform(0, m.stride - 1) : 0;
          const auto length = static_cast<unsigned>(n * m.stride + part);
          // A length of 0 stands for `count` elements, whatever its kind.
          side = kind == 0 || length == 0 ? Side{0, count} : Side{length, n};
        }
        const size_t elements = std::max(sides[0].whole, sides[1].whole) + 1;
        std::vector<size_t> picks1(elements);
        for (size_t& p : picks1) p = uniform(0, m.pool.size() - 1);
        std::vector<size_t> picks2 = picks1;
        for (size_t changes = uniform(0, 2); changes > 0; --changes) {
          picks2[uniform(0, elements - 1)] = uniform(0, m.pool.size() - 1);
        }
        auto side = [&](const std::vector<size_t>& picks, const Side& s, std::vector<int>& keys) {
          std::vector<Bytes> values;
          for (size_t p : picks) values.push_back(m.pool[p]);
          for (size_t i = 0; i < s.whole; ++i) keys.push_back(m.keys[picks[i]]);
          return Encode(m, values, format, s.length != 0 ? s.length : count * m.stride);
        };
        std::vector<int> keys1, keys2;
        Bytes first = side(picks1, sides[0], keys1);
        Bytes second = side(picks2, sides[1], keys2);

        const Outcome got =
            Call(m.compare, format, sides[0].length, first, sides[1].length, second, count);
        EXPECT_EQ(WalkPairByPair(keys1, keys2, count), got) << "trial " << trial;
        const size_t inBounds = std::min<size_t>({count, keys1.size(), keys2.size()});
        EXPECT_EQ(LexicographicSign(keys1, keys2, inBounds), got.result) << "trial " << trial;
      }
    }
  }
}

}  // namespace
