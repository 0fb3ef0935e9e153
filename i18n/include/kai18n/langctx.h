// The language context: the process-wide defaults of code set, language and
// comparison options, and what the library knows of code sets and languages.
//
// Initial values:
//   default code set 1, default 8-bit code set 1, default 16-bit code set 253,
//   native code set 1, default language 0 (neutral), default comparison
//   options 16 (exact comparison at all levels: no wildcards, case and
//   diacritics count, so equality of strings is not a pattern match).
// Reads and writes are atomic; callers still set the defaults at start-up,
// since values read before a change and after it may differ.
//
// Languages: 0 neutral, 1..19 alphabetic languages, 20 Japanese, 21 Chinese,
// 22 Korean. 254 is not a language but the mark of a null string, and 255 in
// an argument means "the default language".
#ifndef KAI18N_LANGCTX_H_
#define KAI18N_LANGCTX_H_

#include "kai18n/export.h"

class KAI18N_API KaLanguageContext {
 public:
  static unsigned char GetDefaultCodeSet();
  static unsigned char GetDefault8BitCodeSet();
  static unsigned char GetDefault16BitCodeSet();
  static unsigned char GetNativeCodeSet();
  static unsigned char GetDefaultLanguage();
  static unsigned short GetDefaultCmpOp();

  // Setters answer false, and change nothing, for a code set the library does
  // not know or one of the wrong unit width (8-bit and native: a 1-byte set;
  // 16-bit: a 2-byte set; the default code set: any known set but 0 and 254),
  // and for an unknown language.
  static bool SetDefaultCodeSet(unsigned char codeSet);
  static bool SetDefault8BitCodeSet(unsigned char codeSet);
  static bool SetDefault16BitCodeSet(unsigned char codeSet);
  static bool SetNativeCodeSet(unsigned char codeSet);
  static bool SetDefaultLanguage(unsigned char language);
  static void SetDefaultCmpOp(unsigned short cmpOp);

  // Code sets: known to this library; unit width by number (1 for 0..224, 2
  // for 225..255, known or not); name ("Windows-1252"), or null when unknown.
  static bool IsCodeSetKnown(unsigned char codeSet);
  static unsigned char GetCodeSetUnitWidth(unsigned char codeSet);
  static const char* GetCodeSetName(unsigned char codeSet);

  // Languages: known; name ("German"), or null when unknown; ideographic
  // (the low seven bits are 20 or more, as the order descriptions treat them).
  static bool IsLanguageKnown(unsigned char language);
  static const char* GetLanguageName(unsigned char language);
  static bool IsIdeographicLanguage(unsigned char language);

  // Back to the initial values.
  static void Reset();
};

// Start (non-zero) or end (0) of the library's use by a module. Starting
// needs nothing (the tables are constant data) and leaves the defaults as they
// are; ending resets them to their initial values. Answers 0.
KAI18N_API int ___KaI18NContext(int start);

#endif  // KAI18N_LANGCTX_H_
