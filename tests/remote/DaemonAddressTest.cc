#include <gtest/gtest.h>

#include <cstdlib>

#include "remote/DaemonAddress.h"

namespace RemoteTest {
namespace {

using Remote::DaemonAddress;

TEST(DaemonAddressTest, OnlyUnixSocketsAndTheLoopbackAreTaken) {
  EXPECT_EQ(DaemonAddress::parse("unix:/run/vek/dataplane.sock"), "unix:/run/vek/dataplane.sock");
  EXPECT_EQ(DaemonAddress::parse("tcp:50051"), "127.0.0.1:50051");
  EXPECT_EQ(DaemonAddress::parse("localhost:7"), "localhost:7");
  EXPECT_EQ(DaemonAddress::parse("[::1]:65535"), "[::1]:65535");
  for (const char* refused : {"unix:", "tcp:0", "tcp:65536", "tcp:x", "10.0.0.1:50051",
                              "0.0.0.0:50051", "127.0.0.1", "/run/vek/dataplane.sock"}) {
    EXPECT_FALSE(DaemonAddress::parse(refused)) << refused;
  }
  EXPECT_EQ(DaemonAddress::socketPath("unix:/tmp/a.sock"), "/tmp/a.sock");
  EXPECT_EQ(DaemonAddress::socketPath("127.0.0.1:1"), "");
}

TEST(DaemonAddressTest, TheDefaultLivesInTheUsersRuntimeDirectory) {
  ::setenv("XDG_RUNTIME_DIR", "/run/user/1000", 1);
  EXPECT_EQ(DaemonAddress::defaultAddress(), "unix:/run/user/1000/vek/dataplane.sock");
  ::unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(DaemonAddress::defaultAddress(), "unix:/tmp/vek/dataplane.sock");
}

}  // namespace
}  // namespace RemoteTest
