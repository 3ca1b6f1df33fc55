#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "pipeline/VekL3McastModuleManager.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

// Runs a shell command quietly; true when it succeeded.
bool run(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

std::string output(const std::string& command) {
  std::string text;
  if (FILE* pipe = ::popen((command + " 2>/dev/null").c_str(), "r")) {
    char buffer[512];
    while (std::fgets(buffer, sizeof buffer, pipe)) text += buffer;
    ::pclose(pipe);
  }
  return text;
}

// A VRF with a real network namespace holding one end of a veth pair. The names carry the
// process id, so runs side by side do not meet; the device name is the longest the kernel
// takes.
class NamespaceFlagsTest : public PipelineFixture {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "creating network namespaces needs root";
    const unsigned id = static_cast<unsigned>(::getpid()) % 100000000u;
    vrf = L3::VrfName("pt" + std::to_string(id));
    ns = std::string(vrf.nsName().view());
    hostEnd = "vpipeho" + std::to_string(id);
    char name[16];
    std::snprintf(name, sizeof name, "vpipens%08u", id);
    device = name;
    if (!run("ip netns add " + ns)) {
      GTEST_SKIP() << "network namespaces are not allowed here (ip netns add " << ns << " failed)";
    }
    created = true;
    if (!run("ip link add " + hostEnd + " type veth peer name " + device) ||
        !run("ip link set " + device + " netns " + ns)) {
      GTEST_SKIP() << "could not make a veth pair in " << ns;
    }
  }
  void TearDown() override {
    if (!created) return;
    run("ip netns del " + ns);  // takes the namespace's end, and with it the pair
    run("ip link del " + hostEnd);
  }

  bool allMulti() {
    const std::string link = output("ip -n " + ns + " -o link show dev " + device);
    EXPECT_NE(link.find(device), std::string::npos) << "device missing in " << ns;
    const std::string flags = link.substr(0, link.find('>'));
    return flags.find("ALLMULTI") != std::string::npos;
  }

  L3::VrfName vrf;
  std::string ns;
  std::string hostEnd;
  std::string device;
  bool created = false;
  Lumo::Ptr<VekL3Mcast::McastModuleManager> manager =
      VekL3Mcast::mcastModuleManagerFactory(pair);
  const Lanx::IntfId et1 = Lanx::IntfId::ethernet(1);
};

TEST_F(NamespaceFlagsTest, InterfaceTakesAllMulticastWhileItsModuleStands) {
  ASSERT_FALSE(allMulti());
  manager->createIntfModule(vrf, et1, device, true, group);
  EXPECT_GE(manager->vrf(vrf)->ioctlFd(), 0);
  EXPECT_TRUE(allMulti());
  manager->deleteIntfModule(vrf, et1, device);
  EXPECT_FALSE(allMulti());
}

TEST_F(NamespaceFlagsTest, OverlongDeviceNameIsCutForTheKernelOnly) {
  const std::string longName = device + "-extra";
  manager->createIntfModule(vrf, et1, longName, false, group);
  EXPECT_TRUE(allMulti());
  EXPECT_TRUE(hasModule("Rx_" + longName));
  EXPECT_TRUE(hasModule("Tx_" + longName));
  EXPECT_TRUE(dump()["ports"].contains(longName));
  manager->deleteIntfModule(vrf, et1, longName);
  EXPECT_FALSE(allMulti());
}

}  // namespace
}  // namespace PipelineTest
