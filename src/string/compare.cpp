// KaStrCmp: byte comparison, the byte wildcard matcher and the collating
// comparison (simple and multi-level, with wildcards). Walks text through
// KaStringIterator and allocates nothing: the one saved resume state of the
// wildcard walk lives on the stack.
#include <climits>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kabase/codec.h"
#include "kai18n/codeset.h"
#include "kai18n/langctx.h"
#include "katypemgr/kastrcmp.h"
#include "katypemgr/kastring.h"
#include "string/compare_general.h"

namespace {

// Options word bits that only this file reads.
constexpr unsigned short kStepFirstOrderOnly = kKaCmpStepFlag;

// The language whose letter keys keep the raw order (its letters are not
// reordered by diacritic and case fields).
constexpr unsigned char kRawOrderLanguage = 20;

constexpr uint32_t kPrimaryMask = 0xFFFFFF80;    // base letter, extension, class, language
constexpr uint32_t kDiacriticMask = 0xFFFFFF9F;  // primary and diacritic
constexpr uint32_t kCaseMask = 0xFFFFFFE0;       // primary and case

bool IsNull(unsigned char codeSet, unsigned char language) {
  return language == KaString::kNullLanguage || (codeSet == 254 && language == 0);
}

// A difference of 32-bit keys, with its sign kept when it does not fit an int.
int Clamp(int64_t d) {
  if (d > INT_MAX) return INT_MAX;
  if (d < -INT_MAX) return -INT_MAX;
  return static_cast<int>(d);
}

// The 32-bit key of order `o` in `language`. A letter order holds, from the
// top, case, diacritic, base letter and extension; the key moves base letter
// and extension above diacritic and case, so that the low seven key bits are
// the levels that break ties (bits 0..4 diacritic, 5..6 case).
uint32_t Key(unsigned short o, unsigned char language) {
  if (o == 0) return 0;
  const uint32_t lang = static_cast<uint32_t>(language) << 24;
  if (language != kRawOrderLanguage && o < 0x8000 && (o & 0x4000) != 0) {
    return lang | ((((o & 0x407Fu) << 8)) + ((o >> 7) & 0x7Fu));
  }
  return lang | (static_cast<uint32_t>(o) << 8);
}

uint32_t KeyMask(unsigned short cmpOp) {
  uint32_t mask = 0xFFFFFFFF;
  if ((cmpOp & kKaCmpIgnoreCase) != 0) mask &= 0xFFFFFF9F;
  if ((cmpOp & kKaCmpIgnoreDiacritics) != 0) mask &= 0xFFFFFFE0;
  return mask;
}

// --- Bytes ---------------------------------------------------------------------

// `budget` < 0: unlimited.
int CompareBytes(const unsigned char* s1, const unsigned char* s2, long budget) {
  if (s1 == nullptr) return s2 == nullptr || *s2 == 0 ? 0 : -1;
  if (s2 == nullptr) return *s1 != 0 ? 1 : 0;
  for (long i = 0; budget < 0 || i < budget; ++i) {
    if (s1[i] != s2[i]) return s1[i] - s2[i];
    if (s1[i] == 0) break;
  }
  return 0;
}

// Value `v` against pattern `p` with "*" and "?" (no escape). One resume
// point, the most recent star's, is enough: any way of matching the rest that
// an earlier star could find by taking more, the latest star finds as well.
int MatchBytes(const unsigned char* v, const unsigned char* p, long budget) {
  if (p == nullptr) return v != nullptr && *v != 0 ? 1 : 0;
  if (v == nullptr) return *p != 0 ? -1 : 0;
  const unsigned char* const start = v;
  const unsigned char* afterStar = nullptr;  // pattern after the open star
  const unsigned char* resume = nullptr;     // value where that star retries
  auto spent = [&] { return budget >= 0 && v - start >= budget; };
  for (;;) {
    if (spent()) return 0;
    bool scan = false;
    if (*p == '*') {
      while (*p == '*') ++p;
      if (*p == 0) return 0;
      if (*v == 0) return -1;
      afterStar = p;
      scan = true;
    } else if (*p == '?') {
      if (*v == 0) return -1;
      ++v;
      ++p;
      continue;
    } else if (*p == *v) {
      if (*p == 0) return 0;
      ++v;
      ++p;
      continue;
    } else if (afterStar == nullptr) {
      return *v - *p;
    } else {
      v = resume;  // a mismatch under an open star: the star takes one more
      p = afterStar;
      scan = true;
    }
    if (scan) {
      // To the next value byte that can start the rest of the pattern.
      for (; *p != '?' && *v != *p; ++v) {
        if (spent()) return 0;
        if (*v == 0) return 0 - *p;
      }
      if (*v == 0) return -1;  // "?" after the star, at the end of the value
      resume = v + 1;
      ++v;
      ++p;
    }
  }
}

// --- Collating ------------------------------------------------------------------

// One side of a collating walk: an iterator and the count of characters begun,
// against the maximum length.
struct Walker {
  KaStringIterator it;
  int taken = 0;
  int limit = -1;  // characters; -1 unlimited
  bool firstOrderOnly = false;

