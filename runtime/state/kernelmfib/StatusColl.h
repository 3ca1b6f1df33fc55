#pragma once

#include <string>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/RoutingPath.h"

namespace Routing::KernelMfib {

// The VRFs of one family whose multicast FIB is programmed by this agent: what the agent
// tells the kernel side, one member per started VRF.
class StatusColl : public Lanx::StateEntity<"Routing::KernelMfib::StatusColl"> {
 public:
  enum : Qel::AttributeId { kVrfStatus = 1 };

  static std::string path(Lanx::AddressFamily af) { return routingPath(af, "kernelmfib/status"); }

  bool vrfStatusHas(const L3::VrfName& vrf) const { return vrfStatus_.has(vrf); }
  const Qel::HashSet2018<L3::VrfName>& vrfStatuses() const noexcept {
    return vrfStatus_.members();
  }
  void vrfStatusIs(const L3::VrfName& vrf) { vrfStatus_.is(*this, vrf); }
  void vrfStatusDel(const L3::VrfName& vrf) { vrfStatus_.del(*this, vrf); }

 private:
  Qel::SetAttr<L3::VrfName, kVrfStatus> vrfStatus_;
};

}  // namespace Routing::KernelMfib
