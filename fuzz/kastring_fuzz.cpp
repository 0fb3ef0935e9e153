// Runs arbitrary edit programs on strings of 1-byte and 2-byte code units:
// every operation must keep the string within its limit, terminated, and its
// length in step with its size, whatever the positions, counts and texts.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in(data, size);
  const unsigned char sets[] = {1, 3, 25, 253, 0, 254};
  KaString s[2] = {KaString(static_cast<unsigned char>(1), static_cast<unsigned char>(0)),
                   KaString(static_cast<unsigned char>(253), static_cast<unsigned char>(0))};
  for (int steps = 0; in.More() && steps < 64; ++steps) {
    KaString& t = s[in.Byte() & 1];
    const KaString other = in.Text(sets[in.Byte() % 6]);
    switch (in.Byte() % 18) {
      case 0:
        t << other;
        break;
      case 1:
        t.Insert(other, in.Count());
        break;
      case 2:
        t.Replace(other, in.Count());
        break;
      case 3:
        t.Cut(in.Count(), in.Count());
        break;
      case 4:
        t = t.Copy(in.Count(), in.Count());
        break;
      case 5:
        t.Fill(in.Count(), static_cast<char>(in.Byte()));
        break;
      case 6:
        t.Expand(in.Count(), in.Word());
        break;
      case 7:
        t.ReplaceAll(other, in.Text(t.CodeSet()), in.Count());
        break;
      case 8:
        t.Trim();
        break;
      case 9:
        t.ToUpper();
        break;
      case 10:
        t.ToLower();
        break;
      case 11:
        t.SetCodeSet(sets[in.Byte() % 6]);
        break;
      case 12:
        t.MapToCodeSet(sets[in.Byte() % 5]);
        break;
      case 13:
        t.CopyMapped(other, sets[in.Byte() % 5], in.Count());
        break;
      case 14:
        (void)t.Find(other, in.Count(), in.Count());
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
      default:
        t << t;
        break;
    }
    Check(t);
  }
  return 0;
}
