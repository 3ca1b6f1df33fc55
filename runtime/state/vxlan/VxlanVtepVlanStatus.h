#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/vxlan/VtepVlan.h"

namespace VekMVxlan {

// Which remote VTEP takes the flooded multicast of which VLAN: the flood sets turned
// round, for the readers that look a VTEP up. Written by the multicast agent only; it
// outlives the agent, so a restarted agent finds what its predecessor wrote.
class VxlanVtepVlanStatus : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kVlanStatus = 1 };
  using Keys = Qel::HashSet2018<VtepVlan>;

  std::string_view typeName() const override { return "VekMVxlan::VxlanVtepVlanStatus"; }

  bool vlanStatusHas(const VtepVlan& key) const { return vlanStatus_.has(key); }
  const Keys& vlanStatuses() const noexcept { return vlanStatus_.members(); }
  void vlanStatusIs(const VtepVlan& key) { vlanStatus_.is(*this, key); }
  void vlanStatusDel(const VtepVlan& key) { vlanStatus_.del(*this, key); }

 private:
  Qel::SetAttr<VtepVlan, kVlanStatus> vlanStatus_;
};

}  // namespace VekMVxlan
