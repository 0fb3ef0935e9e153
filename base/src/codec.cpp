// Stored-form codecs of the primitive types: byte-order conversion of arrays
// of fixed-width elements, and their stored sizes.
#include "kabase/codec.h"

#include <climits>
#include <cstring>

static_assert(sizeof(short) == 2 && sizeof(int) == 4 && sizeof(float) == 4 && sizeof(double) == 8 &&
                  sizeof(long long) == 8,
              "the stored widths assume this platform's type sizes");

namespace {

// Byte size of `count` elements of `width` bytes; false when it does not fit
// in the 32-bit answer of the protocol.
bool ByteSize(unsigned int count, unsigned int width, unsigned int& bytes) {
  if (count > UINT_MAX / width) return false;
  bytes = count * width;
  return true;
}

// Converts `count` elements of `Word`'s width between memory order and the
// order of `format`. Works in place: each element is read whole before it is
// written.
template <typename Word>
unsigned int ConvertArray(void* destination, const void* source, unsigned char format,
                          unsigned int count) {
  unsigned int bytes = 0;
  if (count == 0 || destination == nullptr || source == nullptr ||
      !ByteSize(count, sizeof(Word), bytes)) {
    return 0;
  }
  const ka::ByteOrder order = ka::OrderOf(format);
  if (!ka::NeedsSwap(order)) {
    std::memmove(destination, source, bytes);
    return bytes;
  }
  auto* out = static_cast<unsigned char*>(destination);
  const auto* in = static_cast<const unsigned char*>(source);
  for (unsigned int i = 0; i < count; ++i) {
    Word v;
    std::memcpy(&v, in + i * sizeof(Word), sizeof v);
    if constexpr (sizeof(Word) == 2) v = __builtin_bswap16(v);
    if constexpr (sizeof(Word) == 4) v = __builtin_bswap32(v);
    if constexpr (sizeof(Word) == 8) v = __builtin_bswap64(v);
    std::memcpy(out + i * sizeof(Word), &v, sizeof v);
  }
  return bytes;
}

unsigned int SizeOf(unsigned int count, unsigned int width) {
  unsigned int bytes = 0;
  return ByteSize(count, width, bytes) ? bytes : 0;
}

}  // namespace

unsigned int CharStore(void* destination, const void* source, unsigned char format,
                       unsigned int count) {
  return ConvertArray<uint8_t>(destination, source, format, count);
}
unsigned int ShortStore(void* destination, const void* source, unsigned char format,
                        unsigned int count) {
  return ConvertArray<uint16_t>(destination, source, format, count);
}
unsigned int LongStore(void* destination, const void* source, unsigned char format,
                       unsigned int count) {
  return ConvertArray<uint32_t>(destination, source, format, count);
}
unsigned int FloatStore(void* destination, const void* source, unsigned char format,
                        unsigned int count) {
  return ConvertArray<uint32_t>(destination, source, format, count);
}
unsigned int DoubleStore(void* destination, const void* source, unsigned char format,
                         unsigned int count) {
  return ConvertArray<uint64_t>(destination, source, format, count);
}
unsigned int O_8BStore(void* destination, const void* source, unsigned char format,
                       unsigned int count) {
  return ConvertArray<uint64_t>(destination, source, format, count);
}

// `int` and `unsigned` are 4 bytes in memory on this platform too, so their
// store and load are the 4-byte conversion in each direction. They stay
// separate entry points: the descriptor rows name them, and a platform whose
// `int` is wider would convert widths here.
unsigned int IntStore(void* destination, const void* source, unsigned char format,
                      unsigned int count) {
  return ConvertArray<uint32_t>(destination, source, format, count);
}
unsigned int IntLoad(void* destination, const void* source, unsigned char format,
                     unsigned int count) {
  return ConvertArray<uint32_t>(destination, source, format, count);
}
unsigned int UnsignedStore(void* destination, const void* source, unsigned char format,
                           unsigned int count) {
  return ConvertArray<uint32_t>(destination, source, format, count);
}
unsigned int UnsignedLoad(void* destination, const void* source, unsigned char format,
                          unsigned int count) {
  return ConvertArray<uint32_t>(destination, source, format, count);
}

unsigned int CharNullSizeGet(unsigned int count) { return SizeOf(count, kKaCharStoredSize); }
unsigned int ShortNullSizeGet(unsigned int count) { return SizeOf(count, kKaShortStoredSize); }
unsigned int LongNullSizeGet(unsigned int count) { return SizeOf(count, kKaLongStoredSize); }
unsigned int IntNullSizeGet(unsigned int count) { return SizeOf(count, kKaIntStoredSize); }
unsigned int FloatNullSizeGet(unsigned int count) { return SizeOf(count, kKaFloatStoredSize); }
unsigned int DoubleNullSizeGet(unsigned int count) { return SizeOf(count, kKaDoubleStoredSize); }
unsigned int O_8BNullSizeGet(unsigned int count) { return SizeOf(count, kKaO8BStoredSize); }

unsigned int CharSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaCharStoredSize);
}
unsigned int ShortSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaShortStoredSize);
}
unsigned int LongSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaLongStoredSize);
}
unsigned int IntSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaIntStoredSize);
}
unsigned int FloatSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaFloatStoredSize);
}
unsigned int DoubleSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaDoubleStoredSize);
}
unsigned int O_8BSizeGet(const void*, unsigned char, unsigned char, unsigned int count) {
  return SizeOf(count, kKaO8BStoredSize);
}
