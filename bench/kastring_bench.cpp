// KaString's search and edits on short text beside std::string doing the
// same work on the same bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
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

// Building a short text piece by piece: both grow their buffers
// geometrically, so most appends copy only the new text.
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

// Filling in an address: three insertions into a text that starts too short
// for the result.
void BM_Insert_Ka(benchmark::State& state) {
  const KaString zip("8001 ");
  const KaString country(", Schweiz");
  const KaString phone("; Tel. 044 123 45 67");
  for (auto _ : state) {
    KaString s("Hauptstrasse 12, Zuerich");
    s.Insert(zip, 17);
    s.Insert(country, 29);
    s.Insert(phone, 38);
    benchmark::DoNotOptimize(s.StrGet());
  }
}

void BM_Insert_Std(benchmark::State& state) {
  const std::string zip("8001 ");
  const std::string country(", Schweiz");
  const std::string phone("; Tel. 044 123 45 67");
  for (auto _ : state) {
    std::string s("Hauptstrasse 12, Zuerich");
    s.insert(17, zip);
    s.insert(29, country);
    s.insert(38, phone);
    benchmark::DoNotOptimize(s.data());
  }
}

// Overwriting runs in place, the last one past the end (which grows the text).
void BM_Replace_Ka(benchmark::State& state) {
  const KaString street("Bahnhof");
  const KaString zip("8002");
  const KaString tail("67 (Zentrale)");
  for (auto _ : state) {
    KaString s(kText);
    s.Replace(street, 0);
    s.Replace(zip, 17);
    s.Replace(tail, 56);
    benchmark::DoNotOptimize(s.StrGet());
  }
}

void BM_Replace_Std(benchmark::State& state) {
  const std::string street("Bahnhof");
  const std::string zip("8002");
  const std::string tail("67 (Zentrale)");
  for (auto _ : state) {
    std::string s(kText);
    s.replace(0, street.size(), street);
    s.replace(17, zip.size(), zip);
    s.replace(56, std::min(tail.size(), s.size() - 56), tail);
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
BENCHMARK(BM_Insert_Ka);
BENCHMARK(BM_Insert_Std);
BENCHMARK(BM_Replace_Ka);
BENCHMARK(BM_Replace_Std);
