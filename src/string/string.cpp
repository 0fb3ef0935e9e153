// KaString: the text value, its edit routine and its operations.
#include <algorithm>
#include <atomic>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "kabase/assert.h"
#include "kabase/codec.h"
#include "kabase/config.h"
#include "kabase/memory.h"
#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "katypemgr/kastrcmp.h"
#include "katypemgr/kastring.h"

namespace {

constexpr unsigned short kToEnd = 65535;

unsigned Width(unsigned char codeSet) { return codeSet > 224 ? 2 : 1; }

unsigned short LoadUnit(const void* p, unsigned w) {
  if (w == 1) return *static_cast<const unsigned char*>(p);
  return ka::LoadU16(p, ka::ByteOrder::kMemory);
}

void StoreUnit(void* p, unsigned short unit, unsigned w) {
  if (w == 1) {
    *static_cast<unsigned char*>(p) = static_cast<unsigned char>(unit);
  } else {
    ka::StoreU16(p, unit, ka::ByteOrder::kMemory);
  }
}

// Units before the first zero unit, looking at no more than `max` units.
size_t UnitLength(const void* p, unsigned w, size_t max) {
  if (p == nullptr) return 0;
  if (w == 1) return strnlen(static_cast<const char*>(p), max);
  const auto* bytes = static_cast<const unsigned char*>(p);
  size_t n = 0;
  while (n < max && LoadUnit(bytes + 2 * n, 2) != 0) ++n;
  return n;
}

// The length of a text up to its zero byte, at most 65535. Appended texts are
// mostly short: looking at the first bytes here costs less than the call.
size_t TextLength(const char* text) {
  constexpr size_t kShort = 16;
  for (size_t i = 0; i < kShort; ++i) {
    if (text[i] == 0) return i;
  }
  return kShort + strnlen(text + kShort, kToEnd - kShort);
}

// memmove for the short runs that most edits copy, without the call. Every
// load comes before the stores, so the runs may overlap (a string appended to
// itself).
template <typename Word>
void MoveEnds(unsigned char* to, const unsigned char* from, size_t n) {
  Word head;
  Word tail;
  std::memcpy(&head, from, sizeof head);
  std::memcpy(&tail, from + n - sizeof tail, sizeof tail);
  std::memcpy(to, &head, sizeof head);
  std::memcpy(to + n - sizeof tail, &tail, sizeof tail);
}

void MoveBytes(unsigned char* to, const unsigned char* from, size_t n) {
  if (n > 16) {
    std::memmove(to, from, n);
  } else if (n >= 8) {
    MoveEnds<uint64_t>(to, from, n);
  } else if (n >= 4) {
    MoveEnds<uint32_t>(to, from, n);
  } else if (n >= 2) {
    MoveEnds<uint16_t>(to, from, n);
  } else if (n == 1) {
    *to = *from;
  }
}

// The decimal digits of an integer, as "%d", "%lld" and "%llu" print them
// (std::to_chars writes exactly those, without the cost of a format string).
struct Digits {
  template <typename T>
  explicit Digits(T value) {
    length = static_cast<size_t>(std::to_chars(text, text + sizeof text - 1, value).ptr - text);
    text[length] = '\0';
  }
  char text[24];
  size_t length;
};

// The configuration decides whether a cut text is reported; the cut happens
// either way.
void ReportOverflow() {
  if (DefaultConfig().GetInt("debug", "stringOverflow", 0) != 0) {
    KAMO_assert("String overflow", "src/kastring", 1110);
  }
}

bool IsBlank(unsigned short unit) { return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D); }

bool IsDigitUnit(unsigned short unit) { return unit >= '0' && unit <= '9'; }

