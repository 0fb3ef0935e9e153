// Hash slots of the primitive rows: keys per row against hand-computed hashes in
// memory form and both stored byte orders, and the buffer walk.
#include "katypemgr/katyphash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
constexpr unsigned kM = kKaHashMultiplier;

// One element by its big-endian image; the hash worked out by hand as
// key × 1103515245 mod 2^32.
struct RowCase {
  KaHashFunc hash;
  Bytes bigEndian;
  unsigned expected;
  const char* why;
};

const RowCase kRowCases[] = {
    {LongHash, {0, 0, 0, 1}, 1103515245u, "o_4b 1 gives the multiplier itself"},
    {LongHash, {0x01, 0x02, 0x03, 0x04}, 1675526324u, "o_4b bytes in order"},
    {CharHash, {0xFF}, 3191452051u, "o_char 0xFF sign-extends to key 0xFFFFFFFF"},
    {ByteHash, {0xFF}, 2223513235u, "o_u1b 0xFF zero-extends to key 0xFF"},
    {ShortHash, {0x80, 0x01}, 445632109u, "o_2b 0x8001 sign-extends"},
    {WordHash, {0x80, 0x01}, 1761398381u, "o_u2b 0x8001 zero-extends"},
    {FloatHash, {0x3F, 0x80, 0x00, 0x00}, 159383552u, "1.0f keys its bit pattern"},
    {IntHash, {0x12, 0x34, 0x56, 0x78}, 191979800u, "int through IntLoad"},
    {DoubleHash, {0x3F, 0xF0, 0, 0, 0, 0, 0, 0}, 1496317952u, "1.0: low half 0, high 0x3FF00000"},
    {DoubleHash, {0x80, 0, 0, 0, 0, 0, 0, 0}, 2147483648u, "-0.0 keys apart from +0.0"},
    {DoubleHash, {0, 0, 0, 0, 0, 0, 0, 0x01}, 1103515245u, "the low half enters the key"},
    {O_8BHash, {0, 0, 0, 1, 0, 0, 0, 2}, 3310545735u, "high 1 XOR low 2 is key 3"},
};

TEST(PrimitiveHash, KeysPerRowInEveryForm) {
  for (const auto& c : kRowCases) {
    SCOPED_TRACE(c.why);
    const Bytes little(c.bigEndian.rbegin(), c.bigEndian.rend());
    const Bytes& native = std::endian::native == std::endian::big ? c.bigEndian : little;
    const auto hash = [&](unsigned char format, Bytes image, unsigned count = 1) {
      int status = 77;
      const unsigned h = c.hash(format, 0, image.data(), count, status);
      EXPECT_EQ(0, status) << "format " << int{format};
      return h;
    };
    EXPECT_EQ(c.expected, hash(2, c.bigEndian)) << "big-endian stored";
    EXPECT_EQ(c.expected, hash(0x82, c.bigEndian)) << "flag bits ignored";
    for (unsigned char nibble : {0, 3, 15}) EXPECT_EQ(c.expected, hash(nibble, little)) << +nibble;
    for (unsigned char memory : {8, 1, 0xF8})
      EXPECT_EQ(c.expected, hash(memory, native)) << +memory;
    Bytes twice = c.bigEndian;
    twice.insert(twice.end(), c.bigEndian.begin(), c.bigEndian.end());
    EXPECT_EQ(0u, hash(2, twice, 2)) << "equal elements cancel";
  }
}

// Big-endian buffers of 4-byte elements 1, 2, 4, 8: the hash names the
// elements taken.
struct WalkCase {
  KaHashFunc hash;
  unsigned bufferLength;  // the buffer is exactly this long (count elements when 0)
  unsigned count;
  unsigned expected;
  int status;
  const char* why;
};

const WalkCase kWalkCases[] = {
    {LongHash, 0, 0, 0, 0, "count 0 answers 0 and clears the status"},
    {LongHash, 0, 3, 7 * kM, 0, "length 0 means count elements"},
    {LongHash, 16, 2, 3 * kM, 0, "a longer buffer than needed is fine"},
    {LongHash, 6, 2, 1 * kM, 2101, "second element cut by the buffer end is not read"},
    {LongHash, 3, 1, 0, 2101, "buffer shorter than one element"},
    {LongHash, 12, 4, 7 * kM, 2101, "stops after the last whole element"},
    {IntHash, 0, 3, 7 * kM, 0, "stored int stride is the stored size"},
    {IntHash, 8, 3, 3 * kM, 2101, "stored int, short buffer"},
};

TEST(PrimitiveHash, WalkStopsAtTheBufferEnd) {
  for (const auto& c : kWalkCases) {
    SCOPED_TRACE(c.why);
    const size_t size = c.bufferLength != 0 ? c.bufferLength : c.count * 4u;
    Bytes buffer(size);  // exact size: a read past its end is caught
    for (size_t i = 3; i < std::min<size_t>(size, 16); i += 4) buffer[i] = 1 << (i / 4);
    int status = 77;
    EXPECT_EQ(c.expected, c.hash(2, c.bufferLength, buffer.data(), c.count, status));
    EXPECT_EQ(c.status, status);
  }
  int status = 77;
  EXPECT_EQ(0u, IntHash(2, 0, nullptr, 1, status)) << "a null array is an empty buffer";
  EXPECT_EQ(2101, status);
}

}  // namespace
