// String hashing: the language-aware key of one text (HashString), the two
// plain whole-string hashes, and the Hash slots of the string rows over arrays
// in memory form and in stored form.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kabase/codec.h"
#include "katypemgr/kaistring.h"
#include "katypemgr/kastring.h"
#include "katypemgr/katypes.h"
#include "katypemgr/katyphash.h"
#include "primitive/hash_walk.h"

namespace {

// The key of a null string, whatever its text.
constexpr uint32_t kNullStringKey = 0xFEFE7575u;
// The language whose orders enter the key raw: its ideographs are not laid out
// in the base letter, diacritic and case fields of alphabetic text.
constexpr unsigned char kRawOrderLanguage = 20;
// The code set the case-insensitive string classes hold their bytes in; they
// carry no language.
constexpr unsigned char kFoldedStringCodeSet = 1;
constexpr unsigned char kFoldedStringLanguage = 0;
// The work buffer for stored texts whose units must be byte-swapped.
constexpr size_t kWorkBufferSize = 256;
// A cut stored text this long or longer cannot be told apart from a longer
// key by its prefix: it is not hashed.
constexpr size_t kLongestCutText = 253;

constexpr unsigned UnitWidth(unsigned char codeSet) { return codeSet > 224 ? 2 : 1; }

bool IsNullString(unsigned char codeSet, unsigned char language) {
  return language == KaString::kNullLanguage || (codeSet == 254 && language == 0);
}

bool UnitIsZero(const char* p, unsigned width) { return p[0] == 0 && (width == 1 || p[1] == 0); }

// The key of one collation order in language `language`. A Latin letter's
// order holds base letter, diacritic and case; the key moves the base letter
// up so that letters with one base stay close in the key as in the order.
uint32_t OrderKey(unsigned short order, unsigned char language) {
  if (order == 0) return 0;
  const uint32_t lang = uint32_t{language} << 24;
  if (language != kRawOrderLanguage && order < 0x8000 && (order & 0x4000) != 0) {
    return lang + ((uint32_t{order} & 0x407F) << 8) + ((uint32_t{order} >> 7) & 0x7F);
  }
  return lang + (uint32_t{order} << 8);
}

// Where a fold stops: after `limit` characters, or at the first zero unit when
// `stopAtZero` (the text's terminator); otherwise a zero unit is a character
// of order 0. `ended` tells whether a terminator was met.
struct FoldRun {
  size_t limit;
  bool stopAtZero;
  bool ended = false;
};

// Code set 0 hashes the bytes themselves.
uint32_t FoldBytes(uint32_t h, const char* text, FoldRun& run) {
  for (size_t i = 0; i < run.limit; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == 0 && run.stopAtZero) {
      run.ended = true;
      break;
    }
    h = 9 * h + c;
  }
  return h;
}

// Every other code set hashes collation orders. The count is in units of the
// text: an expanding character delivers all its orders before the next unit.
uint32_t FoldOrders(uint32_t h, const char* text, unsigned char codeSet, unsigned char language,
                    FoldRun& run) {
  KaStringIterator it(text, codeSet, language);
  const unsigned width = UnitWidth(it.CodeSet());
  const unsigned char lang = it.Language();
  for (;;) {
    if (!it.OverflowActive()) {
      const char* position = it.Position();
      if (static_cast<size_t>(position - text) / width >= run.limit) break;
      if (UnitIsZero(position, width)) {
        if (run.stopAtZero) {
          run.ended = true;
          break;
        }
        // The iterator stays at a zero unit; a counted text goes on past it.
        h *= 9;
        it = KaStringIterator(position + width, it.CodeSet(), lang);
        continue;
      }
    }
    h = 9 * h + OrderKey(it.GetNextOrder(1), lang);
  }
  return h;
}

uint32_t Fold(uint32_t h, const char* text, unsigned char codeSet, unsigned char language,
              FoldRun& run) {
  return codeSet == 0 ? FoldBytes(h, text, run) : FoldOrders(h, text, codeSet, language, run);
}

// --- Stored elements -------------------------------------------------------------------

// One stored text: where its units are, how many bytes of them the buffer
// holds and how many the element has.
struct StoredText {
  const unsigned char* units;
  size_t available;
  size_t full;
  unsigned char codeSet;
  unsigned char language;
};