int DigitValue(unsigned short unit) {
  if (unit >= '0' && unit <= '9') return unit - '0';
  if (unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
  if (unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
  return 99;
}

// Parses an optional "-" and digits of `base` (0: by prefix) from the units of
// `s`, saturating at the range of long long.
long long ParseUnits(const KaString& s, int base) {
  const unsigned short len = s.Len();
  unsigned short i = 0;
  const bool negative = len > 0 && s.UnitAt(0) == '-';
  if (negative) ++i;
  if (base == 0) {
    base = 10;
    if (i < len && s.UnitAt(i) == '0') {
      base = 8;
      if (i + 1 < len && (s.UnitAt(i + 1) == 'x' || s.UnitAt(i + 1) == 'X') && i + 2 < len &&
          DigitValue(s.UnitAt(i + 2)) < 16) {
        base = 16;
        i += 2;
      }
    }
  }
  unsigned long long magnitude = 0;
  const unsigned long long limit = negative ? 1ull + LLONG_MAX : LLONG_MAX;
  bool saturated = false;
  for (; i < len; ++i) {
    const int d = DigitValue(s.UnitAt(i));
    if (d >= base) break;
    if (magnitude > (limit - d) / base) {
      saturated = true;
      continue;
    }
    magnitude = magnitude * base + d;
  }
  if (saturated) magnitude = limit;
  return negative ? static_cast<long long>(0 - magnitude) : static_cast<long long>(magnitude);
}

int ClampToInt(long long v) { return static_cast<int>(std::clamp<long long>(v, INT_MIN, INT_MAX)); }

// The first units of the text as ASCII, for the C library's conversions; a
// unit outside ASCII ends the copy.
void AsciiCopy(const KaString& s, char (&out)[80]) {
  const unsigned short len = std::min<unsigned short>(s.Len(), sizeof out - 1);
  unsigned short i = 0;
  for (; i < len; ++i) {
    const unsigned short unit = s.UnitAt(i);
    if (unit == 0 || unit > 0x7F) break;
    out[i] = static_cast<char>(unit);
  }
  out[i] = '\0';
}

unsigned char Resolved(unsigned char codeSet) {
  return codeSet == 0 ? KaLanguageContext::GetNativeCodeSet() : codeSet;
}

// A buffer of units converted into another code set, character by character;
// owns its memory.
class Converted {
 public:
  Converted(const unsigned char* source, unsigned char sourceCodeSet, size_t count,
            unsigned char targetCodeSet) {
    const unsigned sw = Width(sourceCodeSet);
    const unsigned tw = Width(targetCodeSet);
    if (count * tw > KaString::kMaxSize) {
      ReportOverflow();
      count = KaString::kMaxSize / tw;
    }
    units_ = static_cast<unsigned char*>(KaMalloc(count * tw + tw));
    if (units_ == nullptr) return;
    const KaCodeSet* target = KaCodeSet::Get(targetCodeSet);
    for (size_t i = 0; i < count; ++i) {
      const unsigned short unit = LoadUnit(source + i * sw, sw);
      // A set this library does not know keeps the unit, cut to its width.
      const unsigned short mapped = target != nullptr ? target->ConvertUnit(unit, sourceCodeSet)
                                                      : (tw == 1 ? unit & 0xFF : unit);
      StoreUnit(units_ + i * tw, mapped, tw);
    }
    count_ = count;
  }
  ~Converted() { std::free(units_); }
  Converted(const Converted&) = delete;
  Converted& operator=(const Converted&) = delete;

  const unsigned char* Units() const { return units_; }
  size_t Count() const { return count_; }

 private:
  unsigned char* units_ = nullptr;
  size_t count_ = 0;
};

// The allocation for a buffer of `needed` bytes that had `current`: at least
// double, so that a text built piece by piece is copied O(1) times per unit,
// and never below the smallest block the heap hands out anyway.
size_t CapacityFor(size_t needed, size_t current) {
  constexpr size_t kSmallest = 24;
  const size_t wanted = std::max({needed, 2 * current, kSmallest});
  return std::min<size_t>((wanted + 7) & ~size_t{7}, KaString::kMaxSize);
}

// Copies into a new buffer while its byte budget lasts.
class Writer {
 public:
  Writer(unsigned char* out, size_t budget) : out_(out), budget_(budget) {}
  void Put(const unsigned char* from, size_t bytes) {
    const size_t n = std::min(bytes, budget_ - used_);
    if (n > 0) std::memcpy(out_ + used_, from, n);
    used_ += n;
  }

 private:
  unsigned char* out_;
  size_t budget_;
  size_t used_ = 0;
};

constinit std::atomic<unsigned short> g_asterisk{0};
constinit std::atomic<unsigned short> g_question{0};
constinit std::atomic<unsigned short> g_escape{0};

// A wildcard order, fetched from code set 1 the first time. Two threads that
// race here compute the same order, and only a 0 is ever replaced.
unsigned short WildcardOrder(std::atomic<unsigned short>& slot, char c) {
  unsigned short order = slot.load(std::memory_order_acquire);
  if (order != 0) return order;
  unsigned short fetched = KaCodeSet::Get(1)->GetOrder(static_cast<unsigned char>(c));
  if (slot.compare_exchange_strong(order, fetched, std::memory_order_acq_rel)) return fetched;
  return order;
}

int SetWildcard(std::atomic<unsigned short>& slot, const KaChar& c) {
  KaStringIterator it(c);
  slot.store(it.GetNextOrder(0), std::memory_order_release);
  return 0;
}

}  // namespace

// --- The edit routine -----------------------------------------------------------

void KaString::EditUnits(const void* source, unsigned char sourceCodeSet, unsigned short position,
                         unsigned short sourcePosition, unsigned short count, unsigned short repeat,
                         EditMode mode, unsigned char /*flag*/) {
  // An unknown mode has no size rule: the string stays as it is.
  if (mode != kOverwrite && mode != kInsert && mode != kSetFrom) return;
  const auto* src = static_cast<const unsigned char*>(source);
  const unsigned sw = Width(sourceCodeSet);
  if (mode == kSetFrom && repeat == 1 && sourceCodeSet == codeSet_ && src != nullptr &&
      AppendInPlace(src + size_t{sourcePosition} * sw, position, count)) {
    return;
  }
  if (mode != kSetFrom &&
      (src == nullptr || count == 0 || LoadUnit(src + sourcePosition * sw, sw) == 0)) {
    return;
  }
  if (src == nullptr) count = 0;

  // A source in another code set (or of another width) is converted first;
  // the native set (0) is taken as the target's own.
  const unsigned w = UnitWidth();
  std::optional<Converted> converted;
  if (src != nullptr && count > 0 &&
      ((sourceCodeSet != 0 && sourceCodeSet != codeSet_) || sw != w)) {
    converted.emplace(src + sourcePosition * sw, sourceCodeSet, count, codeSet_);
    if (converted->Units() == nullptr) return;  // out of memory: the string stays as it was
    src = converted->Units();
    sourcePosition = 0;
    count = static_cast<unsigned short>(converted->Count());
  }

  // A position past the end is the end: the old text is never read past it.
  const size_t oldSize = size_;
  const size_t oldLen = Len();
  const size_t p = std::min<size_t>(position, oldLen) * w;
  const size_t run = size_t{count} * w;
  const size_t runs = run * repeat;
  size_t newSize = 0;
  switch (mode) {
    case kOverwrite: {
      // Overwriting past the end grows the text; the old terminator is kept.
      const size_t tailStart = p + run;
      newSize = p + runs + (oldSize > tailStart ? oldSize - tailStart : w);
      break;
    }
    case kInsert:
      newSize = (oldSize != 0 ? oldSize : w) + runs;
      break;
    case kSetFrom:
      newSize = p + runs + w;
      break;
  }

  if (mode == kSetFrom && newSize == w) {
    // Nothing to hold: no buffer at all.
    Adopt(nullptr, 0, 0);
    return;
  }
  const bool truncated = newSize > kMaxSize;
  if (truncated) {
    ReportOverflow();
    newSize = kMaxSize;
  }
  // Text taken from this string's own buffer (a cut, `s << s`) must be read
  // before it is overwritten. Setting from it with one run is a single
  // memmove, and the buffer may move as it grows (the source is rebased);
  // inserting or overwriting would shift the source under the copy, so those
  // build a new buffer from the intact old one.
  const size_t at = size_t{sourcePosition} * w;
  const auto from = reinterpret_cast<uintptr_t>(src);
  const auto own = reinterpret_cast<uintptr_t>(buffer_);
  const bool aliased =
      buffer_ != nullptr && src != nullptr && from < own + capacity_ && from + at + run > own;
  if (!truncated && (!aliased || (mode == kSetFrom && repeat <= 1))) {
    if (EditInPlace(src, at, p, run, repeat, mode, newSize)) EndAtFirstZero(p, p + runs);
    return;
  }
  Rebuild(src, at, p, run, repeat, mode, newSize, truncated);
}

// The most common edit, appending text of the own code set that fits the
// buffer already held, without the general size rules. One memmove: the text
// may be this string's own. False when the general path must do it.
inline bool KaString::AppendInPlace(const unsigned char* text, unsigned short position,
                                    unsigned short count) {
  const unsigned w = UnitWidth();
  const size_t len = Len();
  if (buffer_ == nullptr || position < len) return false;
  const size_t p = len * w;
  const size_t run = size_t{count} * w;
  const size_t newSize = p + run + w;
  if (newSize > capacity_) return false;
  std::memmove(buffer_ + p, text, run);
  std::memset(buffer_ + p + run, 0, w);
  size_ = static_cast<unsigned short>(newSize);
  EndAtFirstZero(p, p + run);
  return true;
}

// The edit in the string's own buffer, grown geometrically when the result
// does not fit. False, with the string unchanged, when memory is short.
inline bool KaString::EditInPlace(const unsigned char* source, size_t sourceAt, size_t p,
                                  size_t run, unsigned short repeat, EditMode mode,
                                  size_t newSize) {
  const unsigned w = UnitWidth();
  const size_t oldSize = size_;
  const unsigned char* taken = source != nullptr ? source + sourceAt : nullptr;
  const auto offset = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(taken) -
                                             reinterpret_cast<uintptr_t>(buffer_));
  const bool own = buffer_ != nullptr && taken != nullptr && offset >= 0 && offset < capacity_;
  if (newSize > capacity_ && !Reserve(newSize)) return false;
  if (own) taken = buffer_ + offset;  // the buffer may have moved
  unsigned char* b = buffer_;
  const size_t runs = run * repeat;
  // The kept tail moves first, to where it ends up, terminator included.
  if (mode == kOverwrite && oldSize > p + run) {
    std::memmove(b + p + runs, b + p + run, oldSize - p - run);
  } else if (mode == kInsert && oldSize != 0) {
    std::memmove(b + p + runs, b + p, oldSize - p);
  }
  for (unsigned r = 0; r < repeat && run > 0; ++r) {
    std::memmove(b + p + r * run, taken, run);
  }
  const bool tailKept =
      (mode == kOverwrite && oldSize > p + run) || (mode == kInsert && oldSize != 0);
  if (!tailKept) std::memset(b + newSize - w, 0, w);
  size_ = static_cast<unsigned short>(newSize);
  return true;
}

