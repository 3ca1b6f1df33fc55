#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"

namespace VekMVxlan {

// The overlay groups of one VLAN that have tunnel mappings, so that the pipeline knows
// when the VLAN's last one went.
class VlanToOverlayGroup : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kOverlayGroup = 1 };

  explicit VlanToOverlayGroup(Bridging::VlanId vlanId) : vlanId_(vlanId) {}
  std::string_view typeName() const override { return "VekMVxlan::VlanToOverlayGroup"; }

  Bridging::VlanId vlanId() const noexcept { return vlanId_; }
  bool overlayGroupHas(const Lanx::IpGenAddr& group) const { return overlayGroup_.has(group); }
  std::size_t overlayGroups() const noexcept { return overlayGroup_.size(); }
  const Qel::HashSet2018<Lanx::IpGenAddr>& overlayGroupSet() const noexcept {
    return overlayGroup_.members();
  }
  void overlayGroupIs(const Lanx::IpGenAddr& group) { overlayGroup_.is(*this, group); }
  void overlayGroupDel(const Lanx::IpGenAddr& group) { overlayGroup_.del(*this, group); }

 private:
  Bridging::VlanId vlanId_;
  Qel::SetAttr<Lanx::IpGenAddr, kOverlayGroup> overlayGroup_;
};

}  // namespace VekMVxlan
