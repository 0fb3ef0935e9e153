// Stored-form codecs: literal byte images in both byte orders, round trips,
// sizes and the refusals of bad arguments.
#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "kabase/codec.h"

namespace {

using Bytes = std::vector<unsigned char>;
using StoreFn = unsigned int (*)(void*, const void*, unsigned char, unsigned int);
using SizeFn = unsigned int (*)(const void*, unsigned char, unsigned char, unsigned int);
using NullSizeFn = unsigned int (*)(unsigned int);

template <typename T>
Bytes MemoryImage(std::initializer_list<T> values) {
  Bytes out(values.size() * sizeof(T));
  std::memcpy(out.data(), std::data(values), out.size());
  return out;
}

constexpr unsigned char kLittle = 0x03;  // any nibble but 1, 2 and 8
constexpr unsigned char kBig = 0x02;
constexpr unsigned char kMemory = 0x08;

const double kNegativeZero = -0.0;
// A signalling NaN with a payload: moving it through a floating-point
// register could quiet it or lose the payload.
const uint64_t kNanBits = 0x7FF4000000000ABCull;
const uint32_t kFloatNanBits = 0x7FA00123u;

struct ImageCase {
  const char* why;
  StoreFn store;
  unsigned int width;
  Bytes memory;
  unsigned char format;
  Bytes stored;
};

std::vector<ImageCase> ImageCases() {
  const double nan = std::bit_cast<double>(kNanBits);
  const float fnan = std::bit_cast<float>(kFloatNanBits);
  return {
      {"char, big: bytes unchanged",
       CharStore,
       1,
       MemoryImage<signed char>({-1, 65}),
       kBig,
       {0xFF, 0x41}},
      {"short -2, little",
       ShortStore,
       2,
       MemoryImage<int16_t>({-2, 0x1234}),
       kLittle,
       {0xFE, 0xFF, 0x34, 0x12}},
      {"short -2, big",
       ShortStore,
       2,
       MemoryImage<int16_t>({-2, 0x1234}),
       kBig,
       {0xFF, 0xFE, 0x12, 0x34}},
      {"long INT32_MIN, little",
       LongStore,
       4,
       MemoryImage<int32_t>({INT32_MIN, 0x01020304}),
       kLittle,
       {0x00, 0x00, 0x00, 0x80, 0x04, 0x03, 0x02, 0x01}},
      {"long INT32_MIN, big",
       LongStore,
       4,
       MemoryImage<int32_t>({INT32_MIN, 0x01020304}),
       kBig,
       {0x80, 0x00, 0x00, 0x00, 0x01, 0x02, 0x03, 0x04}},
      {"int -1 and 258, big",
       IntStore,
       4,
       MemoryImage<int>({-1, 258}),
       kBig,
       {0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x01, 0x02}},
      {"int 258, little", IntStore, 4, MemoryImage<int>({258}), kLittle, {0x02, 0x01, 0x00, 0x00}},
      {"unsigned 0xFFFFFFFE, big",
       UnsignedStore,
       4,
       MemoryImage<unsigned>({0xFFFFFFFEu}),
       kBig,
       {0xFF, 0xFF, 0xFF, 0xFE}},
      {"float -0.0 and 1.0, little",
       FloatStore,
       4,
       MemoryImage<float>({-0.0f, 1.0f}),
       kLittle,
       {0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x80, 0x3F}},
      {"float -0.0 and 1.0, big",
       FloatStore,
       4,
       MemoryImage<float>({-0.0f, 1.0f}),
       kBig,
       {0x80, 0x00, 0x00, 0x00, 0x3F, 0x80, 0x00, 0x00}},
      {"float NaN payload, big",
       FloatStore,
       4,
       MemoryImage<float>({fnan}),
       kBig,
       {0x7F, 0xA0, 0x01, 0x23}},
      {"double -0.0, little",
       DoubleStore,
       8,
       MemoryImage<double>({kNegativeZero}),
       kLittle,
       {0, 0, 0, 0, 0, 0, 0, 0x80}},
      {"double -0.0, big",
       DoubleStore,
       8,
       MemoryImage<double>({kNegativeZero}),
       kBig,
       {0x80, 0, 0, 0, 0, 0, 0, 0}},
      {"double NaN payload, little",
       DoubleStore,
       8,
       MemoryImage<double>({nan}),
       kLittle,
       {0xBC, 0x0A, 0, 0, 0, 0, 0xF4, 0x7F}},
      {"double NaN payload, big",
       DoubleStore,
       8,
       MemoryImage<double>({nan}),
       kBig,
       {0x7F, 0xF4, 0, 0, 0, 0, 0x0A, 0xBC}},
      {"8-byte INT64_MIN, little",
       O_8BStore,
       8,
       MemoryImage<int64_t>({INT64_MIN}),
       kLittle,
       {0, 0, 0, 0, 0, 0, 0, 0x80}},
      {"8-byte INT64_MIN and -2, big",
       O_8BStore,
       8,
       MemoryImage<int64_t>({INT64_MIN, -2}),
       kBig,
       {0x80, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}},
      {"8-byte, flag bits above the nibble are ignored",
       O_8BStore,
       8,
       MemoryImage<int64_t>({0x0102030405060708}),
       0xA2,
       {1, 2, 3, 4, 5, 6, 7, 8}},
      {"short, nibble 0 is little-endian",
       ShortStore,
       2,
       MemoryImage<int16_t>({0x1234}),
       0x00,
       {0x34, 0x12}},
  };
}

// The load counterpart of each store: the same function for the byte-order
// types, the separate loader for int and unsigned.
StoreFn LoaderOf(StoreFn store) {
  if (store == IntStore) return IntLoad;
  if (store == UnsignedStore) return UnsignedLoad;
  return store;
}

TEST(PrimitiveCodec, StoresLiteralByteImagesAndLoadsThemBack) {
  for (const ImageCase& c : ImageCases()) {
    SCOPED_TRACE(c.why);
    const auto count = static_cast<unsigned int>(c.memory.size() / c.width);
    Bytes stored(c.stored.size() + 2, 0xAA);
    ASSERT_EQ(c.stored.size(), c.store(stored.data(), c.memory.data(), c.format, count));
    EXPECT_EQ(c.stored, Bytes(stored.begin(), stored.end() - 2));
    EXPECT_EQ(0xAA, stored[c.stored.size()]) << "wrote past the elements";

    Bytes loaded(c.memory.size(), 0x55);
    ASSERT_EQ(c.memory.size(), LoaderOf(c.store)(loaded.data(), c.stored.data(), c.format, count));
    EXPECT_EQ(c.memory, loaded) << "bit pattern changed on the way back";
  }
}

TEST(PrimitiveCodec, MemoryFormsCopyUnchanged) {
  const Bytes memory = MemoryImage<int64_t>({INT64_MIN, 0x0102030405060708});
  for (unsigned char format : {0x08, 0x01, 0x18, 0x81}) {
    SCOPED_TRACE(static_cast<int>(format));
    for (StoreFn store : {ShortStore, LongStore, IntLoad, DoubleStore, O_8BStore}) {
      Bytes out(memory.size());
      const unsigned int width = store == ShortStore                            ? 2
                                 : (store == O_8BStore || store == DoubleStore) ? 8
                                                                                : 4;
      ASSERT_EQ(memory.size(), store(out.data(), memory.data(), format,
                                     static_cast<unsigned int>(memory.size() / width)));
      EXPECT_EQ(memory, out);
    }
  }
}

TEST(PrimitiveCodec, ConvertsInPlace) {
  Bytes buffer = MemoryImage<int32_t>({0x01020304, -2});
  ASSERT_EQ(8u, LongStore(buffer.data(), buffer.data(), kBig, 2));
  EXPECT_EQ((Bytes{1, 2, 3, 4, 0xFF, 0xFF, 0xFF, 0xFE}), buffer);
  ASSERT_EQ(8u, LongStore(buffer.data(), buffer.data(), kBig, 2));
  EXPECT_EQ(MemoryImage<int32_t>({0x01020304, -2}), buffer);
}

struct StoreEntry {
  const char* name;
  StoreFn fn;
};
constexpr StoreEntry kAllStores[] = {
    {"CharStore", CharStore},       {"ShortStore", ShortStore},   {"LongStore", LongStore},
    {"FloatStore", FloatStore},     {"DoubleStore", DoubleStore}, {"O_8BStore", O_8BStore},
    {"IntStore", IntStore},         {"IntLoad", IntLoad},         {"UnsignedStore", UnsignedStore},
    {"UnsignedLoad", UnsignedLoad},
};

TEST(PrimitiveCodec, CountZeroWritesNothing) {
  const Bytes source(16, 0x11);
  for (const StoreEntry& e : kAllStores) {
    SCOPED_TRACE(e.name);
    for (unsigned char format : {kMemory, kBig, kLittle}) {
      Bytes out(16, 0xAA);
      EXPECT_EQ(0u, e.fn(out.data(), source.data(), format, 0));
      EXPECT_EQ(Bytes(16, 0xAA), out);
      EXPECT_EQ(0u, e.fn(nullptr, nullptr, format, 0)) << "null pointers with count 0";
    }
  }
}

TEST(PrimitiveCodec, RefusesNullPointersAndOversizedCounts) {
  Bytes buffer(16, 0xAA);
  for (const StoreEntry& e : kAllStores) {
    SCOPED_TRACE(e.name);
    EXPECT_EQ(0u, e.fn(nullptr, buffer.data(), kBig, 2));
    EXPECT_EQ(0u, e.fn(buffer.data(), nullptr, kBig, 2));
    // 2^31 elements of two bytes or more no longer fit a 32-bit byte count;
    // the refusal must come before any byte is touched.
    if (e.fn != CharStore) {
      EXPECT_EQ(0u, e.fn(buffer.data(), buffer.data(), kBig, 0x80000000u));
    }
  }
  EXPECT_EQ(0u, O_8BStore(buffer.data(), buffer.data(), kBig, 0x20000000u));
  EXPECT_EQ(Bytes(16, 0xAA), buffer);
}

struct SizeCase {
  const char* name;
  SizeFn size;
  NullSizeFn nullSize;
  unsigned int width;
};
constexpr SizeCase kSizeCases[] = {
    {"char", CharSizeGet, CharNullSizeGet, 1},    {"short", ShortSizeGet, ShortNullSizeGet, 2},
    {"long", LongSizeGet, LongNullSizeGet, 4},    {"int", IntSizeGet, IntNullSizeGet, 4},
    {"float", FloatSizeGet, FloatNullSizeGet, 4}, {"double", DoubleSizeGet, DoubleNullSizeGet, 8},
    {"8-byte", O_8BSizeGet, O_8BNullSizeGet, 8},
};

TEST(PrimitiveCodec, SizesCountFixedWidthsWithOrWithoutData) {
  const Bytes data(64, 0);
  for (const SizeCase& c : kSizeCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(0u, c.size(nullptr, 8, kBig, 0));
    EXPECT_EQ(3 * c.width, c.size(nullptr, 8, kBig, 3)) << "no data, memory kind";
    EXPECT_EQ(3 * c.width, c.size(data.data(), 0, kLittle, 3)) << "stored data";
    EXPECT_EQ(5 * c.width, c.nullSize(5));
    EXPECT_EQ(0u, c.nullSize(0));
    const unsigned int most = UINT_MAX / c.width;
    EXPECT_EQ(most * c.width, c.size(nullptr, 8, kBig, most)) << "largest count that fits";
    if (c.width > 1) {
      EXPECT_EQ(0u, c.size(nullptr, 8, kBig, most + 1)) << "byte size would wrap";
      EXPECT_EQ(0u, c.nullSize(most + 1));
    }
  }
}

TEST(PrimitiveCodec, StoreOneReadsOneElementAtAnyOffset) {
  // The element starts at an odd offset, as fields inside a record do.
  const unsigned char record[] = {0xEE, 0x80, 0, 0, 0, 0, 0, 0x01, 0x02};
  int16_t s = 0;
  EXPECT_EQ(2u, ShortStoreOne(&s, record + 7, kBig));
  EXPECT_EQ(0x0102, s);
  EXPECT_EQ(2u, ShortStoreOne(&s, record + 7, kLittle));
  EXPECT_EQ(0x0201, s);
  int32_t l = 0;
  EXPECT_EQ(4u, LongStoreOne(&l, record + 1, kBig));
  EXPECT_EQ(INT32_MIN, l);
  EXPECT_EQ(4u, LongStoreOne(&l, record + 1, kLittle));
  EXPECT_EQ(0x80, l);
  int64_t q = 0;
  EXPECT_EQ(8u, O_8BStoreOne(&q, record + 1, kBig));
  EXPECT_EQ(static_cast<int64_t>(0x8000000000000102ull), q);
  const int64_t native = -5;
  EXPECT_EQ(8u, O_8BStoreOne(&q, &native, kMemory));
  EXPECT_EQ(-5, q);
}

TEST(PrimitiveCodec, StoreOneAgreesWithArrayStore) {
  const Bytes memory = MemoryImage<int32_t>({-123456789, 7, INT32_MAX});
  for (unsigned char format : {kBig, kLittle, kMemory}) {
    Bytes stored(memory.size());
    ASSERT_EQ(12u, LongStore(stored.data(), memory.data(), format, 3));
    for (int i = 0; i < 3; ++i) {
      int32_t one = 0;
      LongStoreOne(&one, stored.data() + 4 * i, format);
      int32_t expected;
      std::memcpy(&expected, memory.data() + 4 * i, 4);
      EXPECT_EQ(expected, one) << "format " << int{format} << " element " << i;
    }
  }
}

}  // namespace
