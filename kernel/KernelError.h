#pragma once

#include <stdexcept>
#include <string>

namespace Kernel {

// The kernel refused what was asked of it (a namespace that cannot be entered, a socket
// that cannot be opened, a dump that failed); the message says what and why, in words a
// user can act on.
class KernelError : public std::runtime_error {
 public:
  explicit KernelError(const std::string& what) : std::runtime_error(what) {}
  // "<what>: <strerror(error)>".
  static KernelError fromErrno(const std::string& what, int error);
};

}  // namespace Kernel
