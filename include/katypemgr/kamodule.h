// The module's identity: the version check that the engine makes before it
// uses this library, and the self-description that tools list.
//
// This module belongs to engine release 12.0.2.155.0. Its description:
//   banner              "Quarrystore Typemanager"
//   module name         "QS120Ftms120"
//   build tool          the compiler's own identification string, as its
//                       __VERSION__ gives it ("12.2.0"), number 1800
//   build date          "Feb 19 2016", with time "Feb 19 2016 05:51:48"
//   further build text  "unknown"
// The banner, build tool text and number, module name and build date live in
// a writable block (KaTypeMgrInfoBlock) that GetKaTypeMgrInfo and
// KaDescribeDll read, so a host may patch it before asking. Patching and
// asking are not synchronised: callers do it at start-up.
#ifndef KATYPEMGR_KAMODULE_H_
#define KATYPEMGR_KAMODULE_H_

#include <cstdint>

#include "katypemgr/kaexport.h"

// The writable description block, in its fixed order.
struct KaModuleInfoBlock {
  const char* banner;
  const char* buildToolText;
  uint32_t buildToolNumber;
  const char* moduleName;
  const char* buildDate;
};

// The process-wide block; changes hold for every later question.
KATYPEMGR_API KaModuleInfoBlock& KaTypeMgrInfoBlock();

// The base services library's CheckKaVersionNumber for this module's
// numbers, with the flag bits 1 (report) and 2 (same release) always added
// to `flags`; its answer unchanged (0 when compatible).
KATYPEMGR_API int KaCheckDll(int flags);

// Fills, in argument order, the five version numbers, the module name, the
// build date and time, the further build text, the build tool number, the
// build tool text and an empty text; answers the banner. Null pointers are
// skipped. The texts are the library's own and live for the whole process.
KATYPEMGR_API const char* KaDescribeDll(int* major, int* minor, int* build1, int* build2,
                                        int* build3, const char** moduleName,
                                        const char** buildDateTime, const char** buildText,
                                        uint32_t* buildToolNumber, const char** buildToolText,
                                        const char** extraText);

// Writes the non-null ones of: the build tool text, the build tool number, a
// description ("<banner> 12.0.2.155.0 ", trailing blank included), the build
// date and the module name. The description is rebuilt in one static buffer
// of the library on each call with a non-null `description` (a banner longer
// than the buffer is cut); it stays valid until the next such call.
KATYPEMGR_API void GetKaTypeMgrInfo(const char** buildToolText, uint32_t* buildToolNumber,
                                    const char** description, const char** buildDate,
                                    const char** moduleName);

#endif  // KATYPEMGR_KAMODULE_H_
