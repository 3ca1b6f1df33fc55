#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "proto/vek.pb.h"
#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Vrf::VrfIdMap::VrfId;

// Writes down what it hears, and whether the FIB module stood at that moment.
class RecordingListener : public VekL3Mcast::VrfLifecycleListener {
 public:
  explicit RecordingListener(const Lumo::Ptr<VekL3Mcast::MfaAgent>& agent) : agent_(agent) {}

  void vrfStarted(const L3::VrfName& vrf, AddressFamily af) override {
    heard.push_back(fmt::format("started {} {} module={}", vrf, af, hasModule(vrf, af)));
  }
  void vrfStopping(const L3::VrfName& vrf, AddressFamily af) override {
    heard.push_back(fmt::format("stopping {} {} module={}", vrf, af, hasModule(vrf, af)));
  }
  void vrfIdChanged(const L3::VrfName& vrf, VrfId oldId, VrfId newId) override {
    heard.push_back(fmt::format("id {} {} -> {}", vrf, oldId, newId));
  }
  void mfibModuleChanged(const L3::VrfName& vrf, AddressFamily af,
                         const Lumo::Ptr<VekL3Mcast::MfibAf>& module) override {
    heard.push_back(fmt::format("module {} {} {}", vrf, af, module ? "came" : "went"));
  }
  void handleMvpnIntfStatus() override { heard.push_back("provider catch-up"); }
  void mfibModuleReady(const L3::VrfName& vrf, AddressFamily af,
                       const Lumo::Ptr<VekL3Mcast::MfibAf>& module) override {
    heard.push_back(fmt::format("ready {} {} {}", vrf, af, module->name()));
  }
  void vrfIdToNameChanged(VrfId id) override { heard.push_back(fmt::format("name of {}", id)); }

  std::vector<std::string> heard;

 private:
  bool hasModule(const L3::VrfName& vrf, AddressFamily af) const {
    return agent_->getMfibModule(vrf, af) != nullptr;
  }
  Lumo::Ptr<VekL3Mcast::MfaAgent> agent_;
};

class VrfLifecycleTest : public AgentFixture {
 protected:
  VrfLifecycleTest() { state->vrfNameToId().vrfIdIs("red", VrfId(2)); }
  const L3::VrfName red{"red"};
};

// A start is heard once per family, with the FIB module standing; a stop is heard before
// the module goes, and only for a family that was started.
TEST_F(VrfLifecycleTest, StartAndStopAreHeardOncePerFamilyWithTheModuleStanding) {
  makeAgent(true);
  RecordingListener listener(agent);
  agent->vrfLifecycleListenerIs(listener);
  agent->vrfLifecycleListenerIs(listener);  // a second registration changes nothing

  agent->startMfibSm(red, AddressFamily::ipv4);
  agent->startMfibSm(red, AddressFamily::ipv4);
  agent->startMfibSm(red, AddressFamily::ipv6);
  agent->stopMfibSm(red, AddressFamily::ipv6);
  agent->stopMfibSm(red, AddressFamily::ipv6);
  agent->stopMfibSm(red, AddressFamily::ipv4);
  // The software id table has no entries here: the provider side's catch-up names none.
  EXPECT_THAT(listener.heard,
              ElementsAre("module red ipv4 came", "provider catch-up", "ready red ipv4 MfibIpv4red",
                          "started red ipv4 module=true", "module red ipv6 came",
                          "provider catch-up", "ready red ipv6 MfibIpv6red",
                          "started red ipv6 module=true", "stopping red ipv6 module=true",
                          "module red ipv6 went", "stopping red ipv4 module=true",
                          "module red ipv4 went"));

  listener.heard.clear();
  agent->vrfLifecycleListenerDel(listener);
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_THAT(listener.heard, IsEmpty());
}

// Each change of a software id is heard with both sides; a name written again with its
// id is not a change. The agent's way down stops every VRF, and the listener hears it.
TEST_F(VrfLifecycleTest, IdChangesAreHeardWithBothSidesAndTheWayDownStopsEachVrf) {
  makeAgent(true);
  RecordingListener listener(agent);
  agent->vrfLifecycleListenerIs(listener);
  agent->startMfibSm(red, AddressFamily::ipv4);
  listener.heard.clear();

  // The software id table: each entry that changes is heard by its id.
  auto idTable = Lumo::ptrCast<Vrf::VrfIdMap::Status>(
      state->sharedMem()->getEntity(Vrf::VrfIdMap::Status::softwarePath));
  ASSERT_NE(idTable, nullptr);
  idTable->vrfEntryIs(VrfId(2), {"red"});
  idTable->vrfEntryDel(VrfId(2));
  EXPECT_THAT(listener.heard, ElementsAre("name of 2", "name of 2"));
  listener.heard.clear();

  state->vrfNameToId().vrfIdIs("red", VrfId(4));
  state->vrfNameToId().vrfIdIs("red", VrfId(4));
  state->vrfNameToId().vrfIdIs("blue", VrfId(3));
  state->vrfNameToId().vrfIdDel("red");
  EXPECT_THAT(listener.heard, ElementsAre("id red 2 -> 4", "id blue none -> 3",
                                          "id red 4 -> none"));

  listener.heard.clear();
  agent->handleDelete();
  EXPECT_THAT(listener.heard, ElementsAre("stopping red ipv4 module=true", "module red ipv4 went"));
  agent->vrfLifecycleListenerDel(listener);
}

// A reply whose action another part put into the table reaches that part with its
// payload; the agent's own actions stay in place beside it.
TEST_F(VrfLifecycleTest, ARegisteredReplyActionGetsItsPayload) {
  makeAgent(true);
  std::vector<std::string> vrfs;
  agent->registrationReplies().actionIs("regOtherTasks", [&](const google::protobuf::Any& any) {
    vek::pb::MfibTaskIdArg arg;
    if (any.UnpackTo(&arg)) vrfs.push_back(arg.vrf());
  });
  vek::pb::MfibTaskIdArg arg;
  arg.set_vrf("blue");
  auto reply = std::make_unique<vek::pb::ModuleResponse>();
  reply->set_module("Other");
  reply->set_type(Vek::ModuleStatus::taskIdsResponseType);
  reply->set_action("regOtherTasks");
  reply->mutable_payload()->PackFrom(arg);
  pair->status()->responseQueueEnq(std::move(reply));
  EXPECT_THAT(vrfs, ElementsAre("blue"));
  EXPECT_EQ(pair->status()->responseQueueSize(), 0u);
}

}  // namespace
}  // namespace AgentTest
