#pragma once

#include <functional>
#include <optional>

#include "runtime/qel/HashMap2018.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"

namespace VekMVxlan {

// The agent's own view of the L3 VNI inputs that the decapsulation module needs decided:
// which VRF each SBD VLAN serves, and which VLAN each remote VNI belongs to. It mirrors
// what it has seen so that a removal still knows the value that went, and it decides what
// the module is told of a remote VNI. It sends nothing itself.
class L3VniTable {
 public:
  // What the decapsulation module is to be told of one remote VNI. A table that the VNI is
  // local to says nothing.
  enum class Action { none, add, del };
  struct RemoteVniCommands {
    Action vniVlan = Action::none;
    Bridging::VlanId vlan;
    Action vniVrf = Action::none;
    Vrf::VrfIdMap::VrfId vrfId;
    friend bool operator==(const RemoteVniCommands&, const RemoteVniCommands&) = default;
  };
  using VrfIdOf = std::function<Vrf::VrfIdMap::VrfId(const L3::VrfName&)>;

  // ---- SBD VLANs ----

  Bridging::VlanIdOrNone vrfToSBDVlan(const L3::VrfName& vrf) const;
  bool vrfToSBDVlanHas(const L3::VrfName& vrf) const { return vrfToSBDVlan_.has(vrf); }
  const Qel::HashMap2018<L3::VrfName, Bridging::VlanId>& vrfToSBDVlans() const noexcept {
    return vrfToSBDVlan_;
  }
  std::optional<L3::VrfName> sbdVlanToVrf(Bridging::VlanId sbd) const;
  // Records the VRF's SBD VLAN and forgets the VRF's old one.
  void vrfToSBDVlanIs(const L3::VrfName& vrf, Bridging::VlanId sbd);
  // Forgets the VRF's SBD VLAN; gives the one it had, none if it had none.
  Bridging::VlanIdOrNone vrfToSBDVlanDel(const L3::VrfName& vrf);

  // ---- Remote VNIs ----

  // Takes the VNI's entry from the two remote tables, the static one first, and gives the
  // VLAN the VNI stands for: the new one, or on a miss the one it had (VLAN 1 if none).
  // Either table may be missing.
  Bridging::VlanId remoteVniIs(Vxlan::VniExtOrNone vni, const Vxlan::RemoteVniToVlanStatus* statik,
                               const Vxlan::RemoteVniToVlanStatus* irb);
  bool remoteVniToVlanHas(Vxlan::VniExtOrNone vni) const { return remoteVniToVlan_.has(vni); }

  // What to send for a remote VNI whose VLAN is `vlan` (from remoteVniIs). A VNI that is
  // local as a VLAN VNI or as a VRF VNI keeps the local mapping of that kind. The VRF of a
  // remote VNI is the VRF whose SBD VLAN it belongs to, under its id now.
  RemoteVniCommands remoteVniCommands(Vxlan::VniExtOrNone vni, Bridging::VlanId vlan,
                                      bool localVlan, bool localVrf,
                                      const VrfIdOf& curVrfNameToId) const;

 private:
  Qel::HashMap2018<L3::VrfName, Bridging::VlanId> vrfToSBDVlan_;
  Qel::HashMap2018<Bridging::VlanId, L3::VrfName> sbdVlanToVrf_;
  Qel::HashMap2018<Vxlan::VniExtOrNone, Bridging::VlanId> remoteVniToVlan_;
};

}  // namespace VekMVxlan
