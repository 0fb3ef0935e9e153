// KaTypeMgr, the facade over the descriptor tables; KaTypeConvertData; the
// default manager.
#include <algorithm>
#include <cstring>
#include <new>

#include "kabase/memory.h"
#include "kai18n/langctx.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kaprimtext.h"
#include "katypemgr/kaprocess.h"
#include "katypemgr/kastring.h"
#include "table/arrays.h"
#include "table/process_values.h"
#include "table/tables.h"

namespace {

KaTypeMgr*& DefaultManager() {
  static KaTypeMgr* manager = nullptr;
  return manager;
}

unsigned int MemoryLength(const KaTypeDescriptor& row) { return row.sizeWord & 0xFFFF; }

bool IsStepMode(unsigned char mode) { return mode == 'M' || mode == 'N' || mode == 'O'; }

// Units that `out` can still take before the string's limit (the terminator
// counts, also for a string that has no buffer yet).
unsigned int RoomLeft(const KaString& out) {
  const unsigned int w = out.UnitWidth();
  const unsigned int used = out.Size() != 0 ? out.Size() : w;
  return used < KaString::kMaxSize ? (KaString::kMaxSize - used) / w : 0;
}

}  // namespace

// --- String arrays and the holder ------------------------------------------------

KaString* ka::NewStringArray(unsigned int count) { return NewArray<KaString>(count); }

void ka::DeleteStringArray(KaString* array) { delete[] array; }

KaTypeConvertData* KaTypeConvertData::Make(signed char id, unsigned int count, void* data,
                                           KaTypeMgr* manager) {
  auto* holder = new (std::nothrow) KaTypeConvertData;
  if (holder == nullptr) {
    KaCallMemoryHandler(sizeof(KaTypeConvertData));
    return nullptr;
  }
  holder->manager = manager;
  holder->data = data;
  holder->count = static_cast<int>(count);
  holder->typeId = id;
  return holder;
}

KaTypeConvertData::~KaTypeConvertData() {
  if (manager != nullptr && data != nullptr) {
    manager->Delete(typeId, data, static_cast<unsigned int>(count));
    data = nullptr;
  }
  count = 0;
  typeId = kKaEmptyConvertData;
}

KaString* KaTypeConvertData::GetString(int index) {
  if (index < 0 || index >= count || typeId != KaSTRING_T || data == nullptr) return nullptr;
  return static_cast<KaString*>(data) + index;
}

// --- Binding ---------------------------------------------------------------------

KaTypeMgr::KaTypeMgr() : KaTypeMgr(5) {}

KaTypeMgr::KaTypeMgr(unsigned int version) : table_(nullptr), version_(0) { SetFactory(version); }

// Requests in the newer numbering fold onto the generations of the older one.
void KaTypeMgr::SetFactory(unsigned int version) {
  if (version >= 12) {
    table_ = ka::detail::CurrentTable();
    version_ = 4;
  } else if (version == 11) {
    table_ = ka::detail::OldTable();
    version_ = 3;
  } else if (version >= 4) {
    table_ = ka::detail::CurrentTable();
    version_ = static_cast<unsigned short>(version);
  } else {
    table_ = ka::detail::OldTable();
    version_ = static_cast<unsigned short>(version);
  }
}

bool KaTypeMgr::UsesOldTable() const { return table_ == ka::detail::OldTable(); }

// --- Forwarding ------------------------------------------------------------------

void* KaTypeMgr::Create(signed char id, unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  return row.create != nullptr ? row.create(count) : nullptr;
}

void* KaTypeMgr::Delete(signed char id, void* array, unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  return row.del != nullptr ? row.del(array, count) : nullptr;
}

unsigned int KaTypeMgr::Store(signed char id, void* destination, void* source, unsigned char format,
                              unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  return row.store != nullptr ? row.store(destination, source, format, count) : 0;
}

unsigned int KaTypeMgr::Load(signed char id, void* destination, void* source, unsigned char format,
                             unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  return row.load != nullptr ? row.load(destination, source, format, count) : 0;
}

