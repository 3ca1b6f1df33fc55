#pragma once

#include <cstddef>
#include <string_view>

#include "runtime/dov/TaskAttribute.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/BacklogAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/Optional.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "vxlan/NestedSm_FloodSet.h"
#include "vxlan/VekL2MVxlanInModule.h"
#include "vxlan/VekVlanVtep.h"

namespace VekL3Mcast {

// Copies the flood sets of central state, per VLAN a set of VTEPs, into the flood-set
// table of the L2 encapsulation module. Every change records its (VLAN, VTEP) in a
// backlog; the task reads the flood set again for each, so a VTEP that comes and goes
// before its turn costs one delete and no add.
class VekOismFloodSetSm : public Qel::StateMachine,
                          public Qel::NotifieeConstOf<Routing::Multicast::Evpn::OismFloodSet> {
 public:
  using OismFloodSet = Routing::Multicast::Evpn::OismFloodSet;
  using OismVlanFloodSet = Routing::Multicast::Evpn::OismVlanFloodSet;
  static constexpr Dov::TaskPriority taskPriority = 3;

  VekOismFloodSetSm(Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanInModule,
                    Lumo::Ptr<OismFloodSet const> oismFloodSet,
                    Lumo::Ptr<Dov::TaskScheduler> scheduler);
  ~VekOismFloodSetSm() override;
  std::string_view typeName() const override { return "VekL3Mcast::VekOismFloodSetSm"; }

  const OismFloodSet* oismFloodSet() const noexcept { return notifier(); }
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn>& l2VxlanInModule() const noexcept {
    return l2VxlanInModule_;
  }
  Lumo::Ptr<NestedSm_FloodSet> floodSet(Bridging::VlanId vlan) const {
    return HN_NestedSm_FloodSet_.sm(vlan);
  }
  std::size_t floodSetCount() const noexcept { return HN_NestedSm_FloodSet_.size(); }

  void vlanVtepBacklogIs(const VekVlanVtep& key) { vlanVtepBacklog_.is(key); }
  std::size_t vlanVtepBacklogCount() const noexcept { return vlanVtepBacklog_.size(); }
  Dov::Task* oismFloodSetTask() const noexcept { return oismFloodSetTask_.get(); }

  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;
  // A VLAN's flood set came or went.
  void handleFloodSet(Bridging::VlanId vlan);
  void processVlanVtepBacklog(const VekVlanVtep& key);
  void handleVlanVtepTaskRun();

 private:
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanInModule_;
  const Lumo::Ptr<Dov::TaskScheduler> scheduler_;
  Qel::NestedSmCollection<VekOismFloodSetSm, NestedSm_FloodSet, &OismVlanFloodSet::vlanId>
      HN_NestedSm_FloodSet_{this};
  Qel::BacklogAttr<VekVlanVtep, "vlanVtepBacklog"> vlanVtepBacklog_;
  Qel::Optional<VekVlanVtep> vlanVtepBookmark_;
  Dov::TaskAttribute<VekOismFloodSetSm, &VekOismFloodSetSm::handleVlanVtepTaskRun>
      oismFloodSetTask_{this};
};

}  // namespace VekL3Mcast
