// Hash slots of the primitive rows: an array of values, in memory form or as
// stored images, folded into one 32-bit hash that does not depend on the byte
// order the values were stored in, so that keys of one or more attributes can
// be placed in hash tables straight out of a record.
//
// Every slot has the shape of KaHashFunc:
//   unsigned int F(unsigned char format, unsigned int bufferLength, void* values,
//                  unsigned int count, int& status)
// and the same contract:
//   - Only the low nibble of `format` counts. 8 and 1 mean the array holds
//     memory values; any other nibble means stored images, each brought into
//     memory form with the row's own loader in that nibble's byte order (2
//     big-endian, every other nibble little-endian).
//   - `bufferLength` is the byte length of the array; 0 means `count` elements
//     of the row's element size (memory size in memory form, stored size
//     otherwise; the same four bytes for "int" and "unsigned" here).
//   - `status` is set to 0 on entry, and to kKaArrayBoundExceeded (2101) when
//     elements remain but the next one does not lie wholly inside the buffer:
//     hashing stops there and the keys read so far are used. A buffer shorter
//     than one element, or a null array, gives 2101 and hash 0; nothing past
//     the buffer is ever read.
//   - Each element is folded to a 32-bit key; the result is the exclusive or
//     of the keys times 1103515245, modulo 2^32. A count of 0 answers 0.
//   - No slot allocates.
//
// Keys per row:
//   CharHash    o_char                 the byte, sign-extended; raw in every format
//   ByteHash    o_u1b                  the byte, zero-extended; raw in every format
//   ShortHash   o_2b                   the 16-bit value, sign-extended
//   WordHash    o_u2b                  the 16-bit value, zero-extended
//   LongHash    o_4b, o_u4b, BlockId   the 32-bit value
//   FloatHash   o_float                the 32-bit bit pattern
//   IntHash     int, unsigned, enum    the 32-bit value (stored images via IntLoad)
//   DoubleHash  o_double               low 32 bits XOR high 32 bits of the bit pattern
//   O_8BHash    o_8b, o_u8b            low 32 bits XOR high 32 bits
// The floating rows key the bit pattern, so -0.0 and +0.0 (and NaNs with
// different payloads) hash apart although they compare equal.
#ifndef KATYPEMGR_KATYPHASH_H_
#define KATYPEMGR_KATYPHASH_H_

#include <cstddef>
#include <cstdint>

#include "katypemgr/kaexport.h"
#include "katypemgr/katypes.h"

// The multiplier that scrambles the folded keys once per array.
inline constexpr unsigned int kKaHashMultiplier = 1103515245u;  // 0x41C64E6D

KATYPEMGR_API unsigned int CharHash(unsigned char format, unsigned int bufferLength, void* values,
                                    unsigned int count, int& status);
KATYPEMGR_API unsigned int ByteHash(unsigned char format, unsigned int bufferLength, void* values,
                                    unsigned int count, int& status);
KATYPEMGR_API unsigned int ShortHash(unsigned char format, unsigned int bufferLength, void* values,
                                     unsigned int count, int& status);
KATYPEMGR_API unsigned int WordHash(unsigned char format, unsigned int bufferLength, void* values,
                                    unsigned int count, int& status);
KATYPEMGR_API unsigned int LongHash(unsigned char format, unsigned int bufferLength, void* values,
                                    unsigned int count, int& status);
KATYPEMGR_API unsigned int FloatHash(unsigned char format, unsigned int bufferLength, void* values,
                                     unsigned int count, int& status);
KATYPEMGR_API unsigned int IntHash(unsigned char format, unsigned int bufferLength, void* values,
                                   unsigned int count, int& status);
KATYPEMGR_API unsigned int DoubleHash(unsigned char format, unsigned int bufferLength, void* values,
                                      unsigned int count, int& status);
KATYPEMGR_API unsigned int O_8BHash(unsigned char format, unsigned int bufferLength, void* values,
                                    unsigned int count, int& status);

#endif  // KATYPEMGR_KATYPHASH_H_
