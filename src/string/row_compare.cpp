// The Compare slots of the string rows: KaString (and the older string row),
// KaIString and KaCaseIString. The array walk over memory-form objects and
// over stored elements, and how one pair of texts is put before KaStrCmp or
// the folding comparisons. Knows no table.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kabase/assert.h"
#include "kabase/codec.h"
#include "kabase/memory.h"
#include "kai18n/langctx.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kastrcmp.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypcmp.h"

namespace {

constexpr const char* kSource = "src/katypcmp";
constexpr int kLineUnitSize1 = 1005;
constexpr int kLineUnitSize2 = 1006;

bool IsMemoryForm(unsigned char nibble) { return nibble == 8 || nibble == 1; }

int Sign(int v) { return (v > 0) - (v < 0); }

// Bytes of one code unit: 2 for the code sets above 224 (Unicode, collation
// orders), 1 for the 8-bit sets and for 0 (native, which is 8-bit).
unsigned UnitSizeOf(unsigned char codeSet) { return codeSet > 224 ? 2 : 1; }

// A unit size other than 1 or 2 would make every later step read the text
// wrongly; it is reported and the text is read as bytes.
unsigned CheckedUnitSize(unsigned size, const char* text, int line) {
  if (size == 1 || size == 2) return size;
  KAMO_assert(text, kSource, line);
  return 1;
}

// --- One text, ready for a comparison routine ----------------------------------------------

// A text as KaStrCmp takes it: code set, language and zero-terminated units
// (null: no buffer).
struct Text {
  unsigned char codeSet = 0;
  unsigned char language = 0;
  const void* units = nullptr;
};

// Room for a stored text that cannot be read in place: 2-byte units (stored
// unaligned, in either byte order, and ended by 0x00 0xFF rather than a zero
// unit) and texts whose stored terminator is missing. Index keys are short,
// so the stack part holds nearly every text; a longer one takes memory from
// KaMalloc (which calls KaCallMemoryHandler when none is left). If memory
// stays short the text is compared as far as the stack part holds it: the
// answer is then that of the two prefixes, and the shortage has been
// reported.
class Scratch {
 public:
  static constexpr size_t kStackBytes = 512;

  Scratch() = default;
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() { std::free(heap_); }

  // A buffer of at least `bytes` bytes, 2-byte aligned; at least the stack
  // part, and `bytes` is lowered to what the buffer holds.
  unsigned char* Reserve(size_t& bytes) {
    if (bytes <= kStackBytes) return stack_;
    if (heap_ == nullptr || heapBytes_ < bytes) {
      std::free(heap_);
      heap_ = static_cast<unsigned char*>(KaMalloc(bytes));
      heapBytes_ = heap_ == nullptr ? 0 : bytes;
    }
    if (heap_ != nullptr) return heap_;
    bytes = kStackBytes;
    return stack_;
  }

 private:
  alignas(8) unsigned char stack_[kStackBytes];
  unsigned char* heap_ = nullptr;
  size_t heapBytes_ = 0;
};

// `n` bytes of text at `p` as zero-terminated units of `width` bytes, read in
// the byte order of `order`; p[n] lies inside the element. An odd trailing
// byte of 2-byte text is not a unit and is dropped.
const void* TerminatedUnits(const unsigned char* p, size_t n, unsigned width, ka::ByteOrder order,
                            Scratch& scratch) {
  if (width == 1) {
    // A well-formed element follows its text with a zero byte: read in place.
    if (p[n] == 0 || std::memchr(p, 0, n) != nullptr) return p;
    size_t room = n + 1;
    unsigned char* out = scratch.Reserve(room);
    const size_t take = room - 1 < n ? room - 1 : n;
    std::memcpy(out, p, take);
    out[take] = 0;
    return out;
  }
  size_t units = n / 2;
  size_t room = (units + 1) * 2;
  unsigned char* out = scratch.Reserve(room);
  if ((units + 1) * 2 > room) units = room / 2 - 1;
  auto* dst = reinterpret_cast<uint16_t*>(out);
  for (size_t i = 0; i < units; ++i) dst[i] = ka::LoadU16(p + 2 * i, order);
  dst[units] = 0;
  return out;
}

// --- Element cursors -----------------------------------------------------------------------

// Walks an array of `count` memory-form objects of `T`.
template <typename T>
class ObjectCursor {
 public:
  ObjectCursor(const void* values, unsigned int length, unsigned int count)
      : values_(static_cast<const unsigned char*>(values)),
        elements_(length == 0 ? count : length / sizeof(T)) {}
  // The first element; false when the array holds none (a null array, or a
  // length shorter than one object).
  bool First() { return values_ != nullptr && elements_ > 0; }
  // Steps to the next element; false when the array holds no further one.
  bool Next() { return ++index_ < elements_; }
  const T& Current() const { return *reinterpret_cast<const T*>(values_ + index_ * sizeof(T)); }

