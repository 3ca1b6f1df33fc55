#include <gmock/gmock.h>

#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using Routing::Multicast::Fib::MfibAppType;
using Vrf::VrfIdMap::VrfId;

class AgentStartStopTest : public AgentFixture {
 protected:
  AgentStartStopTest() {
    state->vrfNameToId().vrfIdIs("red", VrfId(2));
    state->hwVrfIdMap().vrfEntryIs(VrfId(12), {"red"});
  }

  std::vector<std::string> moduleNames() {
    std::vector<std::string> names;
    const Json data = dump();
    for (const auto& [name, module] : data["modules"].items()) names.push_back(name);
    return names;
  }
  // Runs the agent's tasks and carries what they queue.
  void settle() {
    Dov::TaskSchedulerRoot::findOrCreateScheduler()->settle();
    channel->pump();
  }
  void writeRoute(const char* source, const char* group) {
    const Routing::Multicast::Fib::IpGenRouteKey key{Lanx::IpGenPrefix(source),
                                                     Lanx::IpGenPrefix(group)};
    state->routeTable(red, AddressFamily::ipv4, MfibAppType::pim)
        .routeIs(Vash::Multicast::Fib::Route::withOifs(key, et2, 0, {et3}));
  }

  const L3::VrfName red{"red"};
  const Lanx::IntfId et2{"Ethernet2"};
  const Lanx::IntfId et3{"Ethernet3"};
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

TEST_F(AgentStartStopTest, ReducedStartMakesFibAndIgmpOnlyWithHardwareIdsAndPerWorkerTasks) {
  makeAgent(false);
  agent->startMfibSm(red, AddressFamily::ipv4);
  const Json data = dump();
  EXPECT_THAT(moduleNames(), UnorderedElementsAre("IgmpV2", "MfibIpv4red", "TxDemuxer"));
  EXPECT_EQ(data["modules"]["MfibIpv4red"]["class"], 27);
  EXPECT_EQ(data["modules"]["MfibIpv4red"]["init"]["vrfId"], 12);
  EXPECT_THAT(data["ports"], IsEmpty());
  const Json& tasks = data["modules"]["MfibIpv4red"]["table"]["tasks"];
  EXPECT_TRUE(tasks.contains("MfibIpv4red_noCache_w1"));
  EXPECT_TRUE(tasks.contains("MfibIpv4red_cleanup_w0"));
  EXPECT_NE(agent->txDemuxerL3IntfSm(), nullptr);
}

TEST_F(AgentStartStopTest, StartingTwiceChangesNothingAndTheFamiliesShareTheReceiveSet) {
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  const std::uint64_t seq = commandsSince(0).size();
  agent->startMfibSm(red, AddressFamily::ipv4);
  for (const Json& entry : commandsSince(seq)) {
    EXPECT_NE(entry["kind"], "createModule") << entry;
    EXPECT_NE(entry["kind"], "createPort") << entry;
  }
  const auto* set = agent->mcastAnyRxSet(red).get();
  agent->startMfibSm(red, AddressFamily::ipv6);
  EXPECT_EQ(agent->mcastAnyRxSet(red), set);
  EXPECT_EQ(dump()["modules"]["MfibIpv6red"]["class"], 26);

  agent->stopMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(agent->mcastAnyRxSet(red), set);
  EXPECT_FALSE(dump()["modules"].contains("MfibIpv4red"));
  agent->stopMfibSm(red, AddressFamily::ipv6);
  EXPECT_EQ(agent->mcastAnyRxSet(red), nullptr);
  EXPECT_THAT(moduleNames(), ElementsAre("TxDemuxer"));
  EXPECT_THAT(dump()["ports"], IsEmpty());
}

TEST_F(AgentStartStopTest, RoutesReachTheModuleWhetherTheirTableCameBeforeOrAfterTheStart) {
  writeRoute("10.1.1.1", "239.1.1.1");
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  settle();
  EXPECT_TRUE(dump()["modules"]["MfibIpv4red"]["table"]["routes"].contains("10.1.1.1,239.1.1.1"));

  // A table of another application, mounted after the start.
  const Routing::Multicast::Fib::IpGenRouteKey key{Lanx::IpGenPrefix("10.2.2.2"),
                                                   Lanx::IpGenPrefix("239.2.2.2")};
  state->routeTable(red, AddressFamily::ipv4, MfibAppType::static_)
      .routeIs(Vash::Multicast::Fib::Route::withOifs(key, et2, 0, {et3}));
  settle();
  EXPECT_TRUE(dump()["modules"]["MfibIpv4red"]["table"]["routes"].contains("10.2.2.2,239.2.2.2"));

  state->routeTableDel(red, AddressFamily::ipv4, MfibAppType::static_);
  state->routeTableDel(red, AddressFamily::ipv4, MfibAppType::pim);
  settle();
  EXPECT_THAT(dump()["modules"]["MfibIpv4red"]["table"]["routes"], IsEmpty());
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
