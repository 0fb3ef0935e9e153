// The memory-shortage handler and the allocation helper that calls it.
#include "kabase/memory.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

int ReportShortage(size_t size) {
  std::fprintf(stderr, "katypemgr: out of memory (%zu bytes requested)\n", size);
  return 0;
}

std::atomic<KaMemoryHandler>& Handler() {
  static std::atomic<KaMemoryHandler> handler{ReportShortage};
  return handler;
}

// Per thread, so that a shortage in one thread never reads as one in another.
thread_local unsigned long t_shortages = 0;

}  // namespace

int KaCallMemoryHandler(size_t size) {
  ++t_shortages;
  return Handler().load()(size);
}

unsigned long KaMemoryShortageCount() { return t_shortages; }

KaMemoryHandler KaSetMemoryHandler(KaMemoryHandler handler) {
  return Handler().exchange(handler != nullptr ? handler : ReportShortage);
}

void* KaMalloc(size_t size) {
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p == nullptr && KaCallMemoryHandler(size) != 0) p = std::malloc(size == 0 ? 1 : size);
  return p;
}
