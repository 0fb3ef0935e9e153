// Several threads at once compare and hash the same shared keys through the
// type manager and the string hashes: every thread must get the answers of a
// single thread. Meant to run under ThreadSanitizer (the tsan preset), which
// also reports any data race the calls make on the library's own state (code
// set tables built on first use, the default language context).
#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

#include "kabase/codec.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"
#include "katypemgr/katyphash.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 200;

// The shared inputs: never written once the threads start.
struct Inputs {
  std::vector<int32_t> longs{5, -7, 1 << 30, 0, -1, 42};
  std::vector<int32_t> otherLongs{5, -7, 1 << 30, 1, -1, 42};
  std::vector<double> doubles{0.5, -0.0, 1e300, 3.25};
  std::vector<double> otherDoubles{0.5, 0.0, 1e300, -3.25};
  std::vector<unsigned char> storedLongs;
  std::vector<KaString> strings;
  std::vector<char16_t> unicode{u'S', u't', u'r', 0x00DF, 0x4E2D, 0xFB01, 0};
  std::vector<unsigned char> storedString;

  Inputs() {
    storedLongs.resize(longs.size() * 4);
    LongStore(storedLongs.data(), longs.data(), 2, static_cast<unsigned>(longs.size()));
    strings.emplace_back("M\xFCller");
    strings.emplace_back(reinterpret_cast<const unsigned short*>(unicode.data()));
    strings.emplace_back("\xE6sop");
    strings.emplace_back();
    strings.back().SetNullValue();
    // "ab" in code set 1, language 3, stored big-endian.
    storedString = {0x00, 0x06, 1, 3, 'a', 'b', 0x00, 0xFF};
  }
};

// Everything one thread computes; compared field by field with the answers
// of the main thread alone.
struct Answers {
  int longOrder = 0, longOrderStored = 0, doubleOrder = 0, stringOrder = 0;
  unsigned longHash = 0, storedLongHash = 0, doubleHash = 0, stringHash = 0, storedStringHash = 0,
           textKey = 0, unicodeKey = 0, wholeHash = 0;
  bool operator==(const Answers&) const = default;
};

Answers Compute(Inputs& in, KaTypeMgr& m) {
  Answers a;
  const auto n = static_cast<unsigned>(in.longs.size());
  int error = 0;
  a.longOrder = m.Cmp(Ka4B_T, in.longs.data(), in.otherLongs.data(), 0, n, 8);
  a.longOrderStored = m.Cmp(Ka4B_T, in.storedLongs.data(), in.storedLongs.data(), 0, n, 2);
  a.doubleOrder = m.Cmp(KaDOUBLE_T, in.doubles.data(), in.otherDoubles.data(), 0,
                        static_cast<unsigned>(in.doubles.size()), 8);
  a.stringOrder = m.Cmp(KaSTRING_T, &in.strings[0], &in.strings[2], 0, 1, 8);
  a.longHash = m.Hash(Ka4B_T, 0, in.longs.data(), n, 8, error);
  a.storedLongHash = m.Hash(Ka4B_T, 0, in.storedLongs.data(), n, 2, error);
  a.doubleHash =
      m.Hash(KaDOUBLE_T, 0, in.doubles.data(), static_cast<unsigned>(in.doubles.size()), 8, error);
  a.stringHash =
      m.Hash(KaSTRING_T, 0, in.strings.data(), static_cast<unsigned>(in.strings.size()), 8, error);
  a.storedStringHash = m.Hash(KaSTRING_T, 0, in.storedString.data(), 1, 2, error);
  a.textKey = HashString(1, 0, const_cast<char*>(in.strings[0].StrGet()), -1, 0);
  a.unicodeKey = HashString(253, 20, reinterpret_cast<char*>(in.unicode.data()), -1, 0);
  a.wholeHash = HashKaString(in.strings[1]) ^ HashKaString7(in.strings[2]);
  return a;
}

TEST(Threads, SharedKeysCompareAndHashAsInOneThread) {
  Inputs in;
  KaTypeMgr m;
  // The threads start before the main thread has touched the code sets: the
  // first use of the tables happens concurrently.
  std::vector<std::vector<Answers>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int r = 0; r < kRounds; ++r) seen[t].push_back(Compute(in, m));
    });
  }
  for (std::thread& t : threads) t.join();
  const Answers alone = Compute(in, m);
  EXPECT_NE(0u, alone.stringHash);
  EXPECT_NE(0u, alone.storedStringHash);
  EXPECT_NE(0, alone.longOrder);
  for (int t = 0; t < kThreads; ++t) {
    ASSERT_EQ(static_cast<size_t>(kRounds), seen[t].size());
    for (const Answers& a : seen[t]) ASSERT_TRUE(a == alone) << "thread " << t;
  }
}

}  // namespace
