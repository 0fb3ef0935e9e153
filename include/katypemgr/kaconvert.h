// KaTypeConvertData: the holder of the string array that a row's ConvertTo
// slot makes and its ConvertFrom slot reads, and the allocation of string
// arrays that every row shares (the string row's Create and Delete use it too).
#ifndef KATYPEMGR_KACONVERT_H_
#define KATYPEMGR_KACONVERT_H_

class KaString;
class KaTypeMgr;

class KaTypeConvertData {
 public:
  // A new holder of `count` elements of type `id` at `data`; null when memory
  // is short.
  static KaTypeConvertData* Make(signed char id, unsigned int count, void* data,
                                 KaTypeMgr* manager);
  // With both manager and data set, deletes the array through the Delete slot
  // of its type; always leaves count 0 and type id 100 (empty).
  ~KaTypeConvertData();
  KaTypeConvertData(const KaTypeConvertData&) = delete;
  KaTypeConvertData& operator=(const KaTypeConvertData&) = delete;

  // The element at `index` of a string array (type id 11), else null.
  KaString* GetString(int index);

  KaTypeMgr* manager = nullptr;
  void* data = nullptr;
  int count = 0;
  signed char typeId = 100;

 private:
  KaTypeConvertData() = default;
};

#include <cstddef>
#include <new>

#include "kabase/memory.h"

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

#endif  // KATYPEMGR_KACONVERT_H_