// The key of a stored text; false (status -2999) when it is cut too long to
// hash. Units in the other byte order go through a stack buffer piece by
// piece: the key folds character by character, so pieces need no heap.
bool StoredTextKey(const StoredText& t, unsigned char format, uint32_t& key) {
  const bool cut = t.available < t.full;
  if (cut && t.available > kLongestCutText) return false;
  unsigned char language = t.language;
  // A collation-order text keeps a flag in the top bit of its language.
  if (t.codeSet == 254 && (language & 0x80) != 0) language &= 0x7F;
  if (IsNullString(t.codeSet, language)) {
    key = kNullStringKey;
    return true;
  }
  const unsigned width = UnitWidth(t.codeSet);
  const size_t units = t.available / width;
  // A cut text hashes exactly its whole units; a whole one up to its end.
  FoldRun run{.limit = units, .stopAtZero = !cut};
  if (cut && units == 0) {
    key = 0;
    return true;
  }
  const auto* text = reinterpret_cast<const char*>(t.units);
  if (width == 1 || !ka::NeedsSwap(ka::OrderOf(format))) {
    key = Fold(0, text, t.codeSet, language, run);
    return true;
  }
  char work[kWorkBufferSize];
  constexpr size_t kPiece = kWorkBufferSize / 2 - 1;  // units, and a zero unit after them
  uint32_t h = 0;
  for (size_t done = 0; done < units && !run.ended; done += kPiece) {
    const size_t n = units - done < kPiece ? units - done : kPiece;
    for (size_t i = 0; i < n; ++i) {
      ka::StoreU16(work + 2 * i, ka::LoadU16(text + 2 * (done + i), ka::OrderOf(format)),
                   ka::ByteOrder::kMemory);
    }
    work[2 * n] = work[2 * n + 1] = 0;
    FoldRun piece{.limit = n, .stopAtZero = run.stopAtZero};
    h = Fold(h, work, t.codeSet, language, piece);
    run.ended = piece.ended;
  }
  key = h;
  return true;
}

// The walk over stored elements shared by the string rows. `end` is 0 when
// the buffer is not bounded: each element's own length is trusted then.
class StoredWalk {
 public:
  StoredWalk(unsigned char format, const unsigned char* bytes, size_t end)
      : format_(format), bytes_(bytes), end_(end) {}

  unsigned int Hash(unsigned int count, int& status) {
    uint32_t folded = 0;
    const bool ok =
        IsOlderForm() ? WalkOlder(count, folded, status) : WalkCurrent(count, folded, status);
    return ok ? folded * kKaHashMultiplier : 0;
  }

 private:
  bool Bounded() const { return end_ != 0; }
  uint16_t LengthAt(size_t offset) const {
    return ka::LoadU16(bytes_ + offset, ka::OrderOf(format_));
  }

  // The older form ends its first length word's span on a zero byte where the
  // current form always ends on 0xFF; a cut buffer that hides that byte is
  // taken as the current form.
  bool IsOlderForm() const {
    if (Bounded() && end_ < 2) return false;
    const size_t last = size_t{LengthAt(0)} + 1;
    if (Bounded() && last >= end_) return false;
    return bytes_[last] == 0;
  }

  bool WalkCurrent(unsigned int count, uint32_t& folded, int& status) {
    size_t offset = 0;
    for (unsigned int i = 0; i < count; ++i) {
      // An element whose length, code set and language are not all there is
      // not read.
      if (Bounded() && offset + 4 > end_) {
        status = kKaArrayBoundExceeded;
        return true;
      }
      const size_t n = LengthAt(offset);
      const size_t full = n >= 4 ? n - 4 : 0;
      const size_t room = Bounded() ? end_ - offset - 4 : full;
      StoredText t{.units = bytes_ + offset + 4,
                   .available = room < full ? room : full,
                   .full = full,
                   .codeSet = bytes_[offset + 2],
                   .language = bytes_[offset + 3]};
      uint32_t key;
      if (!StoredTextKey(t, format_, key)) {
        status = kKaNotSupported;
        return false;
      }
      folded ^= key;
      offset += n + 2;
    }
    return true;
  }

  // The older form: one length word, then the texts back to back, each ended
  // by a zero byte, in the default 8-bit code set and language.
  bool WalkOlder(unsigned int count, uint32_t& folded, int& status) {
    const size_t spanEnd = size_t{LengthAt(0)} + 2;
    const size_t end = Bounded() && end_ < spanEnd ? end_ : spanEnd;
    size_t offset = 2;
    for (unsigned int i = 0; i < count; ++i) {
      if (offset >= end) {
        status = kKaArrayBoundExceeded;
        return true;
      }
      const auto* text = bytes_ + offset;
      const auto* zero = static_cast<const unsigned char*>(std::memchr(text, 0, end - offset));
      const size_t available = zero != nullptr ? static_cast<size_t>(zero - text) : end - offset;
      StoredText t{.units = text,
                   .available = available,
                   .full = zero != nullptr ? available : available + 1,
                   .codeSet = KaLanguageContext::GetDefault8BitCodeSet(),
                   .language = KaLanguageContext::GetDefaultLanguage()};
      uint32_t key;
      if (!StoredTextKey(t, format_, key)) {
        status = kKaNotSupported;
        return false;
      }
      folded ^= key;
      offset += available + 1;
    }
    return true;
  }

