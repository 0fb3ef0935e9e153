// Stored-form codecs: literal byte images in both byte orders, round trips,
// sizes and the refusals of bad arguments.
#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kabase/codec.h"

namespace {

using Bytes = std::vector<unsigned char>;
using StoreFn = unsigned int (*)(void*, const void*, unsigned char, unsigned int);

template <typename T, typename... V>
Bytes MemoryImage(V... values) {
  const T array[] = {static_cast<T>(values)...};
  Bytes out(sizeof array);
  std::memcpy(out.data(), array, sizeof array);
  return out;
}

// A literal byte image written as hex escapes.
template <size_t N>
Bytes Image(const char (&bytes)[N]) {
  return Bytes(bytes, bytes + N - 1);
}

constexpr unsigned char kLittle = 0x03;  // any nibble but 1, 2 and 8
constexpr unsigned char kBig = 0x02;
constexpr unsigned char kMemory = 0x08;

// Signalling NaNs with payloads: moving them through a floating-point register
// could quiet them or lose the payload.
const double kNan = std::bit_cast<double>(0x7FF4000000000ABCull);
const float kFloatNan = std::bit_cast<float>(0x7FA00123u);

struct ImageCase {
  const char* why;
  StoreFn store, load;
  unsigned int width;
  Bytes memory, little, big;
};

const ImageCase kImageCases[] = {
    {"char: bytes unchanged", CharStore, CharStore, 1, MemoryImage<signed char>(-1, 65),
     Image("\xFF\x41"), Image("\xFF\x41")},
    {"short -2", ShortStore, ShortStore, 2, MemoryImage<int16_t>(-2, 0x1234),
     Image("\xFE\xFF\x34\x12"), Image("\xFF\xFE\x12\x34")},
    {"long INT32_MIN", LongStore, LongStore, 4, MemoryImage<int32_t>(INT32_MIN, 0x01020304),
     Image("\x00\x00\x00\x80\x04\x03\x02\x01"), Image("\x80\x00\x00\x00\x01\x02\x03\x04")},
    {"int -1 and 258", IntStore, IntLoad, 4, MemoryImage<int>(-1, 258),
     Image("\xFF\xFF\xFF\xFF\x02\x01\x00\x00"), Image("\xFF\xFF\xFF\xFF\x00\x00\x01\x02")},
    {"unsigned 0xFFFFFFFE", UnsignedStore, UnsignedLoad, 4, MemoryImage<unsigned>(0xFFFFFFFEu),
     Image("\xFE\xFF\xFF\xFF"), Image("\xFF\xFF\xFF\xFE")},
    {"float -0.0, 1.0 and a NaN payload", FloatStore, FloatStore, 4,
     MemoryImage<float>(-0.0f, 1.0f, kFloatNan),
     Image("\x00\x00\x00\x80\x00\x00\x80\x3F\x23\x01\xA0\x7F"),
     Image("\x80\x00\x00\x00\x3F\x80\x00\x00\x7F\xA0\x01\x23")},
    {"double -0.0 and a NaN payload", DoubleStore, DoubleStore, 8, MemoryImage<double>(-0.0, kNan),
     Image("\x00\x00\x00\x00\x00\x00\x00\x80\xBC\x0A\x00\x00\x00\x00\xF4\x7F"),
     Image("\x80\x00\x00\x00\x00\x00\x00\x00\x7F\xF4\x00\x00\x00\x00\x0A\xBC")},
    {"8-byte INT64_MIN and -2", O_8BStore, O_8BStore, 8, MemoryImage<int64_t>(INT64_MIN, -2),
     Image("\x00\x00\x00\x00\x00\x00\x00\x80\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),
     Image("\x80\x00\x00\x00\x00\x00\x00\x00\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE")},
};

TEST(PrimitiveCodec, StoresLiteralByteImagesAndLoadsThemBack) {
  for (const ImageCase& c : kImageCases) {
    const auto count = static_cast<unsigned int>(c.memory.size() / c.width);
    for (const auto& [format, image] : {std::pair{kLittle, &c.little}, std::pair{kBig, &c.big}}) {
      SCOPED_TRACE(std::string(c.why) + (format == kBig ? ", big" : ", little"));
      Bytes stored(image->size() + 2, 0xAA);
      ASSERT_EQ(image->size(), c.store(stored.data(), c.memory.data(), format, count));
      EXPECT_EQ(*image, Bytes(stored.begin(), stored.end() - 2));
      EXPECT_EQ(0xAA, stored[image->size()]) << "wrote past the elements";

      Bytes loaded(c.memory.size(), 0x55);
      ASSERT_EQ(c.memory.size(), c.load(loaded.data(), image->data(), format, count));
      EXPECT_EQ(c.memory, loaded) << "bit pattern changed on the way back";
    }
  }
}

// Only the low nibble selects the order: 8 and 1 copy, 2 is big, others little.
TEST(PrimitiveCodec, FormatNibbleSelectsTheByteOrder) {
  const Bytes memory = MemoryImage<int32_t>(0x01020304);
  const Bytes little{4, 3, 2, 1}, big{1, 2, 3, 4};
  const std::pair<unsigned char, const Bytes*> kForms[] = {
      {0x08, &memory}, {0x01, &memory}, {0x81, &memory}, {0x02, &big},
      {0xA2, &big},    {0x00, &little}, {0x0F, &little}, {0x28, &memory}};
  for (const auto& [format, expected] : kForms) {
    Bytes out(4);
    ASSERT_EQ(4u, LongStore(out.data(), memory.data(), format, 1));
    EXPECT_EQ(*expected, out) << "format " << int{format};
  }
}

TEST(PrimitiveCodec, ConvertsInPlace) {
  Bytes buffer = MemoryImage<int32_t>(0x01020304, -2);
  ASSERT_EQ(8u, LongStore(buffer.data(), buffer.data(), kBig, 2));
  EXPECT_EQ((Bytes{1, 2, 3, 4, 0xFF, 0xFF, 0xFF, 0xFE}), buffer);
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

// Count 0 writes nothing whatever the pointers; a null pointer or a count
// whose byte size does not fit 32 bits is refused before any byte is touched.
TEST(PrimitiveCodec, CountZeroWritesNothingAndBadArgumentsAreRefused) {
  const Bytes source(16, 0x11);
  Bytes out(16, 0xAA);
  for (const StoreEntry& e : kAllStores) {
    SCOPED_TRACE(e.name);
    for (unsigned char format : {kMemory, kBig, kLittle}) {
      EXPECT_EQ(0u, e.fn(out.data(), source.data(), format, 0));
      EXPECT_EQ(0u, e.fn(nullptr, nullptr, format, 0)) << "null pointers with count 0";
    }
    EXPECT_EQ(0u, e.fn(nullptr, source.data(), kBig, 2));
    EXPECT_EQ(0u, e.fn(out.data(), nullptr, kBig, 2));
    // 2^31 elements of two bytes or more no longer fit the byte count.
    if (e.fn != CharStore) {
      EXPECT_EQ(0u, e.fn(out.data(), out.data(), kBig, 0x80000000u));
    }
  }
  EXPECT_EQ(0u, O_8BStore(out.data(), out.data(), kBig, 0x20000000u));
  EXPECT_EQ(Bytes(16, 0xAA), out);
}

struct SizeCase {
  const char* name;
  unsigned int (*size)(const void*, unsigned char, unsigned char, unsigned int);
  unsigned int (*nullSize)(unsigned int);
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
    EXPECT_EQ(3 * c.width, c.size(data.data(), 0, kLittle, 3)) << "stored data";
    EXPECT_EQ(5 * c.width, c.nullSize(5));
    const unsigned int most = UINT_MAX / c.width;
    EXPECT_EQ(most * c.width, c.size(nullptr, 8, kBig, most)) << "largest count that fits";
    if (c.width > 1) {
      EXPECT_EQ(0u, c.size(nullptr, 8, kBig, most + 1)) << "byte size would wrap";
      EXPECT_EQ(0u, c.nullSize(most + 1));
    }
  }
}

// One element read from a stored array at an odd offset, as fields inside a
// record are, agrees with the array conversion.
TEST(PrimitiveCodec, StoreOneReadsOneElementAtAnyOffset) {
  const Bytes memory = MemoryImage<int64_t>(INT64_MIN + 0x0102, -5);
  for (unsigned char format : {kBig, kLittle, kMemory}) {
    Bytes stored(17);
    ASSERT_EQ(16u, O_8BStore(stored.data() + 1, memory.data(), format, 2));
    int64_t q = 0;
    int32_t l = 0;
    int16_t s = 0;
    EXPECT_EQ(8u, O_8BStoreOne(&q, stored.data() + 9, format));
    EXPECT_EQ(-5, q) << int{format};
    EXPECT_EQ(4u, LongStoreOne(&l, stored.data() + 1, format));
    EXPECT_EQ(2u, ShortStoreOne(&s, stored.data() + 1, format));
    EXPECT_EQ(format == kBig ? INT32_MIN : 0x0102, l) << int{format};
    EXPECT_EQ(format == kBig ? INT16_MIN : 0x0102, s) << int{format};
  }
}

}  // namespace
