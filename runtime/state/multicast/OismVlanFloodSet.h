#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"

namespace Routing::Multicast::Evpn {

// The VTEPs that take the flooded multicast of one VLAN.
class OismVlanFloodSet : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kVtep = 1 };
  using Vteps = Qel::HashSet2018<Lanx::IpGenAddr>;

  explicit OismVlanFloodSet(Bridging::VlanId vlanId) : vlanId_(vlanId) {}
  std::string_view typeName() const override {
    return "Routing::Multicast::Evpn::OismVlanFloodSet";
  }

  Bridging::VlanId vlanId() const noexcept { return vlanId_; }

  bool vtepHas(const Lanx::IpGenAddr& vtep) const { return vtep_.has(vtep); }
  const Vteps& vteps() const noexcept { return vtep_.members(); }
  void vtepIs(const Lanx::IpGenAddr& vtep) { vtep_.is(*this, vtep); }
  void vtepDel(const Lanx::IpGenAddr& vtep) { vtep_.del(*this, vtep); }

 private:
  const Bridging::VlanId vlanId_;
  Qel::SetAttr<Lanx::IpGenAddr, kVtep> vtep_;
};

}  // namespace Routing::Multicast::Evpn
