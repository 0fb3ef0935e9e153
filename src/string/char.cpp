// KaChar, KaStringIterator and the character operations: how text is seen
// character by character, with collation orders and case mappings.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "kabase/codec.h"
#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "katypemgr/kastrcmp.h"
#include "katypemgr/kastring.h"

namespace {

unsigned char DefaultIf255(unsigned char value, unsigned char fallback) {
  return value == 255 ? fallback : value;
}

// The order of a unit of a code set this library does not know: wide units
// stand for themselves, the others are undefined.
unsigned short OrderWithoutTable(unsigned short unit) {
  return unit >= 512 ? unit : kKaOrderUndefined;
}

unsigned short OrderOf(unsigned char codeSet, unsigned short unit) {
  if (codeSet == 254) return unit;
  const KaCodeSet* set = KaCodeSet::Get(codeSet);
  return set != nullptr ? set->GetOrder(unit) : OrderWithoutTable(unit);
}

// A unit of code set `from` as a unit of code set `to` (0: native).
unsigned short ConvertUnit(unsigned short unit, unsigned char from, unsigned char to) {
  if (from == to) return unit;
  const KaCodeSet* target = KaCodeSet::Get(to);
  if (target == nullptr) return to > 224 ? unit : unit & 0xFF;
  return target->ConvertUnit(unit, from);
}

}  // namespace

// --- KaChar --------------------------------------------------------------------

KaChar::KaChar(KaString& s, int position)
    : codeSet_(s.CodeSet()), language_(s.Language()), byteOrder_(1) {
  const int len = s.Len();
  if (s.StrGet() == nullptr) return;  // an empty string: the inline unit 0
  const int at = std::clamp(position, 0, len);
  position_ = s.StrGet() + static_cast<size_t>(at) * s.UnitWidth();
}

KaChar::KaChar(char c, unsigned char codeSet, unsigned char language)
    : unit_(static_cast<unsigned char>(c)),
      codeSet_(DefaultIf255(codeSet, KaLanguageContext::GetDefault8BitCodeSet())),
      language_(DefaultIf255(language, KaLanguageContext::GetDefaultLanguage())) {}

KaChar::KaChar(unsigned short unit, unsigned char codeSet, unsigned char language)
    : codeSet_(DefaultIf255(codeSet, KaLanguageContext::GetDefault16BitCodeSet())),
      language_(DefaultIf255(language, KaLanguageContext::GetDefaultLanguage())) {
  unit_ = codeSet_ > 224 ? unit : (unit & 0xFF);
}

KaChar::KaChar(const char* position, unsigned char codeSet, unsigned char language,
               unsigned char byteOrder)
    : position_(position),
      codeSet_(DefaultIf255(codeSet, KaLanguageContext::GetDefaultCodeSet())),
      language_(DefaultIf255(language, KaLanguageContext::GetDefaultLanguage())),
      byteOrder_(DefaultIf255(byteOrder, 1)) {}

unsigned short KaChar::Unit() const {
  if (position_ == nullptr) return unit_;
  if (UnitWidth() == 1) return static_cast<unsigned char>(*position_);
  // Order buffers keep the low byte first whatever the byte-order flag says.
  if (codeSet_ == 254) return ka::LoadU16(position_, ka::ByteOrder::kLittle);
  unsigned short unit = 0;
  ShortStoreOne(&unit, position_, byteOrder_);
  return unit;
}

namespace {

// One character as a terminated text of its code set, for KaStrCmp. Read
// through Unit(), so a character in a string's buffer honours its byte-order
// flag and stops after itself.
struct CharText {
  explicit CharText(const KaChar& c) {
    if (c.UnitWidth() == 1) {
      bytes[0] = static_cast<char>(c.Unit() & 0xFF);
    } else {
      ka::StoreU16(bytes, c.Unit(),
                   c.CodeSet() == 254 ? ka::ByteOrder::kLittle : ka::ByteOrder::kMemory);
    }
  }
  char bytes[4] = {0, 0, 0, 0};
};

int CompareChars(const KaChar& a, const KaChar& b, unsigned short cmpOp) {
  if (cmpOp == 65535) cmpOp = KaLanguageContext::GetDefaultCmpOp();
  const CharText ta(a);
  const CharText tb(b);
  // Mode 1, as every comparison of the string classes.
  return KaStrCmp(a.CodeSet(), a.Language(), ta.bytes, b.CodeSet(), b.Language(), tb.bytes, cmpOp,
                  1, 1, nullptr);
}

}  // namespace