// The edit into a new buffer, for a cut result or a source inside the own
// buffer; the old buffer is freed only once the new one is complete.
void KaString::Rebuild(const unsigned char* source, size_t sourceAt, size_t p, size_t run,
                       unsigned short repeat, EditMode mode, size_t newSize, bool truncated) {
  const unsigned w = UnitWidth();
  const size_t oldSize = size_;
  const size_t capacity = CapacityFor(newSize, 0);
  auto* out = static_cast<unsigned char*>(KaMalloc(capacity));
  if (out == nullptr) return;
  std::memset(out, 0, newSize);
  Writer writer(out, newSize);
  writer.Put(buffer_, p);
  for (unsigned r = 0; r < repeat && run > 0; ++r) writer.Put(source + sourceAt, run);
  if (mode == kOverwrite && oldSize > p + run) {
    writer.Put(buffer_ + p + run, oldSize - p - run);
  } else if (mode == kInsert && oldSize > p) {
    writer.Put(buffer_ + p, oldSize - p);
  }
  if (mode == kSetFrom || truncated) std::memset(out + newSize - w, 0, w);
  Adopt(out, static_cast<unsigned short>(newSize), static_cast<unsigned short>(capacity));
  EndAtFirstZero(p, newSize - w);
}

// Room for `bytes` bytes, keeping the text; false when memory is short.
inline bool KaString::Reserve(size_t bytes) {
  const size_t capacity = CapacityFor(bytes, capacity_);
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (auto* grown = static_cast<unsigned char*>(std::realloc(buffer_, capacity))) {
      buffer_ = grown;
      capacity_ = static_cast<unsigned short>(capacity);
      return true;
    }
    if (KaCallMemoryHandler(capacity) == 0) return false;
  }
  return false;
}

inline void KaString::EndAtFirstZero(size_t from, size_t to) {
  // A text ends at its first zero unit. Keeping the size at that unit (a run
  // taken from counted source units may hold a zero) lets Len() read the
  // length off the size instead of scanning. Only the bytes an edit wrote
  // (`from` to `to`) can hold one: the kept text had none.
  size_t zero = to;
  if (UnitWidth() == 1) {
    // Edits are mostly short: a loop beats the call for a few bytes.
    if (to - from <= 32) {
      for (size_t i = from; i < to; ++i) {
        if (buffer_[i] == 0) {
          zero = i;
          break;
        }
      }
    } else if (const void* at = std::memchr(buffer_ + from, 0, to - from)) {
      zero = static_cast<size_t>(static_cast<const unsigned char*>(at) - buffer_);
    }
  } else {
    for (size_t i = from; i < to; i += 2) {
      if (LoadUnit(buffer_ + i, 2) == 0) {
        zero = i;
        break;
      }
    }
  }
  if (zero == to) return;
  if (zero == 0) {
    Adopt(nullptr, 0, 0);
  } else {
    size_ = static_cast<unsigned short>(zero + UnitWidth());
  }
}

