#include <gmock/gmock.h>

#include "agent/MfaToggles.h"
#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AgentLifecycleTest : public AgentFixture {};

TEST_F(AgentLifecycleTest, FullAgentMountsInItsFixedOrderAndEndsInitialized) {
  makeAgent(true);
  EXPECT_THAT(
      mountLog(),
      ElementsAre("mount routing/multicast/ipTunnel/forwardingStatus "
                  "Routing::Multicast::IpTunnelForwardingStatus",
                  "mount routing6/multicast/ipTunnel/forwardingStatus "
                  "Routing::Multicast::IpTunnelForwardingStatus",
                  "mount routing/multicast/ipTunnel/decapConfig "
                  "Routing::Multicast::IpTunnelDecapConfig",
                  "mount routing6/multicast/ipTunnel/decapConfig "
                  "Routing::Multicast::IpTunnelDecapConfig",
                  "mount vxlan/remoteVniToVlan/static/Vxlan1 Vxlan::RemoteVniToVlanStatus",
                  "mount vxlan/remoteVniToVlan/irb/Vxlan1 Vxlan::RemoteVniToVlanStatus",
                  "mount irb/multicast/status Irb::Multicast::McastIrbStatus",
                  "mount irb/multicast6/status Irb::Multicast::McastIrbStatus",
                  "mount irb/multicast/igmpProxyStatus Irb::Multicast::IgmpProxyStatus",
                  "mount irb/multicast/mldProxyStatus Irb::Multicast::IgmpProxyStatus",
                  "mount vrf/vrfIdMapStatus Vrf::VrfIdMap::Status",
                  "mount Routing::Multicast::MvpnIntfStatus Routing::Multicast::MvpnIntfStatus",
                  "mount mpls/decapLfib Mpls::LfibStatus",
                  "mount mpls/transitLfib Mpls::LfibStatus",
                  "mount kni/ns/default/status KernelNetInfo::Status"));
  const auto& log = state->sharedMem()->mountLogForTest();
  EXPECT_EQ(log[0].kind, QelSharedMem::MountKind::kraz);
  EXPECT_EQ(log[2].kind, QelSharedMem::MountKind::vash);
  EXPECT_EQ(log[2].mode, 3u);
  EXPECT_TRUE(agent->initialized());
  EXPECT_TRUE(agent->mvxlanInitialized());
  EXPECT_TRUE(agent->mMplsInitialized());
  EXPECT_EQ(agent->defaultVrfKniRoot().get(),
            &state->kernelDevices(L3::VrfName::defaultVrf().nsName()));
}

TEST_F(AgentLifecycleTest, ReducedAgentMountsOnlyTheDefaultNamespaceAndKeepsTheOtherFlagsDown) {
  makeAgent(false);
  EXPECT_THAT(mountLog(), ElementsAre("mount kni/ns/default/status KernelNetInfo::Status"));
  EXPECT_TRUE(agent->initialized());
  EXPECT_FALSE(agent->mvxlanInitialized());
  EXPECT_FALSE(agent->mMplsInitialized());
  // The hardware table is read without a mount.
  EXPECT_EQ(agent->hwVrfIdToNameStatus().get(), &state->hwVrfIdMap());
  EXPECT_EQ(agent->defaultVrfKniRoot(), nullptr);
}

TEST_F(AgentLifecycleTest, FullAgentMakesTheDemultiplexerAndResumesTheWorkersThroughItsGroup) {
  makeAgent(true);
  const Json data = dump();
  EXPECT_TRUE(data["workersResumed"].get<bool>());
  const Json& demux = data["modules"]["TxDemuxer"];
  EXPECT_EQ(demux["class"], 105);
  EXPECT_EQ(demux["reservedOut"], 2);
  ASSERT_NE(global->cmdConfigGroup("mfaAgent"), nullptr);
  EXPECT_EQ(agent->cmdConfigGroup(), global->cmdConfigGroup("mfaAgent"));
  std::vector<Json> groupCmds;
  for (const Json& entry : commandsSince(0)) {
    if (entry["kind"] == "groupCmd") groupCmds.push_back(entry);
  }
  ASSERT_EQ(groupCmds.size(), 1u);
  EXPECT_EQ(groupCmds[0]["group"], "mfaAgent");
  EXPECT_EQ(groupCmds[0]["type"], 10);
}

TEST_F(AgentLifecycleTest, ReducedAgentSendsNothingToADaemonGroup) {
  makeAgent(false);
  const Json data = dump();
  EXPECT_FALSE(data["workersResumed"].get<bool>());
  EXPECT_EQ(global->cmdConfigGroups(), 0u);
  EXPECT_EQ(agent->cmdConfigGroup(), nullptr);
  for (const Json& entry : commandsSince(0)) EXPECT_NE(entry["kind"], "groupCmd") << entry;
  EXPECT_TRUE(data["modules"].contains("TxDemuxer"));
}

TEST_F(AgentLifecycleTest, AGroupOfTheSameNameIsTakenOverNotReplaced) {
  auto existing = Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent");
  global->cmdConfigGroupIs(existing);
  makeAgent(true);
  EXPECT_EQ(agent->cmdConfigGroup(), existing);
  EXPECT_TRUE(dump()["workersResumed"].get<bool>());
}