 private:
  const unsigned char* values_;
  size_t elements_;
  size_t index_ = 0;
};

// One stored string element: offsets 0..1 N (the element's size less these
// two bytes), 2 the code set, 3 the language, 4..N-1 the text, then 0x00 0xFF.
struct StoredElement {
  unsigned char codeSet;
  unsigned char language;
  const unsigned char* text;
  size_t textBytes;
};

// Walks stored string elements, each by its own N. `length` 0 leaves the walk
// unbounded (each element is trusted to be as long as it says); otherwise an
// element that reaches past `length`, or whose N is too short for the code
// set and language bytes, is not an element: the array ends before it.
class StoredCursor {
 public:
  StoredCursor(const void* values, unsigned int length, ka::ByteOrder order)
      : at_(static_cast<const unsigned char*>(values)), length_(length), order_(order) {}
  bool First() { return at_ != nullptr && Parse(); }
  bool Next() {
    at_ += size_;
    used_ += size_;
    return Parse();
  }
  const StoredElement& Current() const { return element_; }

 private:
  bool Parse() {
    if (length_ != 0 && length_ - used_ < 2) return false;
    const size_t n = ka::LoadU16(at_, order_);
    if (n < 4 || (length_ != 0 && n + 2 > length_ - used_)) return false;
    size_ = n + 2;
    element_ = {at_[2], at_[3], at_ + 4, n - 4};
    return true;
  }

  const unsigned char* at_;
  size_t length_;
  size_t used_ = 0;
  size_t size_ = 0;
  ka::ByteOrder order_;
  StoredElement element_{};
};

// Walks the older stored form: one two-byte prefix N (the size of all that
// follows it), then the texts back to back, each ended by a zero byte. The
// array's extent is `length`, or N + 2 when `length` is 0; a text without its
// terminator inside it is not an element.
class OldStoredCursor {
 public:
  OldStoredCursor(const void* values, unsigned int length, ka::ByteOrder order)
      : start_(static_cast<const unsigned char*>(values)), length_(length), order_(order) {}
  bool First() {
    if (start_ == nullptr || (length_ != 0 && length_ < 2)) return false;
    if (length_ == 0) length_ = size_t{ka::LoadU16(start_, order_)} + 2;
    at_ = 2;
    return Parse();
  }
  bool Next() {
    at_ += textBytes_ + 1;
    return Parse();
  }
  const char* Current() const { return reinterpret_cast<const char*>(start_ + at_); }

 private:
  bool Parse() {
    if (at_ >= length_) return false;
    const void* zero = std::memchr(start_ + at_, 0, length_ - at_);
    if (zero == nullptr) return false;
    textBytes_ = static_cast<size_t>(static_cast<const unsigned char*>(zero) - (start_ + at_));
    return true;
  }

