// Growing a vector without letting std::bad_alloc out of the library: the
// base services' own helper, private to it.
#ifndef KABASE_SRC_RESERVE_H_
#define KABASE_SRC_RESERVE_H_

#include <cstddef>
#include <new>
#include <stdexcept>
#include <vector>

#include "kabase/memory.h"

namespace ka::detail {

// Reserves room for `n` elements in `v`; on failure calls the handler (one
// retry when it released memory) and answers false. Keeps std::bad_alloc
// inside the library.
template <typename T>
bool Reserve(std::vector<T>& v, size_t n) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      v.reserve(n);
      return true;
    } catch (const std::bad_alloc&) {
      if (KaCallMemoryHandler(n * sizeof(T)) == 0) return false;
    } catch (const std::length_error&) {
      KaCallMemoryHandler(n * sizeof(T));
      return false;
    }
  }
  return false;
}

}  // namespace ka::detail

#endif  // KABASE_SRC_RESERVE_H_
