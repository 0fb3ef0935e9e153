// The module's identity: the version check against the engine's numbers and
// the self-description, including a host's patch of the description block.
#include "katypemgr/kamodule.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "kabase/version.h"

namespace {

TEST(Module, CheckDllIsCompatibleWithItsOwnEngine) {
  const std::pair<int, const char*> cases[] = {
      {0, "report and same release are added"},
      {KA_VERSION_SAME_BUILD, "the build numbers must match the engine's too"},
      {-1, "every bit, unknown ones included"},
  };
  for (const auto& [flags, why] : cases) {
    SCOPED_TRACE(why);
    EXPECT_EQ(KA_VERSION_COMPATIBLE, KaCheckDll(flags));
  }
}

TEST(Module, DescribeDllFillsEveryPointer) {
  int v[5] = {-1, -1, -1, -1, -1};
  const char *name = nullptr, *dateTime = nullptr, *build = nullptr, *tool = nullptr;
  const char* extra = nullptr;
  uint32_t toolNumber = 0;
  EXPECT_STREQ("Quarrystore Typemanager",
               KaDescribeDll(&v[0], &v[1], &v[2], &v[3], &v[4], &name, &dateTime, &build,
                             &toolNumber, &tool, &extra));
  EXPECT_EQ((std::vector<int>{12, 0, 2, 155, 0}), std::vector<int>(v, v + 5));
  EXPECT_STREQ("QS120Ftms120", name);
  EXPECT_STREQ("Feb 19 2016 05:51:48", dateTime);
  EXPECT_STREQ("unknown", build);
  EXPECT_EQ(1800u, toolNumber);
  // The compiler's own identification, nothing added: the compiler that built
  // the library is the one building this test.
  EXPECT_STREQ(__VERSION__, tool);
  EXPECT_STREQ("", extra);
}

TEST(Module, InfoWritesOnlyThePointersGiven) {
  const char* description = nullptr;
  GetKaTypeMgrInfo(nullptr, nullptr, &description, nullptr, nullptr);
  EXPECT_STREQ("Quarrystore Typemanager 12.0.2.155.0 ", description) << "trailing blank kept";
  const char *tool = nullptr, *date = nullptr;
  GetKaTypeMgrInfo(&tool, nullptr, nullptr, &date, nullptr);
  EXPECT_STREQ(__VERSION__, tool);
  EXPECT_STREQ("Feb 19 2016", date);
}

TEST(Module, AHostPatchesTheBlockBeforeAsking) {
  KaModuleInfoBlock& block = KaTypeMgrInfoBlock();
  const KaModuleInfoBlock saved = block;
  block.banner = "Patched Banner";
  block.buildToolNumber = 1900;
  block.moduleName = "QS999";
  const char *description = nullptr, *name = nullptr, *describedName = nullptr;
  uint32_t toolNumber = 0;
  GetKaTypeMgrInfo(nullptr, &toolNumber, &description, nullptr, &name);
  EXPECT_STREQ("Patched Banner 12.0.2.155.0 ", description) << "rebuilt on every call";
  EXPECT_EQ(1900u, toolNumber);
  EXPECT_STREQ("QS999", name);
  EXPECT_STREQ("Patched Banner",
               KaDescribeDll(nullptr, nullptr, nullptr, nullptr, nullptr, &describedName, nullptr,
                             nullptr, nullptr, nullptr, nullptr));
  EXPECT_STREQ("QS999", describedName) << "both entry points tell the same story";
  const std::string longBanner(400, 'B');
  block.banner = longBanner.c_str();
  GetKaTypeMgrInfo(nullptr, nullptr, &description, nullptr, nullptr);
  EXPECT_EQ(std::string(255, 'B'), description) << "cut to the buffer";
  block = saved;
}

}  // namespace
