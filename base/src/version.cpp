// The engine's version numbers and the module compatibility check.
#include "kabase/version.h"

#include <cstdio>

namespace {

constexpr int kEngineVersion[5] = {12, 0, 2, 155, 0};

int Classify(int major, int minor, int a, int b, int c, int flags) {
  const int* e = kEngineVersion;
  if (major != e[0]) return KA_VERSION_MAJOR_DIFFERS;
  if ((flags & KA_VERSION_SAME_RELEASE) && minor != e[1]) return KA_VERSION_MINOR_DIFFERS;
  if ((flags & KA_VERSION_SAME_BUILD) && (a != e[2] || b != e[3] || c != e[4])) {
    return KA_VERSION_BUILD_DIFFERS;
  }
  return KA_VERSION_COMPATIBLE;
}

}  // namespace

int CheckKaVersionNumber(int major, int minor, int a, int b, int c, int flags) {
  const int answer = Classify(major, minor, a, b, c, flags);
  if (answer != KA_VERSION_COMPATIBLE && (flags & KA_VERSION_REPORT)) {
    const int* e = kEngineVersion;
    std::fprintf(stderr,
                 "katypemgr: module version %d.%d.%d.%d.%d is not compatible with engine "
                 "version %d.%d.%d.%d.%d\n",
                 major, minor, a, b, c, e[0], e[1], e[2], e[3], e[4]);
  }
  return answer;
}

void KaGetEngineVersion(int numbers[5]) {
  if (numbers == nullptr) return;
  for (int i = 0; i < 5; ++i) numbers[i] = kEngineVersion[i];
}