  Walker(unsigned char codeSet, unsigned char language, const void* text, int maxChars,
         bool firstOnly)
      : it(codeSet > 224
               ? KaStringIterator(static_cast<const unsigned short*>(text), codeSet, language)
               : KaStringIterator(static_cast<const char*>(text), codeSet, language)),
        limit(maxChars),
        firstOrderOnly(firstOnly) {}

  // The next order starts a character (it is not the rest of an expansion).
  bool AtCharacter() const { return !it.OverflowActive(); }
  bool Spent() const { return AtCharacter() && limit >= 0 && taken >= limit; }
  bool AtEnd() const { return AtCharacter() && (Spent() || it.IsEOS()); }

  // The next order; 0 at the end of the text or of the maximum length.
  unsigned short Next() {
    if (AtCharacter()) {
      if (Spent() || it.IsEOS()) return 0;
      ++taken;
    }
    const unsigned short o = it.GetNextOrder(1);
    if (firstOrderOnly) FinishCharacter();
    return o;
  }
  // Passes the orders left of the current character's expansion.
  void FinishCharacter() {
    while (it.OverflowActive()) it.Step(1);
  }

  // A position of the walk to return to.
  using Mark = Walker;
  Mark Save() const { return *this; }
  Mark SavePastCharacter() const {
    Walker past = *this;
    past.FinishCharacter();
    return past;
  }
  void Restore(const Mark& m) { *this = m; }
};

// --- The table walk ---------------------------------------------------------------
//
// Text of a known code set is read without the iterator: a 1-byte set through
// a table of byte -> order with a flag for the bytes whose order expands, the
// Unicode set through its order pages with a bitmap of the units that expand
// (or whose first order the pages do not give), the order set as it stands.
// Flagged units take the code set's full properties, as the iterator does; the
// walk sees the same orders in the same places.

// Per 1-byte set: the order in the low 16 bits, bit 16 set when it expands.
uint32_t g_byteTables[225][256];
// Per 1-byte set, for the byte walk: the key's low 24 bits (those below the
// language) in bits 0..23, the order in bits 32..47, and kByteOff when the
// byte is not answered by the table (its order expands, or a byte other than
// the terminator has no order). The terminator's entry is 0.
uint64_t g_byteKeys[225][256];
constexpr uint64_t kByteOff = 0x80000000u;
// Per 2-byte Unicode set (225..253): a bit per unit that needs its properties.
uint64_t g_wideFlags[29][65536 / 64];
enum class Via : unsigned char { kIterator, kBytes, kWide, kOrders };
// Per code set: how its text is read (the iterator until the tables exist).
Via g_via[256];

// Fills the tables once; the first caller of any thread waits for it.
bool BuildTables() {
  for (int n = 1; n <= 224; ++n) {
    const KaCodeSet* set = KaCodeSet::Get(static_cast<unsigned char>(n));
    if (set == nullptr || set->GetKind() != KaCodeSet::Kind::kByte) continue;
    for (unsigned u = 0; u < 256; ++u) {
      const KaUnicodeProps props = set->GetUnicodeProps(static_cast<unsigned short>(u), 0);
      g_byteTables[n][u] = props.order | (props.expansion.count != 0 ? 0x10000u : 0u);
      const bool off = props.expansion.count != 0 || (u != 0 && props.order == 0);
      g_byteKeys[n][u] = (static_cast<uint64_t>(props.order) << 32) |
                         (Key(props.order, 0) & 0xFFFFFF) | (off ? kByteOff : 0);
    }
    g_via[n] = Via::kBytes;
  }
  for (int n = 225; n <= 253; ++n) {
    const KaCodeSet* set = KaCodeSet::Get(static_cast<unsigned char>(n));
    if (set == nullptr || set->GetKind() != KaCodeSet::Kind::kUnicode) continue;
    for (unsigned u = 0; u < 65536; ++u) {
      const auto unit = static_cast<unsigned short>(u);
      const KaUnicodeProps props = set->GetUnicodeProps(unit, 0);
      if (props.expansion.count != 0 || props.order != set->GetOrder(unit)) {
        g_wideFlags[n - 225][u >> 6] |= uint64_t{1} << (u & 63);
      }
    }
    g_via[n] = Via::kWide;
  }
  g_via[254] = Via::kOrders;
  return true;
}

void EnsureTables() {
  static const bool built = BuildTables();
  (void)built;
}

// How text of `codeSet` in `language` is read: through the iterator for its
// defaults (255) and for sets without tables.
Via ViaOf(unsigned char codeSet, unsigned char language) {
  return language == 255 ? Via::kIterator : g_via[codeSet];
}

// Read for null texts: the end at once.
constexpr unsigned char kNoText[2] = {0, 0};

// One side of the walk read through the tables; the same contract as Walker.
template <Via kVia>
struct FastWalker {
  static constexpr unsigned kWidth = kVia == Via::kBytes ? 1 : 2;

