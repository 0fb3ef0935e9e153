// Runs arbitrary edit programs on strings of every class of code set (1-byte
// and 2-byte sets with tables, collation orders, 255, sets this library does
// not know): every operation must keep the string within its limit,
// terminated, and its length in step with its size, whatever the positions,
// counts and texts, also when the text comes from the string's own buffer or
// a replacement runs to the limit. Case mappings of a set without a table
// leave the text as it was.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "kai18n/codeset.h"
#include "katypemgr/kastring.h"

namespace {

// Reads the program's bytes; past the end it answers zeros.
class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool More() const { return at_ < size_; }
  uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  unsigned short Word() { return static_cast<unsigned short>(Byte() | Byte() << 8); }
  // A count, biased towards small values with the occasional huge one.
  unsigned short Count() {
    const uint8_t b = Byte();
    return b >= 250 ? Word() : b;
  }
  KaString Text(unsigned char codeSet) {
    const unsigned short n = Byte() % 16;
    unsigned short units[17] = {};
    for (unsigned short i = 0; i < n; ++i) units[i] = codeSet > 224 ? Word() : Byte();
    KaString s(codeSet, 0);
    for (unsigned short i = 0; i < n && units[i] != 0; ++i) {
      if (codeSet > 224) {
        s << units[i];
      } else {
        s << static_cast<char>(units[i]);
      }
    }
    return s;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

void Check(const KaString& s) {
  const unsigned w = s.UnitWidth();
  if (s.Size() > KaString::kMaxSize) std::abort();
  if (s.StrGet() == nullptr) {
    if (s.Size() != 0 || s.Len() != 0) std::abort();
    return;
  }
  if (s.Size() != (s.Len() + 1u) * w) std::abort();
  for (unsigned short i = 0; i < s.Len(); ++i) {
    if (s.UnitAt(i) == 0) std::abort();  // the text ends at its first zero unit
  }
}

// A text of `n` units (up to the limit) of one unit, for long replacements.
KaString Run(unsigned char codeSet, unsigned short n, unsigned short unit) {
  KaString s(codeSet, 0);
  if (codeSet > 224) {
    s.Fill(n, static_cast<unsigned short>(unit | 1));
  } else {
    s.Fill(n, static_cast<char>(unit | 1));
  }
  return s;
}

// Case mappings only lengthen a text (expansions), unless it reaches the
// limit; a set without a table has no mappings at all.
void CheckCaseMapping(const KaString& before, const KaString& after) {
  const bool limited = after.Size() == KaString::kMaxSize;
  if (!limited && after.Len() < before.Len()) std::abort();
  if (before.CodeSet() != 0 && KaCodeSet::Get(before.CodeSet()) == nullptr) {
    if (after.Len() != before.Len()) std::abort();
    for (unsigned short i = 0; i < before.Len(); ++i) {
      if (after.UnitAt(i) != before.UnitAt(i)) std::abort();
    }
  }
}

// An answer of 0 means the needle is not there (from `start` on): a
// replacement that gave up, say on a huge allocation, would leave it.
void CheckReplaced(const KaString& t, const KaString& from, unsigned short start, int answer) {
  if (answer == 0 && !from.IsEmpty() && from.CodeSet() == t.CodeSet() && t.Find(from, start) >= 0) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in(data, size);
  // 1-byte sets with tables, native, 1-byte without a table; Unicode, orders,
  // 2-byte without a table, and 255. The first five are the 1-byte ones.
  constexpr unsigned char kSets[] = {1, 3, 25, 0, 100, 253, 254, 240, 255};
  constexpr unsigned kSetCount = sizeof kSets;
  const unsigned char start = in.Byte();
  KaString s[2] = {KaString(kSets[start % 5], static_cast<unsigned char>(0)),
                   KaString(kSets[5 + (start >> 4) % 4], static_cast<unsigned char>(0))};
  for (int steps = 0; in.More() && steps < 64; ++steps) {
    KaString& t = s[in.Byte() & 1];
    const KaString other = in.Text(kSets[in.Byte() % kSetCount]);
    const uint8_t op = in.Byte();
    // Every step reads its arguments in this order, so that an input means
    // the same program whatever order a compiler evaluates arguments in.
    const unsigned short a = in.Count();
    const unsigned short b = in.Count();
    const unsigned short u = in.Word();
    const unsigned char set = kSets[(u >> 8) % kSetCount];
    const KaString before = t;
    switch (op % 26) {
      case 0:
        t << other;
        break;
      case 1:
        t.Insert(other, a);
        break;
      case 2:
        t.Replace(other, a);
        break;
      case 3:
        t.Cut(a, b);
        break;
      case 4:
        t = t.Copy(a, b);
        break;
      case 5:
        t.Fill(a, static_cast<char>(u));
        break;
      case 6:
        t.Expand(a, u);
        break;
      case 7:
        CheckReplaced(t, other, a, t.ReplaceAll(other, in.Text(t.CodeSet()), a));
        break;
      case 8:
        t.Trim();
        break;
      case 9:
        t.ToUpper();
        CheckCaseMapping(before, t);
        break;
      case 10:
        t.ToLower();
        CheckCaseMapping(before, t);
        break;
      case 11:
        t.SetCodeSet(set);
        break;
      case 12:
        t.MapToCodeSet(set);
        break;
      case 13:
        t.CopyMapped(other, set, a);
        break;
      case 14:
        (void)t.Find(other, a, b);
        break;
      case 15: {
        long long v = 0;
        (void)t.Strtoll(v);
        (void)static_cast<double>(t);
        break;
      }
      case 16: {
        KaStringIterator it(t);
        for (int i = 0; i < 70000 && it.GetNextOrder(1) != 0; ++i) {
        }
        break;
      }
      case 17:
        // Relabel within the width class: every class of set meets every edit.
        (void)t.SetCodeSetCode(set);
        break;
      case 18:
        // A replacement of up to the limit: the result must be cut at the
        // limit, not built whole (which runs to gigabytes).
        CheckReplaced(t, other, b, t.ReplaceAll(other, Run(t.CodeSet(), a, u), b));
        break;
      case 19: {
        const KaString from = Run(t.CodeSet(), 1 + b % 3, u);
        CheckReplaced(t, from, 0, t.ReplaceAll(from, Run(t.CodeSet(), a, u >> 4)));
        break;
      }
      case 20: {
        // Text from the string's own buffer, which an assignment replaces.
        const unsigned short at = t.Len() == 0 ? 0 : a % t.Len();
        if (t.StrGet() == nullptr) {
          t = static_cast<const char*>(nullptr);
        } else if (t.UnitWidth() == 1) {
          t = t.StrGet() + at;
        } else {
          t = reinterpret_cast<const unsigned short*>(t.StrGet()) + at;
        }
        break;
      }
      case 21:
        if (t.UnitWidth() == 1 && t.StrGet() != nullptr) t << t.StrGet() + a % t.Len();
        break;
      case 22:
        t.Insert(t, a);
        break;
      case 23:
        t.Replace(t, a);
        break;
      case 24: {
        KaCharToUpper upper;
        t.Transform(upper);
        CheckCaseMapping(before, t);
        break;
      }
      case 25: {
        // The edit routine itself, with any mode, over this string's text.
        const unsigned char mode = u % 5;
        const unsigned short n = b % (t.Len() + 1);
        const KaString& source = (u & 0x80) != 0 ? t : before;  // also its own buffer
        t.EditUnits(source.StrGet(), source.CodeSet(), a, 0, n, (u >> 8) % 4,
                    static_cast<KaString::EditMode>(mode));
        if ((mode == 0 || mode == 4) && (t.Size() != before.Size() || t.Len() != before.Len())) {
          std::abort();  // an unknown mode changes nothing
        }
        break;
      }
      default:
        t << t;
        break;
    }
    Check(t);
  }
  return 0;
}
