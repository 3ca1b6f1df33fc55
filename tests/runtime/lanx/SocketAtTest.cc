#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "runtime/lanx/SocketAt.h"

namespace {

TEST(SocketAtTest, DefaultNamespaceIsTheCallersOwn) {
  for (const char* ns : {"default", ""}) {
    const int fd = Lanx::socketAt(AF_INET, SOCK_DGRAM, 0, Lanx::NamespaceName(ns));
    EXPECT_GE(fd, 0) << '"' << ns << '"';
    if (fd >= 0) ::close(fd);
  }
}

TEST(SocketAtTest, FailuresReturnMinusOneWithTheReason) {
  errno = 0;
  EXPECT_EQ(Lanx::socketAt(AF_INET, SOCK_DGRAM, 0, Lanx::NamespaceName("ns-no-such-vrf")), -1);
  EXPECT_EQ(errno, ENOENT);
  // A namespace name is a name, never a path.
  for (const char* ns : {"../etc", "a/b", ".."}) {
    errno = 0;
    EXPECT_EQ(Lanx::socketAt(AF_INET, SOCK_DGRAM, 0, Lanx::NamespaceName(ns)), -1) << ns;
    EXPECT_EQ(errno, EINVAL) << ns;
  }
}

}  // namespace
