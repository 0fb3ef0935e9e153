// Feeds caller-supplied formats and texts to the print and scan slots of the
// primitive rows: the first line of the input is the format, the rest the text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "katypemgr/kamgr.h"
#include "katypemgr/kastring.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t newline = input.find('\n');
  const std::string format = input.substr(0, newline);
  const std::string text = newline == std::string::npos ? "" : input.substr(newline + 1);

  static KaTypeMgr manager;
  static const signed char kRows[] = {Ka1B_T,  Ka2B_T,      Ka4B_T,  KaDOUBLE_T,   KaFLOAT_T,
                                      KaU2B_T, KaU4B_T,     KaINT_T, KaUNSIGNED_T, KaENUM_T,
                                      KaU1B_T, KaBLOCKID_T, Ka8B_T,  KaU8B_T};
  alignas(8) unsigned char value[8] = {0x7F, 0xFF, 0x00, 0x80, 0x01, 0x02, 0x03, 0x04};
  for (signed char id : kRows) {
    KaString out;
    manager.PrintToKaString(id, out, value, format.c_str(), 1);
    KaString in(text.c_str(),
                static_cast<unsigned short>(text.size() > 65534 ? 65534 : text.size()));
    manager.ScanFromKaString(id, value, in, format.c_str(), 1);
  }
  return 0;
}
