// Collation order lookup per character, for Windows-1252 bytes and for
// Unicode units, beside a flat lookup table as the reference (the fastest a
// table can be: one load per character).
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "kai18n/codeset.h"

namespace {

constexpr size_t kChars = 1 << 20;

// Mostly Latin text with accents, spaces and digits; fixed seed.
std::vector<unsigned short> ByteText() {
  std::mt19937 rng(1252);
  const unsigned char pool[] =
      "abcdefghijklmnopqrstuvwxyz ABCDEFGHIJ 0123456789 \xE4\xF6\xFC\xDF\xE9\xE8\xE7";
  std::uniform_int_distribution<size_t> pick(0, sizeof pool - 2);
  std::vector<unsigned short> text(kChars);
  for (auto& c : text) c = pool[pick(rng)];
  return text;
}

// Latin, Greek, Cyrillic and ideographs; fixed seed.
std::vector<unsigned short> UnicodeText() {
  std::mt19937 rng(253);
  std::uniform_int_distribution<int> script(0, 3), offset(0, 60);
  const unsigned short starts[] = {0x0041, 0x0391, 0x0410, 0x4E00};
  std::vector<unsigned short> text(kChars);
  for (auto& c : text) c = static_cast<unsigned short>(starts[script(rng)] + offset(rng));
  return text;
}

template <typename Lookup>
void RunOrders(benchmark::State& state, const std::vector<unsigned short>& text, Lookup lookup) {
  for (auto _ : state) {
    unsigned sum = 0;
    for (unsigned short c : text) sum += lookup(c);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void BM_Order_CodeSet1(benchmark::State& state) {
  const KaCodeSet* set = KaCodeSet::Get(1);
  RunOrders(state, ByteText(), [set](unsigned short c) { return set->GetOrder(c); });
}

void BM_Order_CodeSet1_Reference(benchmark::State& state) {
  std::vector<unsigned short> flat(256);
  for (unsigned c = 0; c < 256; ++c) flat[c] = KaCodeSet::Get(1)->GetOrder(c);
  RunOrders(state, ByteText(), [&flat](unsigned short c) { return flat[c & 0xFF]; });
}

void BM_Order_Unicode(benchmark::State& state) {
  const KaCodeSet* set = KaCodeSet::Get(253);
  RunOrders(state, UnicodeText(), [set](unsigned short c) { return set->GetOrder(c); });
}

void BM_Order_Unicode_Reference(benchmark::State& state) {
  std::vector<unsigned short> flat(65536);
  for (unsigned c = 0; c < 65536; ++c) flat[c] = KaCodeSet::Get(253)->GetOrder(c);
  RunOrders(state, UnicodeText(), [&flat](unsigned short c) { return flat[c]; });
}

// The whole property record (order, case mappings, expansions).
void BM_UnicodeProps_CodeSet1(benchmark::State& state) {
  const KaCodeSet* set = KaCodeSet::Get(1);
  RunOrders(state, ByteText(),
            [set](unsigned short c) { return set->GetUnicodeProps(c, 0).order; });
}

void BM_UnicodeProps_Unicode(benchmark::State& state) {
  const KaCodeSet* set = KaCodeSet::Get(253);
  RunOrders(state, UnicodeText(),
            [set](unsigned short c) { return set->GetUnicodeProps(c, 0).order; });
}

}  // namespace

BENCHMARK(BM_Order_CodeSet1);
BENCHMARK(BM_Order_CodeSet1_Reference);
BENCHMARK(BM_Order_Unicode);
BENCHMARK(BM_Order_Unicode_Reference);
BENCHMARK(BM_UnicodeProps_CodeSet1);
BENCHMARK(BM_UnicodeProps_Unicode);
