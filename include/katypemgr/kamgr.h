// KaTypeMgr: the facade through which the engine reaches the per-type
// operations of the descriptor table.
//
// A manager is bound to a database format version, which chooses the current
// table or the older one (whose string row reads the older stored strings).
// Every method folds the type identifier (ids of 100 and above reach row 46,
// "illegal") and calls the row's slot. A slot a row does not have yet answers
// as nothing was done: null, 0, 0.0, the output unchanged, or -2999 where the
// answer is a status. Identifiers that are no types (47..99, negative ones)
// are served by the "illegal" row instead of indexing past the table.
#ifndef KATYPEMGR_KAMGR_H_
#define KATYPEMGR_KAMGR_H_

#include "katypemgr/kaconvert.h"
#include "katypemgr/kaexport.h"
#include "katypemgr/kaprocess.h"
#include "katypemgr/katypes.h"

class KaString;
class MemFile;
struct KaEvalData;  // the query processor's own evaluation context; not read here

// The broken-down time that StoreTimeStamp takes.
struct KaTimeStampRecord {
  int16_t year;
  uint8_t month;
  uint8_t day;
  uint8_t hour;
  uint8_t minute;
  int8_t second;
  uint32_t fraction;  // nanoseconds, added to the seconds as fraction / 1e9
};

class KATYPEMGR_API KaTypeMgr {
 public:
  // Version 5: the current table.
  KaTypeMgr();
  // 12 and above: current table, version 4; 11: old table, version 3; 4..10:
  // current table; 0..3: old table (the version as given).
  explicit KaTypeMgr(unsigned int version);
  void SetFactory(unsigned int version);
  unsigned short Version() const { return version_; }
  bool UsesOldTable() const;

  void* Create(signed char id, unsigned int count);
  void* Delete(signed char id, void* array, unsigned int count);
  unsigned int Store(signed char id, void* destination, void* source, unsigned char format,
                     unsigned int count);
  unsigned int Load(signed char id, void* destination, void* source, unsigned char format,
                    unsigned int count);
  unsigned int DiskLenGet(signed char id, void* stored, unsigned char format, unsigned int count,
                          unsigned char extra);
  unsigned int DiskLenGetFromMemFile(signed char id, MemFile* file, unsigned char format,
                                     unsigned int count);
  int DiskIsNullValue(signed char id, void* stored);  // always -2999

  // The row's Compare slot (0 for a row without one, `error` untouched); the
  // scalar rows' contract is in katypcmp.h. Inline: index searches and sorts
  // call this once per key, and a call into the library before the call
  // through the row would cost about as much as comparing the key.
  int Cmp(signed char id, unsigned int length1, void* values1, unsigned int length2, void* values2,
          unsigned short option, unsigned int count, unsigned char format, int& error) {
    const KaCompareFunc compare = Row(id).compare;
    if (compare == nullptr) return 0;
    return compare(format, length1, values1, length2, values2, option, count, error);
  }
  // Both lengths 0 (`count` elements each); the error word is dropped.
  int Cmp(signed char id, void* values1, void* values2, unsigned short option, unsigned int count,
          unsigned char format) {
    const KaCompareFunc compare = Row(id).compare;
    if (compare == nullptr) return 0;
    int error = 0;
    return compare(format, 0, values1, 0, values2, option, count, error);
  }
  KaCompareFunc CmpFuncPtrGet(signed char id);
  int (*ComparePtrGet(signed char id))(void*, void*);  // always null

  float EvalAndBound(signed char id, KaIdxBounds* range, unsigned short& flags, void* value,
                     unsigned char format, unsigned int count, KaIdxBounds* bounds,
                     KaEvalData* data);
  unsigned int Hash(signed char id, unsigned int length, void* values, unsigned int count,
                    unsigned char format, int& error);
  KaTypeConvertData* ConvertTo(signed char id, void* values, unsigned int count);
  void* ConvertFrom(signed char id, KaTypeConvertData* strings, unsigned int count);

  KaConstructFunc ConstructorPtrGet(signed char id);
  KaConstructFunc DestructorPtrGet(signed char id);
  KaAssignFunc AssignmentPtrGet(signed char id);
  KaAssignFunc CopyPtrGet(signed char id);
  KaStoreFunc StorePtrGet(signed char id);
  KaStoreFunc LoadPtrGet(signed char id);
  KaIsNullFunc IsNullPtrGet(signed char id);
  KaIsNullFunc SetNullPtrGet(signed char id);

