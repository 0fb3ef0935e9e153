// The descriptor tables: one row per type identifier, gathered from the slot
// functions of the families, and the "illegal" row whose slots answer nothing.
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "kabase/codec.h"
#include "kabase/memfile.h"
#include "kabase/memory.h"
#include "katypemgr/kaconvert.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kaprimtext.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypcmp.h"
#include "katypemgr/katypes.h"
#include "katypemgr/katypevl.h"
#include "katypemgr/katyphash.h"
#include "primitive/scalar_slots.h"
#include "string/class_slots.h"
#include "table/tables.h"

namespace {

using namespace ka::detail;

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
          .constructor = ConstructScalars<sizeof(T)>,
          .destructor = DestructScalars,
          .assignment = CopyScalars<sizeof(T)>,
          .copy = CopyScalars<sizeof(T)>,
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

// A row with its Hash slot filled in.
constexpr KaTypeDescriptor WithHash(KaTypeDescriptor row, KaHashFunc hash) {
  row.hash = hash;
  return row;
}

// A row with its Compare slot filled.
constexpr KaTypeDescriptor WithCompare(KaTypeDescriptor row, KaCompareFunc compare) {
  row.compare = compare;
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
    WithCompare(WithHash(StringRow("KaString", StringIsNull, StringSetNull, nullptr), StringHash),
                StringCompare),
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
    WithCompare(WithHash(ClassRow<KaIString>("KaIString", "KaISTRING_T", "%s", NeverNull, nullptr,
                                             NoNextValue),
                         KaIStringHash),
                KaIStringCompare),
    WithCompare(WithHash(ClassRow<KaCaseIString>("KaCaseIString", "KaCASEISTRING_T", "%s",
                                                 NeverNull, nullptr, NoNextValue),
                         KaCaseIStringHash),
                KaCaseIStringCompare),
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
// form and bounds come with the older stored string form. Its hash reads both
// stored forms, as loading does, so it shares the string row's; its compare
// reads the older zero-terminated texts.
constinit KaTypeDescriptor kOldStringRow = WithCompare(
    WithHash(StringRow("KaString", NeverNull, nullptr, NoNextValue), StringHash), OldStringCompare);

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
