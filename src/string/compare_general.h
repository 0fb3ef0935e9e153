// The general collating walk of KaStrCmp, for tests that check the table walk
// and the identical-prefix skip against it.
#ifndef KATYPEMGR_SRC_STRING_COMPARE_GENERAL_H_
#define KATYPEMGR_SRC_STRING_COMPARE_GENERAL_H_

namespace ka::detail {

// KaStrCmp with every character read through KaStringIterator on both sides:
// no per-code-set table, no identical-prefix skip. Same arguments and answers.
int KaStrCmpGeneral(unsigned char codeSet1, unsigned char language1, const void* s1,
                    unsigned char codeSet2, unsigned char language2, const void* s2,
                    unsigned short cmpOp, short maxLength, unsigned char mode, int* result);

}  // namespace ka::detail

#endif  // KATYPEMGR_SRC_STRING_COMPARE_GENERAL_H_
