#pragma once

#include <string_view>

#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/Fwd0RoutingEthType.h"

namespace Routing::Hardware {

// The hardware route status of one VRF, as far as multicast reads it: the forwarding
// device that takes each ether type's routed packets. A change publishes
// kFwd0EthTypeEntry with the ether type.
class VrfStatus : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kFwd0EthTypeEntry = 1 };
  using Entries = Qel::HashMap2018<Fwd0RoutingEthType, Lumo::String>;

  explicit VrfStatus(L3::VrfName name) : name_(std::move(name)) {}
  std::string_view typeName() const override { return "Routing::Hardware::VrfStatus"; }

  const L3::VrfName& name() const noexcept { return name_; }
  const Entries& fwd0EthTypeEntries() const noexcept { return fwd0EthTypeEntry_.members(); }
  // The device of an ether type, or null when the VRF has none for it.
  const Lumo::String* fwd0EthTypeEntry(Fwd0RoutingEthType ethType) const {
    return fwd0EthTypeEntry_.find(ethType);
  }

  // Writer side.
  void fwd0EthTypeEntryIs(Fwd0RoutingEthType ethType, const Lumo::String& device) {
    fwd0EthTypeEntry_.is(*this, ethType, device);
  }
  void fwd0EthTypeEntryDel(Fwd0RoutingEthType ethType) { fwd0EthTypeEntry_.del(*this, ethType); }

 private:
  L3::VrfName name_;
  Qel::HashCollectionAttr<Fwd0RoutingEthType, Lumo::String, kFwd0EthTypeEntry> fwd0EthTypeEntry_;
};

}  // namespace Routing::Hardware
