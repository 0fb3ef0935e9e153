// Slot functions of the primitive rows that are not compare, hash, bound or
// text functions: array life, stored sizes from a memory file, translation
// between forms, stepping for index ranges and default values. Templates over
// the element type, instantiated by the descriptor table; private to the
// library.
#ifndef KATYPEMGR_SRC_PRIMITIVE_SCALAR_SLOTS_H_
#define KATYPEMGR_SRC_PRIMITIVE_SCALAR_SLOTS_H_

#include <cmath>
#include <cstring>
#include <limits>

#include "kabase/memfile.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"
#include "table/arrays.h"

namespace ka::detail {

// --- Array life ---------------------------------------------------------------------

template <typename T>
void* CreateArray(unsigned int count) {
  return ka::NewArray<T>(count);
}

template <typename T>
void* DeleteArray(void* array, unsigned int /*count*/) {
  delete[] static_cast<T*>(array);
  return nullptr;
}

// Construction and copying of scalars depend on the width alone, so the
// signed and unsigned rows of one width share one function (as the table
// says they do, and as callers comparing slot entries see).

// Scalars are constructed as 0, so a new element has a defined value.
template <size_t Width>
void ConstructScalars(void* array, unsigned int count, unsigned int /*extra*/) {
  if (array != nullptr && count > 0) std::memset(array, 0, size_t{count} * Width);
}

inline void DestructScalars(void*, unsigned int, unsigned int) {}

template <size_t Width>
void CopyScalars(void* destination, void* source, unsigned int count, int /*extra*/) {
  if (destination != nullptr && source != nullptr && count > 0) {
    std::memmove(destination, source, size_t{count} * Width);
  }
}

inline int NeverNull(void*) { return 0; }

// --- Stored sizes from a memory file -------------------------------------------------------

// A fixed-width element has the same size wherever it lies, so the size of
// `count` stored elements needs no look at the file.
template <KaSizeFunc Size>
unsigned int SizeFromMemFile(MemFile* /*file*/, unsigned char format, unsigned int count) {
  return Size(nullptr, 8, format, count);
}

// --- Translation ---------------------------------------------------------------------

// Between memory and stored form through the base codecs; stored to stored is
// a byte copy (no byte-order change even when the nibbles differ), fitted to
// the destination with zero fill. Source and destination may overlap (the
// codecs allow a translation within one buffer), so the bytes are moved
// before the tail after them is filled.
template <KaStoreFunc ToStored, KaStoreFunc ToMemory, unsigned int Width, int Tag = 0>
unsigned int TranslateScalars(void* destination, unsigned char destinationFormat,
                              unsigned int destinationLength, void* source,
                              unsigned char sourceFormat, unsigned int sourceLength,
                              unsigned int count) {
  const bool destinationInMemory = (destinationFormat & 0x08) != 0;
  const bool sourceInMemory = (sourceFormat & 0x08) != 0;
  if (!destinationInMemory) {
    if (sourceInMemory) return ToStored(destination, source, destinationFormat & 0x0F, count);
    if (destination == nullptr || source == nullptr) return 0;
    if (sourceLength > destinationLength) {
      std::memmove(destination, source, destinationLength);
      return destinationLength;
    }
    std::memmove(destination, source, sourceLength);
    std::memset(static_cast<unsigned char*>(destination) + sourceLength, 0,
                destinationLength - sourceLength);
    return sourceLength;
  }
  // The whole source format byte goes to the loader here, on purpose.
  if (!sourceInMemory) return ToMemory(destination, source, sourceFormat, count);
  if (destination == nullptr || source == nullptr || count == 0) return 0;
  std::memmove(destination, source, size_t{count} * Width);
  return count * Width;
}

// --- Stepping for index ranges ----------------------------------------------------------

template <typename T>
int StepInteger(void* value, unsigned int /*extra*/, char format, char mode) {
  if (format != 8 || value == nullptr) return kKaNotSupported;
  T v;
  std::memcpy(&v, value, sizeof v);
  switch (mode) {
    case 2:
      v = std::numeric_limits<T>::min();
      break;
    case 'O':
      return 0;
    case 'M':
    case 'N':
      if (v == std::numeric_limits<T>::max()) return kKaNoNextValue;
      ++v;
      break;
    default:
      return kKaNotSupported;
  }
  std::memcpy(value, &v, sizeof v);
  return 0;
}

// Floating values step to the next representable value upward; there is none
// after positive infinity or from a NaN.
template <typename T>
int StepFloating(void* value, unsigned int /*extra*/, char format, char mode) {
  if (format != 8 || value == nullptr) return kKaNotSupported;
  T v;
  std::memcpy(&v, value, sizeof v);
  switch (mode) {
    case 2:
      v = -std::numeric_limits<T>::infinity();
      break;
    case 'O':
      return 0;
    case 'M':
    case 'N':
      if (std::isnan(v) || v == std::numeric_limits<T>::infinity()) return kKaNoNextValue;
      v = std::nextafter(v, std::numeric_limits<T>::infinity());
      break;
    default:
      return kKaNotSupported;
  }
  std::memcpy(value, &v, sizeof v);
  return 0;
}

inline int NoNextValue(void*, unsigned int, char, char) { return kKaNotSupported; }

// --- Default values ------------------------------------------------------------------

// What an empty text converts to, through the row's own ConvertFrom.
template <KaConvertFromFunc ConvertFrom>
void* DefaultFromEmptyText(unsigned int count, int /*asNull*/) {
  KaString* strings = ka::NewStringArray(count);
  if (strings == nullptr && count > 0) return nullptr;
  KaTypeConvertData* holder = KaTypeConvertData::Make(KaSTRING_T, count, strings, nullptr);
  void* values = holder != nullptr ? ConvertFrom(holder, count) : nullptr;
  if (holder != nullptr) {
    holder->data = nullptr;  // the strings are released here, not by the holder
    delete holder;
  }
  ka::DeleteStringArray(strings);
  return values;
}

}  // namespace ka::detail

#endif  // KATYPEMGR_SRC_PRIMITIVE_SCALAR_SLOTS_H_
