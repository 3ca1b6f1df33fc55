#include <map>
#include <vector>

#include "mfib/VekL3MfibModule.h"
#include "tests/vxlan/L3VxlanFixture.h"
#include "vxlan/L3VxlanPipeline.h"

namespace VxlanTest {
namespace {

using VekMVxlan::L3VxlanPipeline;

class L3VxlanPipelineTest : public L3VxlanFixture {
 protected:
  L3VxlanPipelineTest() {
    vti->udpPortIs(4789);
    vrfId("default", 1);
    vrfId("red", 2);
  }

  Lumo::Ptr<L3VxlanPipeline> makePipeline() {
    L3VxlanPipeline::Inputs inputs{nameStatus, vtiDir,   tunnels,  tunnels6, intfRoots,
                                   intfRoots6, remoteStatic, remoteIrb, pair,     vekcsd};
    auto made = Lumo::makePtr<L3VxlanPipeline>(inputs, [this](Af af) {
      std::vector<Lumo::Ptr<VekL3Mcast::MfibAf>> all;
      for (const auto& [key, mfib] : fibs) {
        if (key.first == af) all.push_back(mfib);
      }
      return all;
    });
    made->hasNotificationActiveIs(true);
    return made;
  }
  // Starts a VRF's FIB of the family, as the agent does, and tells the pipeline.
  void startFib(const char* vrf, Af af = Af::ipv4) {
    const std::string name = std::string(af == Af::ipv4 ? "MfibIpv4" : "MfibIpv6") + vrf;
    fibs[{af, vrf}] = Lumo::makePtr<VekL3Mcast::MfibAf>(
        name, Vek::VekModule::mfib, 8192, 8192, nullptr, pair, L3::VrfName(vrf), af);
    if (pipeline) pipeline->vrfStarted(L3::VrfName(vrf), af);
  }
  bool hasSbd(const char* vrf) {
    return fibs[{Af::ipv4, vrf}]->sbdVlanIntfIdHas(Lanx::IntfId("Vlan3001"));
  }
  bool hasModule(const char* name) {
    channel->pump();
    return model.dump()["modules"].contains(name);
  }
  // The module the output gate leads to, or "" if none.
  std::string linkOf(const char* from, std::uint32_t gate) {
    channel->pump();
    const Json out = model.dump()["modules"][from]["out"];
    const std::string key = std::to_string(gate);
    return out.contains(key) ? out[key]["to"].get<std::string>() : "";
  }
  void remote(Lumo::Ptr<Vxlan::RemoteVniToVlanStatus>& table, std::uint32_t vni,
              std::uint16_t vlan) {
    table->vniToVlanIs(Vxlan::VniExtOrNone(vni), Bridging::VlanId(vlan));
  }

