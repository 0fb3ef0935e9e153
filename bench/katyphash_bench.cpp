// Hashing: the o_4b Hash slot over a million values beside the plain
// xor-and-multiply loop a caller would write (memory form, and the big-endian
// stored form beside a byte-swapping loop), and HashString over the same words
// as Windows-1252 bytes and as Unicode units. Fixed-seed inputs, built before
// the timed loops.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "kabase/codec.h"
#include "katypemgr/katyphash.h"

namespace {

constexpr unsigned kCount = 1'000'000;

struct Longs {
  std::vector<uint32_t> memory;
  std::vector<unsigned char> bigEndian;
  Longs() : memory(kCount), bigEndian(kCount * 4) {
    std::mt19937 rng(7);
    for (uint32_t& v : memory) v = rng();
    LongStore(bigEndian.data(), memory.data(), 2, kCount);
  }
};
const Longs& L() {
  static const Longs l;
  return l;
}

void BM_LongHash_Slot(benchmark::State& state) {
  auto& v = const_cast<std::vector<uint32_t>&>(L().memory);
  for (auto _ : state) {
    int status = 0;
    benchmark::DoNotOptimize(LongHash(8, 0, v.data(), kCount, status));
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_LongHash_PlainLoop(benchmark::State& state) {
  const std::vector<uint32_t>& v = L().memory;
  for (auto _ : state) {
    uint32_t folded = 0;
    for (uint32_t x : v) folded ^= x;
    benchmark::DoNotOptimize(folded * kKaHashMultiplier);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_LongHash_SlotBigEndian(benchmark::State& state) {
  auto& v = const_cast<std::vector<unsigned char>&>(L().bigEndian);
  for (auto _ : state) {
    int status = 0;
    benchmark::DoNotOptimize(LongHash(2, 0, v.data(), kCount, status));
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_LongHash_PlainLoopBigEndian(benchmark::State& state) {
  const std::vector<unsigned char>& v = L().bigEndian;
  for (auto _ : state) {
    uint32_t folded = 0;
    for (size_t i = 0; i < v.size(); i += 4) {
      folded ^= ka::LoadU32(v.data() + i, ka::ByteOrder::kBig);
    }
    benchmark::DoNotOptimize(folded * kKaHashMultiplier);
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

// Words of Latin-1 letters, some with diacritics, 4 to 16 characters.
struct Words {
  std::vector<std::string> narrow;
  std::vector<std::u16string> wide;
  size_t characters = 0;
  Words() {
    std::mt19937 rng(11);
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJ\xE4\xF6\xFC\xE9\xE8\xDF";
    for (int w = 0; w < 1000; ++w) {
      std::string s;
      const unsigned n = 4 + rng() % 13;
      for (unsigned i = 0; i < n; ++i) s += letters[rng() % letters.size()];
      std::u16string u;
      for (char c : s) u += static_cast<char16_t>(static_cast<unsigned char>(c));
      narrow.push_back(s);
      wide.push_back(u);
      characters += n;
    }
  }
};
Words& W() {
  static Words w;
  return w;
}

void BM_HashString_CodeSet1(benchmark::State& state) {
  for (auto _ : state) {
    for (std::string& s : W().narrow) benchmark::DoNotOptimize(HashString(1, 0, s.data(), -1, 0));
  }
  state.SetItemsProcessed(state.iterations() * W().characters);
}

void BM_HashString_Unicode(benchmark::State& state) {
  for (auto _ : state) {
    for (std::u16string& s : W().wide) {
      benchmark::DoNotOptimize(HashString(253, 0, reinterpret_cast<char*>(s.data()), -1, 0));
    }
  }
  state.SetItemsProcessed(state.iterations() * W().characters);
}

// The byte fold of code set 0, for scale.
void BM_HashString_CodeSet0(benchmark::State& state) {
  for (auto _ : state) {
    for (std::string& s : W().narrow) benchmark::DoNotOptimize(HashString(0, 0, s.data(), -1, 0));
  }
  state.SetItemsProcessed(state.iterations() * W().characters);
}

}  // namespace

BENCHMARK(BM_LongHash_Slot);                // LongHash, memory form
BENCHMARK(BM_LongHash_PlainLoop);           // xor loop, same array
BENCHMARK(BM_LongHash_SlotBigEndian);       // LongHash, stored big-endian
BENCHMARK(BM_LongHash_PlainLoopBigEndian);  // byte-swapping xor loop, same bytes
BENCHMARK(BM_HashString_CodeSet1);
BENCHMARK(BM_HashString_Unicode);
BENCHMARK(BM_HashString_CodeSet0);
