// The walk over an array that every fixed-width Hash slot shares, under the
// contract of katypemgr/katyphash.h. Private to the library.
#ifndef KATYPEMGR_SRC_PRIMITIVE_HASH_WALK_H_
#define KATYPEMGR_SRC_PRIMITIVE_HASH_WALK_H_

#include <cstddef>
#include <cstdint>

#include "katypemgr/katyphash.h"

namespace ka::detail {

// True when `format` names the memory form for a numeric row (nibble 8 or 1).
constexpr bool IsMemoryForm(unsigned char format) {
  const unsigned nibble = format & 0x0Fu;
  return nibble == 8 || nibble == 1;
}

// The walk every fixed-width Hash slot shares: `keyOf(element, format)` turns
// the `elementSize` bytes at `element` into a 32-bit key; the keys are folded
// and scrambled under the contract above (status, buffer end, count 0).
template <typename KeyOf>
unsigned int HashFixedArray(unsigned char format, unsigned int bufferLength, const void* values,
                            unsigned int count, int& status, size_t elementSize, KeyOf keyOf) {
  status = 0;
  if (count == 0) return 0;
  // 64-bit arithmetic: count times the element size may exceed 32 bits.
  const uint64_t end = bufferLength != 0 ? bufferLength : uint64_t{count} * elementSize;
  const auto* bytes = static_cast<const unsigned char*>(values);
  // Whole elements inside the buffer, counted once, so the loop has no test.
  const uint64_t whole = bytes == nullptr ? 0 : end / elementSize;
  const uint64_t n = whole < count ? whole : count;
  if (n < count) status = kKaArrayBoundExceeded;
  uint32_t folded = 0;
  for (uint64_t i = 0; i < n; ++i)
    folded ^= static_cast<uint32_t>(keyOf(bytes + i * elementSize, format));
  return folded * kKaHashMultiplier;
}

}  // namespace ka::detail

#endif  // KATYPEMGR_SRC_PRIMITIVE_HASH_WALK_H_
