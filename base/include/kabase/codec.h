// Stored-form codecs of the primitive types.
//
// A storage-format byte names the form of an array of values. Only its low
// nibble matters here:
//   8 and 1  memory form: the host's own representation, copied unchanged;
//   2        big-endian stored order (high byte first);
//   others   little-endian stored order.
// The higher bits are flags for string rows and are ignored by these codecs.
//
// Every Store/Load function has the shape
//   unsigned int F(void* destination, const void* source, unsigned char format,
//                  unsigned int count)
// and answers the number of bytes written (Store) or consumed (Load). A count
// of 0 writes nothing and answers 0, whatever the pointers. A null pointer with
// a non-zero count, or a count whose byte size does not fit in 32 bits, is
// refused: nothing is written and the answer is 0. Source and destination may
// be the same buffer (in-place conversion); other overlaps are not supported.
//
// For the byte-order types one function converts in both directions (a
// byte swap is its own inverse), so the descriptor rows put the same function
// in their Store and Load slots. `int` and `unsigned` have separate loaders.
//
// SizeGet functions answer the stored size of `count` elements; for these
// fixed-width types the data and the kind byte do not change the answer, so
// they may be called with no data at all.
#ifndef KABASE_CODEC_H_
#define KABASE_CODEC_H_

#include <bit>
#include <cstdint>
#include <cstring>

#include "kabase/export.h"

namespace ka {

enum class ByteOrder : unsigned char { kMemory, kBig, kLittle };

// The byte order a storage-format byte selects.
constexpr ByteOrder OrderOf(unsigned char format) {
  const unsigned nibble = format & 0x0Fu;
  if (nibble == 8 || nibble == 1) return ByteOrder::kMemory;
  return nibble == 2 ? ByteOrder::kBig : ByteOrder::kLittle;
}

// True when values in `order` must be byte-swapped on this host.
constexpr bool NeedsSwap(ByteOrder order) {
  if (order == ByteOrder::kMemory) return false;
  return (order == ByteOrder::kBig) != (std::endian::native == std::endian::big);
}

// Fixed-width loads and stores at any alignment; a stored field may sit at any
// offset of a record, so they go through memcpy.
inline uint16_t LoadU16(const void* p, ByteOrder order) {
  uint16_t v;
  std::memcpy(&v, p, sizeof v);
  return NeedsSwap(order) ? __builtin_bswap16(v) : v;
}
inline uint32_t LoadU32(const void* p, ByteOrder order) {
  uint32_t v;
  std::memcpy(&v, p, sizeof v);
  return NeedsSwap(order) ? __builtin_bswap32(v) : v;
}
inline uint64_t LoadU64(const void* p, ByteOrder order) {
  uint64_t v;
  std::memcpy(&v, p, sizeof v);
  return NeedsSwap(order) ? __builtin_bswap64(v) : v;
}
inline void StoreU16(void* p, uint16_t v, ByteOrder order) {
  if (NeedsSwap(order)) v = __builtin_bswap16(v);
  std::memcpy(p, &v, sizeof v);
}
inline void StoreU32(void* p, uint32_t v, ByteOrder order) {
  if (NeedsSwap(order)) v = __builtin_bswap32(v);
  std::memcpy(p, &v, sizeof v);
}
inline void StoreU64(void* p, uint64_t v, ByteOrder order) {
  if (NeedsSwap(order)) v = __builtin_bswap64(v);
  std::memcpy(p, &v, sizeof v);
}

}  // namespace ka

// Stored sizes per element of this platform. `int` and `unsigned` are stored
// in four bytes.
inline constexpr unsigned int kKaCharStoredSize = 1;
inline constexpr unsigned int kKaShortStoredSize = 2;
inline constexpr unsigned int kKaLongStoredSize = 4;
inline constexpr unsigned int kKaIntStoredSize = 4;
inline constexpr unsigned int kKaFloatStoredSize = 4;
inline constexpr unsigned int kKaDoubleStoredSize = 8;
inline constexpr unsigned int kKaO8BStoredSize = 8;

