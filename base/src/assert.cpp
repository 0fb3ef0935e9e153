// KAMO_assert and its installable receiver.
#include "kabase/assert.h"

#include <atomic>
#include <cstdio>

namespace {

void ReportToStandardError(const char* text, const char* source, int line) {
  std::fprintf(stderr, "katypemgr assertion: %s (%s, line %d)\n", text, source, line);
}

std::atomic<KaAssertReceiver>& Receiver() {
  static std::atomic<KaAssertReceiver> receiver{ReportToStandardError};
  return receiver;
}

}  // namespace

void KAMO_assert(const char* text, const char* source, int line) {
  Receiver().load()(text != nullptr ? text : "(null)", source != nullptr ? source : "(null)", line);
}

KaAssertReceiver KaSetAssertReceiver(KaAssertReceiver receiver) {
  return Receiver().exchange(receiver != nullptr ? receiver : ReportToStandardError);
}
