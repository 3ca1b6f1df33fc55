#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/HwVrfStatus.h"

namespace Routing::Hardware {

// The hardware route status ("routing/hardware/route/status"): one status per VRF. A VRF
// that comes or goes publishes kVrfStatus with the VRF name.
class RouteStatus : public Lanx::StateEntity<"Routing::Hardware::RouteStatus"> {
 public:
  enum : Qel::AttributeId { kVrfStatus = 1 };
  using Members = Qel::HashMap2018<L3::VrfName, Lumo::Ptr<VrfStatus>>;

  static constexpr std::string_view path = "routing/hardware/route/status";

  const Members& vrfStatuses() const noexcept { return vrfStatus_.members(); }
  Lumo::Ptr<VrfStatus const> vrfStatus(const L3::VrfName& vrf) const { return vrfStatus_.get(vrf); }

  // Writer side: the status of a VRF, made if there is none.
  Lumo::Ptr<VrfStatus> vrfStatusIs(const L3::VrfName& vrf) {
    if (Lumo::Ptr<VrfStatus> present = vrfStatus_.get(vrf)) return present;
    auto made = Lumo::makePtr<VrfStatus>(vrf);
    vrfStatus_.is(*this, vrf, made);
    return made;
  }
  void vrfStatusDel(const L3::VrfName& vrf) { vrfStatus_.del(*this, vrf); }

 private:
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<VrfStatus>, kVrfStatus> vrfStatus_;
};

}  // namespace Routing::Hardware