// Byte-order conversions, each its own inverse. Elements: char (1 byte),
// short (2), 32-bit integer (4), float (4), double (8), 64-bit integer (8).
// Floating-point values move as bit patterns, so every NaN payload survives.
KABASE_API unsigned int CharStore(void* destination, const void* source, unsigned char format,
                                  unsigned int count);
KABASE_API unsigned int ShortStore(void* destination, const void* source, unsigned char format,
                                   unsigned int count);
KABASE_API unsigned int LongStore(void* destination, const void* source, unsigned char format,
                                  unsigned int count);
KABASE_API unsigned int FloatStore(void* destination, const void* source, unsigned char format,
                                   unsigned int count);
KABASE_API unsigned int DoubleStore(void* destination, const void* source, unsigned char format,
                                    unsigned int count);
KABASE_API unsigned int O_8BStore(void* destination, const void* source, unsigned char format,
                                  unsigned int count);

// `int` arrays: Store writes memory-form ints as 4-byte stored integers, Load
// reads them back. `unsigned` likewise.
KABASE_API unsigned int IntStore(void* destination, const void* source, unsigned char format,
                                 unsigned int count);
KABASE_API unsigned int IntLoad(void* destination, const void* source, unsigned char format,
                                unsigned int count);
KABASE_API unsigned int UnsignedStore(void* destination, const void* source, unsigned char format,
                                      unsigned int count);
KABASE_API unsigned int UnsignedLoad(void* destination, const void* source, unsigned char format,
                                     unsigned int count);

// Stored size of `count` null elements; 0 when it does not fit in 32 bits.
KABASE_API unsigned int CharNullSizeGet(unsigned int count);
KABASE_API unsigned int ShortNullSizeGet(unsigned int count);
KABASE_API unsigned int LongNullSizeGet(unsigned int count);
KABASE_API unsigned int IntNullSizeGet(unsigned int count);
KABASE_API unsigned int FloatNullSizeGet(unsigned int count);
KABASE_API unsigned int DoubleNullSizeGet(unsigned int count);
KABASE_API unsigned int O_8BNullSizeGet(unsigned int count);

// Stored size of `count` elements. `data` may be null and `kind` is not used:
// a fixed-width element has the same size in every form.
KABASE_API unsigned int CharSizeGet(const void* data, unsigned char kind, unsigned char format,
                                    unsigned int count);
KABASE_API unsigned int ShortSizeGet(const void* data, unsigned char kind, unsigned char format,
                                     unsigned int count);
KABASE_API unsigned int LongSizeGet(const void* data, unsigned char kind, unsigned char format,
                                    unsigned int count);
KABASE_API unsigned int IntSizeGet(const void* data, unsigned char kind, unsigned char format,
                                   unsigned int count);
KABASE_API unsigned int FloatSizeGet(const void* data, unsigned char kind, unsigned char format,
                                     unsigned int count);
KABASE_API unsigned int DoubleSizeGet(const void* data, unsigned char kind, unsigned char format,
                                      unsigned int count);
KABASE_API unsigned int O_8BSizeGet(const void* data, unsigned char kind, unsigned char format,
                                    unsigned int count);

// One stored element at `source` into memory form at `destination`, in the
// byte order of `format`'s low nibble; answers the bytes consumed. Inline: the
// compare functions call them once per key element in index searches.
inline unsigned int ShortStoreOne(void* destination, const void* source, unsigned char format) {
  const uint16_t v = ka::LoadU16(source, ka::OrderOf(format));
  std::memcpy(destination, &v, sizeof v);
  return sizeof v;
}
inline unsigned int LongStoreOne(void* destination, const void* source, unsigned char format) {
  const uint32_t v = ka::LoadU32(source, ka::OrderOf(format));
  std::memcpy(destination, &v, sizeof v);
  return sizeof v;
}
inline unsigned int O_8BStoreOne(void* destination, const void* source, unsigned char format) {
  const uint64_t v = ka::LoadU64(source, ka::OrderOf(format));
  std::memcpy(destination, &v, sizeof v);
  return sizeof v;
}

#endif  // KABASE_CODEC_H_
