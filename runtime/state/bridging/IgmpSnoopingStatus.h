#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/bridging/IgmpSnoopingVlanStatus.h"

namespace Bridging::IgmpSnooping {

// Snooped group membership by VLAN, of IGMP ("bridging/igmpsnooping/forwarding/status")
// and of MLD ("bridging/mldsnooping/forwarding/status").
class Status : public Lanx::StateEntity<"Bridging::IgmpSnooping::Status"> {
 public:
  enum : Qel::AttributeId { kVlanStatus = 1 };
  using VlanStatuses = Qel::HashMap2018<VlanId, Lumo::Ptr<VlanStatus>>;

  static constexpr std::string_view igmpPath = "bridging/igmpsnooping/forwarding/status";
  static constexpr std::string_view mldPath = "bridging/mldsnooping/forwarding/status";

  Lumo::Ptr<VlanStatus const> vlanStatus(VlanId vlan) const { return vlanStatus_.get(vlan); }
  const VlanStatuses& vlanStatuses() const noexcept { return vlanStatus_.members(); }
  // Finds or makes the VLAN's state; the writer then fills it.
  Lumo::Ptr<VlanStatus> vlanStatusIs(VlanId vlan) {
    if (auto present = vlanStatus_.get(vlan)) return present;
    auto made = Lumo::makePtr<VlanStatus>(vlan);
    vlanStatus_.is(*this, vlan, made);
    return made;
  }
  void vlanStatusDel(VlanId vlan) { vlanStatus_.del(*this, vlan); }

 private:
  Qel::HashCollectionAttr<VlanId, Lumo::Ptr<VlanStatus>, kVlanStatus> vlanStatus_;
};

}  // namespace Bridging::IgmpSnooping
