// The engine's assertion routine.
//
// KAMO_assert reports an internal inconsistency (a broken invariant, an
// operation that cannot be carried out as asked) and returns: the caller then
// goes on with its documented fallback. By default the report is one line on
// standard error:
//   katypemgr assertion: <text> (<source>, line <line>)
// A host, and a test, can install a receiver that gets the three values
// instead. Receivers may be called from any thread that reports.
#ifndef KABASE_ASSERT_H_
#define KABASE_ASSERT_H_

#include "kabase/export.h"

using KaAssertReceiver = void (*)(const char* text, const char* source, int line);

// Reports `text` from `source`, `line`. Null texts are reported as "(null)".
KABASE_API void KAMO_assert(const char* text, const char* source, int line);

// Installs `receiver` (null restores the standard-error report) and answers the
// previous one.
KABASE_API KaAssertReceiver KaSetAssertReceiver(KaAssertReceiver receiver);

#endif  // KABASE_ASSERT_H_