unsigned int KaTypeMgr::DiskLenGet(signed char id, void* stored, unsigned char format,
                                   unsigned int count, unsigned char extra) {
  const KaTypeDescriptor& row = Row(id);
  return row.sizeGet != nullptr ? row.sizeGet(stored, extra, format, count) : 0;
}

unsigned int KaTypeMgr::DiskLenGetFromMemFile(signed char id, MemFile* file, unsigned char format,
                                              unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  return row.sizeGetFromMemFile != nullptr ? row.sizeGetFromMemFile(file, format, count) : 0;
}

int KaTypeMgr::DiskIsNullValue(signed char, void*) { return kKaNotSupported; }

KaCompareFunc KaTypeMgr::CmpFuncPtrGet(signed char id) { return Row(id).compare; }

int (*KaTypeMgr::ComparePtrGet(signed char))(void*, void*) { return nullptr; }

float KaTypeMgr::EvalAndBound(signed char id, KaIdxBounds* range, unsigned short& flags,
                              void* value, unsigned char format, unsigned int count,
                              KaIdxBounds* bounds, KaEvalData* /*data*/) {
  const KaTypeDescriptor& row = Row(id);
  if (row.evalAndBound == nullptr) return 0.0f;
  return row.evalAndBound(range, flags, value, format, count, bounds);
}

unsigned int KaTypeMgr::Hash(signed char id, unsigned int length, void* values, unsigned int count,
                             unsigned char format, int& error) {
  const KaTypeDescriptor& row = Row(id);
  return row.hash != nullptr ? row.hash(format, length, values, count, error) : 0;
}

KaTypeConvertData* KaTypeMgr::ConvertTo(signed char id, void* values, unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  if (row.convertTo == nullptr) return nullptr;
  KaTypeConvertData* holder = row.convertTo(values, count);
  if (holder != nullptr) holder->manager = this;
  return holder;
}

void* KaTypeMgr::ConvertFrom(signed char id, KaTypeConvertData* strings, unsigned int count) {
  if (strings != nullptr) strings->manager = this;
  const KaTypeDescriptor& row = Row(id);
  return row.convertFrom != nullptr ? row.convertFrom(strings, count) : nullptr;
}

KaConstructFunc KaTypeMgr::ConstructorPtrGet(signed char id) { return Row(id).constructor; }
KaConstructFunc KaTypeMgr::DestructorPtrGet(signed char id) { return Row(id).destructor; }
KaAssignFunc KaTypeMgr::AssignmentPtrGet(signed char id) { return Row(id).assignment; }
KaAssignFunc KaTypeMgr::CopyPtrGet(signed char id) { return Row(id).copy; }
KaStoreFunc KaTypeMgr::StorePtrGet(signed char id) { return Row(id).store; }
KaStoreFunc KaTypeMgr::LoadPtrGet(signed char id) { return Row(id).load; }
KaIsNullFunc KaTypeMgr::IsNullPtrGet(signed char id) { return Row(id).isNull; }
KaIsNullFunc KaTypeMgr::SetNullPtrGet(signed char id) { return Row(id).setNull; }

unsigned int KaTypeMgr::Translate(signed char id, void* destination,
                                  unsigned char destinationFormat, unsigned int destinationLength,
                                  void* source, unsigned char sourceFormat,
                                  unsigned int sourceLength, unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  if (row.translate == nullptr) return 0;
  return row.translate(destination, destinationFormat, destinationLength, source, sourceFormat,
                       sourceLength, count);
}

int KaTypeMgr::IsNullValue(signed char id, void* value) {
  const KaTypeDescriptor& row = Row(id);
  return row.isNull != nullptr ? row.isNull(value) : 0;
}

