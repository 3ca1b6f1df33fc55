#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "mfib/VekL3MfibModule.h"
#include "pipeline/VrfLifecycleListener.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"
#include "vxlan/L3MVxlanInSm.h"
#include "vxlan/L3VniTable.h"
#include "vxlan/NestedSm_L3VtiStatus.h"
#include "vxlan/ReactorGuard.h"
#include "vxlan/VekL3MVxlanOutModule.h"

namespace VekMVxlan {

// The routed half of the VXLAN pipeline: while the VTI maps some VRF to an SBD VLAN it
// keeps the two encapsulation machines (one per family) and the decapsulation module,
// wires them to every VRF's FIB modules and to the L2 encapsulation module, and tells the
// decapsulation module its VNI, SBD VLAN and gate tables. Whichever element comes last
// connects itself to what stands, so the graph does not depend on the order of events.
//
// It hears the VTIs, the remote VNI tables and the VRF name map itself; of the agent it
// needs the FIB modules (`fibs`), a VRF's start, stop and id change (it is a VRF-lifecycle
// listener), the L2 encapsulation module while it stands (`l2VxlanInModuleIs`), and a way
// to have a FIB's routes sent again when an SBD VLAN comes to it or leaves it
// (`reviewRoutes`), as a route's gate for that interface changes with it.
class L3VxlanPipeline : public Qel::StateMachine, public VekL3Mcast::VrfLifecycleListener {
 public:
  using Af = Lanx::AddressFamily;
  using VrfId = Vrf::VrfIdMap::VrfId;
  using Fibs = std::function<std::vector<Lumo::Ptr<VekL3Mcast::MfibAf>>(Af)>;
  // Has a VRF's routes of a family sent again: their gates changed outside the tables.
  using ReviewRoutes = std::function<void(const L3::VrfName&, Af)>;
  struct Inputs {
    Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper const> vrfNameStatus;
    Lumo::Ptr<Vxlan::VtiStatusDir const> vtiStatusDir;
    Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus const> tunnelFwdingStatus4;
    Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus const> tunnelFwdingStatus6;
    Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl const> mcastIntfRoot;
    Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl const> mcastIntfRoot6;
    Lumo::Ptr<Vxlan::RemoteVniToVlanStatus const> remoteVniToVlanStaticStatus;
    Lumo::Ptr<Vxlan::RemoteVniToVlanStatus const> remoteVniToVlanIrbStatus;
    Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair;
    Lumo::Ptr<Vek::VekCommonSmData> vekcsd;
  };
  // The one VTI whose values both encapsulation machines take.
  static constexpr std::string_view vtiName = "Vxlan1";
  static constexpr std::uint32_t outInGates = 2;
  static constexpr std::uint32_t outOutGates = 8192;
  // The reserved gates of the pipeline's links.
  static constexpr std::uint32_t fibToOutGate = 2;
  static constexpr std::uint32_t fibToInGate = 1;

  L3VxlanPipeline(Inputs inputs, Fibs fibs, ReviewRoutes reviewRoutes = {});
  ~L3VxlanPipeline() override;
  std::string_view typeName() const override { return "VekMVxlan::L3VxlanPipeline"; }

  // ---- Life of the pipeline ----

  void handleInitialized() override;
  void doCreateL3MVxlanPipeline();
  void doDeleteL3MVxlanPipeline();
  void doConnectMfibToL3MVxlan(Af af, const L3::VrfName& vrf);
  void doConnectL3MVxlanInToL2MVxlanIn();
  void doDisconnectL3MVxlanInToL2MVxlanIn();
  // The L2 encapsulation module came (or went, with null): the routed traffic reaches it.
  void l2VxlanInModuleIs(Lumo::Ptr<Vek::Module> module);

  // ---- VRF life ----

  void vrfStarted(const L3::VrfName& vrf, Af af) override;
  void vrfStopping(const L3::VrfName& vrf, Af af) override;
  void vrfIdChanged(const L3::VrfName& vrf, VrfId oldId, VrfId newId) override;

  // ---- Handlers ----

  void handleVlanToVniMap(NestedSm_L3VtiStatus& vti, Bridging::VlanId vlan);
  void handleVrfToVniMap(NestedSm_L3VtiStatus& vti, const L3::VrfName& vrf);
  void handleVrfToSBDVlan(const L3::VrfName& vrf);
  void handleUdpPort(NestedSm_L3VtiStatus& vti);
  void handleRemoteVni(Vxlan::VniExtOrNone vni);
  void updateRemoteVnisForSbdVlan(Bridging::VlanId sbd);
  void handleVtiStatus(Lanx::IntfId intf);
  void handleNameToIdMap();
  void handleVrfName(const Lumo::String& name);
  // The VRF's id may have changed: its VNI, SBD VLAN and gate entries follow.
  void handleVrfNameToId(const L3::VrfName& vrf);

