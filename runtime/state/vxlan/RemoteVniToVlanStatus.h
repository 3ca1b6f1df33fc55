#pragma once

#include <string>
#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VniExtOrNone.h"

namespace Vxlan {

// Remote VNI to VLAN mappings of one VXLAN interface, as one source ("static" or "irb")
// wrote them: the VLAN that traffic of a VNI learnt from a remote tunnel end belongs to.
class RemoteVniToVlanStatus : public Lanx::StateEntity<"Vxlan::RemoteVniToVlanStatus"> {
 public:
  enum : Qel::AttributeId { kVniToVlan = 1 };
  using VniToVlans = Qel::HashMap2018<VniExtOrNone, Bridging::VlanId>;

  // "vxlan/remoteVniToVlan/<source>/<interface>".
  static std::string mountPath(std::string_view source, const Lanx::IntfId& intf) {
    return "vxlan/remoteVniToVlan/" + std::string(source) + "/" + intf.name();
  }

  const Bridging::VlanId* vniToVlan(VniExtOrNone vni) const { return vniToVlan_.find(vni); }
  const VniToVlans& vniToVlans() const noexcept { return vniToVlan_.members(); }
  void vniToVlanIs(VniExtOrNone vni, Bridging::VlanId vlan) { vniToVlan_.is(*this, vni, vlan); }
  void vniToVlanDel(VniExtOrNone vni) { vniToVlan_.del(*this, vni); }

 private:
  Qel::HashCollectionAttr<VniExtOrNone, Bridging::VlanId, kVniToVlan> vniToVlan_;
};

}  // namespace Vxlan
