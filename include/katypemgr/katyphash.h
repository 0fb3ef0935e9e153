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
//
// String rows (the same contract, with these differences):
//   StringHash         KaString (and the string row of older databases)
//   KaIStringHash      KaIString
//   KaCaseIStringHash  KaCaseIString
//   - Only nibble 8 is the memory form (an array of the class's objects);
//     every other nibble, 1 included, means stored elements: a 16-bit length
//     N (big-endian under nibble 2, else little-endian), the code set byte,
//     the language byte, N - 4 bytes of code units (16-bit units in the same
//     byte order), then 0x00 0xFF. Elements follow each other by their N.
//     When the first element's byte N + 1 is 0 the array is in the older
//     zero-terminated form instead: one length word, then the texts back to
//     back, each ended by a zero byte, taken in the default 8-bit code set
//     and language.
//   - bufferLength 0 for stored elements means "not bounded": each element's
//     own length is trusted. Otherwise an element whose first four bytes do
//     not lie inside the buffer is not read (status 2101, the keys so far are
//     used), and a text the buffer cuts (a key prefix) is hashed over its
//     whole units inside the buffer; when 254 or more of its bytes are there
//     the cut key is ambiguous: status kKaNotSupported (-2999), result 0.
//   - The key of an element is HashString of its text with count -1 (a cut
//     text: the count of its whole units), after clearing the top bit of the
//     language of a collation-order text (code set 254).
//   - KaIString and KaCaseIString carry no code set or language; their
//     elements are keyed as Windows-1252 text (code set 1) of language 0, and
//     their stored elements by the code set and language bytes they carry. The
//     key follows the collation order, not the classes' folding: texts the
//     classes compare equal ("Abc", "aBC") may hash apart.
//   - No slot allocates: texts in the other byte order are turned through a
//     256-byte buffer on the stack, piece by piece.
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

KATYPEMGR_API unsigned int StringHash(unsigned char format, unsigned int bufferLength, void* values,
                                      unsigned int count, int& status);
KATYPEMGR_API unsigned int KaIStringHash(unsigned char format, unsigned int bufferLength,
                                         void* values, unsigned int count, int& status);
KATYPEMGR_API unsigned int KaCaseIStringHash(unsigned char format, unsigned int bufferLength,
                                             void* values, unsigned int count, int& status);

class KaString;

// The key of one text: `count` characters of `text` (-1: up to its zero
// terminator) in `codeSet` (255: the default 8-bit code set) and `language`
// (255: the default language).
//   - A null string (language 254, or code set 254 with language 0) answers
//     0xFEFE7575 whatever its text; a count of 0, a count below -1 or a null
//     text answers 0.
//   - Code set 0: h = 9 * h + each byte (unsigned), from h = 0.
//   - Other code sets: h = 9 * h + the key of each collation order o, the
//     orders of an expanding character one by one. The key is 0 for order 0;
//     L * 2^24 + o * 2^8 for the raw-order language 20, and for orders outside
//     the Latin letters; a Latin letter's order (bit 0x4000 set, below 0x8000)
//     in any other language gives L * 2^24 + (o & 0x407F) * 2^8 + ((o >> 7) &
//     0x7F). L is the language after defaulting.
//   - With a count, exactly `count` units are read, a zero unit among them
//     counting as a character of order 0: the caller vouches for them.
//   - `flags` is accepted for callers and has no effect.
// Never allocates; safe to call from several threads.
KATYPEMGR_API unsigned int HashString(unsigned char codeSet, unsigned char language, char* text,
                                      short count, unsigned char flags);

// h = 9 * h + each code unit up to the terminator, from h = 0: a signed byte
// for 1-byte code sets, an unsigned 16-bit unit for every code set above 224.
// An unset text hashes as the empty one (0). HashKaString7 takes each unit's
// low seven bits only. Language and code set do not enter.
KATYPEMGR_API unsigned int HashKaString(const KaString& s);
KATYPEMGR_API unsigned int HashKaString7(const KaString& s);

#endif  // KATYPEMGR_KATYPHASH_H_