int KaChar::Compare(const KaChar& other, unsigned short cmpOp) const {
  return CompareChars(*this, other, cmpOp);
}
bool KaChar::operator==(const KaChar& other) const {
  return CompareChars(*this, other, 65535) == 0;
}
bool KaChar::operator!=(const KaChar& other) const {
  return CompareChars(*this, other, 65535) != 0;
}
bool KaChar::operator<(const KaChar& other) const { return CompareChars(*this, other, 65535) < 0; }
bool KaChar::operator<=(const KaChar& other) const {
  return CompareChars(*this, other, 65535) <= 0;
}
bool KaChar::operator>(const KaChar& other) const { return CompareChars(*this, other, 65535) > 0; }
bool KaChar::operator>=(const KaChar& other) const {
  return CompareChars(*this, other, 65535) >= 0;
}
bool KaChar::operator==(char c) const { return *this == KaChar(c); }
bool KaChar::operator!=(char c) const { return *this != KaChar(c); }
bool KaChar::operator<(char c) const { return *this < KaChar(c); }
bool KaChar::operator<=(char c) const { return *this <= KaChar(c); }
bool KaChar::operator>(char c) const { return *this > KaChar(c); }
bool KaChar::operator>=(char c) const { return *this >= KaChar(c); }
bool KaChar::operator==(unsigned short unit) const { return *this == KaChar(unit); }
bool KaChar::operator!=(unsigned short unit) const { return *this != KaChar(unit); }
bool KaChar::operator<(unsigned short unit) const { return *this < KaChar(unit); }
bool KaChar::operator<=(unsigned short unit) const { return *this <= KaChar(unit); }
bool KaChar::operator>(unsigned short unit) const { return *this > KaChar(unit); }
bool KaChar::operator>=(unsigned short unit) const { return *this >= KaChar(unit); }

unsigned short KaChar::Order() const { return OrderOf(codeSet_, Unit()); }
bool KaChar::IsSpace() const { return Order() < kKaOrderSymbolBase; }
bool KaChar::IsSymbol() const { return KaClassOfOrder(Order()) == KaOrderClass::kSymbol; }
bool KaChar::IsDigit() const { return KaClassOfOrder(Order()) == KaOrderClass::kDigit; }
bool KaChar::IsAlpha() const { return KaClassOfOrder(Order()) == KaOrderClass::kLetter; }
bool KaChar::IsHan() const { return KaClassOfOrder(Order()) == KaOrderClass::kHan; }

KaChar KaChar::MapTo(unsigned char codeSet) const {
  if (codeSet == 0 || codeSet == codeSet_) return *this;
  return KaChar(ConvertUnit(Unit(), codeSet_, codeSet), codeSet, language_);
}

KaChar KaChar::ToUpper(KaStringIterator* it) const { return MapCase(it, true); }
KaChar KaChar::ToLower(KaStringIterator* it) const { return MapCase(it, false); }

KaChar KaChar::MapCase(KaStringIterator* it, bool upper) const {
  const unsigned short unit = Unit();
  KaChar mapped = *this;
  mapped.position_ = nullptr;
  if (codeSet_ == 0) {
    // The native set has no table of its own here: the C library's mapping.
    mapped.unit_ =
        static_cast<unsigned short>(upper ? std::toupper(unit & 0xFF) : std::tolower(unit & 0xFF));
    return mapped;
  }
  const KaCodeSet* set = KaCodeSet::Get(codeSet_);
  if (set == nullptr) return *this;
  const KaUnicodeProps props = set->GetUnicodeProps(unit, language_);
  const bool byteSet = set->UnitWidth() == 1;
  // True when the set can hold the Unicode character `c`.
  auto holds = [&](unsigned short c) { return !byteSet || c == '?' || set->FromUnicode(c) != '?'; };

  const KaWCharList* several = nullptr;
  if (props.caseExpansion != nullptr) {
    several = upper ? &props.caseExpansion->upper : &props.caseExpansion->lower;
    if (several->count == 0) several = nullptr;
  }
  if (several != nullptr) {
    if (it == nullptr || !std::all_of(several->chars, several->chars + several->count, holds)) {
      return *this;
    }
    it->SetOverflow(several, 253);
    mapped.unit_ = set->FromUnicode(several->chars[0]);
    return mapped;
  }
  const unsigned short target = upper ? props.upper : props.lower;
  if (target == 0 || !holds(target)) return *this;
  mapped.unit_ = set->FromUnicode(target);
  return mapped;
}

