#include <gmock/gmock.h>

#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using Vrf::VrfIdMap::VrfId;

class AgentStartStopTest : public AgentFixture {
 protected:
  AgentStartStopTest() {
    state->vrfNameToId().vrfIdIs("red", VrfId(2));
    state->hwVrfIdMap().vrfEntryIs(VrfId(12), {"red"});
  }

  const L3::VrfName red{"red"};
};

TEST_F(AgentStartStopTest, FullStartBuildsTheVrfPipelineWithItsTasksUnderRateLimits) {
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  const Json data = dump();
  EXPECT_EQ(data["modules"]["MfibIpv4red"]["class"], 26);
  EXPECT_EQ(data["modules"]["MfibIpv4red"]["init"]["vrfId"], 2);
  EXPECT_EQ(data["modules"]["IgmpV2"]["table"]["vrfs"]["red"], 2);
  EXPECT_EQ(data["modules"]["MfibIpv4red"]["out"]["4"]["to"], "TxDemuxer");
  EXPECT_EQ(data["ports"].size(), 4u);  // three any-device paths and the PIM register port
  // The daemon's task ids come back and the tasks go under a class per worker.
  const Json& classes = data["trafficClasses"];
  EXPECT_THAT(classes["noCacheRateLimit_red_w1_packet_1000"]["tasks"],
              ElementsAre("MfibIpv4red_noCache"));
  EXPECT_EQ(classes["redCleanupTask_w0_count_1"]["limit"], 1);
  // The receive modules go under the workers' weighted classes.
  std::vector<std::string> attached;
  for (const char* worker : {"worker0", "worker1"}) {
    for (const Json& task : classes[worker]["tasks"]) attached.push_back(task.get<std::string>());
  }
  EXPECT_THAT(attached, UnorderedElementsAre("Rx_McastHwFwd_red", "Rx_McastSwFwd_red",
                                             "Rx_McastSwFwd_PeerLinkOrCore_red",
                                             "Rx_PimRegIpv4_red"));
  EXPECT_FALSE(classes["worker0"]["tasks"].empty());
  EXPECT_FALSE(classes["worker1"]["tasks"].empty());
}

TEST_F(AgentStartStopTest, KernelLimitsFollowTheConfigOfAStartedVrfOnly) {
  auto config = state->kernelMfibConfig(AddressFamily::ipv4).configIs(red);
  config->maxUnresolvedCacheEntriesIs(100);
  makeAgent(true);
  const std::uint64_t mark = Trace::mark();
  state->kernelMfibConfig(AddressFamily::ipv4).configIs(L3::VrfName("blue"));
  EXPECT_THAT(tracesSince(mark), Contains("No mfib SM, nothing to do"));
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(dump()["modules"]["MfibIpv4red"]["table"]["maxUnresolvedCacheEntries"], 100);
  config->maxUnresolvedCacheEntriesIs(200);
  EXPECT_EQ(dump()["modules"]["MfibIpv4red"]["table"]["maxUnresolvedCacheEntries"], 200);
  state->kernelMfibConfig(AddressFamily::ipv4).configDel(red);
  EXPECT_EQ(agent->mfibSm(red, AddressFamily::ipv4)->kernelMfibConfig(), nullptr);
}

TEST_F(AgentStartStopTest, GoingDownStopsEveryVrfAndFamilyOnce) {
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  agent->startMfibSm(red, AddressFamily::ipv6);
  agent->startMfibSm(L3::VrfName("blue"), AddressFamily::ipv4);
  const std::uint64_t mark = Trace::mark();
  agent = nullptr;
  int stops = 0;
  for (const std::string& text : tracesSince(mark)) stops += text.starts_with("stopMfibSm");
  EXPECT_EQ(stops, 3);
  EXPECT_THAT(dump()["modules"], IsEmpty());
  EXPECT_THAT(dump()["ports"], IsEmpty());
}

}  // namespace
}  // namespace AgentTest
