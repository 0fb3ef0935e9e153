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

// --- The string rows ------------------------------------------------------------------
//
// The same shape, walk and 2101 rule as above; `option` is the comparison
// options word (the cmp op of kastrcmp.h), passed on unchanged.
//
//   StringCompare     KaString. Memory form (nibble 8 or 1): the elements are
//                     KaString objects (stride sizeof(KaString)). Stored form:
//                     the stored string elements, each N + 2 bytes (offsets 0..1
//                     N in the nibble's byte order, 2 code set, 3 language, 4..N-1
//                     the text, then 0x00 0xFF); 16-bit units are read in the
//                     nibble's byte order. Each pair goes to KaStrCmp with the
//                     elements' own code sets and languages, maximum length -1
//                     and mode 1, so a null string (language 254) sorts first
//                     and equals only a null string.
//   OldStringCompare  The string row of older databases. Memory form as
//                     StringCompare. Stored form: the older one, a two-byte N
//                     (the size of all that follows it) and then the texts back to
//                     back, each ended by a zero byte; each text is compared as
//                     its load makes it: bytes of the default 8-bit code set in
//                     the default language.
//   KaIStringCompare, KaCaseIStringCompare
//                     KaIString / KaCaseIString. Memory form: the objects, each
//                     pair by the class's folding comparison with each side's
//                     own flags word. Stored form: the stored string elements as
//                     above, their text read as bytes; an element carries no
//                     flags word, so both sides compare with flags 0, as a
//                     loaded value has them. With kKaCmpSimple (256) in `option`
//                     both forms compare plain unsigned bytes instead (KaStrCmp's
//                     byte comparison); every other bit is ignored.
//
// Lengths: 0 means `count` objects in memory form; for stored arrays it means
// "not bounded": each element is taken at its own N (for the older form, the
// texts are bounded by N + 2 from the prefix). With a length given, nothing
// outside it is read, and an element that does not lie wholly inside it, or
// whose N is below 4 (too short for the code set and language bytes), is not
// an element: the array ends before it.
//
// Results are -1, 0 or +1. Texts that cannot be read in place (16-bit units,
// which are stored unaligned and end in 0x00 0xFF rather than a zero unit, and
// a stored text whose terminator is missing) are copied into a buffer on the
// stack; only texts longer than 512 bytes take heap memory, through KaMalloc.
// If that fails (KaCallMemoryHandler has been called), the first 512 bytes of
// the text are compared. A derived unit size other than 1 or 2 is reported
// through KAMO_assert.
KATYPEMGR_API int StringCompare(unsigned char format, unsigned int length1, void* values1,
                                unsigned int length2, void* values2, unsigned short option,
                                unsigned int count, int& error);
KATYPEMGR_API int OldStringCompare(unsigned char format, unsigned int length1, void* values1,
                                   unsigned int length2, void* values2, unsigned short option,
                                   unsigned int count, int& error);
KATYPEMGR_API int KaIStringCompare(unsigned char format, unsigned int length1, void* values1,
                                   unsigned int length2, void* values2, unsigned short option,
                                   unsigned int count, int& error);
KATYPEMGR_API int KaCaseIStringCompare(unsigned char format, unsigned int length1, void* values1,
                                       unsigned int length2, void* values2, unsigned short option,
                                       unsigned int count, int& error);

#endif  // KATYPEMGR_KATYPCMP_H_
