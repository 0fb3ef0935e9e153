// The small services of the base library: the memory file, the assertion and
// memory-shortage hooks, and the module version check.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "kabase/assert.h"
#include "kabase/memfile.h"
#include "kabase/memory.h"
#include "kabase/version.h"

// A failed malloc must reach the memory handler instead of stopping the
// sanitizer run, so impossible requests answer null here.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

// --- MemFile -----------------------------------------------------------------

const unsigned char kTen[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

TEST(MemFile, SeekPeeksWithoutMoving) {
  MemFile file(kTen, sizeof kTen);
  ASSERT_TRUE(file.SetPosition(4));
  const unsigned char* p = file.Seek(0, 2);
  ASSERT_NE(nullptr, p);
  EXPECT_EQ(4, p[0]);
  EXPECT_EQ(5, p[1]);
  ASSERT_NE(nullptr, file.Seek(5, 1));
  EXPECT_EQ(9, *file.Seek(5, 1));
  EXPECT_EQ(4u, file.Tell()) << "a peek must not consume";
}

struct SeekCase {
  size_t position, offset, length;
  bool found;
  const char* why;
};
constexpr SeekCase kSeekCases[] = {
    {0, 0, 10, true, "whole file"},
    {0, 0, 11, false, "one byte past the end"},
    {10, 0, 1, false, "position at the end"},
    {9, 0, 1, true, "last byte"},
    {9, 1, 1, false, "offset past the end"},
    {3, 0, 0, false, "empty peek answers null"},
    {2, SIZE_MAX, 1, false, "offset that would wrap"},
    {2, 1, SIZE_MAX, false, "length that would wrap"},
    {2, SIZE_MAX - 1, 2, false, "sum that would wrap"},
};

TEST(MemFile, SeekPastTheEndAnswersNull) {
  MemFile file(kTen, sizeof kTen);
  for (const SeekCase& c : kSeekCases) {
    SCOPED_TRACE(c.why);
    ASSERT_TRUE(file.SetPosition(c.position));
    EXPECT_EQ(c.found, file.Seek(c.offset, c.length) != nullptr);
  }
  EXPECT_EQ(nullptr, MemFile().Seek(0, 1)) << "empty file";
}

TEST(MemFile, SetPositionRefusesPastTheEnd) {
  MemFile file(kTen, sizeof kTen);
  EXPECT_TRUE(file.SetPosition(10));
  EXPECT_FALSE(file.SetPosition(11));
  EXPECT_EQ(10u, file.Tell());
  EXPECT_EQ(0u, file.Remaining());
}

TEST(MemFile, ReadStopsAtTheEnd) {
  MemFile file(kTen, sizeof kTen);
  ASSERT_TRUE(file.SetPosition(7));
  unsigned char out[8] = {};
  EXPECT_EQ(3u, file.Read(out, sizeof out));
  EXPECT_EQ(7, out[0]);
  EXPECT_EQ(9, out[2]);
  EXPECT_EQ(0u, file.Read(out, sizeof out));
  EXPECT_EQ(0u, file.Read(nullptr, 1));
}

TEST(MemFile, WriteOverwritesAndGrows) {
  MemFile file(kTen, 4);
  ASSERT_TRUE(file.SetPosition(2));
  const unsigned char more[] = {0xA, 0xB, 0xC, 0xD};
  EXPECT_EQ(4u, file.Write(more, sizeof more));
  EXPECT_EQ(6u, file.Size());
  EXPECT_EQ(6u, file.Tell());
  EXPECT_EQ((std::vector<unsigned char>{0, 1, 0xA, 0xB, 0xC, 0xD}),
            std::vector<unsigned char>(file.Data(), file.Data() + file.Size()));
  EXPECT_EQ(0u, file.Write(nullptr, 3));
  EXPECT_EQ(0u, file.Write(more, 0));
}

TEST(MemFile, WriteFromItsOwnBufferWhileGrowing) {
  MemFile file(kTen, sizeof kTen);
  ASSERT_TRUE(file.SetPosition(8));
  // The source lies inside the buffer that growing replaces.
  EXPECT_EQ(6u, file.Write(file.Data(), 6));
  EXPECT_EQ((std::vector<unsigned char>{0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5}),
            std::vector<unsigned char>(file.Data(), file.Data() + file.Size()));
}

TEST(MemFile, NullDataMakesAnEmptyFile) {
  MemFile file(nullptr, 5);
  EXPECT_EQ(0u, file.Size());
  EXPECT_EQ(nullptr, file.Seek(0, 1));
}

// --- KAMO_assert and the memory handler ---------------------------------------

struct Report {
  std::string text, source;
  int line;
};
std::vector<Report>* g_reports = nullptr;
std::vector<size_t>* g_shortages = nullptr;
int g_handlerAnswer = 0;

class Hooks : public ::testing::Test {
 protected:
  void SetUp() override {
    g_reports = &reports_;
    g_shortages = &shortages_;
    g_handlerAnswer = 0;
    KaSetAssertReceiver([](const char* text, const char* source, int line) {
      g_reports->push_back({text, source, line});
    });
    KaSetMemoryHandler([](size_t size) {
      g_shortages->push_back(size);
      return g_handlerAnswer;
    });
  }
  void TearDown() override {
    KaSetAssertReceiver(nullptr);
    KaSetMemoryHandler(nullptr);
  }
  std::vector<Report> reports_;
  std::vector<size_t> shortages_;
};

TEST_F(Hooks, AssertReachesTheInstalledReceiverAndReturns) {
  KAMO_assert("String overflow", "src/kastring", 1110);
  KAMO_assert(nullptr, nullptr, -1);
  ASSERT_EQ(2u, reports_.size());
  EXPECT_EQ("String overflow", reports_[0].text);
  EXPECT_EQ("src/kastring", reports_[0].source);
  EXPECT_EQ(1110, reports_[0].line);
  EXPECT_EQ("(null)", reports_[1].text);
  EXPECT_EQ("(null)", reports_[1].source);
}

TEST_F(Hooks, InstallingNullRestoresTheStandardErrorReport) {
  const KaAssertReceiver mine = KaSetAssertReceiver(nullptr);
  EXPECT_NE(nullptr, mine);
  testing::internal::CaptureStderr();
  KAMO_assert("nr != unknown", "kacore/inc/_kanulty", 168);
  EXPECT_EQ("katypemgr assertion: nr != unknown (kacore/inc/_kanulty, line 168)\n",
            testing::internal::GetCapturedStderr());
  EXPECT_TRUE(reports_.empty());
}

TEST_F(Hooks, MemoryHandlerGetsTheRequestedSize) {
  g_handlerAnswer = 7;
  EXPECT_EQ(7, KaCallMemoryHandler(4096));
  EXPECT_EQ(std::vector<size_t>{4096}, shortages_);
}

TEST_F(Hooks, FailedMallocCallsTheHandlerAndRetriesOnlyWhenTold) {
  EXPECT_EQ(nullptr, KaMalloc(SIZE_MAX / 2));
  EXPECT_EQ(std::vector<size_t>{SIZE_MAX / 2}, shortages_) << "one call, no retry on 0";

  shortages_.clear();
  g_handlerAnswer = 1;
  EXPECT_EQ(nullptr, KaMalloc(SIZE_MAX / 2));
  EXPECT_EQ(std::vector<size_t>{SIZE_MAX / 2}, shortages_) << "one retry, then give up";

  void* p = KaMalloc(16);
  EXPECT_NE(nullptr, p);
  std::free(p);
}

TEST_F(Hooks, ReserveRefusesMoreThanAVectorCanHold) {
  std::vector<uint64_t> v;
  EXPECT_FALSE(ka::detail::Reserve(v, v.max_size() + 1));
  EXPECT_EQ(1u, shortages_.size());
  EXPECT_TRUE(ka::detail::Reserve(v, 8));
  EXPECT_GE(v.capacity(), 8u);
}

TEST_F(Hooks, ReserveKeepsBadAllocInsideTheLibrary) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer's operator new stops the process instead of throwing";
#else
  std::vector<uint64_t> v;
  EXPECT_FALSE(ka::detail::Reserve(v, v.max_size() / 2));
  EXPECT_EQ(1u, shortages_.size());
#endif
}