// --- KaStringIterator ----------------------------------------------------------

KaStringIterator::KaStringIterator(const KaString& s)
    : codeSet_(s.CodeSet()),
      language_(s.Language()),
      overflowCodeSet_(s.CodeSet()),
      start_(s.StrGet()),
      position_(s.StrGet()) {}

KaStringIterator::KaStringIterator(const KaChar& c)
    : codeSet_(c.CodeSet()), language_(c.Language()), overflowCodeSet_(c.CodeSet()) {
  if (c.Position() != nullptr) {
    start_ = position_ = c.Position();
    return;
  }
  // An inline character is copied into the iterator, which then owns it.
  ownsUnit_ = true;
  StoreOwnUnit(c.Unit());
}

KaStringIterator::KaStringIterator(const char* buffer, unsigned char codeSet,
                                   unsigned char language, unsigned char overflowCodeSet)
    : codeSet_(DefaultIf255(codeSet, KaLanguageContext::GetDefault8BitCodeSet())),
      language_(DefaultIf255(language, KaLanguageContext::GetDefaultLanguage())),
      overflowCodeSet_(DefaultIf255(overflowCodeSet, codeSet_)),
      start_(buffer),
      position_(buffer) {}

KaStringIterator::KaStringIterator(const unsigned short* buffer, unsigned char codeSet,
                                   unsigned char language, unsigned char overflowCodeSet)
    : codeSet_(DefaultIf255(codeSet, KaLanguageContext::GetDefault16BitCodeSet())),
      language_(DefaultIf255(language, KaLanguageContext::GetDefaultLanguage())),
      overflowCodeSet_(DefaultIf255(overflowCodeSet, codeSet_)),
      start_(reinterpret_cast<const char*>(buffer)),
      position_(reinterpret_cast<const char*>(buffer)) {}

KaStringIterator::KaStringIterator(const KaStringIterator& other) { *this = other; }

KaStringIterator& KaStringIterator::operator=(const KaStringIterator& other) {
  if (this == &other) return *this;
  codeSet_ = other.codeSet_;
  language_ = other.language_;
  overflowCodeSet_ = other.overflowCodeSet_;
  overflowIndex_ = other.overflowIndex_;
  listReplacesCharacter_ = other.listReplacesCharacter_;
  ownsUnit_ = other.ownsUnit_;
  std::memcpy(own_, other.own_, sizeof own_);
  expansion_ = other.expansion_;
  limit_ = other.limit_;
  // Pointers into the other iterator's own storage are moved onto this one's.
  auto rebase = [&](const char* p) {
    return other.ownsUnit_ && p != nullptr && p >= other.own_ && p < other.own_ + sizeof own_
               ? own_ + (p - other.own_)
               : p;
  };
  start_ = rebase(other.start_);
  position_ = rebase(other.position_);
  overflow_ = other.overflow_ == &other.expansion_ ? &expansion_ : other.overflow_;
  return *this;
}

void KaStringIterator::StoreOwnUnit(unsigned short unit) {
  std::memset(own_, 0, sizeof own_);
  if (Width() == 1) {
    own_[0] = static_cast<char>(unit & 0xFF);
  } else {
    ka::StoreU16(own_, unit, codeSet_ == 254 ? ka::ByteOrder::kLittle : ka::ByteOrder::kMemory);
  }
  start_ = position_ = own_;
}

unsigned short KaStringIterator::CurrentUnit() const {
  if (position_ == nullptr) return 0;
  if (Width() == 1) return static_cast<unsigned char>(*position_);
  return ka::LoadU16(position_, codeSet_ == 254 ? ka::ByteOrder::kLittle : ka::ByteOrder::kMemory);
}