inline void KaString::Adopt(unsigned char* buffer, unsigned short size, unsigned short capacity) {
  std::free(buffer_);
  buffer_ = buffer;
  size_ = size;
  capacity_ = capacity;
}

// The helpers of appending and constructing are `inline`: a function the
// shared library exports could be replaced at load time, so the compiler would
// otherwise call each of them through the symbol table on every append.
inline void KaString::AppendText(const char* text, size_t n) {
  AppendUnits(text, KaLanguageContext::GetDefault8BitCodeSet(), n);
}

// Appending and constructing are most of all edits: text of the own code set
// that holds no zero unit (it was measured up to its terminator) and fits is
// copied straight in; everything else takes the edit routine.
inline void KaString::AppendUnits(const void* text, unsigned char codeSet, size_t count) {
  const unsigned w = UnitWidth();
  if (codeSet == codeSet_ && buffer_ != nullptr) {
    const size_t p = size_ - w;  // the terminator's place
    const size_t run = count * w;
    if (p + run + w <= capacity_) {
      MoveBytes(buffer_ + p, static_cast<const unsigned char*>(text), run);
      std::memset(buffer_ + p + run, 0, w);
      size_ = static_cast<unsigned short>(p + run + w);
      return;
    }
  }
  EditUnits(text, codeSet, Len(), 0, static_cast<unsigned short>(count), 1, kSetFrom);
}

// One unit, not zero, held in a unit of its code set's width.
inline void KaString::AppendUnit(unsigned short unit, unsigned char codeSet) {
  const unsigned w = UnitWidth();
  if (codeSet == codeSet_ && buffer_ != nullptr && size_ + w <= capacity_) {
    StoreUnit(buffer_ + size_ - w, unit, w);
    StoreUnit(buffer_ + size_, 0, w);
    size_ = static_cast<unsigned short>(size_ + w);
    return;
  }
  if (Width(codeSet) == 1) {
    const auto byte = static_cast<unsigned char>(unit);
    EditUnits(&byte, codeSet, Len(), 0, 1, 1, kSetFrom);
  } else {
    EditUnits(&unit, codeSet, Len(), 0, 1, 1, kSetFrom);
  }
}

inline void KaString::SetUnits(const void* text, unsigned char codeSet, size_t count) {
  const unsigned w = UnitWidth();
  const size_t size = count * w + w;
  if (codeSet == codeSet_ && buffer_ == nullptr && count > 0 && size <= kMaxSize) {
    const size_t capacity = CapacityFor(size, 0);
    auto* buffer = static_cast<unsigned char*>(KaMalloc(capacity));
    if (buffer == nullptr) return;
    MoveBytes(buffer, static_cast<const unsigned char*>(text), size - w);
    std::memset(buffer + size - w, 0, w);
    Adopt(buffer, static_cast<unsigned short>(size), static_cast<unsigned short>(capacity));
    return;
  }
  EditUnits(text, codeSet, 0, 0, static_cast<unsigned short>(count), 1, kSetFrom);
}

inline void KaString::SetFromText(const char* text, unsigned char codeSet, unsigned char language) {
  codeSet_ = codeSet;
  language_ = language;
  if (text != nullptr) SetUnits(text, codeSet, TextLength(text));
}

// The string becomes `count` units of `text`, which may lie in its own
// buffer: the units are copied before anything they sit in is released.
void KaString::AssignUnits(const void* text, unsigned char codeSet, unsigned char language,
                           unsigned short count) {
  if (Width(codeSet) != UnitWidth()) {
    KaString fresh(codeSet, language);
    fresh.EditUnits(text, codeSet, 0, 0, count, 1, kSetFrom);
    // Out of memory: the string keeps its old text rather than losing it.
    if (fresh.buffer_ == nullptr && count > 0) return;
    *this = std::move(fresh);
    return;
  }
  // Room first, so that the edit itself cannot fail: a string that cannot get
  // its memory keeps its old text and code set. (Text from the own buffer is
  // never longer than the buffer, so it never moves here.)
  const size_t need = (size_t{count} + 1) * UnitWidth();
  if (count > 0 && need <= kMaxSize && need > capacity_ && !Reserve(need)) return;
  codeSet_ = codeSet;
  EditUnits(text, codeSet, 0, 0, count, 1, kSetFrom);
  language_ = language;
}

// --- Construction -----------------------------------------------------------------

KaString::KaString()
    : codeSet_(KaLanguageContext::GetDefaultCodeSet()),
      language_(KaLanguageContext::GetDefaultLanguage()) {}

KaString::KaString(const KaString& other) : codeSet_(other.codeSet_), language_(other.language_) {
  if (other.buffer_ != nullptr) SetUnits(other.buffer_, other.codeSet_, other.Len());
}

KaString::KaString(KaString&& other) noexcept
    : buffer_(other.buffer_),
      size_(other.size_),
      codeSet_(other.codeSet_),
      language_(other.language_),
      capacity_(other.capacity_) {
  other.buffer_ = nullptr;
  other.size_ = 0;
  other.capacity_ = 0;
}

KaString::KaString(char c) : KaString(static_cast<unsigned char>(c)) {}

KaString::KaString(unsigned char c)
    : codeSet_(KaLanguageContext::GetDefault8BitCodeSet()),
      language_(KaLanguageContext::GetDefaultLanguage()) {
  if (c != 0) EditUnits(&c, codeSet_, 0, 0, 1, 1, kSetFrom);
}