  const unsigned char* pos;
  const uint32_t* bytes = nullptr;
  const uint64_t* wideFlags = nullptr;
  const KaCodeSet* set = nullptr;
  const unsigned short* pending = nullptr;  // the rest of an expansion
  unsigned short pendingLeft = 0;
  unsigned char language;
  bool firstOrderOnly;
  unsigned taken = 0;
  unsigned limit;  // characters; UINT_MAX unlimited

  FastWalker(unsigned char codeSet, unsigned char lang, const void* text, int maxChars,
             bool firstOnly)
      : pos(text != nullptr ? static_cast<const unsigned char*>(text) : kNoText),
        language(lang),
        firstOrderOnly(firstOnly),
        limit(maxChars < 0 ? UINT_MAX : static_cast<unsigned>(maxChars)) {
    if constexpr (kVia == Via::kBytes) {
      bytes = g_byteTables[codeSet];
      set = KaCodeSet::Get(codeSet);
    } else if constexpr (kVia == Via::kWide) {
      wideFlags = g_wideFlags[codeSet - 225];
      set = KaCodeSet::Get(codeSet);
    }
  }

  unsigned short Unit() const {
    if constexpr (kVia == Via::kBytes) return *pos;
    return ka::LoadU16(pos, kVia == Via::kOrders ? ka::ByteOrder::kLittle : ka::ByteOrder::kMemory);
  }

  bool AtCharacter() const { return pendingLeft == 0; }
  bool Spent() const { return AtCharacter() && taken >= limit; }
  bool AtEnd() const { return AtCharacter() && (taken >= limit || Unit() == 0); }

  unsigned short Next() {
    if (pendingLeft != 0) {
      --pendingLeft;
      return *pending++;
    }
    if (taken >= limit) return 0;
    const unsigned short unit = Unit();
    if (unit == 0) return 0;
    ++taken;
    pos += kWidth;
    if constexpr (kVia == Via::kBytes) {
      const uint32_t e = bytes[unit];
      if ((e >> 16) == 0) return static_cast<unsigned short>(e);
    } else if constexpr (kVia == Via::kWide) {
      if (((wideFlags[unit >> 6] >> (unit & 63)) & 1) == 0) return set->GetOrder(unit);
    } else {
      return unit;
    }
    const KaUnicodeProps props = set->GetUnicodeProps(unit, language);
    if (!firstOrderOnly) {
      pending = props.expansion.chars;
      pendingLeft = props.expansion.count;
    }
    return props.order;
  }
  void FinishCharacter() { pendingLeft = 0; }