  Lumo::Ptr<Vxlan::RemoteVniToVlanStatus> remoteStatic =
      Lumo::makePtr<Vxlan::RemoteVniToVlanStatus>();
  Lumo::Ptr<Vxlan::RemoteVniToVlanStatus> remoteIrb = Lumo::makePtr<Vxlan::RemoteVniToVlanStatus>();
  std::map<std::pair<Af, std::string>, Lumo::Ptr<VekL3Mcast::MfibAf>> fibs;
  Lumo::Ptr<L3VxlanPipeline> pipeline;
};

TEST_F(L3VxlanPipelineTest, TheFirstSbdVlanBuildsTheGraphAndTheLastOneTakesItDown) {
  startFib("default");
  startFib("default", Af::ipv6);
  startFib("red");
  pipeline = makePipeline();
  EXPECT_FALSE(pipeline->exists());
  sbd("red", 3001);
  ASSERT_TRUE(pipeline->exists());

  EXPECT_EQ(linkOf("MfibIpv4default", 2), "L3MVxlanOut");
  EXPECT_EQ(linkOf("MfibIpv6default", 2), "L3MVxlanOut");
  EXPECT_EQ(linkOf("L3MVxlanIn", 0), "MfibIpv4default");
  EXPECT_EQ(linkOf("L3MVxlanIn", 1), "MfibIpv6default");
  EXPECT_EQ(linkOf("L3MVxlanIn6", 0), "MfibIpv4default");
  EXPECT_EQ(linkOf("MfibIpv4red", 1), "L3MVxlanIn");
  const Json out = table("L3MVxlanOut");
  ASSERT_TRUE(out["oGates"].contains("ipv4:2"));
  EXPECT_EQ(linkOf("L3MVxlanOut", out["oGates"]["ipv4:2"].get<std::uint32_t>()), "MfibIpv4red");
  EXPECT_EQ(out["vrfSbdVlan"], (Json{{"2", 3001}}));
  EXPECT_EQ(out["udpPort"], 4789);
  EXPECT_TRUE(hasSbd("default"));
  EXPECT_TRUE(hasSbd("red"));

  sbdDel("red");
  EXPECT_FALSE(pipeline->exists());
  EXPECT_FALSE(hasModule("L3MVxlanOut"));
  EXPECT_FALSE(hasModule("L3MVxlanIn"));
  EXPECT_FALSE(hasModule("L3MVxlanIn6"));
  EXPECT_FALSE(hasSbd("red"));
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(L3VxlanPipelineTest, AFibThatComesLaterIsWiredAndAnIdChangeMovesItsEntries) {
  sbd("red", 3001);
  pipeline = makePipeline();
  ASSERT_TRUE(pipeline->exists());
  startFib("default");
  startFib("red");
  EXPECT_EQ(linkOf("MfibIpv4red", 1), "L3MVxlanIn");
  EXPECT_EQ(table("L3MVxlanOut")["oGates"].size(), 1u);
  EXPECT_TRUE(hasSbd("red"));

  vrfId("red", 5);
  const Json out = table("L3MVxlanOut");
  EXPECT_EQ(out["vrfSbdVlan"], (Json{{"5", 3001}}));
  EXPECT_EQ(out["oGates"].size(), 1u);
  EXPECT_TRUE(out["oGates"].contains("ipv4:5"));
  vrfIdDel("red");
  EXPECT_EQ(table("L3MVxlanOut")["vrfSbdVlan"], Json::object()) << "no id, no entry";
  EXPECT_EQ(table("L3MVxlanOut")["oGates"], Json::object());
}

TEST_F(L3VxlanPipelineTest, RemoteVnisYieldToLocalOnesAndTheStaticTableToNone) {
  sbd("red", 3001);
  vrfVni("red", 50001);
  vlanVni(10, 10010);
  remote(remoteIrb, 10030, 40);
  remote(remoteStatic, 10030, 30);
  remote(remoteStatic, 10010, 11);  // also local: the local VLAN stays
  remote(remoteStatic, 60001, 3001);  // the remote VNI of red's SBD VLAN
  pipeline = makePipeline();
  Json out = table("L3MVxlanOut");
  EXPECT_EQ(out["vniVlan"], (Json{{"10010", 10}, {"10030", 30}, {"60001", 3001}}));
  EXPECT_EQ(out["vniVrf"], (Json{{"50001", 2}, {"60001", 2}}));

  remoteStatic->vniToVlanDel(Vxlan::VniExtOrNone(10030));
  EXPECT_EQ(table("L3MVxlanOut")["vniVlan"]["10030"], 40) << "the IRB table stands in";
  vti->vlanToVniMapDel(Bridging::VlanId(10));
  EXPECT_EQ(table("L3MVxlanOut")["vniVlan"]["10010"], 11) << "the remote VLAN takes over";
  remoteIrb->vniToVlanDel(Vxlan::VniExtOrNone(10030));
  EXPECT_FALSE(table("L3MVxlanOut")["vniVlan"].contains("10030"));
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(L3VxlanPipelineTest, PortZeroStopsAtTheDecapsulationModule) {
  sbd("red", 3001);
  pipeline = makePipeline();
  vti->udpPortIs(0);
  EXPECT_EQ(table("L3MVxlanOut")["udpPort"], 4789);
  EXPECT_EQ(table("L3MVxlanIn")["vxlanDestPort"], 0);
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(L3VxlanPipelineTest, TheL2ModuleIsLinkedWhicheverComesSecond) {
  auto l2 = Lumo::makePtr<Vek::Module>("L2MVxlanIn", Vek::VekModule::portInc, 4, 3, 1, 3, nullptr,
                                       pair);
  pipeline = makePipeline();
  pipeline->l2VxlanInModuleIs(l2);
  sbd("red", 3001);
  // Both families meet at the L2 module's routed input gate.
  EXPECT_EQ(linkOf("L3MVxlanIn", 2), "L2MVxlanIn");
  EXPECT_EQ(linkOf("L3MVxlanIn6", 2), "L2MVxlanIn");
  pipeline->l2VxlanInModuleIs(nullptr);
  EXPECT_EQ(linkOf("L3MVxlanIn", 2), "");
  EXPECT_EQ(linkOf("L3MVxlanIn6", 2), "");
  pipeline->l2VxlanInModuleIs(l2);
  EXPECT_EQ(linkOf("L3MVxlanIn", 2), "L2MVxlanIn");
  EXPECT_EQ(linkOf("L3MVxlanIn6", 2), "L2MVxlanIn");
  EXPECT_EQ(errorCount(), 0u);
}

}  // namespace
}  // namespace VxlanTest
