#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/bridging/IgmpSnoopingEthGroup.h"

namespace Bridging::IgmpSnooping {

// The snooping state of one VLAN: its router ports and its groups with their members.
class VlanStatus : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kRouterIntf = 1, kEthGroup = 2 };
  using Intfs = Qel::HashSet2018<Lanx::IntfId>;
  using EthGroups = Qel::HashMap2018<Lanx::EthAddr, Lumo::Ptr<EthGroup>>;

  explicit VlanStatus(VlanId vlanId) : vlanId_(vlanId) {}
  std::string_view typeName() const override { return "Bridging::IgmpSnooping::VlanStatus"; }

  VlanId vlanId() const noexcept { return vlanId_; }

  bool routerIntfHas(Lanx::IntfId intf) const { return routerIntf_.has(intf); }
  const Intfs& routerIntfs() const noexcept { return routerIntf_.members(); }
  void routerIntfIs(Lanx::IntfId intf) { routerIntf_.is(*this, intf); }
  void routerIntfDel(Lanx::IntfId intf) { routerIntf_.del(*this, intf); }

  Lumo::Ptr<EthGroup const> ethGroup(const Lanx::EthAddr& addr) const { return ethGroup_.get(addr); }
  const EthGroups& ethGroups() const noexcept { return ethGroup_.members(); }
  // Finds or makes the group; the writer then sets its members.
  Lumo::Ptr<EthGroup> ethGroupIs(const Lanx::EthAddr& addr) {
    if (auto present = ethGroup_.get(addr)) return present;
    auto made = Lumo::makePtr<EthGroup>(addr);
    ethGroup_.is(*this, addr, made);
    return made;
  }
  void ethGroupDel(const Lanx::EthAddr& addr) { ethGroup_.del(*this, addr); }

 private:
  const VlanId vlanId_;
  Qel::SetAttr<Lanx::IntfId, kRouterIntf> routerIntf_;
  Qel::HashCollectionAttr<Lanx::EthAddr, Lumo::Ptr<EthGroup>, kEthGroup> ethGroup_;
};

}  // namespace Bridging::IgmpSnooping
