// KaIString and KaCaseIString: the two folding tables, the compare routines that
// walk them, and the byte operations both classes share.
#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "kabase/memory.h"
#include "katypemgr/kaistring.h"
#include "string/folding.h"

namespace {

// --- Folding tables --------------------------------------------------------------------
//
// The bytes 0x00..0x3F keep their value, 0x80..0x9F move up by 0x60 and
// 0xA0..0xBF by 0x10 (three of them excepted, see FoldByRule); the letters,
// 0x40..0x7F and 0xC0..0xFF, take the sort bytes below. Capitals and small
// letters share a sort byte in KaCaseIString; in KaIString the small letter sorts
// just below its capital. An accented letter has the sort byte of its base letter
// and its accent as extra (1 diaeresis or cedilla, 2 acute, 3 grave, 4 circumflex,
// 5 tilde); a ligature or the sharp s carries its second letter's sort byte as
// extra.
//
// The shift of 0xA0..0xBF lands some signs on letters (0xA3, the pound sign,
// sorts as "Y", 0xA7, the section sign, as "Z"). The alphabet stays exactly
// so: indexes built on these strings hold their keys in this order, and any
// change would misplace stored keys.

// clang-format off
constexpr std::array<unsigned char, 64> kCaseISortLetters = {
    // 0x40..0x4F
    0x40, 0x54, 0x5B, 0x5E, 0x61, 0x69, 0x6F, 0x71, 0x73, 0x79, 0x7F, 0x81, 0x83, 0x85, 0x87, 0x90,
    // 0x50..0x5F
    0x97, 0x99, 0x9B, 0x9D, 0x9F, 0xA5, 0xAB, 0xAD, 0xAF, 0xB3, 0xB7, 0x42, 0x43, 0x44, 0x45, 0x46,
    // 0x60..0x6F
    0x41, 0x54, 0x5B, 0x5E, 0x61, 0x69, 0x6F, 0x71, 0x73, 0x79, 0x7F, 0x81, 0x83, 0x85, 0x87, 0x90,
    // 0x70..0x7F
    0x97, 0x99, 0x9B, 0x9D, 0x9F, 0xA5, 0xAB, 0xAD, 0xAF, 0xB3, 0xB7, 0x47, 0x48, 0x49, 0x4A, 0x4B,
};
constexpr std::array<unsigned char, 64> kISortLetters = {
    // 0x40..0x4F
    0x40, 0x54, 0x5B, 0x5E, 0x61, 0x69, 0x6F, 0x71, 0x73, 0x79, 0x7F, 0x81, 0x83, 0x85, 0x87, 0x90,
    // 0x50..0x5F
    0x97, 0x99, 0x9B, 0x9D, 0x9F, 0xA5, 0xAB, 0xAD, 0xAF, 0xB3, 0xB7, 0x42, 0x43, 0x44, 0x45, 0x46,
    // 0x60..0x6F
    0x41, 0x4E, 0x5A, 0x5C, 0x60, 0x64, 0x6E, 0x70, 0x72, 0x74, 0x7E, 0x80, 0x82, 0x84, 0x86, 0x8A,
    // 0x70..0x7F
    0x96, 0x98, 0x9A, 0x9C, 0x9E, 0xA0, 0xAA, 0xAC, 0xAE, 0xB0, 0xB6, 0x47, 0x48, 0x49, 0x4A, 0x4B,
};

constexpr std::array<unsigned char, 64> kCaseISortLatin = {
    // 0xC0..0xCF
    0x54, 0x54, 0x54, 0x54, 0x54, 0xBD, 0xB9, 0x5E, 0x69, 0x69, 0x69, 0x69, 0x79, 0x79, 0x79, 0x79,
    // 0xD0..0xDF
    0x63, 0x89, 0x90, 0x90, 0x90, 0x90, 0x90, 0x4C, 0xBB, 0xA5, 0xA5, 0xA5, 0xA5, 0xB3, 0xBF, 0x9D,
    // 0xE0..0xEF
    0x54, 0x54, 0x54, 0x54, 0x54, 0xBD, 0xB9, 0x5E, 0x69, 0x69, 0x69, 0x69, 0x79, 0x79, 0x79, 0x79,
    // 0xF0..0xFF
    0x63, 0x89, 0x90, 0x90, 0x90, 0x90, 0x90, 0x4D, 0xBB, 0xA5, 0xA5, 0xA5, 0xA5, 0xB3, 0xBF, 0xB3,
};
constexpr std::array<unsigned char, 64> kCaseIExtraLatin = {
    // 0xC0..0xCF
    0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x01, 0x03, 0x02, 0x04, 0x01, 0x03, 0x02, 0x04, 0x01,
    // 0xD0..0xDF
    0x00, 0x00, 0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x03, 0x02, 0x04, 0x01, 0x02, 0x00, 0x9D,
    // 0xE0..0xEF
    0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x01, 0x03, 0x02, 0x04, 0x01, 0x03, 0x02, 0x04, 0x01,
    // 0xF0..0xFF
    0x00, 0x00, 0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x03, 0x02, 0x04, 0x01, 0x02, 0x00, 0x01,
};
constexpr std::array<unsigned char, 64> kISortLatin = {
    // 0xC0..0xCF
    0x54, 0x54, 0x54, 0x54, 0x54, 0xBD, 0xB9, 0x5E, 0x69, 0x69, 0x69, 0x69, 0x79, 0x79, 0x79, 0x79,
    // 0xD0..0xDF
    0x63, 0x89, 0x90, 0x90, 0x90, 0x90, 0x90, 0x4C, 0xBB, 0xA5, 0xA5, 0xA5, 0xA5, 0xB3, 0xBF, 0x9C,
    // 0xE0..0xEF
    0x4E, 0x4E, 0x4E, 0x4E, 0x4E, 0xBC, 0xB8, 0x5C, 0x64, 0x64, 0x64, 0x64, 0x74, 0x74, 0x74, 0x74,
    // 0xF0..0xFF
    0x62, 0x88, 0x8A, 0x8A, 0x8A, 0x8A, 0x8A, 0x4D, 0xBA, 0xA0, 0xA0, 0xA0, 0xA0, 0xB0, 0xBE, 0xB0,
};
constexpr std::array<unsigned char, 64> kIExtraLatin = {
    // 0xC0..0xCF
    0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x01, 0x03, 0x02, 0x04, 0x01, 0x03, 0x02, 0x04, 0x01,
    // 0xD0..0xDF
    0x00, 0x00, 0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x03, 0x02, 0x04, 0x01, 0x02, 0x00, 0x9C,
    // 0xE0..0xEF
    0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x01, 0x03, 0x02, 0x04, 0x01, 0x03, 0x02, 0x04, 0x01,
    // 0xF0..0xFF
    0x00, 0x00, 0x03, 0x02, 0x04, 0x05, 0x01, 0x00, 0x00, 0x03, 0x02, 0x04, 0x01, 0x02, 0x00, 0x01,
};
// clang-format on

using Folding = std::array<ka::FoldedByte, 256>;

struct LetterTables {
  const std::array<unsigned char, 64>& letters;  // sort bytes of 0x40..0x7F
  const std::array<unsigned char, 64>& latin;    // sort bytes of 0xC0..0xFF
  const std::array<unsigned char, 64>& extra;    // extras of 0xC0..0xFF
  unsigned char smallOeSort;                     // 0x9C: the ligature oe
  unsigned char smallOeExtra;
};

constexpr ka::FoldedByte FoldByRule(unsigned c, const LetterTables& t) {
  auto byte = [](unsigned v) { return static_cast<unsigned char>(v); };
  if (c < 0x40) return {byte(c), 0};
  if (c < 0x80) return {t.letters[c - 0x40], 0};
  if (c == 0x8C) return {0x90, 0x69};  // the ligature OE: "O" then "E"
  if (c == 0x9C) return {t.smallOeSort, t.smallOeExtra};
  if (c == 0x9F) return {0xB3, 0x01};  // Y with diaeresis
  if (c < 0xA0) return {byte(c + 0x60), 0};
  if (c < 0xC0) return {byte(c + 0x10), 0};
  return {t.latin[c - 0xC0], t.extra[c - 0xC0]};
}

constexpr Folding BuildFolding(const LetterTables& t) {
  Folding folding{};
  for (unsigned c = 0; c < 256; ++c) folding[c] = FoldByRule(c, t);
  return folding;
}

// KaIString keeps the small oe ligature small ("o" "e"); KaCaseIString has no
// small letters.
constexpr Folding kIStringFolding =
    BuildFolding({kISortLetters, kISortLatin, kIExtraLatin, 0x8A, 0x64});
constexpr Folding kCaseIStringFolding =
    BuildFolding({kCaseISortLetters, kCaseISortLatin, kCaseIExtraLatin, 0x90, 0x69});

// Both alphabets fold capitals, digits, signs and 0xC0..0xDE alike; in
// KaCaseIString a small Latin letter folds as its capital; the sharp s expands
// into two small or neutral s.
constexpr bool SameRange(const Folding& a, const Folding& b, unsigned first, unsigned last) {
  for (unsigned c = first; c <= last; ++c) {
    if (a[c].sort != b[c].sort || a[c].extra != b[c].extra) return false;
  }
  return true;
}
static_assert(SameRange(kIStringFolding, kCaseIStringFolding, 0x00, 0x60));
static_assert(SameRange(kIStringFolding, kCaseIStringFolding, 0x7B, 0x9B));
static_assert(SameRange(kIStringFolding, kCaseIStringFolding, 0x9D, 0xDE));
static_assert([] {
  for (unsigned c = 0xE0; c <= 0xEF; ++c) {
    const ka::FoldedByte small = kCaseIStringFolding[c];
    const ka::FoldedByte capital = kCaseIStringFolding[c - 0x20];
    if (small.sort != capital.sort || small.extra != capital.extra) return false;
  }
  return true;
}());
static_assert(kIStringFolding[0xDF].extra == kIStringFolding['s'].sort);
static_assert(kCaseIStringFolding[0xDF].extra == kCaseIStringFolding['s'].sort);

// --- Comparison ------------------------------------------------------------------------

// What the extra of a folded byte does on its way into the sort byte.
enum class ExtraRule {
  kExpand,  // 1..8 dropped; 9 or more waits as the next sort byte
  kWeigh,   // 1..8 added; 9 or more: the sort byte less 1, nothing waits
};

// The sort bytes a byte gives under one way of reading a side: the first, and
// the second that waits behind it (0: none). A terminator gives 0 and nothing
// waits behind it. Built once per way, so that the walk looks at no flag.
struct SortBytes {
  std::array<unsigned char, 256> first;
  std::array<unsigned char, 256> second;
  std::array<unsigned char, 256> pairs;  // 1, or 2 with a second sort byte
};

constexpr SortBytes BuildSortBytes(const Folding& folding, ExtraRule rule) {
  SortBytes t{};
  for (unsigned c = 0; c < 256; ++c) {
    const ka::FoldedByte f = folding[c];
    t.first[c] = f.sort;
    t.pairs[c] = 1;
    if (f.extra == 0) continue;
    if (rule == ExtraRule::kWeigh) {
      t.first[c] = static_cast<unsigned char>(f.extra < 9 ? f.sort + f.extra : f.sort - 1);
    } else if (f.extra >= 9) {
      t.second[c] = f.extra;
      t.pairs[c] = 2;
    }
  }
  return t;
}

constexpr SortBytes BuildRawSortBytes() {
  SortBytes t{};
  for (unsigned c = 0; c < 256; ++c) {
    t.first[c] = static_cast<unsigned char>(c);
    t.pairs[c] = 1;
  }
  return t;
}

constexpr SortBytes kRawSortBytes = BuildRawSortBytes();
constexpr SortBytes kISortBytes = BuildSortBytes(kIStringFolding, ExtraRule::kExpand);
constexpr SortBytes kCaseISortBytes = BuildSortBytes(kCaseIStringFolding, ExtraRule::kExpand);
constexpr SortBytes kCaseIWeighedSortBytes = BuildSortBytes(kCaseIStringFolding, ExtraRule::kWeigh);

// The walk knows a terminator by its sort byte 0: no other byte may give it.
constexpr bool OnlyZeroSortsZero(const SortBytes& t) {
  if (t.first[0] != 0 || t.second[0] != 0) return false;
  for (unsigned c = 1; c < 256; ++c) {
    if (t.first[c] == 0) return false;
  }
  return true;
}
static_assert(OnlyZeroSortsZero(kRawSortBytes) && OnlyZeroSortsZero(kISortBytes));
static_assert(OnlyZeroSortsZero(kCaseISortBytes) && OnlyZeroSortsZero(kCaseIWeighedSortBytes));

// One side of a comparison: where it stands, how it reads, and the second
// sort byte of an expanding byte, waiting to be taken.
struct Side {
  const unsigned char* at;
  const SortBytes* table;
  unsigned char pending = 0;
};

int TakeSortByte(Side& side) {
  if (side.pending != 0) {
    const unsigned char second = side.pending;
    side.pending = 0;
    return second;
  }
  const unsigned char c = *side.at;
  // A terminator gives 0 and is never stepped over: the walk ends at the next
  // pair.
  if (c != 0) ++side.at;
  side.pending = side.table->second[c];
  return side.table->first[c];
}

// The walk pair by pair from any state: where one side expands and the other
// does not, the two read out of step. `pending` holds the second sort bytes
// waiting on each side (a's in its low byte). Six arguments, all passed in
// registers: the in-step walk that calls it needs no stack frame.
[[gnu::noinline]] int WalkOutOfStep(const unsigned char* pa, const unsigned char* pb,
                                    const SortBytes* ta, const SortBytes* tb, unsigned pending,
                                    size_t remaining) {
  Side a{pa, ta, static_cast<unsigned char>(pending)};
  Side b{pb, tb, static_cast<unsigned char>(pending >> 8)};
  // A pair taken while either side stood at its terminator is the last one:
  // a pending second sort byte still takes part in it.
  for (; remaining != 0; --remaining) {
    const bool ended = *a.at == 0 || *b.at == 0;
    const int difference = TakeSortByte(a) - TakeSortByte(b);
    if (difference != 0 || ended) return difference;
  }
  return 0;
}

// --- The equal prefix ---

// 1 when the last of the n bytes at `a` expands. Out of line, so that the
// prefix loop keeps no copy of its last byte for it.
[[gnu::noinline, gnu::cold]] size_t LastByteExpands(const unsigned char* a, size_t n,
                                                    const SortBytes& table) {
  return n != 0 && table.pairs[a[n - 1]] == 2 ? 1 : 0;
}

// Read alike, equal bytes give equal sort bytes, a waiting second one
// included: the common prefix of neighbouring keys is stepped over with its
// pairs counted, and an equal pair counts against the limit like any other.
// An expanding byte is different: the pair of its second sort byte ends the
// walk when either side stands at its terminator behind it, so when the
// prefix ends on one, that byte is left to the pair by pair walk. Answers the
// pairs stepped over.
[[gnu::always_inline]] inline size_t StepOverEqualPrefix(const unsigned char*& pa,
                                                         const unsigned char*& pb,
                                                         const SortBytes& table) {
  // Byte by byte: a text's bytes past its terminator are not ours to read,
  // so no wider load looks ahead. One index for both sides keeps the loop to
  // two loads, two tests and the count.
  const unsigned char* a = pa;
  const unsigned char* b = pb;
  size_t n = 0;
  size_t taken = 0;
  for (; a[n] == b[n] && a[n] != 0; ++n) taken += table.pairs[a[n]];
  // Without an expansion among them (one pair a byte), the last byte stepped
  // over does not expand either.
  if (taken != n) [[unlikely]] {
    const size_t back = LastByteExpands(a, n, table);
    n -= back;
    taken -= 2 * back;
  }
  pa = a + n;
  pb = b + n;
  return taken;
}

// The walk while both sides stand at a byte with nothing waiting, which is all
// of it unless one side expands where the other does not. Only a zero byte
// gives the sort byte 0 (see the tables), so equal first sort bytes of 0 mean
// both sides stand at their terminators.
[[gnu::always_inline]] inline int WalkInStep(const unsigned char* pa, const unsigned char* pb,
                                             const SortBytes& ta, const SortBytes& tb, size_t taken,
                                             size_t limit) {
  for (;;) {
    if (taken >= limit) return 0;
    const unsigned char first1 = ta.first[*pa];
    const unsigned char first2 = tb.first[*pb];
    if (first1 != first2) return first1 - first2;
    if (first1 == 0) return 0;
    const unsigned char second1 = ta.second[*pa];
    const unsigned char second2 = tb.second[*pb];
    ++taken;
    ++pa;
    ++pb;
    if ((second1 | second2) == 0) continue;
    if (second1 == 0 || second2 == 0) {
      return WalkOutOfStep(pa, pb, &ta, &tb, second1 | second2 << 8, limit - taken);
    }
    if (taken >= limit) return 0;
    if (second1 != second2) return second1 - second2;
    if (*pa == 0 || *pb == 0) return 0;
    ++taken;
  }
}

[[gnu::always_inline]] inline int CompareFolded(const char* s1, const char* s2,
                                                unsigned short maxLength, const SortBytes& ta,
                                                const SortBytes& tb) {
  if (s1 == nullptr) return s2 != nullptr ? -1 : 0;
  if (s2 == nullptr) return 1;
  const auto* pa = reinterpret_cast<const unsigned char*>(s1);
  const auto* pb = reinterpret_cast<const unsigned char*>(s2);
  if (*pa == 0 || *pb == 0) return *pa - *pb;
  const size_t limit = maxLength == 0 ? 65535 : maxLength;
  const size_t taken = &ta == &tb ? StepOverEqualPrefix(pa, pb, ta) : 0;
  return WalkInStep(pa, pb, ta, tb, taken, limit);
}

const SortBytes& SideTable(unsigned short flags, const SortBytes& folded) {
  return (flags & KaIString::kRawBytes) != 0 ? kRawSortBytes : folded;
}

}  // namespace

