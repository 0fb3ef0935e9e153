// The range estimator and the bound filling that every row's EvalAndBound
// slot shares, under the contract of katypemgr/katypevl.h. Private to the
// library.
#ifndef KATYPEMGR_SRC_PRIMITIVE_BOUND_ESTIMATE_H_
#define KATYPEMGR_SRC_PRIMITIVE_BOUND_ESTIMATE_H_

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

#endif  // KATYPEMGR_SRC_PRIMITIVE_BOUND_ESTIMATE_H_
