// The Compare slots of the primitive scalar rows: the array walk they share,
// and how each row reads and orders one element. Knows no table.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kabase/codec.h"
#include "katypemgr/katypcmp.h"

namespace {

// A stride known when the walk is compiled, so that its divisions are shifts
// and its element loads fixed-width.
template <size_t N>
using FixedStride = std::integral_constant<size_t, N>;

bool IsMemoryForm(unsigned char nibble) { return nibble == 8 || nibble == 1; }

template <typename T>
int Sign(T first, T second) {
  return (first > second) - (first < second);
}

// NaN -2, -infinity -1, every finite value 0, +infinity +1.
template <typename F>
int FloatingRank(F v) {
  if (std::isnan(v)) return -2;
  if (std::isinf(v)) return v < 0 ? -1 : 1;
  return 0;
}

// Ranks first, numbers only between two finite values: every NaN sorts below
// everything else and equals every other NaN, and -0 equals +0.
template <typename T>
int Order(T first, T second) {
  if constexpr (std::is_floating_point_v<T>) {
    const int rank1 = FloatingRank(first);
    const int rank2 = FloatingRank(second);
    if (rank1 != 0 || rank2 != 0) return Sign(rank1, rank2);
  }
  return Sign(first, second);
}

// Whole elements in an array of `length` bytes; 0 stands for `count` of them.
// A trailing part of an element is past the end: reading it would leave the
// caller's buffer. A stride of 0 leaves nothing to walk.
size_t WholeElements(unsigned int length, unsigned int count, size_t stride) {
  if (stride == 0) return 0;
  return length == 0 ? count : length / stride;
}

uint64_t LoadWord(const unsigned char* p) {
  uint64_t v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

// Bytes of the equal-prefix scan folded into one test: with no branch per
// element the compiler keeps the step to a few wide loads, XORs and ORs.
constexpr size_t kScanBlock = 32;

// Index of the first of `n` element pairs whose bytes differ, or `n`.
// Identical bytes are an equal pair in every row and every form (a conversion
// depends on the element's bytes alone), so the long equal prefixes of index
// keys are skipped without converting or ordering an element.
template <typename Stride>
size_t FirstDifferentPair(const unsigned char* first, const unsigned char* second, size_t n,
                          Stride stride) {
  const size_t s = stride;
  const size_t bytes = n * s;
  size_t at = 0;
  for (; at + kScanBlock <= bytes; at += kScanBlock) {
    uint64_t diff = 0;
    for (size_t j = 0; j < kScanBlock; j += sizeof diff) {
      diff |= LoadWord(first + at + j) ^ LoadWord(second + at + j);
    }
    if (diff != 0) break;
  }
  size_t i = at / s;  // every byte before `at` is equal
  for (; i < n; ++i) {
    if (std::memcmp(first + i * s, second + i * s, s) != 0) break;
  }
  return i;
}

// What the walk reports when pair `last` was the last it compared. After the
// last pair asked for it stops without a bound check. Before that it checks
// that both arrays hold a next element before it looks at the result, so the
// check can fail, and report 2101, even when `result` already decides.
int Finish(int result, size_t last, size_t pairs, unsigned int count, int& error) {
  error = (last + 1 == pairs && pairs < count) ? kKaArrayBoundExceeded : 0;
  return result;
}

// The array walk of every scalar row. `order` answers -1, 0 or +1 for the
// elements at two positions. Only pairs wholly inside both arrays are read;
// the outcome is that of comparing pair by pair and checking both bounds
// after each pair but the last asked for.
template <typename Stride, typename PairOrder>
int Walk(unsigned int length1, const void* values1, unsigned int length2, const void* values2,
         unsigned int count, Stride stride, PairOrder order, int& error) {
  error = 0;
  if (count == 0) return 0;
  const size_t s = stride;
  const size_t pairs =
      std::min({size_t{count}, WholeElements(length1, count, s), WholeElements(length2, count, s)});
  // An array too short for one element ends before the first pair: nothing
  // is compared and nothing decides. A null array holds no element, whatever
  // length comes with it, as the hash slots read it too.
  if (pairs == 0 || values1 == nullptr || values2 == nullptr) {
    error = kKaArrayBoundExceeded;
    return 0;
  }
  const auto* first = static_cast<const unsigned char*>(values1);
  const auto* second = static_cast<const unsigned char*>(values2);
  size_t i = 0;
  for (;;) {
    i += FirstDifferentPair(first + i * s, second + i * s, pairs - i, stride);
    if (i == pairs) return Finish(0, pairs - 1, pairs, count, error);
    const int result = order(first + i * s, second + i * s);
    if (result != 0) return Finish(result, i, pairs, count, error);
    ++i;  // different bytes, equal values: -0 and +0, two NaNs
  }
}

// One element as a value of `T`: memory form in place, stored forms through
// the row's conversion into a local.
template <typename T, auto Convert>
T ReadElement(const unsigned char* p, unsigned char nibble) {
  T v{};
  if (IsMemoryForm(nibble)) {
    std::memcpy(&v, p, sizeof v);
  } else {
    Convert(&v, p, nibble);
  }
  return v;
}

// A scalar row: elements of `T`, `stride` bytes apart, stored elements read
// by `Convert(destination, source, nibble)`, a template argument so that the
// compiler inlines it.
template <typename T, auto Convert, typename Stride>
int CompareScalars(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                   void* values2, unsigned int count, Stride stride, int& error) {
  const unsigned char nibble = format & 0x0F;
  return Walk(
      length1, values1, length2, values2, count, stride,
      [nibble](const unsigned char* first, const unsigned char* second) {
        return Order(ReadElement<T, Convert>(first, nibble),
                     ReadElement<T, Convert>(second, nibble));
      },
      error);
}

// Bytes are the same in every format.
void CopyByte(void* destination, const unsigned char* source, unsigned char) {
  std::memcpy(destination, source, 1);
}

// High byte first under nibble 2; every other stored nibble keeps the host's
// own order, as the memory form does.
void ConvertShort(void* destination, const unsigned char* source, unsigned char nibble) {
  if (nibble == 2) {
    ShortStoreOne(destination, source, nibble);
  } else {
    std::memcpy(destination, source, sizeof(uint16_t));
  }
}

void ConvertLong(void* destination, const unsigned char* source, unsigned char nibble) {
  LongStoreOne(destination, source, nibble);
}

void ConvertO_8B(void* destination, const unsigned char* source, unsigned char nibble) {
  O_8BStoreOne(destination, source, nibble);
}

// "unsigned" is stored as "int" is, so both rows read it with the int loader.
void ConvertInt(void* destination, const unsigned char* source, unsigned char nibble) {
  IntLoad(destination, source, nibble, 1);
}

void ConvertFloat(void* destination, const unsigned char* source, unsigned char nibble) {
  FloatStore(destination, source, nibble, 1);
}

void ConvertDouble(void* destination, const unsigned char* source, unsigned char nibble) {
  DoubleStore(destination, source, nibble, 1);
}

// "int" and "unsigned": a stored array steps by the stored size of one int,
// which may differ from the memory size on another platform.
template <typename T>
int CompareInts(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                void* values2, unsigned int count, int& error) {
  const unsigned char nibble = format & 0x0F;
  const unsigned int stored = IsMemoryForm(nibble) ? static_cast<unsigned int>(sizeof(T))
                                                   : IntSizeGet(nullptr, 8, nibble, 1);
  if (stored == sizeof(T)) {
    return CompareScalars<T, ConvertInt>(format, length1, values1, length2, values2, count,
                                         FixedStride<sizeof(T)>{}, error);
  }
  return CompareScalars<T, ConvertInt>(format, length1, values1, length2, values2, count,
                                       size_t{stored}, error);
}

}  // namespace

int CharCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<signed char, CopyByte>(format, length1, values1, length2, values2, count,
                                               FixedStride<1>{}, error);
}

int ByteCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<unsigned char, CopyByte>(format, length1, values1, length2, values2, count,
                                                 FixedStride<1>{}, error);
}

int ShortCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                 void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<int16_t, ConvertShort>(format, length1, values1, length2, values2, count,
                                               FixedStride<2>{}, error);
}

int WordCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<uint16_t, ConvertShort>(format, length1, values1, length2, values2, count,
                                                FixedStride<2>{}, error);
}

int LongCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<int32_t, ConvertLong>(format, length1, values1, length2, values2, count,
                                              FixedStride<4>{}, error);
}

int DwordCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                 void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<uint32_t, ConvertLong>(format, length1, values1, length2, values2, count,
                                               FixedStride<4>{}, error);
}

int IntCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
               void* values2, unsigned short, unsigned int count, int& error) {
  return CompareInts<int>(format, length1, values1, length2, values2, count, error);
}

int UnsignedCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                    void* values2, unsigned short, unsigned int count, int& error) {
  return CompareInts<unsigned int>(format, length1, values1, length2, values2, count, error);
}

int O_8BCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<int64_t, ConvertO_8B>(format, length1, values1, length2, values2, count,
                                              FixedStride<8>{}, error);
}

int O_U8BCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                 void* values2, unsigned short, unsigned int count, int& error) {
  return CompareScalars<uint64_t, ConvertO_8B>(format, length1, values1, length2, values2, count,
                                               FixedStride<8>{}, error);
}

int FloatCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                 void* values2, unsigned short, unsigned int count, int& error) {
  static_assert(sizeof(float) == 4);
  return CompareScalars<float, ConvertFloat>(format, length1, values1, length2, values2, count,
                                             FixedStride<4>{}, error);
}

int DoubleCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                  void* values2, unsigned short, unsigned int count, int& error) {
  static_assert(sizeof(double) == 8);
  return CompareScalars<double, ConvertDouble>(format, length1, values1, length2, values2, count,
                                               FixedStride<8>{}, error);
}
