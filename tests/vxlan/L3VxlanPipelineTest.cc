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

TEST_F(L3VxlanPipelineTest, PortZeroStopsAtTheDecapsulationModule) {
  sbd("red", 3001);
  pipeline = makePipeline();
  vti->udpPortIs(0);
  EXPECT_EQ(table("L3MVxlanOut")["udpPort"], 4789);
  EXPECT_EQ(table("L3MVxlanIn")["vxlanDestPort"], 0);
  EXPECT_EQ(errorCount(), 0u);
}

}  // namespace
}  // namespace VxlanTest