int KaTypeMgr::SetNullValue(signed char id, void* value) {
  const KaTypeDescriptor& row = Row(id);
  if (row.setNull != nullptr) {
    const int answer = row.setNull(value);
    if (answer != kKaNotSupported) return answer;
  }
  if (row.assignment != nullptr) {
    // A type without a null value takes what an empty text converts to.
    void* strings = Create(KaSTRING_T, 1);
    KaTypeConvertData* holder = KaTypeConvertData::Make(KaSTRING_T, 1, strings, this);
    if (holder == nullptr) {
      Delete(KaSTRING_T, strings, 1);
      return 0;
    }
    void* converted = row.convertFrom != nullptr ? row.convertFrom(holder, 1) : nullptr;
    delete holder;
    if (converted != nullptr) {
      row.assignment(value, converted, 1, 1);
      if (row.del != nullptr) row.del(converted, 1);
    }
    return 0;
  }
  if (row.scanFromString != nullptr) {
    KaString zero(ka::ZeroString());
    row.scanFromString(value, zero, row.printFormat, 1);
  }
  return 0;
}

void* KaTypeMgr::DefaultValue(signed char id, unsigned int count, int asNull) {
  const KaTypeDescriptor& row = Row(id);
  return row.defaultValue != nullptr ? row.defaultValue(count, asNull) : nullptr;
}

int KaTypeMgr::GetValue(signed char id, void* value, unsigned int extra, unsigned char format,
                        unsigned char mode) {
  if (!IsStepMode(mode)) return kKaNotSupported;
  const KaTypeDescriptor& row = Row(id);
  if (row.nextValue == nullptr) return kKaNotSupported;
  const char step = static_cast<char>(mode);
  // Strings step in their stored form, so their slot gets the caller's words.
  if (&row == &Row(KaSTRING_T) || format == 8) {
    return row.nextValue(value, extra, static_cast<char>(format), step);
  }
  if (row.create == nullptr || row.load == nullptr || row.store == nullptr) {
    return kKaNotSupported;
  }
  void* element = row.create(1);
  if (element == nullptr) return kKaNotSupported;
  const unsigned char stored = format & 0x81;
  int answer = kKaNotSupported;
  if (row.load(element, value, stored, 1) != 0) {
    answer = row.nextValue(element, 0, 8, step);
    if (answer == 0 && row.store(value, element, stored, 1) == 0) answer = kKaNotSupported;
  }
  if (row.del != nullptr) row.del(element, 1);
  return answer;
}

int KaTypeMgr::StoreTimeStamp(signed char id, void* destination, unsigned char format,
                              const KaTimeStampRecord* timestamp) {
  if (timestamp == nullptr) return kKaNotSupported;
  const KaTypeDescriptor& row = Row(id);
  if (row.store == nullptr) return 0;
  // The date and time rows build their value from the record when their
  // classes are in the table; every other row is given no source, on purpose.
  return static_cast<int>(row.store(destination, nullptr, format, 1));
}

void* KaTypeMgr::GetArrayElement(signed char id, void* array, unsigned int index,
                                 unsigned int count) {
  if (array == nullptr || (count != 0 && index >= count)) return nullptr;
  return static_cast<unsigned char*>(array) + size_t{index} * MemoryLength(Row(id));
}

unsigned short KaTypeMgr::MemLenGet(signed char id, unsigned int count) {
  return static_cast<unsigned short>(MemoryLength(Row(id)) * count);
}

unsigned short KaTypeMgr::IsFixed(signed char id) {
  return (Row(id).sizeWord & kKaFixedSize) != 0 ? 1 : 0;
}

unsigned short KaTypeMgr::SupportsCapability(signed char id, unsigned short capability) {
  switch (capability) {
    case 1:
      return Row(id).setNull != nullptr ? 1 : 0;
    case 2:  // the integer rows, KaObjId and KaInt64: the raw id, not the folded one
      switch (id) {
        case 0:
        case 1:
        case 2:
        case 5:
        case 6:
        case 7:
        case 8:
        case 9:
        case 10:
        case 15:
        case 26:
        case 42:
        case 43:
          return 1;
        default:
          return 0;
      }
    case 3:  // the date and time rows
      switch (id) {
        case 12:
        case 13:
        case 19:
        case 22:
        case 23:
        case 24:
        case 40:
          return 1;
        default:
          return 0;
      }
    default:
      return 0;
  }
}

unsigned short KaTypeMgr::SupportsNullValue(signed char id) { return SupportsCapability(id, 1); }

