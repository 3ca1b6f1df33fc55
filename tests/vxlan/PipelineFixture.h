#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "mfib/VekL3MfibModule.h"
#include "proto/vek.pb.h"
#include "runtime/state/PamRxBuf.h"
#include "tests/pipeline/PipelineFixture.h"
#include "vxlan/VxlanPipeline.h"
#include "vxlan/VxlanPipelineOwner.h"

namespace VxlanTest {

using Json = nlohmann::ordered_json;
using Lanx::AddressFamily;

// The agent as the VXLAN pipeline sees it: the default VRF's FIB modules, whether the
// fabric device is up, and a record of the agent steps the pipeline set off.
class FakeOwner : public VekMVxlan::VxlanPipelineOwner {
 public:
  explicit FakeOwner(Lumo::Ptr<Vek::ModuleConfigStatusPair> pair) : pair_(std::move(pair)) {}

  bool initialized() const override { return true; }
  bool mvxlanInitialized() const override { return true; }
  Lumo::Ptr<VekL3Mcast::MfibAf> mfibModule(const L3::VrfName& vrf,
                                           AddressFamily af) const override {
    const Lumo::Ptr<VekL3Mcast::MfibAf>* mfib = mfibModules(af).find(vrf);
    return mfib ? *mfib : Lumo::Ptr<VekL3Mcast::MfibAf>();
  }
  const MfibModules& mfibModules(AddressFamily af) const override {
    return af == AddressFamily::ipv6 ? mfib6_ : mfib4_;
  }
  Vrf::VrfIdMap::VrfId curVrfNameToId(const L3::VrfName&) const override { return {}; }
  bool kernelDeviceIsUp(std::string_view name) const override { return name == "fabric" && fabricUp; }
  void reviewRoutes(const L3::VrfName&, AddressFamily) override { ++routeReviews; }
  void handleFwdDevStateSm() override { steps.push_back("handleFwdDevStateSm"); }
  void doMaybeCreateAndAttachFabricTx() override {}
  void attachMcastVxlanRxSetTasks(const Lumo::Ptr<VekL3Mcast::McastL2VxlanRxSet>&) override {
    steps.push_back("attachMcastVxlanRxSetTasks");
  }
  void attachMcastL2VxlanTxTasks(const Lumo::Ptr<VekL3Mcast::McastL2VxlanTx>&) override {
    steps.push_back("attachMcastL2VxlanTxTasks");
  }

  // Makes the default VRF's FIB module of a family.
  Lumo::Ptr<VekL3Mcast::MfibAf> startDefault(AddressFamily af) {
    auto* arg = new vek::pb::MfibArg;
    arg->set_vrfname("default");
    arg->set_af(static_cast<std::uint32_t>(af));
    arg->set_vrfid(1);
    const std::string name = af == AddressFamily::ipv6 ? "MfibIpv6default" : "MfibIpv4default";
    auto mfib = Vek::makeModule<VekL3Mcast::MfibAf>(Lumo::String(name), Vek::VekModule::mfib,
                                                    8192, 8192, arg, pair_,
                                                    L3::VrfName::defaultVrf(), af);
    (af == AddressFamily::ipv6 ? mfib6_ : mfib4_).set(L3::VrfName::defaultVrf(), mfib);
    return mfib;
  }

  bool fabricUp = true;
  int routeReviews = 0;
  std::vector<std::string> steps;

 private:
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair_;
  MfibModules mfib4_;
  MfibModules mfib6_;
};

// The central state the pipeline reads, written as the rest of the system would.
struct VxlanInputs {
  Lumo::Ptr<Vxlan::VtiStatusDir> vtis = Lumo::makePtr<Vxlan::VtiStatusDir>();
  Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus> tunnels4 =
      Lumo::makePtr<Routing::Multicast::IpTunnelForwardingStatus>();
  Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus> tunnels6 =
      Lumo::makePtr<Routing::Multicast::IpTunnelForwardingStatus>();
  Lumo::Ptr<Routing::Multicast::IpTunnelDecapConfig> decap4 =
      Lumo::makePtr<Routing::Multicast::IpTunnelDecapConfig>();
  Lumo::Ptr<Routing::Multicast::IpTunnelDecapConfig> decap6 =
      Lumo::makePtr<Routing::Multicast::IpTunnelDecapConfig>();
  Lumo::Ptr<Irb::Multicast::McastIrbStatus> irb4 = Lumo::makePtr<Irb::Multicast::McastIrbStatus>();
  Lumo::Ptr<Irb::Multicast::McastIrbStatus> irb6 = Lumo::makePtr<Irb::Multicast::McastIrbStatus>();
  Lumo::Ptr<Irb::Multicast::IgmpProxyStatus> igmp = Lumo::makePtr<Irb::Multicast::IgmpProxyStatus>();
  Lumo::Ptr<Irb::Multicast::IgmpProxyStatus> mld = Lumo::makePtr<Irb::Multicast::IgmpProxyStatus>();
  Lumo::Ptr<Bridging::HwCapabilities> hw = Lumo::makePtr<Bridging::HwCapabilities>();
  Lumo::Ptr<Bridging::Config> bridging = Lumo::makePtr<Bridging::Config>();

  // The agent's bundle, holding the entities above as the agent holds what it mounted.
  VekL3Mcast::MfaInputs bundle() const {
    VekL3Mcast::MfaInputs bundle;
    bundle.vtiStatusDir = vtis;
    bundle.tunnelFwdingStatus.ipv4 = tunnels4;
    bundle.tunnelFwdingStatus.ipv6 = tunnels6;
    bundle.tunDecapConfig.ipv4 = decap4;
    bundle.tunDecapConfig.ipv6 = decap6;
    bundle.mcastIrbStatus.ipv4 = irb4;
    bundle.mcastIrbStatus.ipv6 = irb6;
    bundle.igmpProxyStatus = igmp;
    bundle.mldProxyStatus = mld;
    bundle.hwCapabilities = hw;
    bundle.bridgingConfig = bridging;
    return bundle;
  }
};

// A pipeline over the data-plane model, with its inputs bound and notification on.
class VxlanPipelineFixture : public PipelineTest::PipelineFixture {
 protected:
  VxlanPipelineFixture() { pipeline->hasNotificationActiveIs(true); }

  // The fabric comes up, as the agent's fabric handler acts on it.
  void fabricUp() {
    owner.fabricUp = true;
    if (!pipeline->l2VxlanInModule() && pipeline->l2PipelineWanted()) {
      pipeline->doCreateL2MVxlanPipeline();
    }
  }
  void fabricDown() {
    owner.fabricUp = false;
    if (pipeline->l2VxlanInModule()) pipeline->doDeleteL2MVxlanPipeline();
  }
  void startDefault() {
    for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
      owner.startDefault(af);
      pipeline->vrfStarted(L3::VrfName::defaultVrf(), af);
    }
  }

  FakeOwner owner{pair};
  VxlanInputs inputs;
  const VekL3Mcast::MfaInputs bundle = inputs.bundle();
  Lumo::Ptr<VekMVxlan::VxlanPipeline> pipeline = Lumo::makePtr<VekMVxlan::VxlanPipeline>(
      &owner, bundle, pair, group, vekcsd, Lumo::makePtr<Lanx::PamRxBuf>(8388608));
};

}  // namespace VxlanTest
