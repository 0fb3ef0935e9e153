// KaCodeSet: the code set objects, unit conversion and Unicode properties,
// all read from the generated constant tables.
#include "kai18n/codeset.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <utility>

#include "kai18n/langctx.h"
#include "tables.h"

namespace {

namespace t = ka::i18n::tables;

constexpr unsigned short kReplacement = 0xFFFD;
constexpr unsigned short kQuestionMark = '?';

constexpr unsigned short kHangulFirst = 0xAC00;
constexpr unsigned short kHangulCount = 11172;
constexpr unsigned short kHangulTrailCount = 28;
constexpr unsigned short kHangulVowelCount = 21;

// Page pointers of the Unicode order table, so that one lookup is two loads.
constexpr std::array<const unsigned short*, 256> kOrderPages = [] {
  std::array<const unsigned short*, 256> pages{};
  for (unsigned i = 0; i < 256; ++i) pages[i] = t::kOrderBlocks[t::kOrderStage1[i]];
  return pages;
}();

// The second order of an implicit pair, by the low twelve bits of the character.
constexpr std::array<unsigned short, 4096> kImplicitOffsets = [] {
  std::array<unsigned short, 4096> offsets{};
  for (unsigned i = 0; i < 4096; ++i) offsets[i] = static_cast<unsigned short>(kKaOrderHanBase + i);
  return offsets;
}();

// One bit per character: set where kSpecials has an entry, so the search runs
// only for those.
constexpr std::array<uint64_t, 1024> kSpecialBits = [] {
  std::array<uint64_t, 1024> bits{};
  for (const t::Special& s : t::kSpecials)
    bits[s.character >> 6] |= uint64_t{1} << (s.character & 63);
  return bits;
}();

// Index of the entry of `c` in kSpecials, or -1. (An index rather than a
// pointer: the compiler cannot test such a pointer for null while compiling.)
constexpr int FindSpecial(unsigned short c) {
  if ((kSpecialBits[c >> 6] >> (c & 63) & 1) == 0) return -1;
  const auto* begin = std::begin(t::kSpecials);
  const auto* end = std::end(t::kSpecials);
  const auto* it = std::lower_bound(
      begin, end, c, [](const t::Special& s, unsigned short value) { return s.character < value; });
  return it != end && it->character == c ? static_cast<int>(it - begin) : -1;
}

constexpr KaUnicodeProps UnicodeProps(unsigned short c) {
  KaUnicodeProps props;
  props.order = kOrderPages[c >> 8][c & 0xFF];
  const unsigned int cases = t::kCaseBlocks[t::kCaseStage1[c >> 8]][c & 0xFF];
  props.upper = static_cast<unsigned short>(cases >> 16);
  props.lower = static_cast<unsigned short>(cases & 0xFFFF);
  if (props.order >= kKaOrderImplicitLead) {
    props.expansion = {1, &kImplicitOffsets[c & 0xFFF]};
  } else if (c >= kHangulFirst && c < kHangulFirst + kHangulCount) {
    // A syllable sorts as its jamo: leading consonant (the first order), vowel
    // and, where there is one, trailing consonant.
    const unsigned s = c - kHangulFirst;
    const unsigned vowel = (s / kHangulTrailCount) % kHangulVowelCount;
    const unsigned trail = s % kHangulTrailCount;
    props.expansion = {static_cast<unsigned short>(trail != 0 ? 2 : 1),
                       &t::kHangulVowelTrail[2 * (vowel * kHangulTrailCount + trail)]};
  }
  if (const int index = FindSpecial(c); index >= 0) {
    const t::Special& special = t::kSpecials[index];
    if (special.orders.count != 0) props.expansion = special.orders;
    if (special.cases.upper.count != 0 || special.cases.lower.count != 0) {
      props.caseExpansion = &special.cases;
    }
  }
  return props;
}

// The records of every byte of every 8-bit set, computed while compiling: a
// byte's properties are its character's, except that a byte the set leaves
// undefined has the undefined order and nothing else.
constexpr size_t kByteSetCount = std::size(t::kCodeSetTables);
using ByteProps = std::array<KaUnicodeProps, 256>;
constexpr std::array<ByteProps, kByteSetCount> kByteProps = [] {
  std::array<ByteProps, kByteSetCount> all{};
  for (size_t set = 0; set < kByteSetCount; ++set) {
    for (unsigned b = 0; b < 256; ++b) {
      const unsigned short c = t::kCodeSetTables[set].toUnicode[b];
      all[set][b] = c == kReplacement ? KaUnicodeProps{} : UnicodeProps(c);
    }
  }
  return all;
}();
constexpr std::array<std::array<unsigned short, 256>, kByteSetCount> kByteOrders = [] {
  std::array<std::array<unsigned short, 256>, kByteSetCount> all{};
  for (size_t set = 0; set < kByteSetCount; ++set) {
    for (unsigned b = 0; b < 256; ++b) all[set][b] = kByteProps[set][b].order;
  }
  return all;
}();

template <size_t... I>
constexpr std::array<KaCodeSet, sizeof...(I)> MakeByteSets(std::index_sequence<I...>) {
  return {{KaCodeSet(t::kCodeSetTables[I].number, t::kCodeSetTables[I].name, KaCodeSet::Kind::kByte,
                     t::kCodeSetTables[I].toUnicode, t::kCodeSetTables[I].fromUnicode,
                     t::kCodeSetTables[I].fromUnicodeCount, kByteProps[I].data(),
                     kByteOrders[I].data(), nullptr)...}};
}

constexpr auto kByteSets = MakeByteSets(std::make_index_sequence<kByteSetCount>{});
constexpr KaCodeSet kUnicodeSet(253, "Unicode", KaCodeSet::Kind::kUnicode, nullptr, nullptr, 0,
                                nullptr, nullptr, kOrderPages.data());
constexpr KaCodeSet kOrderSet(254, "collation orders", KaCodeSet::Kind::kOrders, nullptr, nullptr,
                              0, nullptr, nullptr, nullptr);

constexpr std::array<const KaCodeSet*, 256> kByNumber = [] {
  std::array<const KaCodeSet*, 256> byNumber{};
  for (const KaCodeSet& set : kByteSets) byNumber[set.Number()] = &set;
  byNumber[253] = &kUnicodeSet;
  byNumber[254] = &kOrderSet;
  return byNumber;
}();

}  // namespace

