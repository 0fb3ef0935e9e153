// Version check between the engine's separately built modules.
//
// Every module is built for one engine release, numbered major.minor.a.b.c
// (12.0.2.155.0 for this release). Before the engine uses a module it asks
// CheckKaVersionNumber whether the module's numbers are compatible with the
// engine's, which are the numbers of this base services library.
//
// Flag bits:
//   KA_VERSION_REPORT (1)        describe an incompatibility on standard error;
//   KA_VERSION_SAME_RELEASE (2)  the minor numbers must be equal as well (without
//                                it only the major numbers are compared);
//   KA_VERSION_SAME_BUILD (4)    the three build numbers a.b.c must be equal too.
// Major numbers are always compared. Modules of the engine check with bits 1
// and 2 set, so the same major and minor number is compatible.
#ifndef KABASE_VERSION_H_
#define KABASE_VERSION_H_

#include "kabase/export.h"

inline constexpr int KA_VERSION_REPORT = 1;
inline constexpr int KA_VERSION_SAME_RELEASE = 2;
inline constexpr int KA_VERSION_SAME_BUILD = 4;

// Answers of CheckKaVersionNumber.
inline constexpr int KA_VERSION_COMPATIBLE = 0;
inline constexpr int KA_VERSION_MAJOR_DIFFERS = -1;
inline constexpr int KA_VERSION_MINOR_DIFFERS = -2;
inline constexpr int KA_VERSION_BUILD_DIFFERS = -3;

// KA_VERSION_COMPATIBLE, or the first check that failed.
KABASE_API int CheckKaVersionNumber(int major, int minor, int a, int b, int c, int flags);

// The engine's own numbers as this library was built with them; `numbers`
// receives five ints.
KABASE_API void KaGetEngineVersion(int numbers[5]);

#endif  // KABASE_VERSION_H_
