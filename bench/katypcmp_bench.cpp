// The scalar Compare slots over two equal arrays of a million elements (the
// worst case: every pair is read), each beside the plain loop a caller would
// write for the same comparison. Memory form against a direct loop, the
// big-endian stored form against a byte-swapping loop. Both sides of a pair
// read the same fixed-seed arrays.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "kabase/codec.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/katypcmp.h"

namespace {

constexpr unsigned kCount = 1'000'000;
constexpr unsigned char kMemory = 8;
constexpr unsigned char kBigEndian = 2;

template <typename T>
struct Arrays {
  std::vector<T> first, second;                          // memory form
  std::vector<unsigned char> storedFirst, storedSecond;  // big-endian
};

template <typename T, typename Draw>
Arrays<T> MakeArrays(unsigned seed, Draw draw,
                     unsigned int (*store)(void*, const void*, unsigned char, unsigned int)) {
  std::mt19937_64 rng(seed);
  Arrays<T> a;
  a.first.resize(kCount);
  for (T& v : a.first) v = draw(rng);
  a.second = a.first;
  a.storedFirst.resize(kCount * sizeof(T));
  store(a.storedFirst.data(), a.first.data(), kBigEndian, kCount);
  a.storedSecond = a.storedFirst;
  return a;
}

Arrays<int32_t>& Longs() {
  static Arrays<int32_t> a = MakeArrays<int32_t>(
      1, [](std::mt19937_64& r) { return static_cast<int32_t>(r()); }, LongStore);
  return a;
}
Arrays<int>& Ints() {
  static Arrays<int> a = MakeArrays<int>(
      2, [](std::mt19937_64& r) { return static_cast<int>(r()); }, IntStore);
  return a;
}
Arrays<double>& Doubles() {
  static Arrays<double> a = MakeArrays<double>(
      3, [](std::mt19937_64& r) { return std::uniform_real_distribution<double>(-1e6, 1e6)(r); },
      DoubleStore);
  return a;
}

// The slot over one array pair, as the index code calls it.
template <typename T>
void RunSlot(benchmark::State& state, KaCompareFunc compare, unsigned char format, Arrays<T>& a) {
  const bool stored = format != kMemory;
  void* first = stored ? static_cast<void*>(a.storedFirst.data()) : a.first.data();
  void* second = stored ? static_cast<void*>(a.storedSecond.data()) : a.second.data();
  for (auto _ : state) {
    int error = 0;
    int result = compare(format, 0, first, 0, second, 0, kCount, error);
    benchmark::DoNotOptimize(result);
    benchmark::DoNotOptimize(error);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

// The plain loops. `benchmark::DoNotOptimize` on the pointers keeps the
// compiler from hoisting the whole comparison out of the timed loop.
template <typename T>
int PlainCompare(const T* first, const T* second, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    if (first[i] < second[i]) return -1;
    if (second[i] < first[i]) return 1;
  }
  return 0;
}

template <typename T, typename U>
T LoadSwapped(const unsigned char* p) {
  U bits;
  std::memcpy(&bits, p, sizeof bits);
  if constexpr (sizeof(U) == 4) bits = __builtin_bswap32(bits);
  if constexpr (sizeof(U) == 8) bits = __builtin_bswap64(bits);
  T v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

template <typename T, typename U>
int PlainSwappedCompare(const unsigned char* first, const unsigned char* second, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    const T a = LoadSwapped<T, U>(first + i * sizeof(T));
    const T b = LoadSwapped<T, U>(second + i * sizeof(T));
    if (a < b) return -1;
    if (b < a) return 1;
  }
  return 0;
}

template <typename T>
void RunPlain(benchmark::State& state, Arrays<T>& a) {
  const T* first = a.first.data();
  const T* second = a.second.data();
  for (auto _ : state) {
    benchmark::DoNotOptimize(first);
    benchmark::DoNotOptimize(second);
    int result = PlainCompare(first, second, kCount);
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

template <typename T, typename U>
void RunPlainSwapped(benchmark::State& state, Arrays<T>& a) {
  const unsigned char* first = a.storedFirst.data();
  const unsigned char* second = a.storedSecond.data();
  for (auto _ : state) {
    benchmark::DoNotOptimize(first);
    benchmark::DoNotOptimize(second);
    int result = PlainSwappedCompare<T, U>(first, second, kCount);
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_LongCompare_Memory(benchmark::State& s) { RunSlot(s, LongCompare, kMemory, Longs()); }
void BM_LongCompare_Memory_Reference(benchmark::State& s) { RunPlain(s, Longs()); }
void BM_LongCompare_BigEndian(benchmark::State& s) { RunSlot(s, LongCompare, kBigEndian, Longs()); }
void BM_LongCompare_BigEndian_Reference(benchmark::State& s) {
  RunPlainSwapped<int32_t, uint32_t>(s, Longs());
}

void BM_IntCompare_Memory(benchmark::State& s) { RunSlot(s, IntCompare, kMemory, Ints()); }
void BM_IntCompare_Memory_Reference(benchmark::State& s) { RunPlain(s, Ints()); }
void BM_IntCompare_BigEndian(benchmark::State& s) { RunSlot(s, IntCompare, kBigEndian, Ints()); }
void BM_IntCompare_BigEndian_Reference(benchmark::State& s) {
  RunPlainSwapped<int, uint32_t>(s, Ints());
}

void BM_DoubleCompare_Memory(benchmark::State& s) { RunSlot(s, DoubleCompare, kMemory, Doubles()); }
void BM_DoubleCompare_Memory_Reference(benchmark::State& s) { RunPlain(s, Doubles()); }
void BM_DoubleCompare_BigEndian(benchmark::State& s) {
  RunSlot(s, DoubleCompare, kBigEndian, Doubles());
}
void BM_DoubleCompare_BigEndian_Reference(benchmark::State& s) {
  RunPlainSwapped<double, uint64_t>(s, Doubles());
}

// One key pair through the facade (fold, row, slot) beside the same slot
// called directly: the cost of dispatch per compared key.
void BM_Cmp_Dispatch(benchmark::State& state) {
  KaTypeMgr manager;
  int32_t a = 12345;
  int32_t b = 12346;
  for (auto _ : state) {
    benchmark::DoNotOptimize(manager.Cmp(Ka4B_T, &a, &b, 0, 1, 8));
    benchmark::ClobberMemory();
  }
}

void BM_Cmp_Dispatch_Reference(benchmark::State& state) {
  int32_t a = 12345;
  int32_t b = 12346;
  for (auto _ : state) {
    int error = 0;
    benchmark::DoNotOptimize(LongCompare(8, 0, &a, 0, &b, 0, 1, error));
    benchmark::ClobberMemory();
  }
}

}  // namespace

BENCHMARK(BM_Cmp_Dispatch);                       // KaTypeMgr::Cmp, count 1
BENCHMARK(BM_Cmp_Dispatch_Reference);             // LongCompare called directly
BENCHMARK(BM_LongCompare_Memory);                 // LongCompare, format 8
BENCHMARK(BM_LongCompare_Memory_Reference);       // direct int32_t loop
BENCHMARK(BM_LongCompare_BigEndian);              // LongCompare, format 2
BENCHMARK(BM_LongCompare_BigEndian_Reference);    // byte-swapping loop
BENCHMARK(BM_IntCompare_Memory);                  // IntCompare, format 8
BENCHMARK(BM_IntCompare_Memory_Reference);        // direct int loop
BENCHMARK(BM_IntCompare_BigEndian);               // IntCompare, format 2
BENCHMARK(BM_IntCompare_BigEndian_Reference);     // byte-swapping loop
BENCHMARK(BM_DoubleCompare_Memory);               // DoubleCompare, format 8
BENCHMARK(BM_DoubleCompare_Memory_Reference);     // direct double loop
BENCHMARK(BM_DoubleCompare_BigEndian);            // DoubleCompare, format 2
BENCHMARK(BM_DoubleCompare_BigEndian_Reference);  // byte-swapping loop