KaString::KaString(unsigned char codeSet, unsigned char language)
    : codeSet_(codeSet), language_(language) {}

KaString::KaString(short value) : KaString(static_cast<int>(value)) {}

KaString::KaString(unsigned short unit)
    : codeSet_(KaLanguageContext::GetDefault16BitCodeSet()),
      language_(KaLanguageContext::GetDefaultLanguage()) {
  if (unit != 0) EditUnits(&unit, codeSet_, 0, 0, 1, 1, kSetFrom);
}

KaString::KaString(int value) {
  SetFromText(Digits(value).text, KaLanguageContext::GetDefault8BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage());
}

// Printed with the signed conversion on purpose: stored texts of unsigned
// values above INT_MAX have always been negative numbers.
KaString::KaString(unsigned int value) : KaString(static_cast<int>(value)) {}

KaString::KaString(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", value);
  SetFromText(text, KaLanguageContext::GetDefault8BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage());
}

KaString::KaString(long long value) {
  SetFromText(Digits(value).text, KaLanguageContext::GetDefault8BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage());
}

KaString::KaString(unsigned long long value) {
  SetFromText(Digits(value).text, KaLanguageContext::GetDefault8BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage());
}

KaString::KaString(const char* text) {
  SetFromText(text, KaLanguageContext::GetDefault8BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage());
}

KaString::KaString(const char* text, unsigned short n)
    : codeSet_(KaLanguageContext::GetDefault8BitCodeSet()),
      language_(KaLanguageContext::GetDefaultLanguage()) {
  if (text == nullptr || n == 0) return;
  if (n > 65534) n = static_cast<unsigned short>(strnlen(text, kToEnd));
  EditUnits(text, codeSet_, 0, 0, n, 1, kSetFrom);
}

KaString::KaString(const unsigned short* text) : KaString(text, kToEnd) {}

KaString::KaString(const unsigned short* text, unsigned short n)
    : codeSet_(KaLanguageContext::GetDefault16BitCodeSet()),
      language_(KaLanguageContext::GetDefaultLanguage()) {
  if (text == nullptr || n == 0) return;
  if (n > 65534) n = static_cast<unsigned short>(UnitLength(text, 2, kToEnd));
  EditUnits(text, codeSet_, 0, 0, n, 1, kSetFrom);
}

KaString::~KaString() { std::free(buffer_); }

KaString& KaString::operator=(const KaString& other) {
  if (this != &other) AssignUnits(other.buffer_, other.codeSet_, other.language_, other.Len());
  return *this;
}

KaString& KaString::operator=(KaString&& other) noexcept {
  if (this == &other) return *this;
  std::free(buffer_);
  buffer_ = other.buffer_;
  size_ = other.size_;
  codeSet_ = other.codeSet_;
  language_ = other.language_;
  capacity_ = other.capacity_;
  other.buffer_ = nullptr;
  other.size_ = 0;
  other.capacity_ = 0;
  return *this;
}

// Both build the new text first (see the copy assignment); empty when a
// non-empty text could not be copied.
KaString& KaString::operator=(const char* text) {
  AssignUnits(text, KaLanguageContext::GetDefault8BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage(),
              static_cast<unsigned short>(UnitLength(text, 1, kToEnd)));
  return *this;
}

KaString& KaString::operator=(const unsigned short* text) {
  AssignUnits(text, KaLanguageContext::GetDefault16BitCodeSet(),
              KaLanguageContext::GetDefaultLanguage(),
              static_cast<unsigned short>(UnitLength(text, 2, kToEnd)));
  return *this;
}

// --- Reading ---------------------------------------------------------------------

bool KaString::IsEmpty() const { return buffer_ == nullptr || LoadUnit(buffer_, UnitWidth()) == 0; }

unsigned short KaString::UnitAt(unsigned short position) const {
  const unsigned w = UnitWidth();
  if (buffer_ == nullptr || size_t{position} * w + w > size_) return 0;
  return LoadUnit(buffer_ + size_t{position} * w, w);
}

KaChar KaString::operator[](int position) { return KaChar(*this, position); }

// --- Appending -------------------------------------------------------------------

KaString& KaString::operator<<(const KaString& s) {
  if (s.buffer_ != nullptr) AppendUnits(s.buffer_, s.codeSet_, s.Len());
  return *this;
}

KaString& KaString::operator<<(char c) {
  if (c != 0) AppendUnit(static_cast<unsigned char>(c), KaLanguageContext::GetDefault8BitCodeSet());
  return *this;
}

KaString& KaString::operator<<(unsigned short unit) {
  if (unit != 0) AppendUnit(unit, KaLanguageContext::GetDefault16BitCodeSet());
  return *this;
}

// Numbers are appended as the constructor of their type prints them, in the
// default 8-bit code set, without a string in between.
KaString& KaString::operator<<(short value) { return *this << int{value}; }

KaString& KaString::operator<<(int value) {
  const Digits d(value);
  AppendText(d.text, d.length);
  return *this;
}

KaString& KaString::operator<<(unsigned int value) { return *this << static_cast<int>(value); }
KaString& KaString::operator<<(float value) { return *this << double{value}; }

KaString& KaString::operator<<(double value) {
  char text[32];
  const int n = std::snprintf(text, sizeof text, "%.17g", value);
  AppendText(text, static_cast<size_t>(std::clamp(n, 0, static_cast<int>(sizeof text) - 1)));
  return *this;
}

KaString& KaString::operator<<(long long value) {
  const Digits d(value);
  AppendText(d.text, d.length);
  return *this;
}

KaString& KaString::operator<<(unsigned long long value) {
  const Digits d(value);
  AppendText(d.text, d.length);
  return *this;
}