TEST_F(AgentLifecycleTest, ErrorRecordsWaitUntilTheAgentIsUpAndAreTracedOnceInOrder) {
  auto queued = std::make_unique<vek::pb::ModuleError>();
  queued->set_module("MfibIpv4red");
  queued->set_type(4);
  queued->set_code(5);
  queued->set_msg("no room");
  pair->status()->errorQueueEnq(std::move(queued));
  const std::uint64_t mark = Trace::mark();
  makeAgent(true);
  EXPECT_EQ(pair->status()->errorQueueSize(), 0u);
  auto traced = [&](std::uint64_t since) {
    int count = 0;
    for (const std::string& text : tracesSince(since)) {
      count += text == "Module MfibIpv4red type : 4: 5 msg: no room";
    }
    return count;
  };
  EXPECT_EQ(traced(mark), 1);

  // A refusal of the data plane arrives through the queue and its reactor.
  const std::uint64_t later = Trace::mark();
  model.failNextForTest("TxDemuxer", "deleteVrfIdToPmsiVlan", 22, "bad vrf");
  agent->mcastModuleManager()->txDemuxerModule()->deleteVrfIdToPmsiVlan(Vrf::VrfIdMap::VrfId(3));
  channel->pump();
  EXPECT_THAT(tracesSince(later), testing::Contains("Module TxDemuxer type : 1: 22 msg: bad vrf"));
  EXPECT_EQ(traced(later), 0);
}

TEST_F(AgentLifecycleTest, NotInitializedLeavesErrorsQueuedAndHidesTheFibModules) {
  makeAgent(true);
  auto module = Lumo::makePtr<VekL3Mcast::MfibAf>(
      "MfibIpv4red", Vek::VekModule::mfib, 8192, 8192, nullptr, pair, L3::VrfName("red"),
      AddressFamily::ipv4);
  agent->mfibModuleIs(module);
  EXPECT_EQ(agent->getMfibModule(L3::VrfName("red"), AddressFamily::ipv4), module);
  EXPECT_EQ(getMfibModule(agent.get(), "red", 1), module.get());
  EXPECT_EQ(getMfibModule(agent.get(), "red", 2), nullptr);

  agent->initializedIsForTest(false);
  EXPECT_EQ(agent->getMfibModule(L3::VrfName("red"), AddressFamily::ipv4), nullptr);
  pair->status()->errorQueueEnq(std::make_unique<vek::pb::ModuleError>());
  EXPECT_EQ(pair->status()->errorQueueSize(), 1u);
  agent->initializedIsForTest(true);
  agent->handleMfaGrpcError();
  EXPECT_EQ(pair->status()->errorQueueSize(), 0u);
}

TEST_F(AgentLifecycleTest, TogglesAreReadOnceAndKeptWhateverTheirSourceSaysLater) {
  const bool wcFwd = VekL3Mcast::toggleMfaWcFwdEnabled();
  const bool mvpn = VekL3Mcast::toggleMvpnVekEnabled();
  const bool oism = VekL3Mcast::toggleOismMplsTunnelEnabled();
  Toggle::overrideIs("MfaWcFwd", !wcFwd);
  Toggle::overrideIs("MvpnVek", !mvpn);
  Toggle::overrideIs("OismMplsTunnel", !oism);
  EXPECT_EQ(VekL3Mcast::toggleMfaWcFwdEnabled(), wcFwd);
  EXPECT_EQ(VekL3Mcast::toggleMvpnVekEnabled(), mvpn);
  EXPECT_EQ(VekL3Mcast::toggleOismMplsTunnelEnabled(), oism);
}

TEST_F(AgentLifecycleTest, GoingDownTakesTheModulesAndTheDefaultNamespaceAway) {
  makeAgent(true);
  const std::uint64_t seq = commandsSince(0).size();
  const std::uint64_t mark = Trace::mark();
  agent = nullptr;
  EXPECT_THAT(tracesSince(mark), testing::Contains("Cleaning up mfa agent"));
  EXPECT_THAT(dump()["modules"], IsEmpty());
  EXPECT_EQ(mountLog().back(), "unmount kni/ns/default/status");
  bool destroyed = false;
  for (const Json& entry : commandsSince(seq)) {
    destroyed |= entry["kind"] == "destroyModule" && entry["name"] == "TxDemuxer";
  }
  EXPECT_TRUE(destroyed);
}

TEST_F(AgentLifecycleTest, MissingCentralStateKeepsTheAgentFromStanding) {
  state->entityManager()->entityDel("routing/multicast/fib");
  const VekMfaAgentArgs args{state->entityManager(), pair, global, vekcsd,
                             vekcsd->managementSm(), vrfIds, true};
  const std::uint64_t mark = Trace::mark();
  EXPECT_EQ(mfaAgentFactory(&args), nullptr);
  bool said = false;
  for (const std::string& text : tracesSince(mark)) {
    said |= text.find("cannot start") != std::string::npos;
  }
  EXPECT_TRUE(said);
}

}  // namespace
}  // namespace AgentTest