  // ---- State ----

  bool exists() const noexcept { return l3VxlanOutModule_ != nullptr; }
  const Lumo::Ptr<L3MVxlanOut>& l3VxlanOutModule() const noexcept { return l3VxlanOutModule_; }
  Lumo::Ptr<L3MVxlanIn> l3VxlanInModule() const;
  Lumo::Ptr<L3MVxlanIn> l3VxlanIn6Module() const;
  const L3VniTable& vniTable() const noexcept { return table_; }
  // The VRF id now in the name map; none if it has none.
  VrfId curVrfNameToId(const L3::VrfName& vrf) const;

 private:
  using InSmAttr =
      Qel::InstantiatingAttr<L3MVxlanInSm, 1, "l3VxlanInModuleSm", Af,
                             Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper const>,
                             Lumo::Ptr<Vxlan::VtiStatus const>,
                             Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus const>,
                             Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl const>,
                             Lumo::Ptr<Vek::ModuleConfigStatusPair>,
                             Lumo::Ptr<Vek::VekCommonSmData>>;

  Lumo::Ptr<VekL3Mcast::MfibAf> fib(Af af, const L3::VrfName& vrf) const;
  // Every FIB module of both families, IPv4 first.
  std::vector<Lumo::Ptr<VekL3Mcast::MfibAf>> allFibs() const;
  Lumo::Ptr<L3MVxlanIn> inModuleFor(Af af) const;
  void doDisconnectMfib(const Lumo::Ptr<VekL3Mcast::MfibAf>& mfib);
  // The decapsulation module's gate to the VRF's FIB of the family, under the VRF's id.
  void doOGateEntries(const L3::VrfName& vrf, VrfId oldId, VrfId newId);
  void doSbdVlanIntfs(const Lumo::Ptr<VekL3Mcast::MfibAf>& mfib);
  // Adds or takes out an SBD interface of a FIB; its routes are sent again if that changed.
  void doSbdVlanIntf(VekL3Mcast::MfibAf& mfib, Bridging::VlanId sbd, bool present);
  void doCreateInSms(const Lumo::Ptr<Vxlan::VtiStatus const>& vti);
  VrfId lastVrfId(const L3::VrfName& vrf) const;
  void remoteVniScan(const Vxlan::RemoteVniToVlanStatus* status, Bridging::VlanId sbd,
                     std::vector<Vxlan::VniExtOrNone>& vnis) const;

  Inputs inputs_;
  Fibs fibs_;
  ReviewRoutes reviewRoutes_;
  L3VniTable table_;
  // The VRF ids the decapsulation module was last told, so that a change can take back the
  // old one.
  Qel::HashMap2018<L3::VrfName, VrfId> lastVrfId_;
  Lumo::Ptr<L3MVxlanOut> l3VxlanOutModule_;
  Lumo::Ptr<Vek::Module> l2VxlanInModule_;
  InSmAttr l3VxlanInModuleSm_;
  InSmAttr l3VxlanIn6ModuleSm_;
  Qel::NestedSmCollection<L3VxlanPipeline, NestedSm_L3VtiStatus, &Vxlan::VtiStatus::intfId>
      vtiStatus_{this};

  Qel::SmSubscriber<L3VxlanPipeline> vtiStatusDirReactor_{
      this, &Qel::reactorDispatch<L3VxlanPipeline, Vxlan::VtiStatusDir::kVtiStatus,
                                  &L3VxlanPipeline::handleVtiStatus>};
  Qel::SmSubscriber<L3VxlanPipeline> vrfNameStatusReactor_{
      this, &Qel::reactorDispatch<L3VxlanPipeline,
                                  Vrf::VrfIdMap::NameToIdMapWrapper::kNameToIdMap,
                                  &L3VxlanPipeline::handleNameToIdMap>};
  Qel::SmSubscriber<L3VxlanPipeline> nameToIdMapReactor_{
      this, &Qel::reactorDispatch<L3VxlanPipeline, Vrf::VrfIdMap::NameToIdMap::kVrfId,
                                  &L3VxlanPipeline::handleVrfName>};
  Qel::SmSubscriber<L3VxlanPipeline> remoteStaticReactor_{
      this, &Qel::reactorDispatch<L3VxlanPipeline, Vxlan::RemoteVniToVlanStatus::kVniToVlan,
                                  &L3VxlanPipeline::handleRemoteVni>};
  Qel::SmSubscriber<L3VxlanPipeline> remoteIrbReactor_{
      this, &Qel::reactorDispatch<L3VxlanPipeline, Vxlan::RemoteVniToVlanStatus::kVniToVlan,
                                  &L3VxlanPipeline::handleRemoteVni>};
};

}  // namespace VekMVxlan
