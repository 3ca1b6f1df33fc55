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

// What the default report writes after the text. The trace layer stands above this one and
// hands its ring's writer in here as it loads, so that a failed assertion still leaves the
// last records behind without this layer knowing the trace.
using FatalFlush = void (*)() noexcept;
void fatalFlushIs(FatalFlush flush) noexcept;

}  // namespace Lumo

#define QEL_ASSERT(cond, text)                                                   \
  do {                                                                           \
    if (!(cond)) ::Lumo::assertionFailed(text, __FILE__, __LINE__, __func__);    \
  } while (0)
