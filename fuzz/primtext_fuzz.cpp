// Feeds caller-supplied formats and texts to the print and scan slots of every
// primitive row, each value in an allocation of exactly its row's size so that
// the address sanitizer catches any read or write past the element.
//
// Two input forms. Text form (first byte printable): the first line is the
// format, the rest the text. Built form (first byte below 0x20): the bytes
// build a format from pieces that reach every branch of the format check
// (literal text, "%%", length modifiers, flags, widths and precisions near
// the bound, suppressed conversions and scansets, and the refused forms: %n,
// %s and %c on numbers, "*", "n$", second conversions, "ldexp(" pairs); the
// bytes that remain are the text. Each row prints its value, then scans both
// the input text and its own printed text back with the same format.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "kabase/assert.h"
#include "katypemgr/kamgr.h"
#include "katypemgr/kastring.h"

namespace {

struct Row {
  signed char id;
  unsigned size;
};
constexpr Row kRows[] = {
    {Ka1B_T, 1},    {KaU1B_T, 1},     {Ka2B_T, 2},  {KaU2B_T, 2},      {Ka4B_T, 4},
    {KaU4B_T, 4},   {KaBLOCKID_T, 4}, {KaINT_T, 4}, {KaUNSIGNED_T, 4}, {KaENUM_T, 4},
    {KaFLOAT_T, 4}, {KaDOUBLE_T, 8},  {Ka8B_T, 8},  {KaU8B_T, 8},
};

// Reads the input a byte at a time; zero once it is used up.
class Bytes {
 public:
  Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint8_t Next() { return pos_ < size_ ? data_[pos_++] : 0; }
  bool Empty() const { return pos_ >= size_; }
  std::string Rest() const {
    return std::string(reinterpret_cast<const char*>(data_) + pos_, size_ - pos_);
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

template <size_t N>
const char* Pick(const char* const (&choices)[N], uint8_t b) {
  return choices[b % N];
}

constexpr const char* kModifiers[] = {"",  "",    "hh",  "h", "l", "ll", "L",
                                      "I", "I32", "I64", "j", "z", "t",  "q"};
constexpr const char* kLetters[] = {"d", "i", "o", "u", "x", "X", "e", "E", "f", "F", "g",
                                    "G", "a", "A", "c", "s", "p", "n", "%", "[", "*", "$"};
constexpr const char* kLiterals[] = {"a", " ", ",", "#", "(", ")", "x=", "ldexp(", "\t"};

// One conversion: "%", then by the bits of the first byte a suppression star,
// a position, flags, a width, a precision; a modifier; a letter.
void AppendConversion(Bytes& in, std::string& format) {
  const uint8_t shape = in.Next();
  format += '%';
  if (shape & 0x01) format += '*';
  if (shape & 0x02) format += std::to_string(in.Next() % 3) + "$";
  if (shape & 0x04) {
    const uint8_t flags = in.Next();
    for (int i = 0; i < 5; ++i) {
      if (flags & (1 << i)) format += "-+ #0"[i];
    }
  }
  // Widths and precisions around the bound of 255.
  if (shape & 0x08) format += (shape & 0x40) ? "*" : std::to_string(in.Next() + (in.Next() & 1));
  if (shape & 0x10) {
    format += '.';
    format += (shape & 0x80) ? "*" : std::to_string(in.Next() + 3);
  }
  format += Pick(kModifiers, in.Next());
  const char* letter = Pick(kLetters, in.Next());
  format += letter;
  if (letter[0] == '[') format += (shape & 0x20) ? "^,]" : "]a]";
}

std::string BuildFormat(Bytes& in) {
  std::string format;
  const int pieces = 1 + in.Next() % 6;
  for (int i = 0; i < pieces && !in.Empty(); ++i) {
    const uint8_t kind = in.Next();
    switch (kind % 4) {
      case 0:
        format += Pick(kLiterals, in.Next());
        break;
      case 1:
        format += "%%";
        break;
      default:
        AppendConversion(in, format);
        break;
    }
  }
  return format;
}

KaString MakeText(const std::string& text) {
  return KaString(text.c_str(),
                  static_cast<unsigned short>(text.size() > 65534 ? 65534 : text.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // An internal inconsistency is a finding.
  KaSetAssertReceiver([](const char*, const char*, int) { std::abort(); });

  std::string format;
  std::string text;
  Bytes in(data, size);
  if (size > 0 && data[0] < 0x20) {
    in.Next();
    format = BuildFormat(in);
    text = in.Rest();
  } else {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t newline = input.find('\n');
    format = input.substr(0, newline);
    text = newline == std::string::npos ? "" : input.substr(newline + 1);
  }

  static KaTypeMgr manager;
  constexpr unsigned char kPattern[8] = {0x41, 0xFF, 0x07, 0x80, 0x7F, 0x20, 0x03, 0x40};
  for (const Row& row : kRows) {
    // The one-byte rows print whole arrays: three bytes, one of them not printable.
    const unsigned count = row.size == 1 ? 3 : 1;
    const std::unique_ptr<unsigned char[]> value(new unsigned char[row.size * count]);
    std::memcpy(value.get(), kPattern, row.size * count);
    KaString out;
    manager.PrintToKaString(row.id, out, value.get(), format.c_str(), count);

    const std::unique_ptr<unsigned char[]> element(new unsigned char[row.size]);
    std::memcpy(element.get(), kPattern, row.size);
    KaString in1 = MakeText(text);
    manager.ScanFromKaString(row.id, element.get(), in1, format.c_str(), 1);
    KaString printed = out;
    manager.ScanFromKaString(row.id, element.get(), printed, format.c_str(), 1);
  }
  KaSetAssertReceiver(nullptr);
  return 0;
}