// Negative identifiers count as valid, as they always have; the dispatch
// serves them with the "illegal" row.
int KaTypeMgr::IsValidType(signed char id) { return KaFoldTypeId(id) < kKaTypeCount ? 1 : 0; }

int KaTypeMgr::Name2KaTypeId(const char* name, signed char& id) {
  if (name == nullptr) return 1;
  for (int candidate = 0; KaFoldTypeId(static_cast<signed char>(candidate)) < kKaTypeCount;
       ++candidate) {
    if (std::strcmp(name, Row(static_cast<signed char>(candidate)).name) == 0) {
      id = static_cast<signed char>(candidate);
      return 0;
    }
  }
  return 1;
}

char* KaTypeMgr::NameGet(signed char id, char* buffer) {
  const char* name = Row(id).name;
  if (buffer == nullptr) return const_cast<char*>(name);
  return std::strcpy(buffer, name);
}

char* KaTypeMgr::TypeIdNameGet(signed char id, char* buffer) {
  const char* name = Row(id).typeIdName;
  if (buffer == nullptr) return const_cast<char*>(name);
  return std::strcpy(buffer, name);
}

KaString& KaTypeMgr::PrintToKaString(signed char id, KaString& out, void* values,
                                     const char* format, unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  if (row.printToString == nullptr) return out;
  if (format == nullptr) format = row.printFormat;
  // The character rows print a whole array as one text; no values are the
  // slot's to answer (the output stays as it was).
  if (count < 2 || values == nullptr || row.printToString == CharPrintToKaString) {
    return row.printToString(out, values, format, count);
  }
  // The string cuts an append that passes its limit, and reports the cut;
  // after that nothing more fits, so the walk stops at the first cut append
  // rather than printing the rest of a long array into a full string.
  const unsigned int length = MemoryLength(row);
  // An append or an element that could not get its memory (the handler has
  // been told) would leave a text that misreads as other values: `out` goes
  // back to what it held. An element may print nothing on its own (an empty
  // string), so an empty one counts as lost only if memory ran short.
  const unsigned short before = out.Len();
  const unsigned long shortages = KaMemoryShortageCount();
  const auto appended = [&out](const auto& text, unsigned short units) {
    const unsigned short was = out.Len();
    out << text;
    return out.Len() == was + units;
  };
  for (unsigned int i = 0; i < count; ++i) {
    if (i > 0) {
      if (RoomLeft(out) == 0) {
        out << ',';  // cut: the string reports it
        break;
      }
      if (!appended(',', 1)) {
        out.Cut(before, static_cast<unsigned short>(out.Len() - before));
        break;
      }
    }
    KaString element;
    row.printToString(element, static_cast<unsigned char*>(values) + size_t{i} * length, format, 1);
    const bool cut = element.Len() > RoomLeft(out);
    if (cut) {
      out << element;
      break;
    }
    const bool elementLost = element.Len() == 0 && KaMemoryShortageCount() != shortages;
    if (elementLost || !appended(element, element.Len())) {
      out.Cut(before, static_cast<unsigned short>(out.Len() - before));
      break;
    }
  }
  return out;
}

void* KaTypeMgr::ScanFromKaString(signed char id, void* values, KaString& text, const char* format,
                                  unsigned int count) {
  const KaTypeDescriptor& row = Row(id);
  if (row.scanFromString == nullptr) return values;
  return row.scanFromString(values, text, format != nullptr ? format : row.printFormat, count);
}

const char* KaTypeMgr::ExchangeFormat(signed char id, const char* format) {
  KaTypeDescriptor& row = Row(id);
  const char* old = row.printFormat;
  if (format != nullptr) row.printFormat = format;
  return old;
}

KaCompareFunc KaTypeMgr::ExchangeKaTypeCmpFunc(signed char id, KaCompareFunc function) {
  KaTypeDescriptor& row = Row(id);
  const KaCompareFunc old = row.compare;
  if (function != nullptr) row.compare = function;
  return old;
}

KaPrintFunc KaTypeMgr::ExchangePrintToKaStringFunc(signed char id, KaPrintFunc function) {
  KaTypeDescriptor& row = Row(id);
  const KaPrintFunc old = row.printToString;
  if (function != nullptr) row.printToString = function;
  return old;
}

