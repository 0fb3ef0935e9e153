// Compares arbitrary pairs of texts with arbitrary options: code sets of every
// class (1-byte with tables, native, Unicode, orders, 255, sets this library
// does not know), languages (20 and the null mark 254 among them), patterns
// rich in stars, question marks and escapes, every maximum length and mode.
// Nothing may read outside the texts; every answer and running difference
// must equal the general walk's (the character iterator on both sides, no
// tables, no prefix skip); exact and simple comparisons must be antisymmetric,
// and reading both texts cut to the maximum length must give the same sign.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "katypemgr/kastrcmp.h"
#include "string/compare_general.h"

namespace {

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint8_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  unsigned short Word() { return static_cast<unsigned short>(Byte() | Byte() << 8); }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

constexpr unsigned char kSets[] = {1, 2, 7, 25, 0, 100, 253, 254, 255, 240};
constexpr unsigned char kLanguages[] = {0, 1, 19, 20, 21, 254, 255, 127};
// Units a pattern is made of, most of them wildcards in some code set: the
// bytes "*", "?", "\", letters with and without accents; the orders of "*",
// "?" and "\" (159, 122, 160) for order texts; ligatures, sharp s, a Hangul
// syllable, a surrogate and private use (expansions and implicit orders).
constexpr unsigned short kUnits[] = {'*',    '?',    '\\',   'a',    'A',    0xE9,   0xC9,
                                     0xE6,   0xDF,   ' ',    '1',    159,    122,    160,
                                     0x4E00, 0xAC00, 0xD800, 0xE000, 0x4010, 0x410C, 0xFB01};

// One text: up to 24 units, terminated, in units of its code set's width.
struct Text {
  unsigned char codeSet = 1;
  unsigned char language = 0;
  bool null = false;  // a null pointer
  unsigned short units[25] = {};
  char bytes[25] = {};
  int length = 0;

  void Read(Reader& in) {
    codeSet = kSets[in.Byte() % sizeof kSets];
    const uint8_t l = in.Byte();
    language = l < 16 ? l : kLanguages[l % sizeof kLanguages];
    const uint8_t n = in.Byte();
    null = n == 255;
    length = n % 25;
    for (int i = 0; i < length; ++i) {
      const uint8_t pick = in.Byte();
      unsigned short u = pick < 128 ? kUnits[pick % (sizeof kUnits / sizeof kUnits[0])] : in.Word();
      if (codeSet <= 224) u &= 0xFF;
      if (u == 0) u = 'x';
      units[i] = u;
      bytes[i] = static_cast<char>(u);
    }
    units[length] = 0;
    bytes[length] = 0;
  }
  // The text cut to `n` units.
  Text Cut(int n) const {
    Text t = *this;
    if (n >= 0 && n < length) {
      t.length = n;
      t.units[n] = 0;
      t.bytes[n] = 0;
    }
    return t;
  }
  const void* Data() const {
    if (null) return nullptr;
    return codeSet > 224 ? static_cast<const void*>(units) : static_cast<const void*>(bytes);
  }
};

int Sign(int v) { return (v > 0) - (v < 0); }

int Compare(const Text& a, const Text& b, unsigned short op, short max, unsigned char mode) {
  int running = 0;
  int generalRunning = 0;
  const int answer = KaStrCmp(a.codeSet, a.language, a.Data(), b.codeSet, b.language, b.Data(), op,
                              max, mode, &running);
  const int general =
      ka::detail::KaStrCmpGeneral(a.codeSet, a.language, a.Data(), b.codeSet, b.language, b.Data(),
                                  op, max, mode, &generalRunning);
  if (answer != general || running != generalRunning) std::abort();
  return answer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in(data, size);
  Text a;
  Text b;
  a.Read(in);
  b.Read(in);
  const unsigned short op = in.Word();
  const uint8_t m = in.Byte();
  const short max = m < 200 ? static_cast<short>(m % 8) - 1 : static_cast<short>(in.Word());
  const unsigned char mode = in.Byte() & 1;

  const int ab = Compare(a, b, op, max, mode);
  if ((op & (kKaCmpExact | kKaCmpSimple)) == 0) return 0;
  // An ordering: antisymmetric, and blind to what lies past the maximum
  // length (a character is one unit in every code set).
  if (Sign(Compare(b, a, op, max, mode)) != -Sign(ab)) std::abort();
  if (max > 0 && !a.null && !b.null) {
    if (Sign(Compare(a.Cut(max), b.Cut(max), op, -1, mode)) != Sign(ab)) std::abort();
  }
  return 0;
}