  // A position of the walk to return to: what moves, not what stays.
  struct Mark {
    const unsigned char* pos;
    const unsigned short* pending;
    unsigned pendingLeft;
    unsigned taken;
  };
  Mark Save() const { return {pos, pending, pendingLeft, taken}; }
  Mark SavePastCharacter() const { return {pos, pending, 0, taken}; }
  void Restore(const Mark& m) {
    pos = m.pos;
    pending = m.pending;
    pendingLeft = static_cast<unsigned short>(m.pendingLeft);
    taken = m.taken;
  }

  // Passes the longest run of identical units of both texts, within the
  // maximum length, that `stops` lets by: identical units give identical
  // orders, expansions and keys, so the walk over them changes nothing but
  // the counts.
  template <typename Stops>
  static void SkipIdentical(FastWalker& a, FastWalker& b, Stops stops) {
    unsigned n = 0;
    const unsigned most = a.limit;
    for (; n < most; ++n) {
      unsigned short unit;
      if constexpr (kWidth == 1) {
        unit = a.pos[n];
        if (unit != b.pos[n]) break;
      } else {
        if (std::memcmp(a.pos + 2 * n, b.pos + 2 * n, 2) != 0) break;
        unit = ka::LoadU16(a.pos + 2 * n,
                           kVia == Via::kOrders ? ka::ByteOrder::kLittle : ka::ByteOrder::kMemory);
      }
      if (unit == 0 || stops(a, unit)) break;
    }
    a.pos += n * kWidth;
    b.pos += n * kWidth;
    a.taken += n;
    b.taken += n;
  }

  // The first order of a unit when the tables give it at once; 0 when they
  // do not (a Unicode unit that needs its properties).
  unsigned short FirstOrder(unsigned short unit) const {
    if constexpr (kVia == Via::kBytes) return static_cast<unsigned short>(bytes[unit]);
    if constexpr (kVia == Via::kWide) {
      if (((wideFlags[unit >> 6] >> (unit & 63)) & 1) != 0) return 0;
      return set->GetOrder(unit);
    }
    return unit;
  }
};

template <typename W>
struct IsFast : std::false_type {};
template <Via kVia>
struct IsFast<FastWalker<kVia>> : std::true_type {};

// The tie-breaking levels seen so far, on masked keys whose primary parts
// were equal.
struct Levels {
  int64_t diacritic = 0;  // the last nonzero one
  int64_t caseLevel = 0;  // the first nonzero one

