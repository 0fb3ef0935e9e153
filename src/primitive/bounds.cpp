// EvalAndBound slots of the primitive rows, with the range estimator and the
// bound filling that the other rows' slots reuse. Knows no table.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "kabase/assert.h"
#include "kabase/codec.h"
#include "kabase/memory.h"
#include "katypemgr/katypevl.h"
#include "primitive/bound_estimate.h"

namespace {

constexpr const char* kSource = "src/katypevl";

// Reads the key number of one element image in the given format.
using DecodeKey = double (*)(const unsigned char* image, unsigned char format);

// How a row reads its keys: the stored size of one element (what the bounds
// hold per element) and the decoder of one element.
struct KeyCodec {
  size_t elementSize;
  DecodeKey decode;
};

// A range is usable only with both keys present and long enough to hold one
// element; anything less is an unknown extent and must not be read.
bool HasKeys(const KaIdxBounds* range, size_t elementSize) {
  return range != nullptr && range->lower != nullptr && range->upper != nullptr &&
         range->lowerLength >= elementSize && range->upperLength >= elementSize;
}

// The common body of the numeric slots. The estimate reads only the first
// element; the bounds copy all `count` of them unchanged.
float EvaluateAndBound(const KaIdxBounds* range, unsigned short flags, const void* value,
                       unsigned char format, unsigned int count, KaIdxBounds* bounds,
                       const KeyCodec& codec) {
  if (value == nullptr || count == 0) return 0.0f;
  const auto* x = static_cast<const unsigned char*>(value);
  float fraction = 0.0f;
  if (HasKeys(range, codec.elementSize)) {
    const double key = codec.decode(x, format);
    const double min = codec.decode(range->lower, format);
    const double max = codec.decode(range->upper, format);
    fraction =
        ka::detail::RangeFraction(ka::detail::Estimate(flags, key, key, min, max, 1.0), min, max);
  }
  ka::detail::FillBounds(bounds, flags, x, size_t{count} * codec.elementSize);
  return fraction;
}

// One-byte keys are raw bytes in every format: a byte has no order to convert.
double DecodeChar(const unsigned char* p, unsigned char) { return static_cast<signed char>(*p); }
double DecodeByte(const unsigned char* p, unsigned char) { return *p; }

// The codecs read memory order for nibbles 8 and 1 and the stored order
// otherwise, exactly as the rows' Load slots do, so a key written by the row's
// Store slot with a format reads back with that format.
template <typename T>
double DecodeWith16(const unsigned char* p, unsigned char format) {
  uint16_t v;
  ShortStoreOne(&v, p, format);
  return static_cast<T>(v);
}
template <typename T>
double DecodeWith32(const unsigned char* p, unsigned char format) {
  uint32_t v;
  LongStoreOne(&v, p, format);
  return static_cast<T>(v);
}
template <typename T>
double DecodeWith64(const unsigned char* p, unsigned char format) {
  uint64_t v;
  O_8BStoreOne(&v, p, format);
  return static_cast<double>(static_cast<T>(v));
}

double DecodeInt(const unsigned char* p, unsigned char format) {
  int v;
  IntLoad(&v, p, format, 1);
  return v;
}
double DecodeUnsigned(const unsigned char* p, unsigned char format) {
  unsigned v;
  UnsignedLoad(&v, p, format, 1);
  return v;
}
double DecodeFloat(const unsigned char* p, unsigned char format) {
  float v;
  FloatStore(&v, p, format, 1);
  return v;
}
double DecodeDouble(const unsigned char* p, unsigned char format) {
  double v;
  DoubleStore(&v, p, format, 1);
  return v;
}

// The stored size of one element, as the row's SizeGet slot reports it.
size_t IntElementSize(unsigned char format) { return IntSizeGet(nullptr, 8, format, 1); }

// A term of the estimate that is NaN or infinite stands for "unbounded".
double Finite(double v) { return std::isfinite(v) ? v : DBL_MAX; }

}  // namespace

