#include "vxlan/NestedSm_FloodSet.h"

#include "runtime/trace/Trace.h"
#include "vxlan/VekOismFloodSetSm.h"

namespace VekL3Mcast {

NestedSm_FloodSet::NestedSm_FloodSet(VekOismFloodSetSm* owner,
                                     Lumo::Ptr<OismVlanFloodSet const> floodSet)
    : Qel::NotifieeConstOf<OismVlanFloodSet>(this), owner_(owner) {
  notifierIs(std::move(floodSet));
  handleInitialized();
}

void NestedSm_FloodSet::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == OismVlanFloodSet::kVtep) handleVtep(*static_cast<const Lanx::IpGenAddr*>(key));
}

void NestedSm_FloodSet::handleAllVlanVtep() {
  VEK_TRACE(debug, "Handle all VTEPs in vlan floodset {}", vlan());
  for (const auto& member : notifier()->vteps()) {
    owner_->vlanVtepBacklogIs(VekVlanVtep{member.key, vlan()});
  }
  owner_->oismFloodSetTask()->scheduleTask();
}

// Additions and deletions alike: the backlog's work reads the flood set again.
void NestedSm_FloodSet::handleVtep(const Lanx::IpGenAddr& vtep) {
  owner_->vlanVtepBacklogIs(VekVlanVtep{vtep, vlan()});
  owner_->oismFloodSetTask()->scheduleTask();
}

}  // namespace VekL3Mcast
