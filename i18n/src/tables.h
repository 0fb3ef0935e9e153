// The generated character tables and the record types they are written in.
// Private to the library: code outside reads them through KaCodeSet.
#ifndef KAI18N_SRC_TABLES_H_
#define KAI18N_SRC_TABLES_H_

#include "kai18n/codeset.h"

namespace ka::i18n::tables {

struct FromUnicodePair {
  unsigned short character;
  unsigned char byte;
};

struct Special {
  unsigned short character;
  KaWCharList orders;  // the orders after the first
  KaCaseExpansion cases;
};

struct CodeSetTable {
  unsigned char number;
  const char* name;
  const unsigned short* toUnicode;
  const FromUnicodePair* fromUnicode;
  unsigned short fromUnicodeCount;
};

}  // namespace ka::i18n::tables

#include "ka_unicode.inc"
// The code set tables refer to the Unicode ones, so they come second.
#include "ka_codesets.inc"

#endif  // KAI18N_SRC_TABLES_H_
