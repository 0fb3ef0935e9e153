// The small services of the base library: the memory file, the assertion and
// memory-shortage hooks, and the module version check.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "kabase/assert.h"
#include "kabase/memfile.h"
#include "kabase/memory.h"
#include "kabase/version.h"

// A failed malloc must reach the memory handler instead of stopping the
// sanitizer run, so impossible requests answer null here.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

using Bytes = std::vector<unsigned char>;

const unsigned char kTen[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

Bytes Content(const MemFile& file) { return Bytes(file.Data(), file.Data() + file.Size()); }

struct SeekCase {
  size_t position, offset, length;
  int found;  // the byte the answer points at, or -1 for null
  const char* why;
};
constexpr SeekCase kSeekCases[] = {
    {4, 5, 1, 9, "last byte, offset from the position"},
    {0, 0, 11, -1, "one byte past the end"},
    {3, 0, 0, -1, "empty peek answers null"},
    {2, SIZE_MAX, 1, -1, "offset that would wrap"},
    {2, 1, SIZE_MAX, -1, "length that would wrap"},
    {2, SIZE_MAX - 1, 2, -1, "sum that would wrap"},
};

TEST(MemFile, SeekAndReadStopAtTheEnd) {
  MemFile file(kTen, sizeof kTen);
  for (const SeekCase& c : kSeekCases) {
    SCOPED_TRACE(c.why);
    ASSERT_TRUE(file.SetPosition(c.position));
    const unsigned char* p = file.Seek(c.offset, c.length);
    EXPECT_EQ(c.found, p != nullptr ? *p : -1);
    EXPECT_EQ(c.position, file.Tell()) << "a peek must not consume";
  }
  EXPECT_FALSE(file.SetPosition(11));
  ASSERT_TRUE(file.SetPosition(7));
  unsigned char out[4] = {};
  EXPECT_EQ(3u, file.Read(out, sizeof out)) << "a read stops at the end";
  EXPECT_EQ((Bytes{7, 8, 9, 0}), Bytes(out, out + 4));
  EXPECT_EQ(nullptr, MemFile(nullptr, 5).Seek(0, 1)) << "null data is an empty file";
}

TEST(MemFile, WriteOverwritesAndGrows) {
  MemFile file(kTen, 4);
  ASSERT_TRUE(file.SetPosition(2));
  const unsigned char more[] = {0xA, 0xB, 0xC, 0xD};
  EXPECT_EQ(4u, file.Write(more, sizeof more));
  EXPECT_EQ(6u, file.Tell());
  EXPECT_EQ((Bytes{0, 1, 0xA, 0xB, 0xC, 0xD}), Content(file));
  EXPECT_EQ(0u, file.Write(nullptr, 3));
  // The source lies inside the buffer that growing replaces.
  ASSERT_TRUE(file.SetPosition(4));
  EXPECT_EQ(6u, file.Write(file.Data(), 6));
  EXPECT_EQ((Bytes{0, 1, 0xA, 0xB, 0, 1, 0xA, 0xB, 0xC, 0xD}), Content(file));
}

std::vector<std::string> g_reports;
std::vector<size_t> g_shortages;
int g_handlerAnswer = 0;

class Hooks : public ::testing::Test {
 protected:
  void SetUp() override {
    g_reports.clear();
    g_shortages.clear();
    KaSetAssertReceiver([](const char* text, const char* source, int line) {
      g_reports.push_back(std::string(text) + "|" + source + "|" + std::to_string(line));
    });
    KaSetMemoryHandler([](size_t size) {
      g_shortages.push_back(size);
      return g_handlerAnswer;
    });
  }
  void TearDown() override {
    KaSetAssertReceiver(nullptr);
    KaSetMemoryHandler(nullptr);
  }
};

TEST_F(Hooks, AssertGoesToTheReceiverOrByDefaultToStandardError) {
  KAMO_assert("String overflow", "src/kastring", 1110);
  KAMO_assert(nullptr, nullptr, -1);
  EXPECT_EQ((std::vector<std::string>{"String overflow|src/kastring|1110", "(null)|(null)|-1"}),
            g_reports);
  EXPECT_NE(nullptr, KaSetAssertReceiver(nullptr)) << "answers the receiver it replaces";
  testing::internal::CaptureStderr();
  KAMO_assert("nr != unknown", "kacore/inc/_kanulty", 168);
  EXPECT_EQ("katypemgr assertion: nr != unknown (kacore/inc/_kanulty, line 168)\n",
            testing::internal::GetCapturedStderr());
}

// Under the sanitizer every failed malloc leaves one warning line, which makes
// the single retry after a non-zero answer visible.
TEST_F(Hooks, FailedMallocCallsTheHandlerAndRetriesOnlyWhenTold) {
  for (int answer : {0, 1}) {
    g_handlerAnswer = answer;
    testing::internal::CaptureStderr();
    EXPECT_EQ(nullptr, KaMalloc(SIZE_MAX / 2));
    const std::string said = testing::internal::GetCapturedStderr();
#if defined(__SANITIZE_ADDRESS__)
    EXPECT_EQ(1 + answer, std::count(said.begin(), said.end(), '\n')) << said;
#endif
  }
  EXPECT_EQ((std::vector<size_t>{SIZE_MAX / 2, SIZE_MAX / 2}), g_shortages);
  void* p = KaMalloc(16);
  EXPECT_NE(nullptr, p);
  std::free(p);
}

// The count tells an operation whether memory ran short while it ran, in its
// own thread only: another thread's shortage must not read as its own.
TEST_F(Hooks, ShortagesAreCountedPerThread) {
  const unsigned long before = KaMemoryShortageCount();
  EXPECT_EQ(nullptr, KaMalloc(SIZE_MAX / 2));
  EXPECT_EQ(before + 1, KaMemoryShortageCount());
  std::thread other([] { KaCallMemoryHandler(8); });
  other.join();
  EXPECT_EQ(before + 1, KaMemoryShortageCount());
  void* p = KaMalloc(16);
  EXPECT_EQ(before + 1, KaMemoryShortageCount()) << "a successful allocation is no shortage";
  std::free(p);
}

struct VersionCase {
  int major, minor, a, b, c, flags, answer;
  const char* why;
};
constexpr int kEngineFlags = KA_VERSION_REPORT | KA_VERSION_SAME_RELEASE;
constexpr VersionCase kVersionCases[] = {
    {12, 0, 9, 9, 9, kEngineFlags, KA_VERSION_COMPATIBLE, "same release, other build"},
    {12, 1, 2, 155, 0, kEngineFlags, KA_VERSION_MINOR_DIFFERS, "newer minor"},
    {12, 1, 2, 155, 0, 0, KA_VERSION_COMPATIBLE, "minor ignored without flag 2"},
    {11, 0, 2, 155, 0, 0, KA_VERSION_MAJOR_DIFFERS, "major always compared"},
    {12, 0, 2, 155, 1, KA_VERSION_SAME_BUILD, KA_VERSION_BUILD_DIFFERS, "strict build"},
    {12, 0, 2, 155, 0, kEngineFlags | KA_VERSION_SAME_BUILD, KA_VERSION_COMPATIBLE, "strict ok"},
};

TEST(Version, ChecksMajorMinorAndBuildByFlags) {
  for (const VersionCase& c : kVersionCases) {
    SCOPED_TRACE(c.why);
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.answer, CheckKaVersionNumber(c.major, c.minor, c.a, c.b, c.c, c.flags));
    const std::string said = testing::internal::GetCapturedStderr();
    const bool reported = c.answer != KA_VERSION_COMPATIBLE && (c.flags & KA_VERSION_REPORT);
    EXPECT_EQ(reported, !said.empty()) << said;
  }
  testing::internal::CaptureStderr();
  CheckKaVersionNumber(12, 3, 1, 2, 3, kEngineFlags);
  EXPECT_EQ(
      "katypemgr: module version 12.3.1.2.3 is not compatible with engine version "
      "12.0.2.155.0\n",
      testing::internal::GetCapturedStderr());
}

}  // namespace
