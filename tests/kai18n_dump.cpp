// Prints what the library's 8-bit code sets map, for the check against
// Python's codecs (kai18n_codesets_check.py): per set one "set" line, then
// "byte <b> <unicode> <back>" for all 256 bytes, then "from <unicode> <byte>"
// for every character above 0x7F that converts to a byte other than "?".
#include <cstdio>

#include "kai18n/codeset.h"

int main() {
  for (int number = 1; number < 225; ++number) {
    const KaCodeSet* set = KaCodeSet::Get(static_cast<unsigned char>(number));
    if (set == nullptr) continue;
    std::printf("set %d %s\n", number, set->Name());
    for (unsigned b = 0; b < 256; ++b) {
      const unsigned short u = set->ToUnicode(static_cast<unsigned short>(b));
      std::printf("byte %u %u %u\n", b, u, set->FromUnicode(u));
    }
    for (unsigned u = 0x80; u < 0x10000; ++u) {
      const unsigned short b = set->FromUnicode(static_cast<unsigned short>(u));
      if (b != '?') std::printf("from %u %u\n", u, b);
    }
  }
  return 0;
}