int KaIStringCmp(const char* s1, const char* s2, unsigned short maxLength, unsigned short flags1,
                 unsigned short flags2) {
  return CompareFolded(s1, s2, maxLength, SideTable(flags1, kISortBytes),
                       SideTable(flags2, kISortBytes));
}

int KaCaseIStringCmp(const char* s1, const char* s2, unsigned short maxLength,
                     unsigned short flags1, unsigned short flags2) {
  // The left-hand side's flags decide for both sides, so that a key compared
  // against stored values is weighed one way throughout.
  const SortBytes& folded =
      (flags1 & KaCaseIString::kWeighDiacritics) != 0 ? kCaseIWeighedSortBytes : kCaseISortBytes;
  return CompareFolded(s1, s2, maxLength, SideTable(flags1, folded), SideTable(flags2, folded));
}

ka::FoldedByte ka::FoldIStringByte(unsigned char c) { return kIStringFolding[c]; }

ka::FoldedByte ka::FoldCaseIStringByte(unsigned char c) { return kCaseIStringFolding[c]; }

namespace {

constexpr size_t kMaxLength = KaIString::kMaxLength;

// --- Building texts --------------------------------------------------------------------

// A run of bytes that goes into a new text: `size` bytes of `bytes`, or, when
// `bytes` is null, `size` copies of `fill`.
struct Run {
  const char* bytes;
  size_t size;
  char fill = 0;
};

// Makes `out` a new text of the runs, cut at kMaxLength bytes; null for empty
// content. The runs may lie in the buffer that `out` replaces. False, and
// `out` untouched, when memory stays short.
bool BuildText(std::initializer_list<Run> runs, char*& out) {
  size_t total = 0;
  for (const Run& run : runs) total += run.size;
  total = std::min(total, kMaxLength);
  if (total == 0) {
    out = nullptr;
    return true;
  }
  auto* text = static_cast<char*>(KaMalloc(total + 1));
  if (text == nullptr) return false;
  size_t at = 0;
  for (const Run& run : runs) {
    const size_t n = std::min(run.size, total - at);
    if (n == 0) continue;
    if (run.bytes != nullptr) {
      std::memcpy(text + at, run.bytes, n);
    } else {
      std::memset(text + at, run.fill, n);
    }
    at += n;
  }
  text[total] = '\0';
  out = text;
  return true;
}

size_t TextLength(const char* text) {
  return text == nullptr ? 0 : std::min(strnlen(text, kMaxLength + 1), kMaxLength);
}

// --- Numbers ---------------------------------------------------------------------------

bool IsBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }

