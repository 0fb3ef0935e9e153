// Slot functions of the class rows that the class itself serves: arrays
// constructed, destroyed, assigned and copied through the class's own members,
// and the string row's array life and null adapters. Private to the library.
#ifndef KATYPEMGR_SRC_STRING_CLASS_SLOTS_H_
#define KATYPEMGR_SRC_STRING_CLASS_SLOTS_H_

#include <new>

#include "katypemgr/kaconvert.h"
#include "katypemgr/kastring.h"
#include "table/arrays.h"

namespace ka::detail {

// --- Class rows: construction through the class itself ------------------------------------

template <typename T>
void ConstructObjects(void* array, unsigned int count, unsigned int /*extra*/) {
  auto* p = static_cast<T*>(array);
  for (unsigned int i = 0; array != nullptr && i < count; ++i) new (p + i) T();
}

template <typename T>
void DestructObjects(void* array, unsigned int count, unsigned int /*extra*/) {
  auto* p = static_cast<T*>(array);
  for (unsigned int i = 0; array != nullptr && i < count; ++i) p[i].~T();
}

template <typename T>
void AssignObjects(void* destination, void* source, unsigned int count, int /*extra*/) {
  auto* d = static_cast<T*>(destination);
  auto* s = static_cast<T*>(source);
  for (unsigned int i = 0; d != nullptr && s != nullptr && i < count; ++i) d[i] = s[i];
}

template <typename T>
void CopyObjects(void* destination, void* source, unsigned int count, int /*extra*/) {
  auto* d = static_cast<T*>(destination);
  auto* s = static_cast<T*>(source);
  for (unsigned int i = 0; d != nullptr && s != nullptr && i < count; ++i) new (d + i) T(s[i]);
}

inline void* CreateStrings(unsigned int count) { return ka::NewStringArray(count); }

inline void* DeleteStrings(void* array, unsigned int /*count*/) {
  ka::DeleteStringArray(static_cast<KaString*>(array));
  return nullptr;
}

// No value at all reads as the null value (a missing string converts to the
// null value as well), and there is nothing to make null.
inline int StringIsNull(void* value) {
  return value == nullptr || static_cast<KaString*>(value)->IsNullValue() ? 1 : 0;
}

inline int StringSetNull(void* value) {
  if (value != nullptr) static_cast<KaString*>(value)->SetNullValue();
  return 0;
}

}  // namespace ka::detail

#endif  // KATYPEMGR_SRC_STRING_CLASS_SLOTS_H_