KaString& KaString::AppendSlow(const char* text, size_t n) {
  AppendText(text, std::min<size_t>(n, kToEnd));
  return *this;
}

KaString& KaString::operator<<(const unsigned short* text) {
  if (text != nullptr) {
    EditUnits(text, KaLanguageContext::GetDefault16BitCodeSet(), Len(), 0,
              static_cast<unsigned short>(UnitLength(text, 2, kToEnd)), 1, kSetFrom);
  }
  return *this;
}

KaString operator+(const KaString& a, const KaString& b) {
  KaString joined(a);
  joined << b;
  // When memory ran short the result is empty, never a piece of the two.
  if (joined.Len() != a.Len() + b.Len() && joined.Size() != KaString::kMaxSize) {
    return KaString(a.CodeSet(), a.Language());
  }
  return joined;
}

// --- Editing ---------------------------------------------------------------------

KaString KaString::Copy(unsigned short start, unsigned short count) const {
  KaString part(codeSet_, language_);
  const unsigned short len = Len();
  if (start >= len) return part;
  const unsigned short n = std::min<unsigned short>(count, len - start);
  part.EditUnits(buffer_, codeSet_, 0, start, n, 1, kSetFrom);
  return part;
}

KaString KaString::Left(unsigned short n) const { return Copy(0, n); }

KaString KaString::Right(unsigned short n) const {
  const unsigned short len = Len();
  n = std::min(n, len);
  return Copy(len - n, n);
}

void KaString::Cut(unsigned short start, unsigned short count) {
  const unsigned short len = Len();
  if (start >= len || count == 0) return;
  const unsigned short n = std::min<unsigned short>(count, len - start);
  EditUnits(buffer_, codeSet_, start, start + n, len - start - n, 1, kSetFrom);
}

void KaString::Insert(const KaString& s, unsigned short position) {
  EditUnits(s.buffer_, s.codeSet_, position, 0, s.Len(), 1, kInsert);
}

void KaString::Replace(const KaString& s, unsigned short position) {
  EditUnits(s.buffer_, s.codeSet_, position, 0, s.Len(), 1, kOverwrite);
}

int KaString::ReplaceAll(const KaString& from, const KaString& to, unsigned short start) {
  KaString needle;
  needle.CopyMapped(from, codeSet_);
  KaString replacement;
  replacement.CopyMapped(to, codeSet_);
  const unsigned short nlen = needle.Len();
  const unsigned short rlen = replacement.Len();
  if (nlen == 0) return 0;
  // Mapping keeps the number of units: a shorter one ran out of memory, and
  // would delete what it should replace.
  if (rlen != std::min(to.Len(), static_cast<unsigned short>(kMaxSize / UnitWidth() - 1))) {
    return 0;
  }

  // Counted first, so the new text is built in one buffer of the right size.
  // A result past the limit is cut there like every other edit's, and is not
  // built beyond it: a few thousand occurrences of a long replacement would
  // otherwise ask for gigabytes only to throw them away.
  size_t found = 0;
  for (int at = Find(needle, start); at >= 0;
       at = Find(needle, static_cast<unsigned short>(at + nlen))) {
    ++found;
  }
  if (found == 0) return 0;
  const unsigned w = UnitWidth();
  const unsigned short len = Len();
  const size_t units = len + found * rlen - found * nlen;
  const size_t maxUnits = kMaxSize / w - 1;
  const size_t keep = std::min(units, maxUnits);
  if (keep == 0) {
    Destroy();
    return static_cast<int>(found);
  }
  KaString result(codeSet_, language_);
  if (!result.Reserve(keep * w + w)) return 0;
  const size_t budget = keep * w;
  Writer writer(result.buffer_, budget);
  size_t written = 0;  // bytes, capped at the budget
  size_t in = 0;
  for (int at = Find(needle, start); at >= 0 && written < budget;
       at = Find(needle, static_cast<unsigned short>(at + nlen))) {
    writer.Put(buffer_ + in * w, (at - in) * w);
    writer.Put(replacement.buffer_, size_t{rlen} * w);
    written += (at - in + size_t{rlen}) * w;
    in = at + nlen;
  }
  writer.Put(buffer_ + in * w, (len - in) * w);
  std::memset(result.buffer_ + budget, 0, w);
  result.size_ = static_cast<unsigned short>(budget + w);
  if (units > maxUnits) ReportOverflow();
  *this = std::move(result);
  return static_cast<int>(found);
}

int KaString::ReplaceAll(char from, char to, unsigned short start) {
  const KaCodeSet* set = KaCodeSet::Get(codeSet_);
  const unsigned char source = KaLanguageContext::GetDefault8BitCodeSet();
  const auto f = static_cast<unsigned char>(from);
  const auto t = static_cast<unsigned char>(to);
  const unsigned short uf = set != nullptr ? set->ConvertUnit(f, source) : f;
  const unsigned short ut = set != nullptr ? set->ConvertUnit(t, source) : t;
  return ReplaceAll(uf, ut, start);
}

int KaString::ReplaceAll(unsigned short from, unsigned short to, unsigned short start) {
  if (from == 0 || to == 0) return 0;  // a zero unit would end the text
  const unsigned w = UnitWidth();
  const unsigned short len = Len();
  int replaced = 0;
  for (unsigned short i = start; i < len; ++i) {
    if (LoadUnit(buffer_ + size_t{i} * w, w) == from) {
      StoreUnit(buffer_ + size_t{i} * w, to, w);
      ++replaced;
    }
  }
  return replaced;
}

// One edit for both ends, so that a failed allocation cannot leave one end
// trimmed.
KaString& KaString::Trim() {
  const unsigned short len = Len();
  unsigned short keep = len;
  while (keep > 0 && IsBlank(UnitAt(keep - 1))) --keep;
  unsigned short k = 0;
  while (k < keep && IsBlank(UnitAt(k))) ++k;
  if (k > 0 || keep < len) EditUnits(buffer_, codeSet_, 0, k, keep - k, 1, kSetFrom);
  return *this;
}

