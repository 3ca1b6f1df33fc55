#include "vxlan/VekOismFloodSetSm.h"

#include "runtime/lumo/Assert.h"
#include "runtime/qel/ProcessBacklog.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

VekOismFloodSetSm::VekOismFloodSetSm(Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanInModule,
                                     Lumo::Ptr<OismFloodSet const> oismFloodSet,
                                     Lumo::Ptr<Dov::TaskScheduler> scheduler)
    : Qel::NotifieeConstOf<OismFloodSet>(this),
      l2VxlanInModule_(std::move(l2VxlanInModule)),
      scheduler_(std::move(scheduler)) {
  QEL_ASSERT(oismFloodSet && l2VxlanInModule_,
             "Pointer SM args cannot be null unless they are marked Optional");
  notifierIs(std::move(oismFloodSet));
  isRegisteredNotifieeIs(true);
  handleInitialized();
}

VekOismFloodSetSm::~VekOismFloodSetSm() {
  hasNotificationActiveIs(false);
  oismFloodSetTask_.del();
}

void VekOismFloodSetSm::handleInitialized() {
  oismFloodSetTask_.is(scheduler_, taskPriority, Lumo::String("VlanVtepTask"));
  for (const auto& member : notifier()->floodSets()) handleFloodSet(member.key);
}

void VekOismFloodSetSm::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == OismFloodSet::kFloodSet) handleFloodSet(*static_cast<const Bridging::VlanId*>(key));
}

void VekOismFloodSetSm::handleFloodSet(Bridging::VlanId vlan) {
  if (auto floodSet = notifier()->floodSet(vlan)) {
    HN_NestedSm_FloodSet_.smIs(floodSet);
    return;
  }
  // The set that went still holds its VTEPs: each is recorded, and its turn finds it gone.
  if (auto gone = HN_NestedSm_FloodSet_.sm(vlan)) {
    gone->handleAllVlanVtep();
    HN_NestedSm_FloodSet_.smDel(vlan);
  }
}

void VekOismFloodSetSm::processVlanVtepBacklog(const VekVlanVtep& key) {
  const auto floodSet = notifier()->floodSet(key.vlan);
  if (floodSet && floodSet->vtepHas(key.vtep)) {
    VEK_TRACE(debug, "Adding vtep {} to vlan {} floodset", key.vtep, key.vlan);
    l2VxlanInModule_->addVlanFloodSetEntry(key.vlan, key.vtep);
  } else {
    VEK_TRACE(debug, "Deleting vtep {} from vlan {} floodset", key.vtep, key.vlan);
    l2VxlanInModule_->deleteVlanFloodSetEntry(key.vlan, key.vtep);
  }
}

void VekOismFloodSetSm::handleVlanVtepTaskRun() {
  QelLumo::DvBacklogTaskRun(*oismFloodSetTask_.get(), vlanVtepBacklog_, vlanVtepBookmark_, this,
                            &VekOismFloodSetSm::processVlanVtepBacklog);
}

}  // namespace VekL3Mcast
