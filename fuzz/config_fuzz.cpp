// Feeds arbitrary bytes to the configuration text parser, then reads back
// what it stored.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "kabase/config.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  KaConfig config;
  std::vector<std::string> problems;
  const KaConfig::ParseResult result = config.Parse(text, "fuzz", &problems);
  if (problems.size() != result.rejected) std::abort();

  // Every line is either counted once or ignored, never both.
  size_t lines = 0;
  for (char c : text) lines += c == '\n';
  if (result.accepted + result.rejected > lines + 1) std::abort();

  // Reading stored keys back, with and without a section, must be safe.
  config.GetInt("debug", "stringOverflow", 0);
  config.GetInt("oldIndexUnicodeOrder", 0);
  config.GetString("", "a");
  return 0;
}
