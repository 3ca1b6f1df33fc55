#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "runtime/lanx/SocketAt.h"

namespace {

// "default" and "" are the caller's own namespace; a name is a name, never a path; a
// failure is -1 with the reason in errno.
TEST(SocketAtTest, NamespacesByNameAndFailuresWithTheirReason) {
  for (const char* ns : {"default", ""}) {
    const int fd = Lanx::socketAt(AF_INET, SOCK_DGRAM, 0, Lanx::NamespaceName(ns));
    EXPECT_GE(fd, 0) << '"' << ns << '"';
    if (fd >= 0) ::close(fd);
  }
  for (const auto& [ns, reason] :
       {std::pair{"ns-no-such-vrf", ENOENT}, {"../etc", EINVAL}, {"a/b", EINVAL}, {"..", EINVAL}}) {
    errno = 0;
    EXPECT_EQ(Lanx::socketAt(AF_INET, SOCK_DGRAM, 0, Lanx::NamespaceName(ns)), -1) << ns;
    EXPECT_EQ(errno, reason) << ns;
  }
}

}  // namespace
