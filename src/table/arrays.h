// How every row allocates its arrays, and the string arrays that every row's
// conversion shares. Private to the library.
#ifndef KATYPEMGR_SRC_TABLE_ARRAYS_H_
#define KATYPEMGR_SRC_TABLE_ARRAYS_H_

#include <cstddef>
#include <new>

#include "kabase/memory.h"

class KaString;

namespace ka {

// An array of `count` value-initialised elements, allocated the way every
// row's Create allocates (so the row's Delete, delete[], frees it); on
// failure the memory handler is asked once whether to retry. Null when
// memory stays short.
template <typename T>
T* NewArray(unsigned int count) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (T* array = new (std::nothrow) T[count]()) return array;
    if (KaCallMemoryHandler(size_t{count} * sizeof(T)) == 0) break;
  }
  return nullptr;
}

// An array of `count` empty strings (null when memory is short), and its
// release; the pair behind the string row's Create and Delete.
KaString* NewStringArray(unsigned int count);
void DeleteStringArray(KaString* array);

}  // namespace ka

#endif  // KATYPEMGR_SRC_TABLE_ARRAYS_H_
