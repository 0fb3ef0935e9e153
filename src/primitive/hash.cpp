// Hash slots of the primitive rows. Each slot differs from the others only in
// how one element becomes a key; the walk over the array is shared.
#include <cstdint>
#include <type_traits>

#include "kabase/codec.h"
#include "katypemgr/katyphash.h"
#include "primitive/hash_walk.h"

namespace {

using ka::detail::HashFixedArray;
using ka::detail::IsMemoryForm;

// Sign-extends a narrow value to the 32-bit key.
uint32_t SignedKey(int32_t v) { return static_cast<uint32_t>(v); }

// One-byte rows use the raw byte whatever the format: a single byte has no
// byte order.
uint32_t CharKey(const unsigned char* p, unsigned char) {
  return SignedKey(static_cast<signed char>(*p));
}
uint32_t ByteKey(const unsigned char* p, unsigned char) { return *p; }

// The 16-, 32- and 64-bit codecs read memory order for nibbles 8 and 1, so one
// call serves the memory form and both stored byte orders.
uint16_t Load16(const unsigned char* p, unsigned char format) {
  uint16_t v;
  ShortStoreOne(&v, p, format);
  return v;
}
uint32_t Load32(const unsigned char* p, unsigned char format) {
  uint32_t v;
  LongStoreOne(&v, p, format);
  return v;
}
uint64_t Load64(const unsigned char* p, unsigned char format) {
  uint64_t v;
  O_8BStoreOne(&v, p, format);
  return v;
}

uint32_t ShortKey(const unsigned char* p, unsigned char format) {
  return SignedKey(static_cast<int16_t>(Load16(p, format)));
}
uint32_t WordKey(const unsigned char* p, unsigned char format) { return Load16(p, format); }

// A 64-bit value folds its two halves, so both halves change the key.
uint32_t FoldHalves(uint64_t v) {
  return static_cast<uint32_t>(v) ^ static_cast<uint32_t>(v >> 32);
}

uint32_t IntKey(const unsigned char* p, unsigned char format) {
  uint32_t v;
  IntLoad(&v, p, format, 1);
  return v;
}

uint32_t DoubleKey(const unsigned char* p, unsigned char format) {
  uint64_t bits;
  DoubleStore(&bits, p, format, 1);
  return FoldHalves(bits);
}

uint32_t O_8BKey(const unsigned char* p, unsigned char format) {
  return FoldHalves(Load64(p, format));
}

// The stored width of an int may differ from its memory width on other
// platforms, so the stride of a stored array comes from the base library.
size_t IntStride(unsigned char format) {
  return IsMemoryForm(format) ? sizeof(int) : IntSizeGet(nullptr, 8, format, 1);
}

}  // namespace

unsigned int CharHash(unsigned char format, unsigned int bufferLength, void* values,
                      unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, 1, CharKey);
}

unsigned int ByteHash(unsigned char format, unsigned int bufferLength, void* values,
                      unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, 1, ByteKey);
}

unsigned int ShortHash(unsigned char format, unsigned int bufferLength, void* values,
                       unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, kKaShortStoredSize, ShortKey);
}

unsigned int WordHash(unsigned char format, unsigned int bufferLength, void* values,
                      unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, kKaShortStoredSize, WordKey);
}

unsigned int LongHash(unsigned char format, unsigned int bufferLength, void* values,
                      unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, kKaLongStoredSize, Load32);
}

// A float is keyed by its bit pattern, which the 32-bit codec moves unchanged.
unsigned int FloatHash(unsigned char format, unsigned int bufferLength, void* values,
                       unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, kKaFloatStoredSize, Load32);
}

unsigned int IntHash(unsigned char format, unsigned int bufferLength, void* values,
                     unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, IntStride(format), IntKey);
}

unsigned int DoubleHash(unsigned char format, unsigned int bufferLength, void* values,
                        unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, kKaDoubleStoredSize,
                        DoubleKey);
}

unsigned int O_8BHash(unsigned char format, unsigned int bufferLength, void* values,
                      unsigned int count, int& status) {
  return HashFixedArray(format, bufferLength, values, count, status, kKaO8BStoredSize, O_8BKey);
}

// The descriptor rows store these functions in their Hash slot.
static_assert(std::is_same_v<decltype(&CharHash), KaHashFunc>);
static_assert(std::is_same_v<decltype(&IntHash), KaHashFunc>);
static_assert(sizeof(float) == kKaFloatStoredSize && sizeof(double) == kKaDoubleStoredSize);