  unsigned int Translate(signed char id, void* destination, unsigned char destinationFormat,
                         unsigned int destinationLength, void* source, unsigned char sourceFormat,
                         unsigned int sourceLength, unsigned int count);
  // The row's IsNull: 0 for a type without a null value. The string row
  // takes a null `value` as no value, which is null (and SetNullValue then
  // has nothing to set).
  int IsNullValue(signed char id, void* value);
  // The row's SetNull; a type without a null value is reset to what an empty
  // text converts to, or scanned from "0".
  int SetNullValue(signed char id, void* value);
  void* DefaultValue(signed char id, unsigned int count, int asNull);
  // Steps a value for index ranges (modes 'M', 'N', 'O'); stored values are
  // loaded, stepped in memory form and stored back.
  int GetValue(signed char id, void* value, unsigned int extra, unsigned char format,
               unsigned char mode);
  // Stores a time stamp as a value of the date and time rows; -2999 for a
  // null record.
  int StoreTimeStamp(signed char id, void* destination, unsigned char format,
                     const KaTimeStampRecord* timestamp);

  void* GetArrayElement(signed char id, void* array, unsigned int index, unsigned int count);
  unsigned short MemLenGet(signed char id, unsigned int count);
  unsigned short IsFixed(signed char id);
  unsigned short SupportsCapability(signed char id, unsigned short capability);
  unsigned short SupportsNullValue(signed char id);
  int IsValidType(signed char id);
  // 0 and `id` set when `name` is a row's exchange name, else 1.
  int Name2KaTypeId(const char* name, signed char& id);
  // The row's name; with a buffer, copied into it (which must hold it).
  char* NameGet(signed char id, char* buffer);
  char* TypeIdNameGet(signed char id, char* buffer);

  // The values' text, in `format` or the row's default. One value, and the
  // one-byte rows' whole arrays, are the slot's: it replaces `out`. Longer
  // arrays are printed element by element and appended to `out`, separated
  // by ","; the text stops where `out` reaches the string's limit (the cut is
  // the string's, reported once as it reports any cut). No values (null)
  // leave `out` as it was.
  KaString& PrintToKaString(signed char id, KaString& out, void* values, const char* format,
                            unsigned int count);
  void* ScanFromKaString(signed char id, void* values, KaString& text, const char* format,
                         unsigned int count);

  // Read a row's entry; a non-null argument replaces it for every manager on
  // that table, for the rest of the process (meant for start-up).
  const char* ExchangeFormat(signed char id, const char* format);
  KaCompareFunc ExchangeKaTypeCmpFunc(signed char id, KaCompareFunc function);
  KaPrintFunc ExchangePrintToKaStringFunc(signed char id, KaPrintFunc function);
  KaScanFunc ExchangeScanFromKaStringFunc(signed char id, KaScanFunc function);

  static const KaString& GetNullPrintString();
  static void SetNullPrintString(const KaString& text);

 protected:
  // The single-string form of older formats: the values' texts, each ended by
  // a separator character that occurs in none of them.
  KaString* ConvertToKaStringOld(void* values, signed char id, unsigned int count);
  // Reads it back; consumes `text`.
  void* ConvertFromKaStringOld(KaString* text, signed char id, unsigned int count);

 private:
  // The row of an identifier, folded; identifiers that are no types (47..99,
  // negative ones) get the "illegal" row rather than an index past the table.
  KaTypeDescriptor& Row(signed char id) const {
    const int row = KaFoldTypeId(id);
    return *table_[row >= 0 && row < kKaTypeCount ? row : KaRES_T];
  }

  KaTypeDescriptor* const* table_;
  unsigned short version_;
};

// The process-wide default manager; a non-null argument replaces it. Answers
// the default before the call.
KATYPEMGR_API KaTypeMgr* DefaultTypeMgr(KaTypeMgr* replacement);

// Start (non-zero) or end (0) of the library's use: forwards to the
// internationalisation library, then makes a new default manager (version 5)
// or deletes the current one.
KATYPEMGR_API void ___KaTypemgrContext(int start);

#endif  // KATYPEMGR_KAMGR_H_
