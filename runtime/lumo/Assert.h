#pragma once

namespace Lumo {

// Ends the process after writing the failed condition's text and where it failed. For
// what the code itself controls; never for input from outside.
[[noreturn]] void assertionFailed(const char* text, const char* file, int line,
                                  const char* function) noexcept;

}  // namespace Lumo

#define QEL_ASSERT(cond, text)                                                   \
  do {                                                                           \
    if (!(cond)) ::Lumo::assertionFailed(text, __FILE__, __LINE__, __func__);    \
  } while (0)
