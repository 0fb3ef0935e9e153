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
//   - Result: Estimate(flags, x, x, min, max, 1) / (max - min + 1), where x,
//     min and max are the first elements of the value and of the two range
//     keys, decoded as the row's type; see RangeFraction for the corner
//     cases. 0 when the range is unknown, the value is null or `count` is 0.
//   - `bounds`, when not null, is filled by FillBounds with a copy of the
//     value's bytes as given (same format), `count` times the row's stored
//     element size long. A null value or a `count` of 0 sets no bound.
// Rows: Char o_char, Byte o_u1b, Short o_2b, Word o_u2b, Long o_4b, Dword
// o_u4b and BlockId, Int int and enum, Unsigned unsigned, Float o_float,
// Double o_double, O_8B o_8b, O_U8B o_u8b.
#ifndef KATYPEMGR_KATYPEVL_H_
#define KATYPEMGR_KATYPEVL_H_

#include <cstddef>

#include "katypemgr/katypes.h"

namespace ka::detail {

// Counts the keys in [min, max], spaced `step` apart (1 for integers), that
// satisfy the comparison given by `flags` with the value interval [lo, hi]
// (lo == hi for a single value). Sums, in this order:
//   greater  g = max - (min > hi ? min - step : hi), when g > 0
//   less     l = (lo > max ? max + step : lo) - min,  when l > 0
//   equal    e = min(hi, max) - max(min, lo) + step, when e > 0
// A term that comes out NaN or infinite counts as the largest double and is
// always added. The sum itself is not corrected: two such terms give
// infinity; RangeFraction turns that into a number.
double Estimate(unsigned short flags, double lo, double hi, double min, double max, double step);

// The estimate as a fraction of the key range, `estimate` / (max - min + 1):
//   - a range whose highest key lies below its lowest answers 0 (such a
//     range says nothing about the index);
//   - a non-finite estimate counts as the largest double, and so does a
//     non-finite range size (NaN or infinite keys, or a span beyond the
//     double range): an unbounded comparison against an unbounded range
//     gives 1;
//   - a quotient beyond the float range answers the largest float, so the
//     planner never sees infinity or NaN.
// Integer keys of up to 64 bits are passed as doubles: the span of the 64-bit
// extremes is then exact to the double's precision and never overflows.
float RangeFraction(double estimate, double min, double max);

// Sets `key` to a malloc'd copy of the `size` bytes at `image` and `length` to
// `size`, unless `key` is already set: the first comparison that sets a bound
// wins. A `size` beyond the one-byte length field is reported through
// KAMO_assert and sets nothing. When memory is short, KaCallMemoryHandler
// receives `size` (one retry if it released memory); the bound then stays
// unset. Answers whether the bound was set by this call.
bool SetBoundKey(unsigned char*& key, unsigned char& length, const void* image, size_t size);

// The bound filling of every row: when `bounds` is not null, an unset lower
// bound is set to `image` unless `flags` has kKaOpLess, an unset upper bound
// unless `flags` has kKaOpGreater. So equal sets both, less only the upper,
// greater only the lower, not-equal neither.
void FillBounds(KaIdxBounds* bounds, unsigned short flags, const void* image, size_t size);

}  // namespace ka::detail

float CharEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds);
float ByteEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds);
float ShortEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds);
float WordEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds);
float LongEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds);
float DwordEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds);
float IntEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                      unsigned int count, KaIdxBounds* bounds);
float UnsignedEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                           unsigned char format, unsigned int count, KaIdxBounds* bounds);
float FloatEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds);
float DoubleEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                         unsigned char format, unsigned int count, KaIdxBounds* bounds);
float O_8BEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds);
float O_U8BEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds);

#endif  // KATYPEMGR_KATYPEVL_H_