  const unsigned char* start_;
  size_t length_;
  ka::ByteOrder order_;
  size_t at_ = 0;
  size_t textBytes_ = 0;
};

// --- The walk ------------------------------------------------------------------------------

// The array walk every Compare slot keeps: compare a pair; if pairs remain to
// be asked for, check that both arrays hold a next element before looking at
// the result, so that a decided result can come back with 2101.
template <typename Cursor1, typename Cursor2, typename PairOrder>
int Walk(Cursor1& first, Cursor2& second, unsigned int count, PairOrder order, int& error) {
  error = 0;
  if (count == 0) return 0;
  if (!first.First() || !second.First()) {
    error = kKaArrayBoundExceeded;
    return 0;
  }
  for (unsigned int compared = 1;; ++compared) {
    const int result = order(first.Current(), second.Current());
    if (compared == count) return result;
    if (!first.Next() || !second.Next()) {
      error = kKaArrayBoundExceeded;
      return result;
    }
    if (result != 0) return result;
  }
}

// --- KaString pairs ------------------------------------------------------------------------

int CompareTexts(const Text& a, const Text& b, unsigned short cmpOp) {
  // Mode 1, as the string classes call it, and all of both texts.
  return Sign(KaStrCmp(a.codeSet, a.language, a.units, b.codeSet, b.language, b.units, cmpOp, -1, 1,
                       nullptr));
}

// A KaString's buffer is its own units, zero-terminated and aligned.
Text MemoryText(const KaString& s, const char* check, int line) {
  CheckedUnitSize(UnitSizeOf(s.CodeSet()), check, line);
  return {s.CodeSet(), s.Language(), s.StrGet()};
}

Text StoredText(const StoredElement& e, ka::ByteOrder order, Scratch& scratch, const char* check,
                int line) {
  const unsigned width = CheckedUnitSize(UnitSizeOf(e.codeSet), check, line);
  return {e.codeSet, e.language, TerminatedUnits(e.text, e.textBytes, width, order, scratch)};
}

int CompareStrings(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                   void* values2, unsigned short cmpOp, unsigned int count, int& error) {
  const unsigned char nibble = format & 0x0F;
  if (IsMemoryForm(nibble)) {
    ObjectCursor<KaString> first(values1, length1, count);
    ObjectCursor<KaString> second(values2, length2, count);
    return Walk(
        first, second, count,
        [cmpOp](const KaString& a, const KaString& b) {
          return CompareTexts(MemoryText(a, "(CSSize1 == 1) || (CSSize1 == 2)", kLineUnitSize1),
                              MemoryText(b, "(CSSize2 == 1) || (CSSize2 == 2)", kLineUnitSize2),
                              cmpOp);
        },
        error);
  }
  const ka::ByteOrder order = ka::OrderOf(nibble);
  StoredCursor first(values1, length1, order);
  StoredCursor second(values2, length2, order);
  Scratch scratch1;
  Scratch scratch2;
  return Walk(
      first, second, count,
      [&](const StoredElement& a, const StoredElement& b) {
        return CompareTexts(
            StoredText(a, order, scratch1, "(CSSize1 == 1) || (CSSize1 == 2)", kLineUnitSize1),
            StoredText(b, order, scratch2, "(CSSize2 == 1) || (CSSize2 == 2)", kLineUnitSize2),
            cmpOp);
      },
      error);
}

// --- KaIString and KaCaseIString pairs -------------------------------------------------------

using FoldedCompare = int (*)(const char*, const char*, unsigned short, unsigned short,
                              unsigned short);

// The plain byte order of the two texts: KaStrCmp's byte comparison (both code
// sets 0, simple comparison), unsigned bytes up to the first difference.
int CompareBytes(const char* a, const char* b, unsigned short cmpOp) {
  return Sign(KaStrCmp(0, 0, a, 0, 0, b, cmpOp | kKaCmpSimple, -1, 1, nullptr));
}

// The text of a stored case-insensitive string: bytes, whatever its code set
// byte says (the classes have none), and an empty text is the class's empty
// string, which holds no buffer. A loaded element's flags word is 0.
const char* StoredBytes(const StoredElement& e, Scratch& scratch) {
  if (e.textBytes == 0 || e.text[0] == 0) return nullptr;
  return static_cast<const char*>(
      TerminatedUnits(e.text, e.textBytes, 1, ka::ByteOrder::kMemory, scratch));
}

template <typename T, FoldedCompare kFolded>
int CompareFoldedStrings(unsigned char format, unsigned int length1, void* values1,
                         unsigned int length2, void* values2, unsigned short cmpOp,
                         unsigned int count, int& error) {
  const bool plain = (cmpOp & kKaCmpSimple) != 0;
  const unsigned char nibble = format & 0x0F;
  if (IsMemoryForm(nibble)) {
    ObjectCursor<T> first(values1, length1, count);
    ObjectCursor<T> second(values2, length2, count);
    return Walk(
        first, second, count,
        [cmpOp, plain](const T& a, const T& b) {
          if (plain) return CompareBytes(a.StrGet(), b.StrGet(), cmpOp);
          return Sign(kFolded(a.StrGet(), b.StrGet(), 0, a.GetFlags(), b.GetFlags()));
        },
        error);
  }
  StoredCursor first(values1, length1, ka::OrderOf(nibble));
  StoredCursor second(values2, length2, ka::OrderOf(nibble));
  Scratch scratch1;
  Scratch scratch2;
  return Walk(
      first, second, count,
      [&](const StoredElement& a, const StoredElement& b) {
        const char* s1 = StoredBytes(a, scratch1);
        const char* s2 = StoredBytes(b, scratch2);
        if (plain) return CompareBytes(s1, s2, cmpOp);
        return Sign(kFolded(s1, s2, 0, 0, 0));
      },
      error);
}

}  // namespace

int StringCompare(unsigned char format, unsigned int length1, void* values1, unsigned int length2,
                  void* values2, unsigned short option, unsigned int count, int& error) {
  return CompareStrings(format, length1, values1, length2, values2, option, count, error);
}

int OldStringCompare(unsigned char format, unsigned int length1, void* values1,
                     unsigned int length2, void* values2, unsigned short option, unsigned int count,
                     int& error) {
  const unsigned char nibble = format & 0x0F;
  if (IsMemoryForm(nibble)) {
    return CompareStrings(format, length1, values1, length2, values2, option, count, error);
  }
  // An older text is what loading it makes: a byte string in the default
  // 8-bit code set and the default language.
  const unsigned char codeSet = KaLanguageContext::GetDefault8BitCodeSet();
  const unsigned char language = KaLanguageContext::GetDefaultLanguage();
  OldStoredCursor first(values1, length1, ka::OrderOf(nibble));
  OldStoredCursor second(values2, length2, ka::OrderOf(nibble));
  return Walk(
      first, second, count,
      [&](const char* a, const char* b) {
        return CompareTexts({codeSet, language, a}, {codeSet, language, b}, option);
      },
      error);
}

int KaIStringCompare(unsigned char format, unsigned int length1, void* values1,
                     unsigned int length2, void* values2, unsigned short option, unsigned int count,
                     int& error) {
  return CompareFoldedStrings<KaIString, KaIStringCmp>(format, length1, values1, length2, values2,
                                                       option, count, error);
}

int KaCaseIStringCompare(unsigned char format, unsigned int length1, void* values1,
                         unsigned int length2, void* values2, unsigned short option,
                         unsigned int count, int& error) {
  return CompareFoldedStrings<KaCaseIString, KaCaseIStringCmp>(format, length1, values1, length2,
                                                               values2, option, count, error);
}