KaUnicodeProps KaGetUnicodeProps(unsigned short c) { return UnicodeProps(c); }

const KaCodeSet* KaCodeSet::Get(unsigned char number) {
  if (number == 0) number = KaLanguageContext::GetNativeCodeSet();
  return kByNumber[number];
}

unsigned short KaCodeSet::ToUnicode(unsigned short unit) const {
  switch (kind_) {
    case Kind::kByte:
      return unit < 256 ? toUnicode_[unit] : kReplacement;
    case Kind::kUnicode:
      return unit;
    case Kind::kOrders:
      break;
  }
  return kReplacement;
}

unsigned short KaCodeSet::FromUnicode(unsigned short character) const {
  switch (kind_) {
    case Kind::kByte: {
      // Every 8-bit set of the library is ASCII below 0x80.
      if (character < 0x80) return character;
      const auto* pairs = static_cast<const t::FromUnicodePair*>(fromUnicode_);
      const auto* end = pairs + fromUnicodeCount_;
      const auto* it = std::lower_bound(
          pairs, end, character,
          [](const t::FromUnicodePair& p, unsigned short value) { return p.character < value; });
      return it != end && it->character == character ? it->byte : kQuestionMark;
    }
    case Kind::kUnicode:
      return character;
    case Kind::kOrders:
      break;
  }
  return kUnicodeSet.GetOrder(character);
}

unsigned short KaCodeSet::ConvertUnit(unsigned short unit, unsigned char from) const {
  const KaCodeSet* source = Get(from);
  if (source == this) return unit;
  return FromUnicode(source != nullptr ? source->ToUnicode(unit) : kReplacement);
}

KaUnicodeProps KaCodeSet::WideUnicodeProps(unsigned short unit, unsigned char /*language*/) const {
  if (kind_ == Kind::kUnicode) return UnicodeProps(unit);
  KaUnicodeProps props;  // the order set: the unit is the order
  props.order = unit;
  return props;
}
