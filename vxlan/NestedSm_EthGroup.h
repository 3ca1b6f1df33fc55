#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/bridging/IgmpSnoopingEthGroup.h"

namespace VekL3Mcast {

class NestedSm_GmpVlanStatus;

// The reactor of one snooped group: each member that comes or goes goes to the owner.
class NestedSm_EthGroup : public Qel::StateMachine,
                          public Qel::NotifieeConstOf<Bridging::IgmpSnooping::EthGroup> {
 public:
  using EthGroup = Bridging::IgmpSnooping::EthGroup;

  NestedSm_EthGroup(NestedSm_GmpVlanStatus* vlanSm, Lumo::Ptr<EthGroup const> group);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_EthGroup"; }

  const Lanx::EthAddr& addr() const noexcept { return notifier()->addr(); }

  // A group that comes, or comes back, is looked at whole.
  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

 private:
  NestedSm_GmpVlanStatus* vlanSm_;
};

}  // namespace VekL3Mcast
