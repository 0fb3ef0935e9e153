// The Compare slots of the primitive scalar rows.
//
// Every function compares two arrays of one type element by element, in
// memory form or straight out of stored records, and has the KaCompareFunc
// shape:
//   int F(unsigned char format, unsigned int length1, void* values1,
//         unsigned int length2, void* values2, unsigned short option,
//         unsigned int count, int& error)
//
// format   Only the low nibble is read. 8 and 1: both arrays hold memory-form
//          values, read in place. Any other nibble: both arrays hold stored
//          elements, each converted to its value by the row's kabase
//          conversion with that nibble (see the list below).
// length1, length2
//          Byte length of each array; 0 means `count` elements of the stride.
//          Only whole elements count: a length that is not a whole number of
//          elements ends the array at its last whole element, and the part
//          after it is never read (nothing here reads past a given length).
// option   Ignored by these rows (the string rows read it).
// count    Number of element pairs to compare.
// error    Out: 0, or kKaArrayBoundExceeded (2101) when an array ended before
//          `count` pairs were compared.
// result   -1, 0 or +1: the order of the first unequal pair, 0 when every
//          compared pair is equal.
//
// The walk compares a pair, and then, if pairs remain to be asked for, checks
// that both arrays hold a next element before it looks at the result. So a
// decided result can come back with 2101: two pairs asked for, room for one
// element in either array, first pair unequal, gives +-1 and 2101. The index
// code relies on that order; every compare slot keeps it. An array without a
// single whole element (a length from 1 to stride - 1), and a null array
// with any length, give 0 and 2101 without reading either array. `count` 0
// gives 0 and error 0 without touching the arrays, which may then be null.
//
// Neither function allocates, throws or keeps state; they may run on any
// thread. Stored elements are converted into locals; arrays are never
// written.
//
// Rows, stride (bytes per element) and order:
//   CharCompare      o_char              1  signed 8-bit; the byte read as is
//   ByteCompare      o_u1b               1  unsigned 8-bit; the byte read as is
//   ShortCompare     o_2b                2  signed 16-bit; stored nibble 2 is
//                                           high byte first, every other
//                                           stored nibble the host's order
//   WordCompare      o_u2b               2  unsigned 16-bit; as ShortCompare
//   LongCompare      o_4b                4  signed 32-bit; LongStoreOne
//   DwordCompare     o_u4b, BlockId      4  unsigned 32-bit; LongStoreOne
//   IntCompare       int, enum           4  signed; IntLoad with a count of 1
//   UnsignedCompare  unsigned            4  unsigned; IntLoad as well: the
//                                           stored form is the int one
//   O_8BCompare      o_8b                8  signed 64-bit; O_8BStoreOne
//   O_U8BCompare     o_u8b               8  unsigned 64-bit; O_8BStoreOne
//   FloatCompare     o_float, d_Interval 4  floating rank; FloatStore
//   DoubleCompare    o_double            8  floating rank; DoubleStore
// The stride of stored int and unsigned arrays is what
// IntSizeGet(nullptr, 8, nibble, 1) answers.
//
// Floating rank: NaN (any payload, signalling or quiet) < -infinity < every
// finite value < +infinity. Two values of the same non-finite rank are equal
// (so NaN equals NaN); two finite values compare as numbers (-0 equals +0).
#ifndef KATYPEMGR_KATYPCMP_H_
#define KATYPEMGR_KATYPCMP_H_

#include "katypemgr/kaexport.h"
#include "katypemgr/katypes.h"

KATYPEMGR_API int CharCompare(unsigned char format, unsigned int length1, void* values1,
                              unsigned int length2, void* values2, unsigned short option,
                              unsigned int count, int& error);
KATYPEMGR_API int ByteCompare(unsigned char format, unsigned int length1, void* values1,
                              unsigned int length2, void* values2, unsigned short option,
                              unsigned int count, int& error);
KATYPEMGR_API int ShortCompare(unsigned char format, unsigned int length1, void* values1,
                               unsigned int length2, void* values2, unsigned short option,
                               unsigned int count, int& error);
KATYPEMGR_API int WordCompare(unsigned char format, unsigned int length1, void* values1,
                              unsigned int length2, void* values2, unsigned short option,
                              unsigned int count, int& error);
KATYPEMGR_API int LongCompare(unsigned char format, unsigned int length1, void* values1,
                              unsigned int length2, void* values2, unsigned short option,
                              unsigned int count, int& error);
KATYPEMGR_API int DwordCompare(unsigned char format, unsigned int length1, void* values1,
                               unsigned int length2, void* values2, unsigned short option,
                               unsigned int count, int& error);
KATYPEMGR_API int IntCompare(unsigned char format, unsigned int length1, void* values1,
                             unsigned int length2, void* values2, unsigned short option,
                             unsigned int count, int& error);
KATYPEMGR_API int UnsignedCompare(unsigned char format, unsigned int length1, void* values1,
                                  unsigned int length2, void* values2, unsigned short option,
                                  unsigned int count, int& error);
KATYPEMGR_API int O_8BCompare(unsigned char format, unsigned int length1, void* values1,
                              unsigned int length2, void* values2, unsigned short option,
                              unsigned int count, int& error);
KATYPEMGR_API int O_U8BCompare(unsigned char format, unsigned int length1, void* values1,
                               unsigned int length2, void* values2, unsigned short option,
                               unsigned int count, int& error);
KATYPEMGR_API int FloatCompare(unsigned char format, unsigned int length1, void* values1,
                               unsigned int length2, void* values2, unsigned short option,
                               unsigned int count, int& error);
KATYPEMGR_API int DoubleCompare(unsigned char format, unsigned int length1, void* values1,
                                unsigned int length2, void* values2, unsigned short option,
                                unsigned int count, int& error);

#endif  // KATYPEMGR_KATYPCMP_H_
