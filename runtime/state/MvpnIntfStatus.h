#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VrfId.h"

namespace Routing::Multicast {

// The provider interface of each VRF that has multicast VPN, by VRF id: a VLAN interface
// whose VLAN carries the VRF's provider tunnel. The routing agent writes it; the plug-in
// mounts it read-only. A change publishes kIntf with the VRF id.
class MvpnIntfStatus : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kIntf = 1 };
  using Members = Qel::HashMap2018<Vrf::VrfIdMap::VrfId, Lanx::IntfId>;

  static constexpr std::string_view mountPath() noexcept {
    return "Routing::Multicast::MvpnIntfStatus";
  }
  std::string_view typeName() const override { return "Routing::Multicast::MvpnIntfStatus"; }

  const Members& intfs() const noexcept { return intf_.members(); }
  // The interface of a VRF; the empty id when the VRF has none.
  Lanx::IntfId intf(Vrf::VrfIdMap::VrfId vrfId) const { return intf_.get(vrfId); }
  bool intfHas(Vrf::VrfIdMap::VrfId vrfId) const { return intf_.has(vrfId); }

  // Writer side.
  void intfIs(Vrf::VrfIdMap::VrfId vrfId, Lanx::IntfId intfId) { intf_.is(*this, vrfId, intfId); }
  void intfDel(Vrf::VrfIdMap::VrfId vrfId) { intf_.del(*this, vrfId); }
  void intfDelAll() { intf_.delAll(*this); }

 private:
  Qel::HashCollectionAttr<Vrf::VrfIdMap::VrfId, Lanx::IntfId, kIntf> intf_;
};

}  // namespace Routing::Multicast
