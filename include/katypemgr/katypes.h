// Type identifiers and the descriptor row: the per-type operations through
// which the engine reaches every value type without knowing it.
//
// A type identifier is a signed byte. 0..46 index the descriptor table; 100
// and above fold to min(id - 54, 46), the "illegal" row 46; 47..99 are no
// types (KaTypeMgr::IsValidType tells).
#ifndef KATYPEMGR_KATYPES_H_
#define KATYPEMGR_KATYPES_H_

#include <cstdint>

class KaString;
class KaTypeConvertData;
class MemFile;

// Status values shared by the slot functions.
inline constexpr int kKaArrayBoundExceeded = 2101;
inline constexpr int kKaNotSupported = -2999;
inline constexpr int kKaNoNextValue = 2091;

// A pair of stored key images bounding an index scan. The key buffers come
// from malloc and belong to the record's user.
struct KaIdxBounds {
  unsigned char* lower = nullptr;
  unsigned char* upper = nullptr;
  unsigned char lowerLength = 0;
  unsigned char upperLength = 0;
};

// Operator flags of EvalAndBound.
inline constexpr unsigned short kKaOpEqual = 0x1;
inline constexpr unsigned short kKaOpLess = 0x2;
inline constexpr unsigned short kKaOpGreater = 0x4;
inline constexpr unsigned short kKaOpWildcard = 0x8;

// The slot signatures.
using KaCreateFunc = void* (*)(unsigned int count);
using KaDeleteFunc = void* (*)(void* array, unsigned int count);
using KaStoreFunc = unsigned int (*)(void* destination, const void* source, unsigned char format,
                                     unsigned int count);
using KaNullSizeFunc = unsigned int (*)(unsigned int count);
using KaSizeFunc = unsigned int (*)(const void* data, unsigned char kind, unsigned char format,
                                    unsigned int count);
using KaMemFileSizeFunc = unsigned int (*)(MemFile* file, unsigned char format, unsigned int count);
using KaCompareFunc = int (*)(unsigned char format, unsigned int length1, void* values1,
                              unsigned int length2, void* values2, unsigned short option,
                              unsigned int count, int& error);
// `range`: the index's lowest and highest key (read only, may be null);
// `bounds`: the record to fill (may be null).
using KaEvalFunc = float (*)(KaIdxBounds* range, unsigned short& flags, void* value,
                             unsigned char format, unsigned int count, KaIdxBounds* bounds);
using KaHashFunc = unsigned int (*)(unsigned char format, unsigned int length, void* values,
                                    unsigned int count, int& error);
using KaConvertToFunc = KaTypeConvertData* (*)(void* values, unsigned int count);
using KaConvertFromFunc = void* (*)(KaTypeConvertData* strings, unsigned int count);
using KaConstructFunc = void (*)(void* array, unsigned int count, unsigned int extra);
using KaAssignFunc = void (*)(void* destination, void* source, unsigned int count, int extra);
using KaTranslateFunc = unsigned int (*)(void* destination, unsigned char destinationFormat,
                                         unsigned int destinationLength, void* source,
                                         unsigned char sourceFormat, unsigned int sourceLength,
                                         unsigned int count);
using KaIsNullFunc = int (*)(void* value);
using KaPrintFunc = KaString& (*)(KaString& out, void* values, const char* format,
                                  unsigned int count);
using KaScanFunc = void* (*)(void* values, KaString& text, const char* format, unsigned int count);
using KaDefaultValueFunc = void* (*)(unsigned int count, int asNull);
using KaNextValueFunc = int (*)(void* value, unsigned int extra, char format, char mode);

// Size word: memory length of one element in the low 16 bits, and the bit
// that says the stored length is fixed.
inline constexpr uint32_t kKaFixedSize = 0x10000;

// One row of the descriptor table: 28 pointer-sized fields, in this order.
struct KaTypeDescriptor {
  const char* name;        // exchange name ("o_4b"), searched by Name2KaTypeId
  const char* typeIdName;  // symbolic name ("Ka4B_T")
  KaCreateFunc create;
  KaDeleteFunc del;
  KaStoreFunc store;
  KaStoreFunc load;
  KaNullSizeFunc nullSizeGet;
  KaSizeFunc sizeGet;
  KaMemFileSizeFunc sizeGetFromMemFile;
  KaCompareFunc compare;
  KaEvalFunc evalAndBound;
  KaHashFunc hash;
  KaConvertToFunc convertTo;
  KaConvertFromFunc convertFrom;
  KaConstructFunc constructor;
  KaConstructFunc destructor;
  KaAssignFunc assignment;
  KaAssignFunc copy;
  KaTranslateFunc translate;
  KaIsNullFunc isNull;
  KaIsNullFunc setNull;  // null: the type has no null value
  const char* printFormat;
  KaPrintFunc printToString;
  KaScanFunc scanFromString;
  uintptr_t sizeWord;  // pointer-sized, like every field
  KaDefaultValueFunc defaultValue;
  KaNextValueFunc nextValue;
  void* reserved;  // always null
};
static_assert(sizeof(KaTypeDescriptor) == 28 * sizeof(void*));

// Type identifiers.
enum : signed char {
  Ka1B_T = 0,
  Ka2B_T = 1,
  Ka4B_T = 2,
  KaDOUBLE_T = 3,
  KaFLOAT_T = 4,
  KaU2B_T = 5,
  KaU4B_T = 6,
  KaINT_T = 7,
  KaUNSIGNED_T = 8,
  KaENUM_T = 9,
  KaU1B_T = 10,
  KaSTRING_T = 11,
  KaDATE_T = 12,
  KaTIME_T = 13,
  KaBLOCKID_T = 14,
  KaOBJID_T = 15,
  KaCLID_T = 16,
  KaREF_T = 17,
  KaBLOB_T = 18,
  KaDATIME_T = 19,
  KaISTRING_T = 20,
  KaCASEISTRING_T = 21,
  D_DATE_T = 22,
  D_TIME_T = 23,
  D_TIMESTAMP_T = 24,
  D_INTERVAL_T = 25,
  KaINT64_T = 26,
  KaBOOLEAN_T = 27,
  KaNULL_1B_T = 28,
  KaNULL_U1B_T = 29,
  KaNULL_2B_T = 30,
  KaNULL_U2B_T = 31,
  KaNULL_INT_T = 32,
  KaNULL_UNSIGNED_T = 33,
  KaNULL_4B_T = 34,
  KaNULL_U4B_T = 35,
  KaNULL_FLOAT_T = 36,
  KaNULL_DOUBLE_T = 37,
  KaNULL_KAINT64_T = 38,
  KaSEAL_T = 39,
  KaDATIME_N_T = 40,
  KaTIMESPAN_T = 41,
  Ka8B_T = 42,
  KaU8B_T = 43,
  KaNULL_8B_T = 44,
  KaNULL_U8B_T = 45,
  KaRES_T = 46,
};

inline constexpr int kKaTypeCount = 47;
inline constexpr signed char kKaEmptyConvertData = 100;  // 'd'

// The row index of a type identifier: the id itself below 100, else
// min(id - 54, 46). Not range-checked: 47..99 must not be passed.
constexpr int KaFoldTypeId(signed char id) {
  return id >= 100 ? (id - 54 < 46 ? id - 54 : 46) : id;
}

#endif  // KATYPEMGR_KATYPES_H_
