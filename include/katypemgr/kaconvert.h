// KaTypeConvertData: the holder of the string array that a row's ConvertTo
// slot makes and its ConvertFrom slot reads.
#ifndef KATYPEMGR_KACONVERT_H_
#define KATYPEMGR_KACONVERT_H_

#include "katypemgr/kaexport.h"

class KaString;
class KaTypeMgr;

class KATYPEMGR_API KaTypeConvertData {
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

#endif  // KATYPEMGR_KACONVERT_H_
