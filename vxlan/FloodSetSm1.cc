#include "vxlan/FloodSetSm1.h"

#include <vector>

#include "runtime/trace/Trace.h"
#include "vxlan/OismFloodSetSm0.h"
#include "vxlan/VekMVxlanVtepSm.h"

namespace VekMVxlan {

FloodSetSm1::FloodSetSm1(OismFloodSetSm0* parent, Lumo::Ptr<OismVlanFloodSet const> floodSet)
    : Qel::NotifieeConstOf<OismVlanFloodSet>(this), parent_(parent) {
  notifierIs(std::move(floodSet));
  handleInitialized();
}

void FloodSetSm1::handleInitialized() { scanIter_.emplace(notifier()->vteps().iterator()); }

void FloodSetSm1::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == OismVlanFloodSet::kVtep) handleVtep0(*static_cast<const Lanx::IpGenAddr*>(key));
}

bool FloodSetSm1::doInputScan0(ScanBudget& budget) {
  if (!scanIter_) return true;
  while (!scanIter_->done()) {
    if (budget.shouldYield()) return false;
    const Lanx::IpGenAddr vtep = scanIter_->currNodeMaybeStale().key;
    scanIter_->advance();
    // A member that went on the way was worked when it went.
    if (notifier()->vtepHas(vtep)) doVtep(vtep);
    budget.itemDone();
  }
  scanIter_.reset();
  return true;
}

void FloodSetSm1::handleVtep0(const Lanx::IpGenAddr& vtep) {
  if (parent_->deferToScan(vlan(), vtep)) return;
  doVtep(vtep);
}

void FloodSetSm1::doVtep(const Lanx::IpGenAddr& vtep) {
  const bool present = notifier()->vtepHas(vtep);
  if (present) {
    vtepsPut_.insert(vtep);
  } else {
    vtepsPut_.erase(vtep);
  }
  parent_->owner()->eventToJov_pipeline0(vlan(), vtep, present);
}

void FloodSetSm1::doDeleteAll() {
  if (notifier()->vteps().size() != vtepsPut_.size()) {
    VEK_TRACE(debug,
              "We missed notifications that happened to vtep before the enclosing entity got "
              "deleted");
  }
  std::vector<Lanx::IpGenAddr> gone;
  gone.reserve(vtepsPut_.size());
  for (const auto& member : vtepsPut_) gone.push_back(member.key);
  vtepsPut_.clear();
  scanIter_.reset();
  for (const Lanx::IpGenAddr& vtep : gone) {
    parent_->owner()->eventToJov_pipeline0(vlan(), vtep, false);
  }
}

}  // namespace VekMVxlan
