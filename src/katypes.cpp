// The descriptor table: one row per type identifier, and the slot functions
// of the primitive rows that are not compare, hash, bound or text functions
// (array life, stored sizes from a memory file, translation, stepping).
#include "katypemgr/katypes.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "kabase/codec.h"
#include "kabase/memfile.h"
#include "kabase/memory.h"
#include "katables.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kaprimtext.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypcmp.h"
#include "katypemgr/katypevl.h"
#include "katypemgr/katyphash.h"

namespace {

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

// Scalars are constructed as 0, so a new element has a defined value.
template <typename T>
void ConstructScalars(void* array, unsigned int count, unsigned int /*extra*/) {
  if (array != nullptr && count > 0) std::memset(array, 0, size_t{count} * sizeof(T));
}

void DestructScalars(void*, unsigned int, unsigned int) {}

template <typename T>
void CopyScalars(void* destination, void* source, unsigned int count, int /*extra*/) {
  if (destination != nullptr && source != nullptr && count > 0) {
    std::memmove(destination, source, size_t{count} * sizeof(T));
  }
}

int NeverNull(void*) { return 0; }

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

void* CreateStrings(unsigned int count) { return ka::NewStringArray(count); }

void* DeleteStrings(void* array, unsigned int /*count*/) {
  ka::DeleteStringArray(static_cast<KaString*>(array));
  return nullptr;
}

int StringIsNull(void* value) { return static_cast<KaString*>(value)->IsNullValue() ? 1 : 0; }

int StringSetNull(void* value) {
  static_cast<KaString*>(value)->SetNullValue();
  return 0;
}

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
// the destination with zero fill.
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
    if (sourceLength < destinationLength) std::memset(destination, 0, destinationLength);
    std::memmove(destination, source, sourceLength);
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

int NoNextValue(void*, unsigned int, char, char) { return kKaNotSupported; }

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

// --- The "illegal" row: every slot answers nothing ------------------------------------------

void* IllegalCreate(unsigned int) { return nullptr; }
void* IllegalDelete(void*, unsigned int) { return nullptr; }
unsigned int IllegalStore(void*, const void*, unsigned char, unsigned int) { return 0; }
unsigned int IllegalNullSize(unsigned int) { return 0; }
unsigned int IllegalSize(const void*, unsigned char, unsigned char, unsigned int) { return 0; }
unsigned int IllegalMemFileSize(MemFile*, unsigned char, unsigned int) { return 0; }
// Equal, and the error word untouched.
int IllegalCompare(unsigned char, unsigned int, void*, unsigned int, void*, unsigned short,
                   unsigned int, int&) {
  return 0;
}
float IllegalEval(KaIdxBounds*, unsigned short&, void*, unsigned char, unsigned int, KaIdxBounds*) {
  return 0.0f;
}
unsigned int IllegalHash(unsigned char, unsigned int, void*, unsigned int, int&) { return 0; }
KaTypeConvertData* IllegalConvertTo(void*, unsigned int) { return nullptr; }
void* IllegalConvertFrom(KaTypeConvertData*, unsigned int) { return nullptr; }
void IllegalConstruct(void*, unsigned int, unsigned int) {}
void IllegalAssign(void*, void*, unsigned int, int) {}
unsigned int IllegalTranslate(void*, unsigned char, unsigned int, void*, unsigned char,
                              unsigned int, unsigned int) {
  return 0;
}
KaString& IllegalPrint(KaString& out, void*, const char*, unsigned int) { return out; }
void* IllegalScan(void*, KaString&, const char*, unsigned int) { return nullptr; }
void* IllegalDefault(unsigned int, int) { return nullptr; }

// --- Rows ------------------------------------------------------------------------

constexpr uintptr_t Fixed(unsigned int length) { return kKaFixedSize | length; }

// A primitive row: every slot but the stored-form ones (completed at start-up)
// and the ones that differ between rows of one width.
template <typename T>
constexpr KaTypeDescriptor PrimitiveRow(const char* name, const char* typeIdName,
                                        const char* format, KaMemFileSizeFunc memFileSize,
                                        KaCompareFunc compare, KaEvalFunc eval, KaHashFunc hash,
                                        KaConvertToFunc convertTo, KaConvertFromFunc convertFrom,
                                        KaTranslateFunc translate, KaPrintFunc print,
                                        KaScanFunc scan, KaDefaultValueFunc defaultValue,
                                        KaNextValueFunc nextValue) {
  return {.name = name,
          .typeIdName = typeIdName,
          .create = CreateArray<T>,
          .del = DeleteArray<T>,
          .store = nullptr,
          .load = nullptr,
          .nullSizeGet = nullptr,
          .sizeGet = nullptr,
          .sizeGetFromMemFile = memFileSize,
          .compare = compare,
          .evalAndBound = eval,
          .hash = hash,
          .convertTo = convertTo,
          .convertFrom = convertFrom,
          .constructor = ConstructScalars<T>,
          .destructor = DestructScalars,
          .assignment = CopyScalars<T>,
          .copy = CopyScalars<T>,
          .translate = translate,
          .isNull = NeverNull,
          .setNull = nullptr,
          .printFormat = format,
          .printToString = print,
          .scanFromString = scan,
          .sizeWord = Fixed(sizeof(T)),
          .defaultValue = defaultValue,
          .nextValue = nextValue,
          .reserved = nullptr};
}

// A row whose class is not built into the table yet: names, size word and
// format; every slot empty, so the facade answers as for an empty slot.
constexpr KaTypeDescriptor NamedRow(const char* name, const char* typeIdName, const char* format,
                                    uintptr_t sizeWord) {
  return {.name = name,
          .typeIdName = typeIdName,
          .create = nullptr,
          .del = nullptr,
          .store = nullptr,
          .load = nullptr,
          .nullSizeGet = nullptr,
          .sizeGet = nullptr,
          .sizeGetFromMemFile = nullptr,
          .compare = nullptr,
          .evalAndBound = nullptr,
          .hash = nullptr,
          .convertTo = nullptr,
          .convertFrom = nullptr,
          .constructor = nullptr,
          .destructor = nullptr,
          .assignment = nullptr,
          .copy = nullptr,
          .translate = nullptr,
          .isNull = nullptr,
          .setNull = nullptr,
          .printFormat = format,
          .printToString = nullptr,
          .scanFromString = nullptr,
          .sizeWord = sizeWord,
          .defaultValue = nullptr,
          .nextValue = nullptr,
          .reserved = nullptr};
}

// A string-like class row: the class's own array life; the other slots come
// with the string comparison, storage and text of those classes.
template <typename T>
constexpr KaTypeDescriptor ClassRow(const char* name, const char* typeIdName, const char* format,
                                    KaIsNullFunc isNull, KaIsNullFunc setNull,
                                    KaNextValueFunc nextValue) {
  KaTypeDescriptor row = NamedRow(name, typeIdName, format, sizeof(T));
  row.create = CreateArray<T>;
  row.del = DeleteArray<T>;
  row.constructor = ConstructObjects<T>;
  row.destructor = DestructObjects<T>;
  row.assignment = AssignObjects<T>;
  row.copy = CopyObjects<T>;
  row.isNull = isNull;
  row.setNull = setNull;
  row.nextValue = nextValue;
  return row;
}

constexpr KaTypeDescriptor StringRow(const char* name, KaIsNullFunc isNull, KaIsNullFunc setNull,
                                     KaNextValueFunc nextValue) {
  KaTypeDescriptor row = ClassRow<KaString>(name, "KaSTRING_T", "%s", isNull, setNull, nextValue);
  row.create = CreateStrings;
  row.del = DeleteStrings;
  return row;
}

// Shorthands for the slot functions of one width.
template <KaStoreFunc S, KaStoreFunc L, unsigned int W, int Tag = 0>
constexpr KaTranslateFunc kTranslate = TranslateScalars<S, L, W, Tag>;

constinit KaTypeDescriptor kRows[kKaTypeCount] = {
    PrimitiveRow<signed char>(
        "o_char", "Ka1B_T", "%c", SizeFromMemFile<CharSizeGet>, CharCompare, CharEvalAndBound,
        CharHash, CharConvertToKaString, CharConvertFromKaString,
        kTranslate<CharStore, CharStore, 1>, CharPrintToKaString, CharScanFromKaString,
        DefaultFromEmptyText<CharConvertFromKaString>, StepInteger<signed char>),
    PrimitiveRow<int16_t>("o_2b", "Ka2B_T", "%hd", SizeFromMemFile<ShortSizeGet>, ShortCompare,
                          ShortEvalAndBound, ShortHash, ShortConvertToKaString,
                          ShortConvertFromKaString, kTranslate<ShortStore, ShortStore, 2>,
                          ShortPrintToKaString, ShortScanFromKaString,
                          DefaultFromEmptyText<ShortConvertFromKaString>, StepInteger<int16_t>),
    PrimitiveRow<int32_t>("o_4b", "Ka4B_T", "%ld", SizeFromMemFile<LongSizeGet>, LongCompare,
                          LongEvalAndBound, LongHash, LongConvertToKaString,
                          LongConvertFromKaString, kTranslate<LongStore, LongStore, 4>,
                          LongPrintToKaString, LongScanFromKaString,
                          DefaultFromEmptyText<LongConvertFromKaString>, StepInteger<int32_t>),
    PrimitiveRow<double>("o_double", "KaDOUBLE_T", "%.17g", SizeFromMemFile<DoubleSizeGet>,
                         DoubleCompare, DoubleEvalAndBound, DoubleHash, DoubleConvertToKaString,
                         DoubleConvertFromKaString, kTranslate<DoubleStore, DoubleStore, 8>,
                         DoublePrintToKaString, DoubleScanFromKaString,
                         DefaultFromEmptyText<DoubleConvertFromKaString>, StepFloating<double>),
    PrimitiveRow<float>("o_float", "KaFLOAT_T", "%.17g", SizeFromMemFile<FloatSizeGet>,
                        FloatCompare, FloatEvalAndBound, FloatHash, FloatConvertToKaString,
                        FloatConvertFromKaString, kTranslate<FloatStore, FloatStore, 4>,
                        FloatPrintToKaString, FloatScanFromKaString,
                        DefaultFromEmptyText<FloatConvertFromKaString>, StepFloating<float>),
    PrimitiveRow<uint16_t>("o_u2b", "KaU2B_T", "%hu", SizeFromMemFile<ShortSizeGet>, WordCompare,
                           WordEvalAndBound, WordHash, WordConvertToKaString,
                           WordConvertFromKaString, kTranslate<ShortStore, ShortStore, 2>,
                           ShortPrintToKaString, ShortScanFromKaString,
                           DefaultFromEmptyText<WordConvertFromKaString>, StepInteger<uint16_t>),
    PrimitiveRow<uint32_t>("o_u4b", "KaU4B_T", "%lu", SizeFromMemFile<LongSizeGet>, DwordCompare,
                           DwordEvalAndBound, LongHash, DwordConvertToKaString,
                           DwordConvertFromKaString, kTranslate<LongStore, LongStore, 4>,
                           LongPrintToKaString, LongScanFromKaString,
                           DefaultFromEmptyText<DwordConvertFromKaString>, StepInteger<uint32_t>),
    PrimitiveRow<int>("int", "KaINT_T", "%d", SizeFromMemFile<IntSizeGet>, IntCompare,
                      IntEvalAndBound, IntHash, IntConvertToKaString, IntConvertFromKaString,
                      kTranslate<IntStore, IntLoad, 4, 7>, IntPrintToKaString, IntScanFromKaString,
                      DefaultFromEmptyText<IntConvertFromKaString>, StepInteger<int>),
    PrimitiveRow<unsigned>(
        "unsigned", "KaUNSIGNED_T", "%u", SizeFromMemFile<IntSizeGet>, UnsignedCompare,
        UnsignedEvalAndBound, IntHash, UnsignedConvertToKaString, UnsignedConvertFromKaString,
        kTranslate<UnsignedStore, UnsignedLoad, 4>, IntPrintToKaString, IntScanFromKaString,
        // Its own array type, so that Delete frees what DefaultValue made.
        DefaultFromEmptyText<UnsignedConvertFromKaString>, StepInteger<unsigned>),
    // "enum" is "int" but for its names, its own translate function and no stepping.
    PrimitiveRow<int>("enum", "KaENUM_T", "%d", SizeFromMemFile<IntSizeGet>, IntCompare,
                      IntEvalAndBound, IntHash, IntConvertToKaString, IntConvertFromKaString,
                      kTranslate<IntStore, IntLoad, 4, 9>, IntPrintToKaString, IntScanFromKaString,
                      DefaultFromEmptyText<IntConvertFromKaString>, NoNextValue),
    PrimitiveRow<unsigned char>(
        "o_u1b", "KaU1B_T", "%c", SizeFromMemFile<CharSizeGet>, ByteCompare, ByteEvalAndBound,
        ByteHash, O_U1BConvertToKaString, O_U1BConvertFromKaString,
        kTranslate<CharStore, CharStore, 1>, CharPrintToKaString, CharScanFromKaString,
        DefaultFromEmptyText<O_U1BConvertFromKaString>, StepInteger<unsigned char>),
    StringRow("KaString", StringIsNull, StringSetNull, nullptr),
    NamedRow("KaDate", "KaDATE_T", "%a %e.%b %Y", Fixed(4)),
    NamedRow("KaTime", "KaTIME_T", "%I:%M:%S %p", Fixed(3)),
    // "BlockId" is "o_u4b" but for its names and its "#" print format.
    PrimitiveRow<uint32_t>("BlockId", "KaBLOCKID_T", "#%lu", SizeFromMemFile<LongSizeGet>,
                           DwordCompare, DwordEvalAndBound, LongHash, DwordConvertToKaString,
                           DwordConvertFromKaString, kTranslate<LongStore, LongStore, 4>,
                           LongPrintToKaString, LongScanFromKaString,
                           DefaultFromEmptyText<DwordConvertFromKaString>, StepInteger<uint32_t>),
    NamedRow("KaObjId", "KaOBJID_T", "(%H-%L#%B)", Fixed(12)),
    NamedRow("KaClassId", "KaCLID_T", "(%Cv%V)", Fixed(4)),
    NamedRow("KaRef", "KaREF_T", "(%D:%H-%L#%B, %C)", Fixed(16)),
    NamedRow("KaBlob", "KaBLOB_T", "[BLOB,len=%L]", 16),
    NamedRow("KaDateTime", "KaDATIME_T", "%a %e.%b %Y %I:%M:%S %p", Fixed(8)),
    ClassRow<KaIString>("KaIString", "KaISTRING_T", "%s", NeverNull, nullptr, NoNextValue),
    ClassRow<KaCaseIString>("KaCaseIString", "KaCASEISTRING_T", "%s", NeverNull, nullptr,
                            NoNextValue),
    NamedRow("d_Date", "D_DATE_T", "%a %b %e", Fixed(4)),
    NamedRow("d_Time", "D_TIME_T", "%I:%M:%S %p", Fixed(6)),
    NamedRow("d_Timestamp", "D_TIMESTAMP_T", "%a %b %e %I:%M:%S %p", Fixed(10)),
    NamedRow("d_Interval", "D_INTERVAL_T", "%e days, %I hours, %M minutes, %S seconds", Fixed(4)),
    NamedRow("KaInt64", "KaINT64_T", "%S", Fixed(8)),
    NamedRow("KaBoolean", "KaBOOLEAN_T", "noop", Fixed(1)),
    NamedRow("KaNull_char", "KaNULL_1B_T", "%c", Fixed(2)),
    NamedRow("KaNull_uchar", "KaNULL_U1B_T", "%c", Fixed(2)),
    NamedRow("KaNull_short", "KaNULL_2B_T", "%hd", Fixed(4)),
    NamedRow("KaNull_ushort", "KaNULL_U2B_T", "%hu", Fixed(4)),
    NamedRow("KaNull_int", "KaNULL_INT_T", "%d", Fixed(8)),
    NamedRow("KaNull_unsigned", "KaNULL_UNSIGNED_T", "%u", Fixed(8)),
    NamedRow("KaNull_long", "KaNULL_4B_T", "%ld", Fixed(8)),
    NamedRow("KaNull_ulong", "KaNULL_U4B_T", "%lu", Fixed(8)),
    NamedRow("KaNull_float", "KaNULL_FLOAT_T", "%.17g", Fixed(8)),
    NamedRow("KaNull_double", "KaNULL_DOUBLE_T", "%.17g", Fixed(16)),
    NamedRow("KaNull_KaInt64", "KaNULL_KAINT64_T", "%S", Fixed(12)),
    NamedRow("KaSeal", "KaSEAL_T", "noop", Fixed(6)),
    NamedRow("KaDateTimeN", "KaDATIME_N_T", "%X", Fixed(12)),
    NamedRow("KaTimeSpan", "KaTIMESPAN_T", "%V", Fixed(12)),
    PrimitiveRow<int64_t>("o_8b", "Ka8B_T", "%I64d", SizeFromMemFile<O_8BSizeGet>, O_8BCompare,
                          O_8BEvalAndBound, O_8BHash, O_8BConvertToKaString,
                          O_8BConvertFromKaString, kTranslate<O_8BStore, O_8BStore, 8>,
                          O_8BPrintToKaString, O_8BScanFromKaString,
                          DefaultFromEmptyText<O_8BConvertFromKaString>, StepInteger<int64_t>),
    PrimitiveRow<uint64_t>("o_u8b", "KaU8B_T", "%I64u", SizeFromMemFile<O_8BSizeGet>, O_U8BCompare,
                           O_U8BEvalAndBound, O_8BHash, O_U8BConvertToKaString,
                           O_U8BConvertFromKaString, kTranslate<O_8BStore, O_8BStore, 8>,
                           O_8BPrintToKaString, O_8BScanFromKaString,
                           DefaultFromEmptyText<O_U8BConvertFromKaString>, StepInteger<uint64_t>),
    NamedRow("KaNull_8b", "KaNULL_8B_T", "%I64d", Fixed(16)),
    NamedRow("KaNull_u8b", "KaNULL_U8B_T", "%I64u", Fixed(16)),
    {.name = "illegal",
     .typeIdName = "KaRES_T",
     .create = IllegalCreate,
     .del = IllegalDelete,
     .store = IllegalStore,
     .load = IllegalStore,
     .nullSizeGet = IllegalNullSize,
     .sizeGet = IllegalSize,
     .sizeGetFromMemFile = IllegalMemFileSize,
     .compare = IllegalCompare,
     .evalAndBound = IllegalEval,
     .hash = IllegalHash,
     .convertTo = IllegalConvertTo,
     .convertFrom = IllegalConvertFrom,
     .constructor = IllegalConstruct,
     .destructor = IllegalConstruct,
     .assignment = IllegalAssign,
     .copy = IllegalAssign,
     .translate = IllegalTranslate,
     .isNull = NeverNull,
     .setNull = nullptr,
     .printFormat = "illegal",
     .printToString = IllegalPrint,
     .scanFromString = IllegalScan,
     .sizeWord = Fixed(0),
     .defaultValue = IllegalDefault,
     .nextValue = NoNextValue,
     .reserved = nullptr},
};

// The string row of older databases: no null value, no stepping; its stored
// form, comparison, hash and bounds come with the older stored string form.
constinit KaTypeDescriptor kOldStringRow = StringRow("KaString", NeverNull, nullptr, NoNextValue);

// The stored-form slots of the primitive rows, filled from the base services
// library before the tables are first used.
struct StoredForm {
  int row;
  KaStoreFunc store, load;
  KaNullSizeFunc nullSize;
  KaSizeFunc size;
};
constexpr StoredForm kStoredForms[] = {
    {Ka1B_T, CharStore, CharStore, CharNullSizeGet, CharSizeGet},
    {KaU1B_T, CharStore, CharStore, CharNullSizeGet, CharSizeGet},
    {Ka2B_T, ShortStore, ShortStore, ShortNullSizeGet, ShortSizeGet},
    {KaU2B_T, ShortStore, ShortStore, ShortNullSizeGet, ShortSizeGet},
    {Ka4B_T, LongStore, LongStore, LongNullSizeGet, LongSizeGet},
    {KaU4B_T, LongStore, LongStore, LongNullSizeGet, LongSizeGet},
    {KaBLOCKID_T, LongStore, LongStore, LongNullSizeGet, LongSizeGet},
    {KaDOUBLE_T, DoubleStore, DoubleStore, DoubleNullSizeGet, DoubleSizeGet},
    {KaFLOAT_T, FloatStore, FloatStore, FloatNullSizeGet, FloatSizeGet},
    {KaINT_T, IntStore, IntLoad, IntNullSizeGet, IntSizeGet},
    {KaENUM_T, IntStore, IntLoad, IntNullSizeGet, IntSizeGet},
    {KaUNSIGNED_T, UnsignedStore, UnsignedLoad, IntNullSizeGet, IntSizeGet},
    {Ka8B_T, O_8BStore, O_8BStore, O_8BNullSizeGet, O_8BSizeGet},
    {KaU8B_T, O_8BStore, O_8BStore, O_8BNullSizeGet, O_8BSizeGet},
};

struct Tables {
  KaTypeDescriptor* current[kKaTypeCount];
  KaTypeDescriptor* old[kKaTypeCount];
};

Tables& CompletedTables() {
  // A function-local static: completed once, before the first use from any
  // file, whatever the order of static initialisers.
  static Tables tables = [] {
    for (const StoredForm& f : kStoredForms) {
      kRows[f.row].store = f.store;
      kRows[f.row].load = f.load;
      kRows[f.row].nullSizeGet = f.nullSize;
      kRows[f.row].sizeGet = f.size;
    }
    Tables t{};
    for (int i = 0; i < kKaTypeCount; ++i) t.current[i] = t.old[i] = &kRows[i];
    t.old[KaSTRING_T] = &kOldStringRow;
    return t;
  }();
  return tables;
}

// The rows are completed while the library loads, as well.
[[maybe_unused]] const Tables& kLoadTimeCompletion = CompletedTables();

}  // namespace

KaTypeDescriptor* const* ka::detail::CurrentTable() { return CompletedTables().current; }
KaTypeDescriptor* const* ka::detail::OldTable() { return CompletedTables().old; }

static_assert(sizeof(KaString) == 16 && sizeof(KaIString) == 16 && sizeof(KaCaseIString) == 16,
              "the string rows' memory length is the handle's size");