  unsigned char format_;
  const unsigned char* bytes_;
  size_t end_;
};

unsigned int HashStoredStrings(unsigned char format, unsigned int bufferLength, const void* values,
                               unsigned int count, int& status) {
  status = 0;
  if (count == 0) return 0;
  if (values == nullptr) {
    status = kKaArrayBoundExceeded;
    return 0;
  }
  return StoredWalk(format, static_cast<const unsigned char*>(values), bufferLength)
      .Hash(count, status);
}

// --- Memory elements ------------------------------------------------------------------

uint32_t TextKey(unsigned char codeSet, unsigned char language, const char* text) {
  if (codeSet == 254 && (language & 0x80) != 0) language &= 0x7F;
  return HashString(codeSet, language, const_cast<char*>(text), -1, 0);
}

uint32_t KaStringKey(const unsigned char* element, unsigned char) {
  const auto* s = reinterpret_cast<const KaString*>(element);
  return TextKey(s->CodeSet(), s->Language(), s->StrGet());
}

template <class T>
uint32_t FoldedStringKey(const unsigned char* element, unsigned char) {
  const auto* s = reinterpret_cast<const T*>(element);
  return TextKey(kFoldedStringCodeSet, kFoldedStringLanguage, s->StrGet());
}

template <class T, auto KeyOf>
unsigned int HashStrings(unsigned char format, unsigned int bufferLength, void* values,
                         unsigned int count, int& status) {
  if ((format & 0x0F) != 8) return HashStoredStrings(format, bufferLength, values, count, status);
  return ka::detail::HashFixedArray(format, bufferLength, values, count, status, sizeof(T), KeyOf);
}

template <bool kSevenBits>
unsigned int WholeStringHash(const KaString& s) {
  const char* text = s.StrGet();
  uint32_t h = 0;
  if (text == nullptr) return 0;
  const uint32_t mask = kSevenBits ? 0x7F : 0xFFFFFFFF;
  if (s.UnitWidth() == 1) {
    // Bytes above 0x7F enter sign-extended.
    for (const char* p = text; *p != 0; ++p) {
      h = 9 * h +
          (static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(*p))) & mask);
    }
    return h;
  }
  for (const char* p = text;; p += 2) {
    const uint16_t unit = ka::LoadU16(p, ka::ByteOrder::kMemory);
    if (unit == 0) break;
    h = 9 * h + (unit & mask);
  }
  return h;
}

}  // namespace

unsigned int HashString(unsigned char codeSet, unsigned char language, char* text, short count,
                        unsigned char /*flags*/) {
  if (IsNullString(codeSet, language)) return kNullStringKey;
  if (count == 0 || count < -1 || text == nullptr) return 0;
  FoldRun run{.limit = count == -1 ? SIZE_MAX : static_cast<size_t>(count),
              .stopAtZero = count == -1};
  return Fold(0, text, codeSet, language, run);
}

unsigned int HashKaString(const KaString& s) { return WholeStringHash<false>(s); }
unsigned int HashKaString7(const KaString& s) { return WholeStringHash<true>(s); }

unsigned int StringHash(unsigned char format, unsigned int bufferLength, void* values,
                        unsigned int count, int& status) {
  return HashStrings<KaString, KaStringKey>(format, bufferLength, values, count, status);
}

unsigned int KaIStringHash(unsigned char format, unsigned int bufferLength, void* values,
                           unsigned int count, int& status) {
  return HashStrings<KaIString, FoldedStringKey<KaIString>>(format, bufferLength, values, count,
                                                            status);
}

unsigned int KaCaseIStringHash(unsigned char format, unsigned int bufferLength, void* values,
                               unsigned int count, int& status) {
  return HashStrings<KaCaseIString, FoldedStringKey<KaCaseIString>>(format, bufferLength, values,
                                                                    count, status);
}

static_assert(std::is_same_v<decltype(&StringHash), KaHashFunc>);
static_assert(std::is_same_v<decltype(&KaIStringHash), KaHashFunc>);
static_assert(std::is_same_v<decltype(&KaCaseIStringHash), KaHashFunc>);