KaScanFunc KaTypeMgr::ExchangeScanFromKaStringFunc(signed char id, KaScanFunc function) {
  KaTypeDescriptor& row = Row(id);
  const KaScanFunc old = row.scanFromString;
  if (function != nullptr) row.scanFromString = function;
  return old;
}

const KaString& KaTypeMgr::GetNullPrintString() { return ka::NullPrintString(); }

void KaTypeMgr::SetNullPrintString(const KaString& text) { ka::NullPrintString() = text; }

// --- The single-string form of older formats ----------------------------------------

KaString* KaTypeMgr::ConvertToKaStringOld(void* values, signed char id, unsigned int count) {
  KaTypeConvertData* holder = ConvertTo(id, values, count);
  if (holder == nullptr) return nullptr;
  // The first character code that none of the texts holds separates them.
  unsigned short separator = ',';
  for (unsigned short code = 1; code <= 254; ++code) {
    bool used = false;
    for (unsigned int i = 0; i < count && !used; ++i) {
      const KaString* text = holder->GetString(static_cast<int>(i));
      used = text != nullptr && text->Find(code) >= 0;
    }
    if (!used) {
      separator = code;
      break;
    }
  }
  auto* joined = static_cast<KaString*>(Create(KaSTRING_T, 1));
  size_t expected = 0;  // units, before the string's own limit cuts them
  if (joined != nullptr) {
    for (unsigned int i = 0; i < count; ++i) {
      if (const KaString* text = holder->GetString(static_cast<int>(i))) {
        *joined << *text;
        expected += text->Len();
      }
      *joined << static_cast<char>(separator);
      ++expected;
    }
    // An append that could not get its memory leaves the text short: such a
    // string would read back as other values, so there is none.
    const size_t limit = KaString::kMaxSize / joined->UnitWidth() - 1;
    if (joined->Len() != std::min(expected, limit)) {
      Delete(KaSTRING_T, joined, 1);
      joined = nullptr;
    }
  }
  delete holder;
  return joined;
}

void* KaTypeMgr::ConvertFromKaStringOld(KaString* text, signed char id, unsigned int count) {
  if (text == nullptr) return nullptr;
  const unsigned short len = text->Len();
  const unsigned short separator = len > 0 ? text->UnitAt(len - 1) : ',';
  unsigned int pieces = 1;
  for (unsigned short i = 0; i < len; ++i) pieces += text->UnitAt(i) == separator;

  auto* elements = static_cast<KaString*>(Create(KaSTRING_T, pieces));
  if (elements == nullptr) return nullptr;
  // The pieces are copied first and the text is consumed only once the values
  // exist, so a step that cannot get its memory loses nothing of the caller's
  // text.
  unsigned short start = 0;
  for (unsigned int i = 0; i < pieces; ++i) {
    const int at = text->Find(separator, start);
    if (at < 0) break;  // elements after the last separator stay empty
    const auto n = static_cast<unsigned short>(at - start);
    elements[i] = text->Copy(start, n);
    if (elements[i].Len() != n) {
      Delete(KaSTRING_T, elements, pieces);
      return nullptr;
    }
    start = static_cast<unsigned short>(at + 1);
  }
  KaTypeConvertData* holder = KaTypeConvertData::Make(KaSTRING_T, pieces, elements, this);
  if (holder == nullptr) {
    Delete(KaSTRING_T, elements, pieces);
    return nullptr;
  }
  void* values = ConvertFrom(id, holder, count);
  delete holder;
  if (values != nullptr) text->Cut(0, start);
  return values;
}

// --- The default manager -------------------------------------------------------------

KaTypeMgr* DefaultTypeMgr(KaTypeMgr* replacement) {
  KaTypeMgr* current = DefaultManager();
  if (replacement != nullptr) DefaultManager() = replacement;
  return current;
}

void ___KaTypemgrContext(int start) {
  ___KaI18NContext(start);
  if (start != 0) {
    DefaultManager() = new (std::nothrow) KaTypeMgr(5);
  } else {
    delete DefaultManager();
    DefaultManager() = nullptr;
  }
}
