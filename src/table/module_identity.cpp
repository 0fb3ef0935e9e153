// The module's identity: version check and self-description.
#include <cstdio>

#include "kabase/version.h"
#include "katypemgr/kamodule.h"

namespace {

constexpr int kVersion[5] = {12, 0, 2, 155, 0};
constexpr const char* kVersionText = "12.0.2.155.0";

// The compiler's own identification string, as the compiler gives it: tools
// compare it with what they were built with.
#if defined(__VERSION__)
constexpr const char* kBuildTool = __VERSION__;
#else
constexpr const char* kBuildTool = "unknown compiler";
#endif

constexpr const char* kBuildDateTime = "Feb 19 2016 05:51:48";
constexpr const char* kBuildText = "unknown";

// Constant-initialised, so it is complete before any other file's static
// initialiser can ask for it.
constinit KaModuleInfoBlock gInfoBlock = {
    .banner = "Quarrystore Typemanager",
    .buildToolText = kBuildTool,
    .buildToolNumber = 1800,
    .moduleName = "QS120Ftms120",
    .buildDate = "Feb 19 2016",
};

// Room for a long patched banner; a longer one is cut.
char gDescription[256];

template <typename T>
void Put(T* out, T value) {
  if (out != nullptr) *out = value;
}

}  // namespace

KaModuleInfoBlock& KaTypeMgrInfoBlock() { return gInfoBlock; }

int KaCheckDll(int flags) {
  // Modules of the engine always ask for a report and the same release.
  return CheckKaVersionNumber(kVersion[0], kVersion[1], kVersion[2], kVersion[3], kVersion[4],
                              flags | KA_VERSION_REPORT | KA_VERSION_SAME_RELEASE);
}

const char* KaDescribeDll(int* major, int* minor, int* build1, int* build2, int* build3,
                          const char** moduleName, const char** buildDateTime,
                          const char** buildText, uint32_t* buildToolNumber,
                          const char** buildToolText, const char** extraText) {
  const KaModuleInfoBlock& block = gInfoBlock;
  Put(major, kVersion[0]);
  Put(minor, kVersion[1]);
  Put(build1, kVersion[2]);
  Put(build2, kVersion[3]);
  Put(build3, kVersion[4]);
  Put(moduleName, block.moduleName);
  Put(buildDateTime, kBuildDateTime);
  Put(buildText, kBuildText);
  Put(buildToolNumber, block.buildToolNumber);
  Put(buildToolText, block.buildToolText);
  Put(extraText, "");
  return block.banner;
}

void GetKaTypeMgrInfo(const char** buildToolText, uint32_t* buildToolNumber,
                      const char** description, const char** buildDate, const char** moduleName) {
  const KaModuleInfoBlock& block = gInfoBlock;
  Put(buildToolText, block.buildToolText);
  Put(buildToolNumber, block.buildToolNumber);
  if (description != nullptr) {
    std::snprintf(gDescription, sizeof gDescription, "%s %s ",
                  block.banner != nullptr ? block.banner : "", kVersionText);
    *description = gDescription;
  }
  Put(buildDate, block.buildDate);
  Put(moduleName, block.moduleName);
}
