// The memory-shortage handler.
//
// Code of the engine that cannot get heap memory calls KaCallMemoryHandler with
// the size it asked for. The installed handler may release memory (caches, say)
// and answer non-zero, in which case the caller tries the allocation once more;
// an answer of 0 means the caller gives up and reports failure through its own
// return value. The default handler writes one line to standard error and
// answers 0. No exception leaves this library on a failed allocation.
#ifndef KABASE_MEMORY_H_
#define KABASE_MEMORY_H_

#include <cstddef>
#include <new>
#include <stdexcept>
#include <vector>

#include "kabase/export.h"

using KaMemoryHandler = int (*)(size_t size);

// Calls the installed handler with the size that could not be allocated and
// answers what it answers.
KABASE_API int KaCallMemoryHandler(size_t size);

// Installs `handler` (null restores the default) and answers the previous one.
// Safe to call while other threads allocate.
KABASE_API KaMemoryHandler KaSetMemoryHandler(KaMemoryHandler handler);

// How many times KaCallMemoryHandler has been called in the calling thread.
// An operation whose parts give no sign of a failed allocation (an edit of a
// string that could not grow leaves it as it was) compares the count before
// and after to learn whether it ran short.
KABASE_API unsigned long KaMemoryShortageCount();

// malloc that goes through the handler on failure: one retry when the handler
// answers non-zero. Null when memory stays short. Release with std::free.
KABASE_API void* KaMalloc(size_t size);

#endif  // KABASE_MEMORY_H_
