#include "runtime/state/vxlan/VtiStatusDir.h"
#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using Vrf::VrfIdMap::VrfId;

// The agent makes the routed VXLAN controller once the VXLAN inputs stand, and the VRFs'
// start and id changes reach it.
class AgentL3VxlanTest : public AgentFixture {
 protected:
  AgentL3VxlanTest() {
    state->vrfNameToId().vrfIdIs("default", VrfId(1));
    state->vrfNameToId().vrfIdIs("red", VrfId(2));
    auto dir = Lumo::ptrCast<Vxlan::VtiStatusDir>(
        state->entityManager()->getEntity(Vxlan::VtiStatusDir::path));
    vti = dir->vtiStatusIs(Lanx::IntfId("Vxlan1"));
    vti->udpPortIs(4789);
  }
  std::string linkOf(const char* from, std::uint32_t gate) {
    const Json out = dump()["modules"][from]["out"];
    const std::string key = std::to_string(gate);
    return out.contains(key) ? out[key]["to"].get<std::string>() : "";
  }

  Lumo::Ptr<Vxlan::VtiStatus> vti;
  const L3::VrfName red{"red"};
  const L3::VrfName defaultVrf{"default"};
};

TEST_F(AgentL3VxlanTest, VrfsStartedAfterTheSbdVlanAreWiredAndFollowTheirIds) {
  vti->vrfToSbdVlanMapIs(red, Bridging::VlanIdOrNone(3001));
  makeAgent(true);
  ASSERT_NE(agent->l3VxlanPipeline(), nullptr);
  EXPECT_TRUE(agent->l3VxlanPipeline()->exists());
  agent->startMfibSm(defaultVrf, AddressFamily::ipv4);
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(linkOf("MfibIpv4default", 2), "L3MVxlanOut");
  EXPECT_EQ(linkOf("MfibIpv4red", 1), "L3MVxlanIn");
  EXPECT_TRUE(dump()["modules"]["L3MVxlanOut"]["table"]["oGates"].contains("ipv4:2"));

  state->vrfNameToId().vrfIdIs("red", VrfId(5));
  const Json out = dump()["modules"]["L3MVxlanOut"]["table"];
  EXPECT_EQ(out["vrfSbdVlan"], (Json{{"5", 3001}}));
  EXPECT_TRUE(out["oGates"].contains("ipv4:5"));
  EXPECT_FALSE(out["oGates"].contains("ipv4:2"));

  vti->vrfToSbdVlanMapDel(red);
  EXPECT_FALSE(dump()["modules"].contains("L3MVxlanOut"));
  EXPECT_FALSE(dump()["modules"].contains("L3MVxlanIn"));
  EXPECT_TRUE(model.errors().empty());
}

}  // namespace
}  // namespace AgentTest