KaString& KaString::LeftTrim() {
  const unsigned short len = Len();
  unsigned short k = 0;
  while (k < len && IsBlank(UnitAt(k))) ++k;
  if (k > 0) EditUnits(buffer_, codeSet_, 0, k, len - k, 1, kSetFrom);
  return *this;
}

KaString& KaString::RightTrim() {
  const unsigned short len = Len();
  unsigned short keep = len;
  while (keep > 0 && IsBlank(UnitAt(keep - 1))) --keep;
  if (keep < len) EditUnits(buffer_, codeSet_, 0, 0, keep, 1, kSetFrom);
  return *this;
}

KaString& KaString::ToUpper() {
  KaCharToUpper upper;
  return Transform(upper);
}

KaString& KaString::ToLower() {
  KaCharToLower lower;
  return Transform(lower);
}

KaString& KaString::Transform(KaCharOperation& operation) {
  if (IsEmpty()) return *this;
  // The result may grow (sharp s to "SS"), up to the limit of a string. It is
  // written through an iterator on a string of this one's code set: an
  // iterator made on a bare buffer would read a code set of 255 as "the
  // default 8-bit set", a convention of arguments, not of a string's own set.
  const unsigned w = UnitWidth();
  KaString result(codeSet_, language_);
  if (!result.Reserve(kMaxSize)) return *this;
  KaStringIterator in(*this);
  KaStringIterator out(result);
  out.SetLimit(reinterpret_cast<char*>(result.buffer_) + kMaxSize - w);
  const unsigned int units = in.Transform(out, operation);
  if (!in.IsEOS()) ReportOverflow();
  EditUnits(result.buffer_, codeSet_, 0, 0, static_cast<unsigned short>(units), 1, kSetFrom);
  return *this;
}

void KaString::Fill(unsigned short n, char c) {
  const auto byte = static_cast<unsigned char>(c);
  EditUnits(&byte, KaLanguageContext::GetDefault8BitCodeSet(), 0, 0, byte != 0 ? 1 : 0, n,
            kSetFrom);
}

void KaString::Fill(unsigned short n, unsigned short unit) {
  EditUnits(&unit, KaLanguageContext::GetDefault16BitCodeSet(), 0, 0, unit != 0 ? 1 : 0, n,
            kSetFrom);
}

void KaString::Expand(unsigned short n, char c) {
  const unsigned short len = Len();
  const auto byte = static_cast<unsigned char>(c);
  if (n <= len || byte == 0) return;
  EditUnits(&byte, KaLanguageContext::GetDefault8BitCodeSet(), len, 0, 1, n - len, kSetFrom);
}

void KaString::Expand(unsigned short n, unsigned short unit) {
  const unsigned short len = Len();
  if (n <= len || unit == 0) return;
  EditUnits(&unit, KaLanguageContext::GetDefault16BitCodeSet(), len, 0, 1, n - len, kSetFrom);
}

// --- Searching -------------------------------------------------------------------

int KaString::FindUnits(const KaString& s, unsigned short start, unsigned short end) const {
  if (s.codeSet_ != codeSet_ && !(s.codeSet_ == 0 && s.UnitWidth() == UnitWidth())) {
    KaString mapped;
    mapped.CopyMapped(s, codeSet_);
    return Find(mapped, start, end);
  }
  if (UnitWidth() == 1) return FindBytes(s, start, end);
  const unsigned short stop = std::min(end, Len());
  const unsigned short nlen = s.Len();
  if (start > stop || nlen > stop - start) return -1;
  if (nlen == 0) return start;
  const unsigned short first = s.UnitAt(0);
  for (unsigned short i = start; i + nlen <= stop; ++i) {
    if (LoadUnit(buffer_ + size_t{i} * 2, 2) == first &&
        std::memcmp(buffer_ + size_t{i} * 2, s.buffer_, size_t{nlen} * 2) == 0) {
      return i;
    }
  }
  return -1;
}

int KaString::FindWideChar(char c, unsigned short start, unsigned short end) const {
  const auto byte = static_cast<unsigned char>(c);
  const KaCodeSet* set = KaCodeSet::Get(codeSet_);
  const unsigned char source = KaLanguageContext::GetDefault8BitCodeSet();
  const unsigned short unit = set != nullptr ? set->ConvertUnit(byte, source) : byte;
  return Find(unit, start, end);
}

int KaString::Find(unsigned short unit, unsigned short start, unsigned short end) const {
  const unsigned short stop = std::min(end, Len());
  if (unit == 0) return -1;
  for (unsigned short i = start; i < stop; ++i) {
    if (UnitAt(i) == unit) return i;
  }
  return -1;
}

// --- Numbers ---------------------------------------------------------------------

namespace {

// The C library's reading of a number: -1 (result 0) unless the text starts
// with a digit or "-"; base 10, or 0 for the prefix rule.
int ParseNumber(const KaString& s, int base, long long& result) {
  result = 0;
  const unsigned short first = s.UnitAt(0);
  if (!IsDigitUnit(first) && first != '-') return -1;
  result = ParseUnits(s, base);
  return 0;
}

int ParseInt(const KaString& s, int base, int& result) {
  long long wide = 0;
  const int status = ParseNumber(s, base, wide);
  result = ClampToInt(wide);
  return status;
}

}  // namespace

int KaString::Atol(int& result) const { return ParseInt(*this, 10, result); }
int KaString::Atoll(long long& result) const { return ParseNumber(*this, 10, result); }
int KaString::Strtol(int& result) const { return ParseInt(*this, 0, result); }
int KaString::Strtoll(long long& result) const { return ParseNumber(*this, 0, result); }

