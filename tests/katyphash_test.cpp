// Hash slots of the primitive rows: keys per row against hand-computed
// hashes, stored images of both byte orders against the memory form, and the
// buffer walk (status, short buffers).
#include "katypemgr/katyphash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

// One element given by its big-endian image; the expected hash of that one
// element was worked out by hand (key × 1103515245 mod 2^32).
struct RowCase {
  KaHashFunc hash;
  Bytes bigEndian;
  unsigned expected;
  const char* why;
};

const RowCase kRowCases[] = {
    {CharHash, {0xFF}, 3191452051u, "o_char 0xFF sign-extends to key 0xFFFFFFFF"},
    {CharHash, {0x80}, 483969408u, "o_char 0x80 is -128"},
    {ByteHash, {0xFF}, 2223513235u, "o_u1b 0xFF zero-extends to key 0xFF"},
    {ByteHash, {0x80}, 3810997888u, "o_u1b 0x80 is 128"},
    {ShortHash, {0x80, 0x01}, 445632109u, "o_2b 0x8001 sign-extends"},
    {WordHash, {0x80, 0x01}, 1761398381u, "o_u2b 0x8001 zero-extends"},
    {LongHash, {0x00, 0x00, 0x00, 0x01}, 1103515245u, "key 1 gives the multiplier itself"},
    {LongHash, {0x01, 0x02, 0x03, 0x04}, 1675526324u, "o_4b bytes in order"},
    {LongHash, {0xFF, 0xFF, 0xFF, 0xFF}, 3191452051u, "o_4b -1 and o_u4b 0xFFFFFFFF"},
    {FloatHash, {0x3F, 0x80, 0x00, 0x00}, 159383552u, "1.0f keys its bit pattern"},
    {IntHash, {0x12, 0x34, 0x56, 0x78}, 191979800u, "int through IntLoad"},
    {IntHash, {0xFF, 0xFF, 0xFF, 0xFF}, 3191452051u, "int -1, unsigned 0xFFFFFFFF"},
    {DoubleHash, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}, 1496317952u, "1.0: low half 0, high 0x3FF00000"},
    {DoubleHash, {0xC0, 0x04, 0, 0, 0, 0, 0, 0}, 4189323264u, "-2.5"},
    {DoubleHash, {0x80, 0, 0, 0, 0, 0, 0, 0}, 2147483648u, "-0.0 keys apart from +0.0"},
    {DoubleHash, {0x00, 0, 0, 0, 0, 0, 0, 0x01}, 1103515245u, "the low half enters the key"},
    {O_8BHash, {0x12, 0x34, 0x56, 0x78, 0x90, 0xAB, 0xCD, 0xEF}, 3978772811u, "halves XORed"},
    {O_8BHash, {0, 0, 0, 1, 0, 0, 0, 2}, 3310545735u, "high 1 XOR low 2 is key 3"},
};

Bytes Reversed(Bytes b) {
  std::reverse(b.begin(), b.end());
  return b;
}

// The memory image of a value given big-endian: this host's own order.
Bytes Native(const Bytes& bigEndian) {
  return std::endian::native == std::endian::big ? bigEndian : Reversed(bigEndian);
}

unsigned HashOf(const RowCase& c, unsigned char format, Bytes image, int& status) {
  return c.hash(format, 0, image.data(), 1, status);
}

TEST(PrimitiveHash, KeysPerRowInEveryForm) {
  for (const auto& c : kRowCases) {
    SCOPED_TRACE(c.why);
    int status = 77;
    EXPECT_EQ(c.expected, HashOf(c, 2, c.bigEndian, status)) << "big-endian stored";
    EXPECT_EQ(0, status);
    EXPECT_EQ(c.expected, HashOf(c, 0x82, c.bigEndian, status)) << "flag bits ignored";
    for (unsigned char nibble : {0, 3, 4, 7, 9, 15}) {
      SCOPED_TRACE(int{nibble});
      EXPECT_EQ(c.expected, HashOf(c, nibble, Reversed(c.bigEndian), status)) << "little-endian";
    }
    EXPECT_EQ(c.expected, HashOf(c, 8, Native(c.bigEndian), status)) << "memory form";
    EXPECT_EQ(c.expected, HashOf(c, 1, Native(c.bigEndian), status)) << "nibble 1 is memory";
  }
}

TEST(PrimitiveHash, EqualElementsCancel) {
  for (const auto& c : kRowCases) {
    SCOPED_TRACE(c.why);
    Bytes twice = c.bigEndian;
    twice.insert(twice.end(), c.bigEndian.begin(), c.bigEndian.end());
    int status = 77;
    EXPECT_EQ(0u, c.hash(2, 0, twice.data(), 2, status));
    EXPECT_EQ(0, status);
  }
}

// The walk over a buffer of 4-byte elements 1, 2, 4, 8 (keys XOR to the
// number of elements taken as a bit set).
struct WalkCase {
  unsigned bufferLength;  // bytes handed to the slot; the buffer is exactly this long
  unsigned count;
  unsigned expected;
  int status;
  const char* why;
};

constexpr unsigned kM = kKaHashMultiplier;
const WalkCase kWalkCases[] = {
    {0, 0, 0, 0, "count 0 answers 0 and clears the status"},
    {0, 3, 7 * kM, 0, "length 0 means count elements"},
    {16, 2, 3 * kM, 0, "a longer buffer than needed is fine"},
    {4, 2, 1 * kM, 2101, "second element starts at the buffer end"},
    {6, 2, 1 * kM, 2101, "second element cut by the buffer end is not read"},
    {3, 1, 0, 2101, "buffer shorter than one element"},
    {12, 4, 7 * kM, 2101, "stops after the last whole element"},
};

TEST(PrimitiveHash, WalkStopsAtTheBufferEnd) {
  const uint32_t values[] = {1, 2, 4, 8};
  for (const auto& c : kWalkCases) {
    SCOPED_TRACE(c.why);
    // An exact-size heap copy, so that a read past its end is caught.
    const size_t size = c.bufferLength != 0 ? c.bufferLength : c.count * 4u;
    std::vector<unsigned char> buffer(size);
    if (size != 0) std::memcpy(buffer.data(), values, std::min(size, sizeof values));
    int status = 77;
    EXPECT_EQ(c.expected, LongHash(8, c.bufferLength, buffer.data(), c.count, status));
    EXPECT_EQ(c.status, status);
  }
}

TEST(PrimitiveHash, NullArrayIsAnEmptyBuffer) {
  int status = 77;
  EXPECT_EQ(0u, IntHash(2, 0, nullptr, 0, status));
  EXPECT_EQ(0, status);
  EXPECT_EQ(0u, IntHash(2, 0, nullptr, 1, status));
  EXPECT_EQ(2101, status);
}

TEST(PrimitiveHash, StoredIntStrideComesFromTheStoredSize) {
  // Three stored ints big-endian: 1, 2, 4; length 0 walks all three.
  const Bytes stored = {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 4};
  Bytes copy = stored;
  int status = 77;
  EXPECT_EQ(7 * kM, IntHash(2, 0, copy.data(), 3, status));
  EXPECT_EQ(0, status);
  EXPECT_EQ(3 * kM, IntHash(2, 8, copy.data(), 3, status));
  EXPECT_EQ(2101, status);
}

}  // namespace
