// The module's identity: the version check against the engine's numbers and
// the self-description, including a host's patch of the description block.
#include "katypemgr/kamodule.h"

#include <gtest/gtest.h>

#include <string>

#include "kabase/version.h"

namespace {

class ModuleTest : public ::testing::Test {
 protected:
  void SetUp() override { saved_ = KaTypeMgrInfoBlock(); }
  void TearDown() override { KaTypeMgrInfoBlock() = saved_; }

 private:
  KaModuleInfoBlock saved_{};
};

struct FlagCase {
  int flags;
  const char* why;
};

TEST_F(ModuleTest, CheckDllIsCompatibleWithItsOwnEngine) {
  const FlagCase cases[] = {
      {0, "bits 1 and 2 are added"},
      {KA_VERSION_REPORT, "report only"},
      {KA_VERSION_SAME_RELEASE, "same release"},
      {KA_VERSION_SAME_BUILD, "the build numbers must match the engine's too"},
      {7, "every bit"},
      {-1, "every bit, unknown ones included"},
  };
  for (const FlagCase& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(KA_VERSION_COMPATIBLE, KaCheckDll(c.flags));
  }
}

TEST_F(ModuleTest, DescribeDllFillsEveryPointer) {
  int v[5] = {-1, -1, -1, -1, -1};
  const char* moduleName = nullptr;
  const char* dateTime = nullptr;
  const char* buildText = nullptr;
  uint32_t toolNumber = 0;
  const char* toolText = nullptr;
  const char* extra = nullptr;
  const char* banner = KaDescribeDll(&v[0], &v[1], &v[2], &v[3], &v[4], &moduleName, &dateTime,
                                     &buildText, &toolNumber, &toolText, &extra);
  EXPECT_STREQ("Quarrystore Typemanager", banner);
  int engine[5] = {};
  KaGetEngineVersion(engine);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(engine[i], v[i]) << "version number " << i;
  EXPECT_EQ(12, v[0]);
  EXPECT_EQ(155, v[3]);
  EXPECT_STREQ("QS120Ftms120", moduleName);
  EXPECT_STREQ("Feb 19 2016 05:51:48", dateTime);
  EXPECT_STREQ("unknown", buildText);
  EXPECT_EQ(1800u, toolNumber);
  ASSERT_NE(nullptr, toolText);
  // The compiler that built the library is the one building this test.
  EXPECT_NE(std::string::npos, std::string(toolText).find(__VERSION__)) << toolText;
  EXPECT_STREQ("", extra);
}

TEST_F(ModuleTest, DescribeDllSkipsNullPointers) {
  const char* dateTime = nullptr;
  EXPECT_STREQ("Quarrystore Typemanager",
               KaDescribeDll(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &dateTime,
                             nullptr, nullptr, nullptr, nullptr));
  EXPECT_STREQ("Feb 19 2016 05:51:48", dateTime);
}

TEST_F(ModuleTest, InfoWithOnlyTheDescriptionPointer) {
  const char* description = nullptr;
  GetKaTypeMgrInfo(nullptr, nullptr, &description, nullptr, nullptr);
  EXPECT_STREQ("Quarrystore Typemanager 12.0.2.155.0 ", description) << "trailing blank kept";
}

TEST_F(ModuleTest, InfoFillsEachPointerInOrder) {
  const char* toolText = nullptr;
  uint32_t toolNumber = 0;
  const char* description = nullptr;
  const char* date = nullptr;
  const char* name = nullptr;
  GetKaTypeMgrInfo(&toolText, &toolNumber, &description, &date, &name);
  ASSERT_NE(nullptr, toolText);
  EXPECT_NE(std::string::npos, std::string(toolText).find(__VERSION__)) << toolText;
  EXPECT_EQ(1800u, toolNumber);
  EXPECT_STREQ("Quarrystore Typemanager 12.0.2.155.0 ", description);
  EXPECT_STREQ("Feb 19 2016", date);
  EXPECT_STREQ("QS120Ftms120", name);
}

TEST_F(ModuleTest, AHostPatchesTheBlockBeforeAsking) {
  KaModuleInfoBlock& block = KaTypeMgrInfoBlock();
  block.banner = "Patched Banner";
  block.buildToolNumber = 1900;
  block.moduleName = "QS999";
  const char* description = nullptr;
  uint32_t toolNumber = 0;
  const char* name = nullptr;
  GetKaTypeMgrInfo(nullptr, &toolNumber, &description, nullptr, &name);
  EXPECT_STREQ("Patched Banner 12.0.2.155.0 ", description) << "rebuilt on every call";
  EXPECT_EQ(1900u, toolNumber);
  EXPECT_STREQ("QS999", name);
  const char* describedName = nullptr;
  EXPECT_STREQ("Patched Banner",
               KaDescribeDll(nullptr, nullptr, nullptr, nullptr, nullptr, &describedName, nullptr,
                             nullptr, nullptr, nullptr, nullptr));
  EXPECT_STREQ("QS999", describedName) << "both entry points tell the same story";

  const std::string longBanner(400, 'B');
  block.banner = longBanner.c_str();
  GetKaTypeMgrInfo(nullptr, nullptr, &description, nullptr, nullptr);
  EXPECT_EQ(std::string(255, 'B'), description) << "cut to the buffer";
}

}  // namespace
