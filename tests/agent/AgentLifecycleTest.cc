#include <gmock/gmock.h>

#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using ::testing::ElementsAre;

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
  EXPECT_EQ(agent->inputs().defaultVrfKniRoot.get(),
            &state->kernelDevices(L3::VrfName::defaultVrf().nsName()));
}

TEST_F(AgentLifecycleTest, ReducedAgentMountsOnlyTheDefaultNamespaceAndKeepsTheOtherFlagsDown) {
  makeAgent(false);
  EXPECT_THAT(mountLog(), ElementsAre("mount kni/ns/default/status KernelNetInfo::Status"));
  EXPECT_TRUE(agent->initialized());
  EXPECT_FALSE(agent->mvxlanInitialized());
  EXPECT_FALSE(agent->mMplsInitialized());
  // The hardware table is read without a mount.
  EXPECT_EQ(agent->inputs().hwVrfIdToNameStatus.get(), &state->hwVrfIdMap());
  EXPECT_EQ(agent->inputs().defaultVrfKniRoot, nullptr);
}

TEST_F(AgentLifecycleTest, AGroupOfTheSameNameIsTakenOverNotReplaced) {
  auto existing = Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent");
  global->cmdConfigGroupIs(existing);
  makeAgent(true);
  EXPECT_EQ(agent->cmdConfigGroup(), existing);
  EXPECT_TRUE(dump()["workersResumed"].get<bool>());
}

// The errors-before-up scenario sees errors wait for an initialized agent; here the FIB
// modules it hides until then.
TEST_F(AgentLifecycleTest, NotInitializedHidesTheFibModules) {
  makeAgent(true);
  auto module = Lumo::makePtr<VekL3Mcast::MfibAf>(
      "MfibIpv4red", Vek::VekModule::mfib, 8192, 8192, nullptr, pair, L3::VrfName("red"),
      AddressFamily::ipv4);
  agent->vrfPipelineControl()->mfibModuleIs(module);
  EXPECT_EQ(agent->getMfibModule(L3::VrfName("red"), AddressFamily::ipv4), module);
  EXPECT_EQ(getMfibModule(agent.get(), "red", 1), module.get());
  EXPECT_EQ(getMfibModule(agent.get(), "red", 2), nullptr);

  agent->initializedIsForTest(false);
  EXPECT_EQ(agent->getMfibModule(L3::VrfName("red"), AddressFamily::ipv4), nullptr);
}

TEST_F(AgentLifecycleTest, RepliesOfOtherTypesAndShortTaskListsMakeNoTrafficClass) {
  makeAgent(true);
  const std::uint64_t seq = commandsSince(0).size();
  const std::uint64_t mark = Trace::mark();
  auto other = std::make_unique<vek::pb::ModuleResponse>();
  other->set_module("IgmpV2");
  other->set_type(7);
  other->set_action("regMfibTasks");
  pair->status()->responseQueueEnq(std::move(other));
  vek::pb::MfibTaskIdsArg ids;  // two workers, but one entry and no fused task ids
  ids.set_vrf("red");
  ids.set_wid_count(2);
  ids.add_wid(0);
  ids.add_tid(5);
  ids.add_task_name("MfibIpv4red_noCache_w0");
  auto shortReply = std::make_unique<vek::pb::ModuleResponse>();
  shortReply->set_module("MfibIpv4red");
  shortReply->set_type(Vek::ModuleStatus::taskIdsResponseType);
  shortReply->set_action("regMfibTasksForAllWorkers");
  shortReply->mutable_payload()->PackFrom(ids);
  pair->status()->responseQueueEnq(std::move(shortReply));

  EXPECT_EQ(pair->status()->responseQueueSize(), 0u);
  EXPECT_TRUE(Trace::contains("Module IgmpV2 type : 7 action: regMfibTasks", mark));
  for (const Json& entry : commandsSince(seq)) EXPECT_NE(entry["kind"], "createRateLimitTc");
}

TEST_F(AgentLifecycleTest, AWorkerWithoutAWeightedClassGetsNoModuleTask) {
  vekcsd->widToWeightedClassDel(0);
  vekcsd->widToWeightedClassDel(1);
  state->vrfNameToId().vrfIdIs("red", Vrf::VrfIdMap::VrfId(2));
  makeAgent(true);
  agent->startMfibSm(L3::VrfName("red"), AddressFamily::ipv4);
  for (const Json& entry : commandsSince(0)) {
    if (entry["kind"] == "attachTaskToTc") {
      EXPECT_NE(entry["tc"], "worker0") << entry;
    }
  }
  EXPECT_TRUE(dump()["trafficClasses"]["worker0"]["tasks"].empty());
}

TEST_F(AgentLifecycleTest, MissingCentralStateKeepsTheAgentFromStanding) {
  state->entityManager()->entityDel("routing/multicast/fib");
  const VekMfaAgentArgs args{state->entityManager(), pair, global, vekcsd,
                             vekcsd->managementSm(), vrfIds, true};
  const std::uint64_t mark = Trace::mark();
  EXPECT_EQ(mfaAgentFactory(&args), nullptr);
  EXPECT_TRUE(Trace::contains("cannot start", mark));
}

}  // namespace
}  // namespace AgentTest
