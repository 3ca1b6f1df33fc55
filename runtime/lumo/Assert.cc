#include "runtime/lumo/Assert.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace Lumo {

namespace {

std::atomic<AssertionHandler> handler{nullptr};
// An assertion that fails inside the handler gets the default report.
std::atomic<bool> handling{false};
std::atomic<FatalFlush> fatalFlush{nullptr};

}  // namespace

void assertionHandlerIs(AssertionHandler newHandler) noexcept { handler = newHandler; }

void fatalFlushIs(FatalFlush flush) noexcept { fatalFlush = flush; }

void assertionFailed(const char* text, const char* file, int line, const char* function) noexcept {
  if (AssertionHandler own = handler.load(); own && !handling.exchange(true)) {
    try {
      own(text, file, line, function);
    } catch (...) {
      // The process ends below all the same.
    }
    std::abort();
  }
  std::fprintf(stderr, "assertion failed: %s at %s:%d in %s\n", text, file, line, function);
  if (FatalFlush flush = fatalFlush.load()) flush();
  std::abort();
}

}  // namespace Lumo