const char* SkipBlanks(const char* text) {
  while (IsBlank(static_cast<unsigned char>(*text))) ++text;
  return text;
}

// Optional blanks, an optional sign and decimal digits; saturates at the range
// of long long; 0 without a digit.
long long ReadDecimal(const char* text) {
  if (text == nullptr) return 0;
  const char* p = SkipBlanks(text);
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  const unsigned long long limit = negative ? 1ull + LLONG_MAX : LLONG_MAX;
  unsigned long long magnitude = 0;
  for (; IsDigit(static_cast<unsigned char>(*p)); ++p) {
    const unsigned digit = static_cast<unsigned>(*p - '0');
    if (magnitude > (limit - digit) / 10) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  return negative ? static_cast<long long>(0 - magnitude) : static_cast<long long>(magnitude);
}

// The "C" locale, so that a host's LC_NUMERIC never turns the decimal point
// into a comma. Made once and kept for the life of the process.
locale_t NumericLocale() {
  static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return c;
}

// Decimal notation only: strtod would also read hexadecimal, "inf" and "nan",
// which are no numbers in these strings.
double ReadDouble(const char* text) {
  if (text == nullptr) return 0;
  const char* start = SkipBlanks(text);
  const char* p = start;
  if (*p == '-' || *p == '+') ++p;
  const bool digitFirst = IsDigit(static_cast<unsigned char>(p[0])) ||
                          (p[0] == '.' && IsDigit(static_cast<unsigned char>(p[1])));
  if (!digitFirst || (p[0] == '0' && (p[1] == 'x' || p[1] == 'X'))) return 0;
  const int savedErrno = errno;  // a range error is answered by the value itself
  const locale_t c = NumericLocale();
  const double value = c != nullptr ? strtod_l(start, nullptr, c) : std::strtod(start, nullptr);
  errno = savedErrno;
  return value;
}

// --- Case ------------------------------------------------------------------------------

// Windows-1252 case pairs (see ToUpper in the header).
constexpr unsigned char UpperOf(unsigned c) {
  if ((c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) return c - 0x20;
  if (c == 0x9A || c == 0x9C || c == 0x9E) return c - 0x10;
  if (c == 0xFF) return 0x9F;
  return static_cast<unsigned char>(c);
}

constexpr std::array<unsigned char, 256> BuildUpper() {
  std::array<unsigned char, 256> upper{};
  for (unsigned c = 0; c < 256; ++c) upper[c] = UpperOf(c);
  return upper;
}

constexpr std::array<unsigned char, 256> BuildLower(const std::array<unsigned char, 256>& upper) {
  std::array<unsigned char, 256> lower{};
  for (unsigned c = 0; c < 256; ++c) lower[c] = static_cast<unsigned char>(c);
  for (unsigned c = 0; c < 256; ++c) {
    if (upper[c] != c) lower[upper[c]] = static_cast<unsigned char>(c);
  }
  return lower;
}

constexpr std::array<unsigned char, 256> kUpper = BuildUpper();
constexpr std::array<unsigned char, 256> kLower = BuildLower(kUpper);
static_assert(kUpper[0xDF] == 0xDF && kUpper[0xF7] == 0xF7 && kLower[0xD7] == 0xD7);

void MapBytes(char* text, const std::array<unsigned char, 256>& map) {
  if (text == nullptr) return;
  for (; *text != '\0'; ++text) *text = static_cast<char>(map[static_cast<unsigned char>(*text)]);
}

void ReplaceBytes(char* text, char from, char to) {
  if (text == nullptr) return;
  for (; *text != '\0'; ++text) {
    if (*text == from) *text = to;
  }
}

}  // namespace

// --- The classes -------------------------------------------------------------------------

namespace ka::detail {

// Every constructor starts from the empty string and leaves it so when memory
// stays short.

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(const FoldedString& other) {
  BuildText({{other.buffer_, TextLength(other.buffer_)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(FoldedString&& other) noexcept : buffer_(other.buffer_) {
  other.buffer_ = nullptr;
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(char c) {
  BuildText({{&c, c != '\0' ? 1u : 0u}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(short value) : FoldedString(static_cast<int>(value)) {}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(int value) {
  char text[16];
  const int n = std::snprintf(text, sizeof text, "%d", value);
  BuildText({{text, static_cast<size_t>(n)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(unsigned int value) {
  char text[16];
  const int n = std::snprintf(text, sizeof text, "%u", value);
  BuildText({{text, static_cast<size_t>(n)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(double value) {
  char text[32];  // "%.17g" needs at most 24 bytes ("-1.7976931348623157e+308")
  const int n = std::snprintf(text, sizeof text, "%.17g", value);
  BuildText({{text, static_cast<size_t>(n)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(long long value) {
  char text[24];
  const int n = std::snprintf(text, sizeof text, "%lld", value);
  BuildText({{text, static_cast<size_t>(n)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(unsigned long long value) {
  char text[24];
  const int n = std::snprintf(text, sizeof text, "%llu", value);
  BuildText({{text, static_cast<size_t>(n)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(const char* text) {
  BuildText({{text, TextLength(text)}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::FoldedString(const char* text, unsigned short n) {
  // The text ends at its first zero byte in any case; 65535 bounds nothing.
  const size_t bound = n == 65535 ? kMaxLength + 1 : n;
  const size_t length = text == nullptr ? 0 : strnlen(text, bound);
  BuildText({{text, length}}, buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::~FoldedString() {
  std::free(buffer_);
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::Adopt(char* text) {
  std::free(buffer_);
  buffer_ = text;
}

template <class D, FoldedCompare C>
FoldedString<D, C>& FoldedString<D, C>::operator=(const FoldedString& other) {
  flags_ = 0;
  if (this == &other) return *this;
  char* text = nullptr;
  if (BuildText({{other.buffer_, TextLength(other.buffer_)}}, text)) Adopt(text);
  return *this;
}

template <class D, FoldedCompare C>
FoldedString<D, C>& FoldedString<D, C>::operator=(FoldedString&& other) noexcept {
  flags_ = 0;
  if (this == &other) return *this;
  Adopt(other.buffer_);
  other.buffer_ = nullptr;
  return *this;
}

template <class D, FoldedCompare C>
D& FoldedString<D, C>::Assign(const char* text) {
  flags_ = 0;
  // Built before the old buffer goes: `text` may point into it.
  char* fresh = nullptr;
  if (BuildText({{text, TextLength(text)}}, fresh)) Adopt(fresh);
  return Self();
}

template <class D, FoldedCompare C>
char& FoldedString<D, C>::operator[](int position) {
  if (position >= 0 && position < Len()) return buffer_[position];
  // Per thread, so that stray writes from two threads do not race.
  thread_local char scratch = 0;
  scratch = 0;
  return scratch;
}

template <class D, FoldedCompare C>
char FoldedString<D, C>::operator[](int position) const {
  return position >= 0 && position < Len() ? buffer_[position] : '\0';
}

template <class D, FoldedCompare C>
FoldedString<D, C>::operator short() const {
  return static_cast<short>(std::clamp<long long>(ReadDecimal(buffer_), SHRT_MIN, SHRT_MAX));
}

template <class D, FoldedCompare C>
FoldedString<D, C>::operator int() const {
  return static_cast<int>(std::clamp<long long>(ReadDecimal(buffer_), INT_MIN, INT_MAX));
}

template <class D, FoldedCompare C>
FoldedString<D, C>::operator double() const {
  return ReadDouble(buffer_);
}

template <class D, FoldedCompare C>
FoldedString<D, C>::operator long long() const {
  return ReadDecimal(buffer_);
}

template <class D, FoldedCompare C>
D& FoldedString<D, C>::operator+=(const D& s) {
  const size_t added = s.Len();
  if (added == 0) return Self();
  char* joined = nullptr;
  if (BuildText({{buffer_, Len()}, {s.StrGet(), added}}, joined)) Adopt(joined);
  return Self();
}

template <class D, FoldedCompare C>
D FoldedString<D, C>::Join(const FoldedString& a, const FoldedString& b) {
  D joined;
  BuildText({{a.buffer_, a.Len()}, {b.buffer_, b.Len()}}, joined.buffer_);
  return joined;
}

template <class D, FoldedCompare C>
D FoldedString<D, C>::Copy(unsigned short start, unsigned short count) const {
  D part;
  const unsigned short len = Len();
  if (start >= len) return part;
  const size_t n = std::min<size_t>(count, len - start);
  BuildText({{buffer_ + start, n}}, part.buffer_);
  return part;
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::Cut(unsigned short start, unsigned short count) {
  const unsigned short len = Len();
  if (start >= len || count == 0) return;
  const size_t n = std::min<size_t>(count, len - start);
  if (n == len) {
    Adopt(nullptr);
    return;
  }
  // The tail moves down together with its terminator.
  std::memmove(buffer_ + start, buffer_ + start + n, len - start - n + 1);
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::Expand(unsigned short n, char c) {
  const unsigned short len = Len();
  if (n <= len || c == '\0') return;
  char* padded = nullptr;
  if (BuildText({{buffer_, len}, {nullptr, size_t{n} - len, c}}, padded)) Adopt(padded);
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::Fill(unsigned short n, char c) {
  char* filled = nullptr;
  if (BuildText({{nullptr, c != '\0' ? n : 0u, c}}, filled)) Adopt(filled);
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::Insert(const D& s, unsigned short position) {
  const unsigned short added = s.Len();
  if (added == 0) return;
  const unsigned short len = Len();
  const unsigned short at = std::min(position, len);
  char* joined = nullptr;
  if (BuildText({{buffer_, at}, {s.StrGet(), added}, {buffer_ + at, size_t{len} - at}}, joined)) {
    Adopt(joined);
  }
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::Replace(const D& s, unsigned short position) {
  const size_t n = s.Len();
  if (n == 0) return;
  const size_t len = Len();
  const size_t at = std::min<size_t>(position, len);
  if (at + n <= len) {
    std::memmove(buffer_ + at, s.StrGet(), n);  // `s` may be this string
    return;
  }
  char* grown = nullptr;
  if (BuildText({{buffer_, at}, {s.StrGet(), n}}, grown)) Adopt(grown);
}

template <class D, FoldedCompare C>
int FoldedString<D, C>::SubStringPos(const D& s, unsigned short start) const {
  const std::string_view text(buffer_ != nullptr ? buffer_ : "", Len());
  const std::string_view needle(s.StrGet() != nullptr ? s.StrGet() : "", s.Len());
  const size_t at = text.find(needle, start);
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

template <class D, FoldedCompare C>
D& FoldedString<D, C>::ToUpper() {
  MapBytes(buffer_, kUpper);
  return Self();
}

template <class D, FoldedCompare C>
D& FoldedString<D, C>::ToLower() {
  MapBytes(buffer_, kLower);
  return Self();
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::SpaceToZero() {
  ReplaceBytes(buffer_, ' ', '0');
}

template <class D, FoldedCompare C>
void FoldedString<D, C>::ZeroToSpace() {
  ReplaceBytes(buffer_, '0', ' ');
}

template class FoldedString<KaIString, KaIStringCmp>;
template class FoldedString<KaCaseIString, KaCaseIStringCmp>;

}  // namespace ka::detail
