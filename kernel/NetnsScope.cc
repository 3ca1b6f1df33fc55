#include "kernel/NetnsScope.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "kernel/KernelError.h"

namespace Kernel {

KernelError KernelError::fromErrno(const std::string& what, int error) {
  return KernelError(what + ": " + std::strerror(error));
}

NetnsScope::NetnsScope(const std::string& name) {
  if (name.empty()) return;
  if (name.find('/') != std::string::npos || name == "." || name == "..") {
    throw KernelError("'" + name + "' is not a network namespace name");
  }
  const std::string path = std::string(kNetnsDir) + "/" + name;
  const int target = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (target < 0) {
    const int error = errno;
    if (error == ENOENT) {
      throw KernelError("network namespace '" + name + "' does not exist (no " + path + ")");
    }
    throw KernelError::fromErrno("cannot open network namespace '" + name + "'", error);
  }
  home_ = ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
  if (home_ < 0) {
    const int error = errno;
    ::close(target);
    throw KernelError::fromErrno("cannot open this thread's network namespace", error);
  }
  if (::setns(target, CLONE_NEWNET) != 0) {
    const int error = errno;
    ::close(target);
    ::close(home_);
    home_ = -1;
    if (error == EPERM) {
      throw KernelError("no permission to enter network namespace '" + name +
                        "' (it takes CAP_SYS_ADMIN, usually root)");
    }
    throw KernelError::fromErrno("cannot enter network namespace '" + name + "'", error);
  }
  ::close(target);
}

NetnsScope::~NetnsScope() {
  if (home_ < 0) return;
  // A thread left in the wrong namespace would read another system's routes from then on.
  if (::setns(home_, CLONE_NEWNET) != 0) {
    std::cerr << "cannot return to the original network namespace: " << std::strerror(errno)
              << '\n';
    std::abort();
  }
  ::close(home_);
}

}  // namespace Kernel
