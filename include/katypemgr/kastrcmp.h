// KaStrCmp: the one routine in which every comparison of text in the library
// ends: as plain bytes, as a wildcard match (the second string is the
// pattern), or by collation orders, on two strings of possibly different code
// sets and languages. The string and character classes' comparisons and the
// string rows' Compare slots are built on it.
#ifndef KATYPEMGR_KASTRCMP_H_
#define KATYPEMGR_KASTRCMP_H_

#include "katypemgr/kaexport.h"

// Bits of the comparison options word (the cmp op).
inline constexpr unsigned short kKaCmpExact = 16;               // no wildcards
inline constexpr unsigned short kKaCmpIgnoreCase = 32;          // case field ignored
inline constexpr unsigned short kKaCmpIgnoreDiacritics = 64;    // diacritic field ignored
inline constexpr unsigned short kKaCmpRunningDifference = 128;  // through `result`
inline constexpr unsigned short kKaCmpSimple = 256;             // keys one by one, no levels
inline constexpr unsigned short kKaCmpStepFlag = 512;           // passed to the iterator

// Compares s1 with s2 (code units of their code sets; null pointers read as
// empty strings, except where the null rules below apply). Negative when s1
// sorts before s2, 0 when equal or when s1 matches the pattern s2, positive
// otherwise. `maxLength` limits the characters compared (-1 unlimited, 0
// answers 0); `mode` is 1 in every call of the string and character classes.
// With kKaCmpRunningDifference and a non-null `result`, the running
// difference is stored through it. No allocation; safe from several threads.
KATYPEMGR_API int KaStrCmp(unsigned char codeSet1, unsigned char language1, const void* s1,
                           unsigned char codeSet2, unsigned char language2, const void* s2,
                           unsigned short cmpOp, short maxLength, unsigned char mode, int* result);

#endif  // KATYPEMGR_KASTRCMP_H_
