#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VashMapBase.h"
#include "runtime/state/VlanId.h"

namespace Irb::Multicast {

// The VLANs on which the IGMP proxy runs (and the same of MLD for IPv6): a shared-memory
// table keyed by VLAN. A change publishes kVlan with the VLAN.
class IgmpProxyStatus : public Lanx::StateEntity<"Irb::Multicast::IgmpProxyStatus">,
                        public Vash::VashMapBase {
 public:
  enum : Qel::AttributeId { kVlan = 1 };
  using Vlans = Qel::HashSet2018<Bridging::VlanId>;

  static constexpr std::string_view igmpPath = "irb/multicast/igmpProxyStatus";
  static std::string_view afMountPath(Lanx::AddressFamily af) {
    return af == Lanx::AddressFamily::ipv6 ? "irb/multicast/mldProxyStatus" : igmpPath;
  }

  const Vlans& vlans() const noexcept { return vlan_.members(); }
  bool vlanHas(Bridging::VlanId vlan) const { return vlan_.has(vlan); }
  bool empty() const noexcept { return vlan_.empty(); }

  // Writer side.
  void vlanIs(Bridging::VlanId vlan) { vlan_.is(*this, vlan); }
  void vlanDel(Bridging::VlanId vlan) { vlan_.del(*this, vlan); }

 private:
  Qel::SetAttr<Bridging::VlanId, kVlan> vlan_;
};

}  // namespace Irb::Multicast
