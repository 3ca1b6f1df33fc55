#pragma once

namespace Lumo {

// Ends the process after writing the failed condition's text and where it failed. For
// what the code itself controls; never for input from outside.
[[noreturn]] void assertionFailed(const char* text, const char* file, int line,
                                  const char* function) noexcept;

// What a host does with a failed assertion in place of the default report (the text on
// stderr, then the trace ring): it may write its own report and end the process as it
// likes. The process is aborted if the handler returns. Null restores the default.
using AssertionHandler = void (*)(const char* text, const char* file, int line,
                                  const char* function);
void assertionHandlerIs(AssertionHandler handler) noexcept;

}  // namespace Lumo

#define QEL_ASSERT(cond, text)                                                   \
  do {                                                                           \
    if (!(cond)) ::Lumo::assertionFailed(text, __FILE__, __LINE__, __func__);    \
  } while (0)