namespace ka::detail {

double Estimate(unsigned short flags, double lo, double hi, double min, double max, double step) {
  double count = 0.0;
  if ((flags & kKaOpGreater) != 0) {
    const double g = max - (min > hi ? min - step : hi);
    if (!std::isfinite(g) || g > 0) count += Finite(g);
  }
  if ((flags & kKaOpLess) != 0) {
    const double l = (lo > max ? max + step : lo) - min;
    if (!std::isfinite(l) || l > 0) count += Finite(l);
  }
  if ((flags & kKaOpEqual) != 0) {
    const double e = Finite(std::min(hi, max) - std::max(min, lo)) + step;
    if (e > 0) count += e;
  }
  return count;
}

float RangeFraction(double estimate, double min, double max) {
  if (max < min) return 0.0f;
  // Done in double: for 64-bit keys max - min + 1 would overflow the integers.
  const double span = Finite(max - min + 1.0);
  const double fraction = Finite(estimate) / span;
  return fraction > FLT_MAX ? FLT_MAX : static_cast<float>(fraction);
}

bool SetBoundKey(unsigned char*& key, unsigned char& length, const void* image, size_t size) {
  if (key != nullptr) return false;
  if (size > UINT8_MAX) {
    KAMO_assert("bound key longer than its one-byte length", kSource, __LINE__);
    return false;
  }
  auto* copy = static_cast<unsigned char*>(KaMalloc(size));
  if (copy == nullptr) return false;  // the memory handler has been told
  if (size != 0) std::memcpy(copy, image, size);
  key = copy;
  length = static_cast<unsigned char>(size);
  return true;
}

void FillBounds(KaIdxBounds* bounds, unsigned short flags, const void* image, size_t size) {
  if (bounds == nullptr) return;
  const bool wantLower = (flags & kKaOpLess) == 0 && bounds->lower == nullptr;
  const bool wantUpper = (flags & kKaOpGreater) == 0 && bounds->upper == nullptr;
  const bool lowerSet = wantLower && SetBoundKey(bounds->lower, bounds->lowerLength, image, size);
  const bool upperSet = wantUpper && SetBoundKey(bounds->upper, bounds->upperLength, image, size);
  if (lowerSet == wantLower && upperSet == wantUpper) return;
  // One key could not be made (memory ran out): take back the other, so the
  // record is left as it was, never half filled.
  if (lowerSet) {
    std::free(bounds->lower);
    bounds->lower = nullptr;
    bounds->lowerLength = 0;
  }
  if (upperSet) {
    std::free(bounds->upper);
    bounds->upper = nullptr;
    bounds->upperLength = 0;
  }
}

}  // namespace ka::detail

float CharEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaCharStoredSize, DecodeChar});
}

float ByteEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaCharStoredSize, DecodeByte});
}

float ShortEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaShortStoredSize, DecodeWith16<int16_t>});
}

float WordEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaShortStoredSize, DecodeWith16<uint16_t>});
}

float LongEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaLongStoredSize, DecodeWith32<int32_t>});
}

float DwordEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaLongStoredSize, DecodeWith32<uint32_t>});
}

float IntEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                      unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {IntElementSize(format), DecodeInt});
}

float UnsignedEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                           unsigned char format, unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {IntElementSize(format), DecodeUnsigned});
}

float FloatEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaFloatStoredSize, DecodeFloat});
}

float DoubleEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                         unsigned char format, unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaDoubleStoredSize, DecodeDouble});
}

float O_8BEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value, unsigned char format,
                       unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaO8BStoredSize, DecodeWith64<int64_t>});
}

float O_U8BEvalAndBound(KaIdxBounds* range, unsigned short& flags, void* value,
                        unsigned char format, unsigned int count, KaIdxBounds* bounds) {
  return EvaluateAndBound(range, flags, value, format, count, bounds,
                          {kKaO8BStoredSize, DecodeWith64<uint64_t>});
}

// The descriptor rows store these functions in their EvalAndBound slot.
static_assert(std::is_same_v<decltype(&CharEvalAndBound), KaEvalFunc>);
static_assert(std::is_same_v<decltype(&O_U8BEvalAndBound), KaEvalFunc>);