// --- Version check ------------------------------------------------------------

struct VersionCase {
  int major, minor, a, b, c, flags, answer;
  const char* why;
};
constexpr int kEngineFlags = KA_VERSION_REPORT | KA_VERSION_SAME_RELEASE;
constexpr VersionCase kVersionCases[] = {
    {12, 0, 2, 155, 0, kEngineFlags, KA_VERSION_COMPATIBLE, "identical"},
    {12, 0, 9, 9, 9, kEngineFlags, KA_VERSION_COMPATIBLE, "same release, other build"},
    {12, 1, 2, 155, 0, kEngineFlags, KA_VERSION_MINOR_DIFFERS, "newer minor"},
    {12, 1, 2, 155, 0, 0, KA_VERSION_COMPATIBLE, "minor ignored without flag 2"},
    {11, 0, 2, 155, 0, 0, KA_VERSION_MAJOR_DIFFERS, "major always compared"},
    {13, 0, 2, 155, 0, kEngineFlags, KA_VERSION_MAJOR_DIFFERS, "newer major"},
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
}

TEST(Version, ReportNamesBothVersions) {
  testing::internal::CaptureStderr();
  CheckKaVersionNumber(12, 3, 1, 2, 3, kEngineFlags);
  EXPECT_EQ(
      "katypemgr: module version 12.3.1.2.3 is not compatible with engine version "
      "12.0.2.155.0\n",
      testing::internal::GetCapturedStderr());
}

}  // namespace
