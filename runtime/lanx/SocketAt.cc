#include "runtime/lanx/SocketAt.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "runtime/lumo/Assert.h"

namespace Lanx {

namespace {

constexpr const char* namespaceDirs[] = {"/run/netns/", "/var/run/netns/"};

int openNamespace(std::string_view ns) {
  int err = ENOENT;
  for (const char* dir : namespaceDirs) {
    const std::string path = std::string(dir) + std::string(ns);
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) return fd;
    err = errno;
  }
  errno = err;
  return -1;
}

// Closes a descriptor and keeps errno as it was.
void closeKeepingErrno(int fd) {
  const int saved = errno;
  ::close(fd);
  errno = saved;
}

}  // namespace

int socketAt(int domain, int type, int protocol, const NamespaceName& ns) {
  if (ns.empty() || ns.view() == "default") return ::socket(domain, type, protocol);
  // A namespace name is a file name under the netns directories, nothing more.
  if (ns.view().find('/') != std::string_view::npos || ns.view() == "." || ns.view() == "..") {
    errno = EINVAL;
    return -1;
  }
  const int own = ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
  if (own < 0) return -1;
  const int target = openNamespace(ns.view());
  if (target < 0) {
    closeKeepingErrno(own);
    return -1;
  }
  int fd = -1;
  if (::setns(target, CLONE_NEWNET) == 0) {
    fd = ::socket(domain, type, protocol);
    const int saved = errno;
    // Staying in the other namespace would move everything the thread does later.
    const bool back = ::setns(own, CLONE_NEWNET) == 0;
    QEL_ASSERT(back, "could not go back to the own network namespace");
    errno = saved;
  }
  closeKeepingErrno(target);
  closeKeepingErrno(own);
  return fd;
}

}  // namespace Lanx