  void Record(uint32_t k1, uint32_t k2) {
    const int64_t d = static_cast<int64_t>(k1 & kDiacriticMask) - (k2 & kDiacriticMask);
    if (d != 0) diacritic = d;
    // Operands reversed: a lower-case letter (nonzero case field) sorts
    // before its capital.
    const int64_t c = static_cast<int64_t>(k2 & kCaseMask) - (k1 & kCaseMask);
    if (caseLevel == 0) caseLevel = c;
  }
};

struct Options {
  unsigned char language1;
  unsigned char language2;
  unsigned short cmpOp;
  unsigned char mode;
  uint32_t mask;  // what the walk and the levels see of a key
  int* running;   // null unless the running difference is asked for
};

int Resolve(const Levels& levels, const Options& o) {
  if (levels.diacritic != 0 && o.mode == 0) return Clamp(levels.diacritic);
  if (levels.caseLevel != 0 && (o.cmpOp & kKaCmpIgnoreCase) == 0) return Clamp(levels.caseLevel);
  return 0;
}

template <typename V, typename P>
int CompareSimple(V& w1, P& w2, const Options& o) {
  for (;;) {
    const unsigned short o1 = w1.Next();
    const unsigned short o2 = w2.Next();
    const uint32_t k1 = Key(o1, o.language1) & o.mask;
    const uint32_t k2 = Key(o2, o.language2) & o.mask;
    const int d = Clamp(static_cast<int64_t>(k1) - k2);
    if (o1 != 0 && o2 != 0 && o.running != nullptr) *o.running = d;
    if (d != 0 || o1 == 0) return d;
  }
}

enum class Kind : unsigned char { kEnd, kStar, kQuestion, kLiteral };
struct Token {
  Kind kind;
  unsigned short order;
};

struct Wildcards {
  bool active;
  unsigned short star, question, escape;
};

// The next pattern element. Only the first order of a character can be a
// wildcard or the escape; the escape makes the character after it literal,
// and stands for itself at the end of the pattern.
template <typename W>
[[gnu::always_inline]] inline Token ReadToken(W& p, const Wildcards& w) {
  const bool fresh = p.AtCharacter();
  const unsigned short o = p.Next();
  if (o == 0) return {Kind::kEnd, 0};
  if (!w.active || !fresh) return {Kind::kLiteral, o};
  if (o == w.star) return {Kind::kStar, o};
  if (o == w.question) return {Kind::kQuestion, o};
  if (o == w.escape) {
    p.FinishCharacter();
    const auto before = p.Save();
    const unsigned short escaped = p.Next();
    if (escaped != 0) return {Kind::kLiteral, escaped};
    p.Restore(before);
  }
  return {Kind::kLiteral, o};
}

// The multi-level walk of value `v` against `p` (a pattern unless exact).
//
// The walk takes one pattern element at a time. A literal is compared with the
// value's next order by masked key: equal keys go on; a primary difference is
// a mismatch; a difference below the primary level is kept in the levels and
// the walk goes on, unless a star is open, where it is a mismatch too (the
// match must be equal at every level the result counts). A "?" takes one
// whole value character, its expansion included. A run of stars opens a star:
// the walk saves its resume state (value position, the pattern after the
// stars, the levels) and scans the value for the first character whose first
// order equals the element after the stars. A mismatch under an open star
// returns to the saved state, one character further on. Only the latest star
// is kept: a match that an earlier star could reach by taking more, the
// latest star reaches as well, so older states never change the answer.
template <typename V, typename P>
int CompareLevels(V& v, P& p, const Options& o, const Wildcards& w) {
  const bool exact = !w.active;
  Levels levels;
  bool starOpen = false;
  typename V::Mark savedV = v.Save();
  typename P::Mark savedP = p.Save();
  Levels savedLevels;
  auto report = [&](int d) {
    if (o.running != nullptr) *o.running = d;
  };
  // The levels are resolved only when someone reads them.
  auto reportLevels = [&] {
    if (o.running != nullptr) *o.running = Resolve(levels, o);
  };

  for (;;) {
    // The value's maximum length is spent and the pattern agrees so far.
    if (!exact && v.Spent()) return Resolve(levels, o);
    Token t = ReadToken(p, w);
    bool scan = false;
    if (t.kind == Kind::kStar) {
      typename P::Mark afterStars = p.Save();
      do {
        afterStars = p.Save();
        t = ReadToken(p, w);
      } while (t.kind == Kind::kStar);
      if (t.kind == Kind::kEnd) return Resolve(levels, o);
      if (v.AtEnd()) return -1;
      starOpen = true;
      savedP = afterStars;
      savedLevels = levels;
      scan = true;
    } else if (t.kind == Kind::kQuestion) {
      if (v.AtEnd()) return -1;
      v.Next();
      v.FinishCharacter();
      continue;
    } else {
      const unsigned short vo = v.Next();
      if (vo == 0 && t.kind == Kind::kEnd) {
        const int r = Resolve(levels, o);
        // Both texts ended together: only an exact comparison goes on to the
        // lengths, which differ when an expansion met its spelled-out letters.
        return r != 0 || !exact ? r : static_cast<int>(v.taken) - static_cast<int>(p.taken);
      }
      const uint32_t k1 = Key(vo, o.language1) & o.mask;
      const uint32_t k2 = Key(t.order, o.language2) & o.mask;
      if (k1 == k2) {
        if (vo != 0) reportLevels();
        continue;
      }
      const int64_t primary = static_cast<int64_t>(k1 & kPrimaryMask) - (k2 & kPrimaryMask);
      if (!starOpen) {
        if (primary != 0) {
          if (vo != 0 && t.order != 0) report(Clamp(primary));
          return Clamp(primary);
        }
        levels.Record(k1, k2);
        reportLevels();
        continue;
      }
      // The open star takes one more character.
      v.Restore(savedV);
      p.Restore(savedP);
      levels = savedLevels;
      t = ReadToken(p, w);
      scan = true;
    }
    if (!scan) continue;
    // To the next value character that can start the rest of the pattern.
    if (t.kind == Kind::kQuestion) {
      if (v.Spent()) return Resolve(levels, o);
      if (v.AtEnd()) return -1;
      v.Next();
      v.FinishCharacter();
      savedV = v.Save();
      continue;
    }
    const uint32_t k2 = Key(t.order, o.language2) & o.mask;
    for (;;) {
      if (v.Spent()) return Resolve(levels, o);
      const unsigned short vo = v.Next();
      if (vo == 0) return Clamp(-static_cast<int64_t>(k2 & kPrimaryMask));
      if ((Key(vo, o.language1) & o.mask) == k2) break;
      v.FinishCharacter();
    }
    // The found character's further orders meet the element's in the walk.
    savedV = v.SavePastCharacter();
  }
}

// The walk of CompareLevels for value and pattern of one 1-byte set and one
// language, with wildcards, as long as every byte it reads has one order: a
// byte then reads as one table entry that gives its order (to spot the
// wildcards) and its key. Both texts share the language, so keys are
// compared by their low 24 bits, and the language joins them only where a
// difference is answered. Returns kByteWalkOff, having answered nothing, at
// the first byte the table does not answer; the caller then takes the
// general walk from the same place.
constexpr int kByteWalkOff = INT_MIN;

template <bool kRaw>
int CompareByteLevels(const unsigned char* v, unsigned taken, unsigned limit,
                      const unsigned char* p, const uint64_t* table, unsigned char language,
                      const Options& o, const Wildcards& w) {
  const uint32_t mask = o.mask & 0xFFFFFF;
  const uint32_t lang = static_cast<uint32_t>(language) << 24;
  // The raw-order language keys the order as it stands.
  auto key = [&](uint64_t e) -> uint32_t {
    if constexpr (kRaw) return static_cast<uint32_t>(e >> 24) & 0xFFFF00 & mask;
    return static_cast<uint32_t>(e) & mask;
  };
  auto order = [](uint64_t e) { return static_cast<unsigned short>(e >> 32); };
  auto full = [&](uint32_t k) -> int64_t { return k == 0 ? 0 : (k | lang) & kPrimaryMask; };
  const unsigned char* const start = v - taken;
  auto spent = [&] { return static_cast<unsigned>(v - start) >= limit; };
  auto atEnd = [&] { return spent() || *v == 0; };

  struct ByteToken {
    Kind kind;
    bool off;
    uint32_t key;  // a literal's masked key
  };
  auto read = [&]() -> ByteToken {
    const unsigned char b = *p;
    if (b == 0) return {Kind::kEnd, false, 0};
    uint64_t e = table[b];
    if ((e & kByteOff) != 0) return {Kind::kEnd, true, 0};
    ++p;
    const unsigned short ord = order(e);
    if (ord == w.star) return {Kind::kStar, false, 0};
    if (ord == w.question) return {Kind::kQuestion, false, 0};
    if (ord == w.escape && *p != 0) {
      e = table[*p];
      if ((e & kByteOff) != 0) return {Kind::kEnd, true, 0};
      ++p;
    }
    return {Kind::kLiteral, false, key(e)};
  };

  Levels levels;
  Levels savedLevels;
  bool starOpen = false;
  const unsigned char* savedV = v;
  const unsigned char* savedP = p;
  auto report = [&](int d) {
    if (o.running != nullptr) *o.running = d;
  };
  auto reportLevels = [&] {
    if (o.running != nullptr) *o.running = Resolve(levels, o);
  };

  for (;;) {
    if (spent()) return Resolve(levels, o);
    ByteToken t = read();
    if (t.off) return kByteWalkOff;
    if (t.kind == Kind::kStar) {
      const unsigned char* afterStars;
      do {
        afterStars = p;
        t = read();
      } while (t.kind == Kind::kStar);
      if (t.off) return kByteWalkOff;
      if (t.kind == Kind::kEnd) return Resolve(levels, o);
      if (atEnd()) return -1;
      starOpen = true;
      savedP = afterStars;
      savedLevels = levels;
    } else if (t.kind == Kind::kQuestion) {
      if (atEnd()) return -1;
      ++v;
      continue;
    } else {
      const unsigned char vb = *v;
      uint32_t k1 = 0;
      if (vb != 0) {
        const uint64_t e = table[vb];
        if ((e & kByteOff) != 0) return kByteWalkOff;
        ++v;
        k1 = key(e);
      }
      if (k1 == t.key) {
        if (vb == 0) return Resolve(levels, o);
        reportLevels();
        continue;
      }
      const int64_t primary = full(k1) - full(t.key);
      if (!starOpen) {
        if (primary != 0) {
          if (vb != 0 && t.kind == Kind::kLiteral) report(Clamp(primary));
          return Clamp(primary);
        }
        levels.Record(k1, t.key);
        reportLevels();
        continue;
      }
      // The open star takes one more character.
      v = savedV;
      p = savedP;
      levels = savedLevels;
      t = read();
      if (t.off) return kByteWalkOff;
    }
    // To the next value byte that can start the rest of the pattern.
    if (t.kind == Kind::kQuestion) {
      if (spent()) return Resolve(levels, o);
      if (*v == 0) return -1;
      savedV = ++v;
      continue;
    }
    for (;;) {
      if (spent()) return Resolve(levels, o);
      const unsigned char vb = *v;
      if (vb == 0) return Clamp(-full(t.key));
      const uint64_t e = table[vb];
      if ((e & kByteOff) != 0) return kByteWalkOff;
      ++v;
      if (key(e) == t.key) break;
    }
    savedV = v;
  }
}

template <typename V, typename P>
int CompareCollating(unsigned char codeSet1, const void* s1, unsigned char codeSet2, const void* s2,
                     short maxLength, const Options& o) {
  const int limit = maxLength < 0 ? -1 : maxLength;
  const bool firstOnly = (o.cmpOp & kStepFirstOrderOnly) != 0;
  const bool wildcards = (o.cmpOp & (kKaCmpExact | kKaCmpSimple)) == 0;
  V w1(codeSet1, o.language1, s1, limit, firstOnly);
  // A pattern is not cut: the value's maximum length decides when the walk
  // stops (an escape and its character are one element, not two).
  P w2(codeSet2, o.language2, s2, wildcards ? -1 : limit, firstOnly);
  Wildcards w{wildcards, 0, 0, 0};
  if (w.active) {
    w.star = KaString::GetAsterisk();
    w.question = KaString::GetQuestion();
    w.escape = KaString::GetEscape();
  }
  if constexpr (std::is_same_v<V, P> && IsFast<V>::value) {
    if (codeSet1 == codeSet2 && o.language1 == o.language2) {
      if (!wildcards) {
        V::SkipIdentical(w1, w2, [](const V&, unsigned short) { return false; });
      } else {
        // Up to the first wildcard or escape of the pattern: before it the
        // walk only meets equal keys.
        V::SkipIdentical(w1, w2, [&w](const V& side, unsigned short unit) {
          const unsigned short first = side.FirstOrder(unit);
          return first == 0 || first == w.star || first == w.question || first == w.escape;
        });
      }
    }
  }
  if ((o.cmpOp & kKaCmpSimple) != 0) return CompareSimple(w1, w2, o);
  Options levelled = o;
  // Mode 0 alone breaks ties by diacritics; elsewhere they are as invisible to
  // the walk as what the options mask, so that a pattern matches exactly when
  // the answer is 0.
  if (o.mode != 0) levelled.mask &= 0xFFFFFFE0;
  if constexpr (std::is_same_v<V, P> && std::is_same_v<V, FastWalker<Via::kBytes>>) {
    if (wildcards && codeSet1 == codeSet2 && o.language1 == o.language2) {
      const uint64_t* table = g_byteKeys[codeSet1];
      const int r = o.language1 == kRawOrderLanguage
                        ? CompareByteLevels<true>(w1.pos, w1.taken, w1.limit, w2.pos, table,
                                                  o.language1, levelled, w)
                        : CompareByteLevels<false>(w1.pos, w1.taken, w1.limit, w2.pos, table,
                                                   o.language1, levelled, w);
      // Off the byte walk, the general walk starts over; a running
      // difference the byte walk left is what the general walk left at the
      // same step, and it writes it again.
      if (r != kByteWalkOff) return r;
    }
  }
  return CompareLevels(w1, w2, levelled, w);
}

// The walk for the readers of both sides: the tables where both have them
// (the mixes of 1-byte and Unicode text included), else the iterator.
int Dispatch(Via via1, unsigned char codeSet1, const void* s1, Via via2, unsigned char codeSet2,
             const void* s2, short maxLength, const Options& o) {
  using Bytes = FastWalker<Via::kBytes>;
  using Wide = FastWalker<Via::kWide>;
  if (via1 == Via::kBytes && via2 == Via::kBytes) {
    return CompareCollating<Bytes, Bytes>(codeSet1, s1, codeSet2, s2, maxLength, o);
  }
  if (via1 == Via::kWide && via2 == Via::kWide) {
    return CompareCollating<Wide, Wide>(codeSet1, s1, codeSet2, s2, maxLength, o);
  }
  if (via1 == Via::kBytes && via2 == Via::kWide) {
    return CompareCollating<Bytes, Wide>(codeSet1, s1, codeSet2, s2, maxLength, o);
  }
  if (via1 == Via::kWide && via2 == Via::kBytes) {
    return CompareCollating<Wide, Bytes>(codeSet1, s1, codeSet2, s2, maxLength, o);
  }
  if (via1 == Via::kOrders && via2 == Via::kOrders) {
    using Orders = FastWalker<Via::kOrders>;
    return CompareCollating<Orders, Orders>(codeSet1, s1, codeSet2, s2, maxLength, o);
  }
  return CompareCollating<Walker, Walker>(codeSet1, s1, codeSet2, s2, maxLength, o);
}

int Compare(unsigned char codeSet1, unsigned char language1, const void* s1, unsigned char codeSet2,
            unsigned char language2, const void* s2, unsigned short cmpOp, short maxLength,
            unsigned char mode, int* result, bool general) {
  const bool null1 = IsNull(codeSet1, language1);
  const bool null2 = IsNull(codeSet2, language2);
  const bool ordering = (cmpOp & (kKaCmpExact | kKaCmpSimple)) != 0;
  if (null1 && null2) return 0;
  if (null1 && ordering) return -1;
  if (null2) return 1;
  if (maxLength == 0) return 0;
  // A null value still matched against a pattern has no text.
  if (null1) s1 = nullptr;

  if (codeSet1 == 0 && codeSet2 == 0) {
    const auto* b1 = static_cast<const unsigned char*>(s1);
    const auto* b2 = static_cast<const unsigned char*>(s2);
    const long budget = maxLength < 0 ? -1 : maxLength;
    return ordering ? CompareBytes(b1, b2, budget) : MatchBytes(b1, b2, budget);
  }
  if (codeSet1 == 0) codeSet1 = KaLanguageContext::GetNativeCodeSet();
  if (codeSet2 == 0) codeSet2 = KaLanguageContext::GetNativeCodeSet();

  int* running = (cmpOp & kKaCmpRunningDifference) != 0 ? result : nullptr;
  if (running != nullptr) *running = 0;
  const Options o{language1, language2, cmpOp, mode, KeyMask(cmpOp), running};
  if (general) return CompareCollating<Walker, Walker>(codeSet1, s1, codeSet2, s2, maxLength, o);
  EnsureTables();
  return Dispatch(ViaOf(codeSet1, language1), codeSet1, s1, ViaOf(codeSet2, language2), codeSet2,
                  s2, maxLength, o);
}

}  // namespace

int KaStrCmp(unsigned char codeSet1, unsigned char language1, const void* s1,
             unsigned char codeSet2, unsigned char language2, const void* s2, unsigned short cmpOp,
             short maxLength, unsigned char mode, int* result) {
  return Compare(codeSet1, language1, s1, codeSet2, language2, s2, cmpOp, maxLength, mode, result,
                 false);
}

int ka::detail::KaStrCmpGeneral(unsigned char codeSet1, unsigned char language1, const void* s1,
                                unsigned char codeSet2, unsigned char language2, const void* s2,
                                unsigned short cmpOp, short maxLength, unsigned char mode,
                                int* result) {
  return Compare(codeSet1, language1, s1, codeSet2, language2, s2, cmpOp, maxLength, mode, result,
                 true);
}
