// Array codecs against the loops a caller would write by hand: a byte swap
// per element for the big-endian form, memcpy for the memory form.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "kabase/codec.h"

namespace {

constexpr unsigned int kCount = 1 << 20;

template <typename T>
std::vector<T> RandomValues() {
  std::mt19937_64 rng(20261123);
  std::vector<T> v(kCount);
  for (T& x : v) x = static_cast<T>(rng());
  return v;
}

void BM_LongStore_Big(benchmark::State& state) {
  const auto in = RandomValues<uint32_t>();
  std::vector<unsigned char> out(in.size() * 4);
  for (auto _ : state) {
    benchmark::DoNotOptimize(LongStore(out.data(), in.data(), 2, kCount));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kCount} * 4);
}

void BM_LongStore_Big_Reference(benchmark::State& state) {
  const auto in = RandomValues<uint32_t>();
  std::vector<uint32_t> out(in.size());
  for (auto _ : state) {
    for (unsigned int i = 0; i < kCount; ++i) out[i] = __builtin_bswap32(in[i]);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kCount} * 4);
}

void BM_O_8BStore_Big(benchmark::State& state) {
  const auto in = RandomValues<uint64_t>();
  std::vector<unsigned char> out(in.size() * 8);
  for (auto _ : state) {
    benchmark::DoNotOptimize(O_8BStore(out.data(), in.data(), 2, kCount));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kCount} * 8);
}

void BM_O_8BStore_Big_Reference(benchmark::State& state) {
  const auto in = RandomValues<uint64_t>();
  std::vector<uint64_t> out(in.size());
  for (auto _ : state) {
    for (unsigned int i = 0; i < kCount; ++i) out[i] = __builtin_bswap64(in[i]);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kCount} * 8);
}

void BM_DoubleStore_Memory(benchmark::State& state) {
  const auto in = RandomValues<uint64_t>();
  std::vector<unsigned char> out(in.size() * 8);
  for (auto _ : state) {
    benchmark::DoNotOptimize(DoubleStore(out.data(), in.data(), 8, kCount));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kCount} * 8);
}

void BM_DoubleStore_Memory_Reference(benchmark::State& state) {
  const auto in = RandomValues<uint64_t>();
  std::vector<unsigned char> out(in.size() * 8);
  for (auto _ : state) {
    std::memcpy(out.data(), in.data(), out.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{kCount} * 8);
}

// One stored element at a time, as the compare functions read keys.
void BM_LongStoreOne_Big(benchmark::State& state) {
  const auto in = RandomValues<uint32_t>();
  for (auto _ : state) {
    int64_t sum = 0;
    for (unsigned int i = 0; i < kCount; ++i) {
      int32_t v;
      LongStoreOne(&v, &in[i], 2);
      sum += v;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * int64_t{kCount});
}

void BM_LongStoreOne_Big_Reference(benchmark::State& state) {
  const auto in = RandomValues<uint32_t>();
  for (auto _ : state) {
    int64_t sum = 0;
    for (unsigned int i = 0; i < kCount; ++i) sum += static_cast<int32_t>(__builtin_bswap32(in[i]));
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * int64_t{kCount});
}

}  // namespace

BENCHMARK(BM_LongStore_Big);
BENCHMARK(BM_LongStore_Big_Reference);
BENCHMARK(BM_O_8BStore_Big);
BENCHMARK(BM_O_8BStore_Big_Reference);
BENCHMARK(BM_DoubleStore_Memory);
BENCHMARK(BM_DoubleStore_Memory_Reference);
BENCHMARK(BM_LongStoreOne_Big);
BENCHMARK(BM_LongStoreOne_Big_Reference);
