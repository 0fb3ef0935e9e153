// Text comparison beside its references, each pair of benchmarks on the same
// fixed-seed strings:
//   KaStrCmp's default comparison (cmp op 16, mode 1: letters, then case,
//   diacritics not weighed) of code-set-1 text and of Unicode text, against
//   the root collator at the strength that weighs the same (primary with the
//   case level);
//   KaStrCmp matching a pattern (wildcards on) against fnmatch;
//   KaIStringCmp (letters, then lower before upper) and KaCaseIStringCmp
//   (letters only) on Latin-1 text, against the root collator at primary
//   strength with and without the case level.
// Every input is prepared before timing (the collator's UTF-16 copies too);
// nothing allocates in a timed loop.
#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <unicode/ucol.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "katypemgr/kaistring.h"
#include "katypemgr/kastrcmp.h"

namespace {

constexpr size_t kPairs = 4096;
constexpr unsigned short kExact = 16;

// Latin-1 letters of Western European text: plain letters weigh most.
const char kLatin1Letters[] =
    "abcdefghijklmnopqrstuvwxyzabcdefghijklmnoprstuetaoin"
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ\xE9\xE8\xEA\xE0\xE7\xF6\xFC\xE4"
    "\xC9\xC4\xD6\xDC\xF1";
// Unicode text: Latin with accents, Greek and Cyrillic words.
const char16_t kUnicodeLetters[] =
    u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ\u00e9\u00e8\u00e7\u00f6\u00fc"
    u"\u03b1\u03b2\u03b3\u03b4\u03b5\u03b6\u03b7\u03b8\u0391\u0392\u0393"
    u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0410\u0411\u0412";

struct Corpus {
  std::vector<std::string> bytes;     // Latin-1, zero-terminated
  std::vector<std::u16string> units;  // the same text in UTF-16, or the Unicode text
  std::vector<std::string> patterns;  // a pattern for each string (fnmatch and KaStrCmp)
};

// Pairs (2i, 2i+1): the second string often shares a prefix with the first,
// as neighbouring keys of a sorted index do, so comparisons run past the
// first character.
template <typename Char, size_t N>
std::basic_string<Char> Word(std::mt19937& rng, const Char (&alphabet)[N]) {
  std::uniform_int_distribution<size_t> len(4, 20), pick(0, N - 2);
  std::basic_string<Char> w;
  for (size_t i = len(rng); i > 0; --i) w.push_back(alphabet[pick(rng)]);
  return w;
}

template <typename Char, size_t N>
std::vector<std::basic_string<Char>> Pairs(unsigned seed, const Char (&alphabet)[N]) {
  std::mt19937 rng(seed);
  std::vector<std::basic_string<Char>> out;
  for (size_t i = 0; i < kPairs; ++i) {
    std::basic_string<Char> a = Word(rng, alphabet);
    std::basic_string<Char> b = a.substr(0, rng() % (a.size() + 1)) + Word(rng, alphabet);
    out.push_back(a);
    out.push_back(b);
  }
  return out;
}

// A pattern that the value matches about half the time: some characters
// replaced by "?", runs by "*", and now and then one character changed.
std::string PatternOf(const std::string& value, std::mt19937& rng) {
  std::string p;
  for (size_t i = 0; i < value.size(); ++i) {
    const unsigned r = rng() % 10;
    if (r == 0) {
      p.push_back('?');
    } else if (r == 1) {
      p.push_back('*');
      i += rng() % 3;
    } else {
      p.push_back(value[i]);
    }
  }
  if (rng() % 2 == 0 && !p.empty()) p[rng() % p.size()] = 'q';
  return p;
}

const Corpus& Latin1() {
  static const Corpus c = [] {
    Corpus c;
    for (const auto& w : Pairs(11, kLatin1Letters)) {
      c.bytes.push_back(w);
      std::u16string u;
      // Latin-1 is the first 256 code points (the letters drawn are the same
      // in code set 1).
      for (unsigned char ch : w) u.push_back(ch);
      c.units.push_back(u);
    }
    std::mt19937 rng(12);
    for (const auto& w : c.bytes) {
      // fnmatch's pattern language is ASCII; keep the patterns so.
      std::string ascii;
      for (char ch : w) ascii.push_back(static_cast<unsigned char>(ch) < 0x80 ? ch : 'e');
      c.patterns.push_back(PatternOf(ascii, rng));
    }
    return c;
  }();
  return c;
}

const Corpus& Unicode() {
  static const Corpus c = [] {
    Corpus c;
    c.units = Pairs(21, kUnicodeLetters);
    return c;
  }();
  return c;
}

// Values for the wildcard benchmarks: the ASCII form of the Latin-1 corpus.
const std::vector<std::string>& AsciiValues() {
  static const std::vector<std::string> v = [] {
    std::vector<std::string> out;
    for (const auto& w : Latin1().bytes) {
      std::string ascii;
      for (char ch : w) ascii.push_back(static_cast<unsigned char>(ch) < 0x80 ? ch : 'e');
      out.push_back(ascii);
    }
    return out;
  }();
  return v;
}

UCollator* Root(UColAttributeValue strength, bool caseLevel) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* c = ucol_open("", &status);
  ucol_setStrength(c, strength);
  ucol_setAttribute(c, UCOL_CASE_LEVEL, caseLevel ? UCOL_ON : UCOL_OFF, &status);
  ucol_setAttribute(c, UCOL_NORMALIZATION_MODE, UCOL_OFF, &status);
  return c;
}

