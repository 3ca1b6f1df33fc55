#include "runtime/lumo/Assert.h"

#include <cstdio>
#include <cstdlib>

#include "runtime/trace/Trace.h"

namespace Lumo {

void assertionFailed(const char* text, const char* file, int line, const char* function) noexcept {
  std::fprintf(stderr, "assertion failed: %s at %s:%d in %s\n", text, file, line, function);
  Trace::fatalFlush();
  std::abort();
}

}  // namespace Lumo
