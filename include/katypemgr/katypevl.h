// EvalAndBound slots of the primitive rows, and the estimator and bound
// filling that every row's slot shares.
//
// When a query compares an indexed attribute with a value, the planner asks
// the attribute's row two things at once: what fraction of the index's key
// range satisfies the comparison, and which keys bound the index scan.
//
// Every slot has the shape of KaEvalFunc:
//   float F(KaIdxBounds* range, unsigned short& flags, void* value,
//           unsigned char format, unsigned int count, KaIdxBounds* bounds)
// and the same contract:
//   - `range` holds the index's lowest key (`lower`) and highest key (`upper`);
//     it is read only. It is null when the extent is unknown; a key that is
//     missing or shorter than one element counts as unknown too.
//   - `flags` are the operator bits kKaOpEqual, kKaOpLess, kKaOpGreater
//     (less-or-equal 0x3, greater-or-equal 0x5, not-equal 0x6). The primitive
//     slots read them and leave them unchanged.
//   - `value` holds `count` elements in `format`. The estimate uses the first
//     element (the leading key column); the bounds carry all of them.
//   - One format describes the value and both range keys: nibbles 8 and 1 mean
//     memory images (host order, as the row's Store slot leaves them with
//     format 8), 2 big-endian images, any other nibble little-endian ones.
//     The one-byte rows read the raw byte in every format.
//   - Result: the share of the keys in [min, max] that satisfy the
//     comparison with x (keys above x for greater, below x for less, x itself
//     when inside for equal, summed for combined operators), that is
//     count / (max - min + 1), where x, min and max are the first elements of
//     the value and of the two range keys, decoded as the row's type. 0 when
//     the range is unknown, its highest key lies below its lowest, the value
//     is null or `count` is 0. Never infinity or NaN: a non-finite count or
//     range size (NaN or infinite keys) counts as the largest double, so an
//     unbounded comparison against an unbounded range gives 1, and a quotient
//     beyond the float range answers the largest float.
//   - `bounds`, when not null, receives a copy of the value's bytes as given
//     (same format), `count` times the row's stored element size long, in a
//     malloc'd key that the caller owns: an unset lower bound unless `flags`
//     has kKaOpLess, an unset upper bound unless it has kKaOpGreater (equal
//     sets both, not-equal neither). A bound already set is kept, so the
//     first comparison that sets a bound wins. A null value or a `count` of
//     0 sets no bound; when memory is short KaCallMemoryHandler is called and
//     the bound stays unset.
// Rows: Char o_char, Byte o_u1b, Short o_2b, Word o_u2b, Long o_4b, Dword
// o_u4b and BlockId, Int int and enum, Unsigned unsigned, Float o_float,
// Double o_double, O_8B o_8b, O_U8B o_u8b.
#ifndef KATYPEMGR_KATYPEVL_H_
#define KATYPEMGR_KATYPEVL_H_

#include <cstddef>

#include "katypemgr/kaexport.h"
#include "katypemgr/katypes.h"

KATYPEMGR_API float CharEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                     unsigned char format, unsigned int count, KaIdxBounds* bounds);
KATYPEMGR_API float ByteEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                     unsigned char format, unsigned int count, KaIdxBounds* bounds);
KATYPEMGR_API float ShortEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                      unsigned char format, unsigned int count,
                                      KaIdxBounds* bounds);
KATYPEMGR_API float WordEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                     unsigned char format, unsigned int count, KaIdxBounds* bounds);
KATYPEMGR_API float LongEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                     unsigned char format, unsigned int count, KaIdxBounds* bounds);
KATYPEMGR_API float DwordEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                      unsigned char format, unsigned int count,
                                      KaIdxBounds* bounds);
KATYPEMGR_API float IntEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                    unsigned char format, unsigned int count, KaIdxBounds* bounds);
KATYPEMGR_API float UnsignedEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                         unsigned char format, unsigned int count,
                                         KaIdxBounds* bounds);
KATYPEMGR_API float FloatEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                      unsigned char format, unsigned int count,
                                      KaIdxBounds* bounds);
KATYPEMGR_API float DoubleEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                       unsigned char format, unsigned int count,
                                       KaIdxBounds* bounds);
KATYPEMGR_API float O_8BEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                     unsigned char format, unsigned int count, KaIdxBounds* bounds);
KATYPEMGR_API float O_U8BEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                                      unsigned char format, unsigned int count,
                                      KaIdxBounds* bounds);

#endif  // KATYPEMGR_KATYPEVL_H_