template <typename Compare>
void RunPairs(benchmark::State& state, size_t n, Compare compare) {
  int sink = 0;
  for (auto _ : state) {
    for (size_t i = 0; i + 1 < n; i += 2) sink += compare(i);
    benchmark::DoNotOptimize(sink);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(n / 2));
}

// --- Default comparison -------------------------------------------------------------------

void BM_Latin1_KaStrCmp(benchmark::State& state) {
  const auto& s = Latin1().bytes;
  RunPairs(state, s.size(), [&](size_t i) {
    return KaStrCmp(1, 0, s[i].c_str(), 1, 0, s[i + 1].c_str(), kExact, -1, 1, nullptr);
  });
}
void BM_Latin1_Icu(benchmark::State& state) {
  const auto& u = Latin1().units;
  UCollator* c = Root(UCOL_PRIMARY, true);
  RunPairs(state, u.size(), [&](size_t i) {
    return static_cast<int>(ucol_strcoll(c, u[i].c_str(), static_cast<int32_t>(u[i].size()),
                                         u[i + 1].c_str(), static_cast<int32_t>(u[i + 1].size())));
  });
  ucol_close(c);
}
void BM_Unicode_KaStrCmp(benchmark::State& state) {
  const auto& u = Unicode().units;
  RunPairs(state, u.size(), [&](size_t i) {
    return KaStrCmp(253, 0, u[i].c_str(), 253, 0, u[i + 1].c_str(), kExact, -1, 1, nullptr);
  });
}
void BM_Unicode_Icu(benchmark::State& state) {
  const auto& u = Unicode().units;
  UCollator* c = Root(UCOL_PRIMARY, true);
  RunPairs(state, u.size(), [&](size_t i) {
    return static_cast<int>(ucol_strcoll(c, u[i].c_str(), static_cast<int32_t>(u[i].size()),
                                         u[i + 1].c_str(), static_cast<int32_t>(u[i + 1].size())));
  });
  ucol_close(c);
}

// The Latin-1 pairs with the second string in Unicode: text of two code sets
// (as a 1-byte column against a Unicode key). Its reference is
// BM_Latin1_Icu, on the same text.
void BM_Mixed_KaStrCmp(benchmark::State& state) {
  const auto& s = Latin1().bytes;
  const auto& u = Latin1().units;
  RunPairs(state, s.size(), [&](size_t i) {
    return KaStrCmp(1, 0, s[i].c_str(), 253, 0, u[i + 1].c_str(), kExact, -1, 1, nullptr);
  });
}

// --- Wildcard matching ----------------------------------------------------------------------

void BM_Wildcard_KaStrCmp(benchmark::State& state) {
  const auto& v = AsciiValues();
  const auto& p = Latin1().patterns;
  int sink = 0;
  for (auto _ : state) {
    for (size_t i = 0; i < v.size(); ++i) {
      sink += KaStrCmp(1, 0, v[i].c_str(), 1, 0, p[i].c_str(), 0, -1, 1, nullptr) == 0;
    }
    benchmark::DoNotOptimize(sink);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(v.size()));
}
void BM_Wildcard_Fnmatch(benchmark::State& state) {
  const auto& v = AsciiValues();
  const auto& p = Latin1().patterns;
  int sink = 0;
  for (auto _ : state) {
    for (size_t i = 0; i < v.size(); ++i) sink += fnmatch(p[i].c_str(), v[i].c_str(), 0) == 0;
    benchmark::DoNotOptimize(sink);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(v.size()));
}

// --- The case-insensitive strings -------------------------------------------------------------

void BM_IString_Fold(benchmark::State& state) {
  const auto& s = Latin1().bytes;
  RunPairs(state, s.size(),
           [&](size_t i) { return KaIStringCmp(s[i].c_str(), s[i + 1].c_str(), 0, 0, 0); });
}
void BM_IString_Icu(benchmark::State& state) {
  const auto& u = Latin1().units;
  UCollator* c = Root(UCOL_PRIMARY, true);
  RunPairs(state, u.size(), [&](size_t i) {
    return static_cast<int>(ucol_strcoll(c, u[i].c_str(), static_cast<int32_t>(u[i].size()),
                                         u[i + 1].c_str(), static_cast<int32_t>(u[i + 1].size())));
  });
  ucol_close(c);
}
void BM_CaseIString_Fold(benchmark::State& state) {
  const auto& s = Latin1().bytes;
  RunPairs(state, s.size(),
           [&](size_t i) { return KaCaseIStringCmp(s[i].c_str(), s[i + 1].c_str(), 0, 0, 0); });
}
void BM_CaseIString_Icu(benchmark::State& state) {
  const auto& u = Latin1().units;
  UCollator* c = Root(UCOL_PRIMARY, false);
  RunPairs(state, u.size(), [&](size_t i) {
    return static_cast<int>(ucol_strcoll(c, u[i].c_str(), static_cast<int32_t>(u[i].size()),
                                         u[i + 1].c_str(), static_cast<int32_t>(u[i + 1].size())));
  });
  ucol_close(c);
}

}  // namespace

BENCHMARK(BM_Latin1_KaStrCmp);
BENCHMARK(BM_Latin1_Icu);
BENCHMARK(BM_Unicode_KaStrCmp);
BENCHMARK(BM_Unicode_Icu);
BENCHMARK(BM_Mixed_KaStrCmp);
BENCHMARK(BM_Wildcard_KaStrCmp);
BENCHMARK(BM_Wildcard_Fnmatch);
BENCHMARK(BM_IString_Fold);
BENCHMARK(BM_IString_Icu);
BENCHMARK(BM_CaseIString_Fold);
BENCHMARK(BM_CaseIString_Icu);
