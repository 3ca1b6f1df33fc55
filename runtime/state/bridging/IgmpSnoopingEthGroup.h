#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"

namespace Bridging::IgmpSnooping {

// One snooped Ethernet group of a VLAN: the interfaces that have members of it. Members
// that are multicast tunnels stand for remote VTEPs.
class EthGroup : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMemberIntf = 1 };
  using Intfs = Qel::HashSet2018<Lanx::IntfId>;

  explicit EthGroup(Lanx::EthAddr addr) : addr_(addr) {}
  std::string_view typeName() const override { return "Bridging::IgmpSnooping::EthGroup"; }

  const Lanx::EthAddr& addr() const noexcept { return addr_; }

  bool memberIntfHas(Lanx::IntfId intf) const { return memberIntf_.has(intf); }
  const Intfs& memberIntfs() const noexcept { return memberIntf_.members(); }
  void memberIntfIs(Lanx::IntfId intf) { memberIntf_.is(*this, intf); }
  void memberIntfDel(Lanx::IntfId intf) { memberIntf_.del(*this, intf); }

 private:
  const Lanx::EthAddr addr_;
  Qel::SetAttr<Lanx::IntfId, kMemberIntf> memberIntf_;
};

}  // namespace Bridging::IgmpSnooping