bool KaStringIterator::OverflowActive() const {
  return overflow_ != nullptr && overflowIndex_ >= 0 && overflowIndex_ < overflow_->count;
}

KaChar KaStringIterator::operator*() const {
  if (OverflowActive()) {
    return KaChar(overflow_->chars[overflowIndex_], overflowCodeSet_, language_);
  }
  // The text's own code set and language, verbatim: 255 is a code set of its
  // own here, not "the default".
  KaChar c;
  c.position_ = position_;
  c.codeSet_ = codeSet_;
  c.language_ = language_;
  c.byteOrder_ = 1;
  return c;
}

KaStringIterator KaStringIterator::operator++(int) {
  KaStringIterator before(*this);
  Step(1);
  return before;
}

KaStringIterator KaStringIterator::operator--(int) {
  KaStringIterator before(*this);
  Step(0);
  return before;
}

KaStringIterator& KaStringIterator::Step(unsigned short forward) {
  if (forward == 0) {
    overflow_ = nullptr;
    if (position_ != nullptr && position_ > start_) position_ -= Width();
    return *this;
  }
  if (OverflowActive()) {
    if (++overflowIndex_ < overflow_->count) return *this;  // the list first
    overflow_ = nullptr;
    if (!listReplacesCharacter_) return *this;
  }
  overflow_ = nullptr;
  // Never past the terminator: the end stays the end.
  if (CurrentUnit() != 0) position_ += Width();
  return *this;
}

bool KaStringIterator::IsEOS() const { return !OverflowActive() && CurrentUnit() == 0; }

void KaStringIterator::SetOverflow(const KaWCharList* list, unsigned char codeSet) {
  overflow_ = list;
  overflowIndex_ = 0;
  overflowCodeSet_ = DefaultIf255(codeSet, codeSet_);
  listReplacesCharacter_ = true;
}

unsigned short KaStringIterator::GetNextOrder(unsigned short advance) {
  if (OverflowActive()) {
    const unsigned short order = OrderOf(overflowCodeSet_, overflow_->chars[overflowIndex_]);
    if (advance != 0) Step(1);
    return order;
  }
  const unsigned short unit = CurrentUnit();
  if (unit == 0) return 0;
  if (codeSet_ == 254) {
    if (advance != 0) position_ += 2;
    return unit;
  }
  const KaCodeSet* set = KaCodeSet::Get(codeSet_);
  if (set == nullptr) {
    if (advance != 0) position_ += Width();
    return OrderWithoutTable(unit);
  }
  const KaUnicodeProps props = set->GetUnicodeProps(unit, language_);
  if (advance != 0) {
    position_ += Width();
    if (props.expansion.count != 0) {
      // The further orders follow the first; the character is already passed.
      expansion_ = props.expansion;
      overflow_ = &expansion_;
      overflowIndex_ = 0;
      overflowCodeSet_ = 254;
      listReplacesCharacter_ = false;
    }
  }
  return props.order;
}

bool KaStringIterator::Put(const KaChar& c) {
  const unsigned w = Width();
  if (limit_ == nullptr || position_ == nullptr || limit_ - position_ < static_cast<long>(w)) {
    return false;
  }
  const unsigned short unit = ConvertUnit(c.Unit(), c.CodeSet(), codeSet_);
  // Output iterators are made on buffers their owner lets them write.
  char* out = const_cast<char*>(position_);
  if (w == 1) {
    *out = static_cast<char>(unit & 0xFF);
  } else {
    ka::StoreU16(out, unit, codeSet_ == 254 ? ka::ByteOrder::kLittle : ka::ByteOrder::kMemory);
  }
  position_ += w;
  return true;
}

unsigned int KaStringIterator::Transform(KaStringIterator& out, KaCharOperation& operation) {
  unsigned int written = 0;
  while (!IsEOS()) {
    const KaChar result = operation.Apply(**this, *this);
    if (!out.Put(result)) break;
    ++written;
    Step(1);
  }
  return written;
}

KaCharOperation::~KaCharOperation() = default;
