#include "vxlan/OismFloodSetSm0.h"

#include <vector>

#include "runtime/trace/Trace.h"
#include "vxlan/VekMVxlanVtepSm.h"

namespace VekMVxlan {

OismFloodSetSm0::OismFloodSetSm0(VxlanVtepVlanStatusSm* owner,
                                 Lumo::Ptr<OismFloodSet const> oismFloodSet,
                                 Lumo::Ptr<Dov::TaskScheduler> scheduler)
    : Qel::NotifieeConstOf<OismFloodSet>(this), owner_(owner), scheduler_(std::move(scheduler)) {
  notifierIs(std::move(oismFloodSet));
  isRegisteredNotifieeIs(true);
  handleInitialized();
}

OismFloodSetSm0::~OismFloodSetSm0() {
  hasNotificationActiveIs(false);
  task0_.del();
}

void OismFloodSetSm0::handleInitialized() {
  task0_.is(scheduler_, VxlanVtepVlanStatusSm::taskPriority, Lumo::String(scanTaskName));
}

void OismFloodSetSm0::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == OismFloodSet::kFloodSet) handleFloodSet0(*static_cast<const Bridging::VlanId*>(key));
}

void OismFloodSetSm0::handleFloodSet0(Bridging::VlanId vlan) {
  const auto floodSet = notifier()->floodSet(vlan);
  const auto child = HN_FloodSetSm1_.sm(vlan);
  // A set that went, or was replaced by another, takes its keys with it.
  if (child && child->notifier() != floodSet.get()) child->doDeleteAll();
  if (!floodSet) {
    if (child == scanChild_) scanChild_.reset();
    HN_FloodSetSm1_.smDel(vlan);
    return;
  }
  const auto made = HN_FloodSetSm1_.smIs(floodSet);
  if (made == scanChild_) scanChild_.reset();
  // Worked whole now; the scan, if it meets the VLAN later, finds it done.
  ScanBudget unlimited;
  made->doInputScan0(unlimited);
}

void OismFloodSetSm0::handleTask0Run() {
  if (!scanDone_) doInputScan0();
  doDeferred();
}

void OismFloodSetSm0::doInputScan0() {
  budget_.task = task0_.get();
  budget_.items = 0;
  if (!vlanIter_) vlanIter_.emplace(notifier()->floodSets().iterator());
  while (true) {
    if (scanChild_) {
      if (!scanChild_->doInputScan0(budget_)) break;
      scanChild_.reset();
      ++children_;
    }
    if (vlanIter_->done()) {
      VEK_TRACE(info, "{} scan complete. Processed {} children. ", "OismFloodSetSm0", children_);
      VEK_TRACE(info, "{} scan, and parent scan, complete.", "VxlanVtepVlanStatusSm");
      vlanIter_.reset();
      scanDone_ = true;
      owner_->handleInitialScanDone();
      return;
    }
    if (budget_.shouldYield()) break;
    const Bridging::VlanId vlan = vlanIter_->currNodeMaybeStale().key;
    vlanIter_->advance();
    budget_.itemDone();
    const auto floodSet = notifier()->floodSet(vlan);
    if (!floodSet) continue;
    scanChild_ = HN_FloodSetSm1_.sm(vlan);
    if (!scanChild_) scanChild_ = HN_FloodSetSm1_.smIs(floodSet);
  }
  VEK_TRACE(info, "{} {} yielding after {} iterations ({} total items)", "VxlanVtepVlanStatusSm",
            "OismFloodSetSm0", budget_.items, budget_.total);
  VEK_TRACE(info, "Initial scan yielding for child SM VxlanVtepVlanStatusSm.");
  task0_->scheduleTask();
}

bool OismFloodSetSm0::deferToScan(Bridging::VlanId vlan, const Lanx::IpGenAddr& vtep) {
  if (!task0_ || !task0_->taskCurrentlyRunning()) return false;
  deferred_.insert(VtepVlan{vtep, vlan});
  return true;
}

void OismFloodSetSm0::doDeferred() {
  if (deferred_.empty()) return;
  std::vector<VtepVlan> keys;
  keys.reserve(deferred_.size());
  for (const auto& member : deferred_) keys.push_back(member.key);
  deferred_.clear();
  for (const VtepVlan& key : keys) {
    if (const auto child = HN_FloodSetSm1_.sm(key.vlan)) child->doVtep(key.vtep);
  }
}

}  // namespace VekMVxlan