KaString::operator short() const {
  return static_cast<short>(std::clamp(static_cast<int>(*this), SHRT_MIN, SHRT_MAX));
}

KaString::operator int() const { return ClampToInt(static_cast<long long>(*this)); }

KaString::operator double() const {
  char text[80];
  AsciiCopy(*this, text);
  return std::strtod(text, nullptr);
}

KaString::operator long long() const {
  char text[80];
  AsciiCopy(*this, text);
  return std::strtoll(text, nullptr, 10);
}

// --- Code sets -------------------------------------------------------------------

int KaString::SetCodeSetCode(unsigned char codeSet) {
  if (Width(codeSet) != UnitWidth()) return -2002;
  codeSet_ = codeSet;
  return 0;
}

void KaString::SetCodeSet(unsigned char codeSet) {
  if (buffer_ != nullptr && Width(codeSet) != UnitWidth()) {
    KaString converted(codeSet, language_);
    converted.EditUnits(buffer_, Resolved(codeSet_), 0, 0, Len(), 1, kSetFrom);
    if (converted.buffer_ == nullptr) return;  // out of memory: the string stays as it was
    *this = std::move(converted);
  }
  codeSet_ = codeSet;
}

void KaString::MapToCodeSet(unsigned char codeSet) { CopyMapped(*this, codeSet); }

void KaString::CopyMapped(const KaString& source, unsigned char codeSet, unsigned short n) {
  // Converted into a new string first: the source may be this string.
  KaString mapped(codeSet, source.language_);
  const unsigned short count = std::min(n, source.Len());
  const unsigned char from = Resolved(source.codeSet_);
  if (count > 0) {
    if (from == Resolved(codeSet)) {
      mapped.EditUnits(source.buffer_, codeSet, 0, 0, count, 1, kSetFrom);
    } else {
      Converted units(source.buffer_, from, count, Resolved(codeSet));
      if (units.Units() == nullptr) return;
      mapped.EditUnits(units.Units(), codeSet, 0, 0, static_cast<unsigned short>(units.Count()), 1,
                       kSetFrom);
    }
    if (mapped.buffer_ == nullptr) return;  // out of memory: this string stays as it was
  }
  *this = std::move(mapped);
}

// --- Life ----------------------------------------------------------------------

void KaString::Destroy() { Adopt(nullptr, 0, 0); }

void KaString::SetNullValue() {
  Destroy();
  codeSet_ = 0;
  language_ = kNullLanguage;
}

bool KaString::SetDefaultCodeSet(unsigned char codeSet) {
  return KaLanguageContext::SetDefaultCodeSet(codeSet);
}
bool KaString::SetDefaultLanguage(unsigned char language) {
  return KaLanguageContext::SetDefaultLanguage(language);
}
void KaString::SetDefaultCmpOp(unsigned short cmpOp) { KaLanguageContext::SetDefaultCmpOp(cmpOp); }
unsigned char KaString::GetDefaultCodeSet() { return KaLanguageContext::GetDefaultCodeSet(); }
unsigned char KaString::GetDefault8CodeSet() { return KaLanguageContext::GetDefault8BitCodeSet(); }
unsigned char KaString::GetDefault16CodeSet() {
  return KaLanguageContext::GetDefault16BitCodeSet();
}
unsigned char KaString::GetDefaultLanguage() { return KaLanguageContext::GetDefaultLanguage(); }
unsigned short KaString::GetDefaultCmpOp() { return KaLanguageContext::GetDefaultCmpOp(); }

int KaString::SetAsterisk(const KaChar& c) { return SetWildcard(g_asterisk, c); }
int KaString::SetQuestion(const KaChar& c) { return SetWildcard(g_question, c); }
int KaString::SetEscape(const KaChar& c) { return SetWildcard(g_escape, c); }
unsigned short KaString::GetAsterisk() { return WildcardOrder(g_asterisk, '*'); }
unsigned short KaString::GetQuestion() { return WildcardOrder(g_question, '?'); }
unsigned short KaString::GetEscape() { return WildcardOrder(g_escape, '\\'); }

const KaString& KaString::EmptyString() {
  static const KaString empty;
  return empty;
}

// --- Comparison ------------------------------------------------------------------

namespace {

// The string classes compare in mode 1 (see KaStrCmp).
constexpr unsigned char kClassMode = 1;

int CompareStrings(const KaString& a, const KaString& b, short maxLength, unsigned short cmpOp) {
  if (cmpOp == 65535) cmpOp = KaLanguageContext::GetDefaultCmpOp();
  return KaStrCmp(a.CodeSet(), a.Language(), a.StrGet(), b.CodeSet(), b.Language(), b.StrGet(),
                  cmpOp, maxLength, kClassMode, nullptr);
}

}  // namespace

bool KaString::operator==(const KaString& other) const {
  return this == &other || CompareStrings(*this, other, -1, 65535) == 0;
}
bool KaString::operator<(const KaString& other) const {
  return CompareStrings(*this, other, -1, 65535) < 0;
}
bool KaString::operator<=(const KaString& other) const {
  return CompareStrings(*this, other, -1, 65535) <= 0;
}
bool KaString::operator>(const KaString& other) const {
  return CompareStrings(*this, other, -1, 65535) > 0;
}
bool KaString::operator>=(const KaString& other) const {
  return CompareStrings(*this, other, -1, 65535) >= 0;
}

int KaString::Compare(const KaString& other, short maxLength, unsigned short cmpOp) const {
  return CompareStrings(*this, other, maxLength, cmpOp);
}

bool KaString::EqualsIgnoreLanguage(const KaString& other) const {
  const unsigned char language = language_ == other.language_ ? language_ : 0;
  return KaStrCmp(codeSet_, language, buffer_, other.codeSet_, language, other.buffer_,
                  kKaCmpSimple, -1, kClassMode, nullptr) == 0;
}
