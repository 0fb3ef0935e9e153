// KaString's search and append on short text beside std::string doing the
// same work on the same bytes.
#include <benchmark/benchmark.h>

#include <string>

#include "katypemgr/kastring.h"

namespace {

constexpr const char* kText = "Hauptstrasse 12, 8001 Zuerich, Schweiz; Tel. 044 123 45 67";
constexpr const char* kNeedle = "Tel.";

void BM_Find_Ka(benchmark::State& state) {
  const KaString text(kText);
  const KaString needle(kNeedle);
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the text must be read anew each time
    benchmark::DoNotOptimize(text.Find(needle));
  }
}

void BM_Find_Std(benchmark::State& state) {
  std::string text(kText);
  std::string needle(kNeedle);
  benchmark::DoNotOptimize(text.data());
  benchmark::DoNotOptimize(needle.data());
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the text must be read anew each time
    benchmark::DoNotOptimize(text.find(needle));
  }
}

void BM_FindChar_Ka(benchmark::State& state) {
  const KaString text(kText);
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the text must be read anew each time
    benchmark::DoNotOptimize(text.Find(';'));
  }
}

void BM_FindChar_Std(benchmark::State& state) {
  std::string text(kText);
  benchmark::DoNotOptimize(text.data());
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the text must be read anew each time
    benchmark::DoNotOptimize(text.find(';'));
  }
}

void BM_SubStringPos_Ka(benchmark::State& state) {
  const KaString text(kText);
  const KaString needle("8001");
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the text must be read anew each time
    benchmark::DoNotOptimize(text.SubStringPos(needle, 4));
  }
}

void BM_SubStringPos_Std(benchmark::State& state) {
  std::string text(kText);
  std::string needle("8001");
  benchmark::DoNotOptimize(text.data());
  benchmark::DoNotOptimize(needle.data());
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the text must be read anew each time
    benchmark::DoNotOptimize(text.find(needle, 4));
  }
}

// Building a short text piece by piece: each append rebuilds the buffer in
// KaString (one allocation per edit), std::string grows geometrically.
void BM_Append_Ka(benchmark::State& state) {
  for (auto _ : state) {
    KaString s("Name: ");
    s << "Muster"
      << ", " << 42 << ", " << kNeedle;
    benchmark::DoNotOptimize(s.StrGet());
  }
}

void BM_Append_Std(benchmark::State& state) {
  for (auto _ : state) {
    std::string s("Name: ");
    s.append("Muster").append(", ").append(std::to_string(42)).append(", ").append(kNeedle);
    benchmark::DoNotOptimize(s.data());
  }
}

}  // namespace

BENCHMARK(BM_Find_Ka);
BENCHMARK(BM_Find_Std);
BENCHMARK(BM_FindChar_Ka);
BENCHMARK(BM_FindChar_Std);
BENCHMARK(BM_SubStringPos_Ka);
BENCHMARK(BM_SubStringPos_Std);
BENCHMARK(BM_Append_Ka);
BENCHMARK(BM_Append_Std);
