#include "intf/VekL3McastIntfSm.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "pipeline/McastAnyRxSet.h"
#include "runtime/qel/System.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIntfId.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

using Lanx::AddressFamily;

namespace {
// The mapping a receive path is given for an ifIndex that no longer stands for an interface.
constexpr std::uint64_t unmappedIntfId = 0xFFFFFFFF;
// The highest VLAN a VLAN interface may carry into the demultiplexer.
constexpr std::uint16_t maxVlanId = 4094;
}  // namespace

McastIntfModuleSm::McastIntfModuleSm(
    Lumo::Ptr<McastModuleManager> manager, Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
    Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup, Lumo::Ptr<Roots const> mcastIntfRoot,
    Lumo::Ptr<Roots const> mcastIntfRoot6,
    Lumo::Ptr<Interface::VrfDeviceIntfStatusDir const> vrfDeviceIntfStatusDir,
    Lumo::Ptr<IntfVlanId::Table const> intfVlanIdTable, Lumo::Ptr<Qel::Clock const> clock)
    : manager_(std::move(manager)),
      vekcsd_(std::move(vekcsd)),
      cmdConfigGroup_(std::move(cmdConfigGroup)),
      mcastIntfRoot_{std::move(mcastIntfRoot), std::move(mcastIntfRoot6)},
      vrfDeviceIntfStatusDir_(std::move(vrfDeviceIntfStatusDir)),
      intfVlanIdTable_(std::move(intfVlanIdTable)) {
  Qel::Clock::NotifieeConst::notifierIs(std::move(clock));
  intfVlanIdTableReactor_.publisherIs(const_cast<IntfVlanId::Table*>(intfVlanIdTable_.get()));
  intfVlanIdTableReactor_.isRegisteredIs(true);
  for (AddressFamily af : Lanx::bothFamilies) {
    mcastIntfRootReactor_.publisherIs(af, mcastIntfRoot_[af].get());
  }
  vrfDeviceIntfStatusDirReactor_.publisherIs(
      const_cast<Interface::VrfDeviceIntfStatusDir*>(vrfDeviceIntfStatusDir_.get()));
  vrfDeviceIntfStatusDirReactor_.isRegisteredIs(true);
  handleInitialized();
}

McastIntfModuleSm::~McastIntfModuleSm() {
  wakeupTimeDel();
  for (AddressFamily af : Lanx::bothFamilies) HN_NestedSm_McastIntfVrfSm_[af].smDelAll();
  HN_NestedSm_KernelVrfIntfStatusDir_.smDelAll();
}

// ---- Start ----

void McastIntfModuleSm::handleInitialized() {
  for (AddressFamily af : Lanx::bothFamilies) {
    for (const auto& member : mcastIntfRoot_[af]->vrfSms()) {
      HN_NestedSm_McastIntfVrfSm_[af].smIs(member.value);
    }
  }
  doFollowNamespaces();

  // What an earlier run left is brought in line with the state as it is now.
  std::vector<VrfIntfPair> standing;
  for (const auto& member : vekcsd_->mcastIntfs()) {
    standing.push_back(VrfIntfPair{member.value->vrfName(), member.key});
  }
  for (const VrfIntfPair& pair : standing) checkMcastIntf(pair.vrfName, pair.intfId);

  reviewTimerIs(reviewFillInterval, reviewMaxCredits, reviewMinDelay, reviewMaxDelay);
  reviewTimer_->doUpdateNextReviewImmediately();
  initialized_.is(*this, true);
}

void McastIntfModuleSm::reviewTimerIs(float fillInterval, unsigned maxCredits, float minDelay,
                                      float maxDelay) {
  reviewTimer_ = Lumo::makePtr<Dov::ReviewTimer>(this, fillInterval, maxCredits, minDelay,
                                                 maxDelay);
  reviewTimer_->reviewQuantumIs(reviewQuantum_);
}

void McastIntfModuleSm::reviewQuantumIs(double seconds) {
  reviewQuantum_ = seconds;
  if (reviewTimer_) reviewTimer_->reviewQuantumIs(seconds);
}

void McastIntfModuleSm::doUpdateNextReview() {
  if (reviewTimer_) reviewTimer_->doUpdateNextReviewImmediately();
}

// ---- Inputs ----

void McastIntfModuleSm::handleMcastIntfVrf(AddressFamily af, const L3::VrfName& vrfName) {
  McastIntfVrfSms& followers = HN_NestedSm_McastIntfVrfSm_[af];
  if (const auto root = mcastIntfRoot(af)->vrfSm(vrfName)) {
    followers.smIs(root);
    return;
  }
  if (const auto gone = followers.sm(vrfName)) {
    // Whatever the VRF still listed goes with it.
    gone->handleMcastVrf();
    followers.smDel(vrfName);
  }
}

void McastIntfModuleSm::handleKernelVrfIntfStatusDir(const Lumo::String& nsName) {
  // Changes of the namespaces' own directories come here too; they name no namespace.
  const auto dir = vrfDeviceIntfStatusDir_->childAs<Interface::DeviceVrfIntfStatusDir>(nsName);
  const std::optional<L3::VrfName> vrfName = L3::VrfName::fromNsName(nsName.view());
  if (dir && vrfName) {
    HN_NestedSm_KernelVrfIntfStatusDir_.smIs(dir);
    return;
  }
  const auto gone = HN_NestedSm_KernelVrfIntfStatusDir_.sm(nsName);
  if (!gone) return;
  // The namespace's interfaces have lost their devices. Every device is queued, whatever
  // its family: a check weighs both families, so one set is enough, and a second would
  // only check each interface twice.
  if (const auto devices = gone->kernelIntfs()) {
    for (const auto& device : devices->devices()) {
      changedVrfIntfIs(AddressFamily::ipv4, VrfIntfPair{gone->vrfName(), device.key});
    }
  }
  HN_NestedSm_KernelVrfIntfStatusDir_.smDel(nsName);
  doUpdateNextReview();
}

Lumo::Ptr<Interface::DeviceIntfStatusDir> McastIntfModuleSm::kernelIntfs(
    const L3::VrfName& vrfName) const {
  const auto sm = HN_NestedSm_KernelVrfIntfStatusDir_.sm(vrfName.nsName().str());
  return sm ? sm->kernelIntfs() : nullptr;
}

Lumo::String McastIntfModuleSm::deviceName(const L3::VrfName& vrfName,
                                           Lanx::IntfId intfId) const {
  const auto devices = kernelIntfs(vrfName);
  if (!devices) return {};
  const Interface::DeviceIntfStatus* device = devices->devices().find(intfId);
  return device ? device->deviceName : Lumo::String();
}

// ---- Decisions ----

bool McastIntfModuleSm::intfEnabled(const L3::VrfName& vrfName, Lanx::IntfId intfId) const {
  if (deviceName(vrfName, intfId).empty()) {
    VEK_TRACE(info, "Kernel device missing");
    return false;
  }
  const auto inRoot = [&](AddressFamily af) {
    const auto root = mcastIntfRoot(af)->vrfSm(vrfName);
    return root && root->multicastIntfHas(intfId);
  };
  const bool v4Enabled = inRoot(AddressFamily::ipv4);
  const bool v6Enabled = inRoot(AddressFamily::ipv6);
  VEK_TRACE(info, "v4Enabled: {} v6Enabled: {}", v4Enabled, v6Enabled);
  return v4Enabled || v6Enabled;
}

void McastIntfModuleSm::checkMcastIntf(const L3::VrfName& vrfName, Lanx::IntfId intfId) {
  const bool enabled = intfEnabled(vrfName, intfId);
  VEK_TRACE(info, "checkMcastIntf( {}, {} ) : Enabled {}", vrfName, intfId, enabled);
  // Dropped and made again even when it stays enabled: the device may have a new name.
  const Lumo::String device = deviceName(vrfName, intfId);
  vekcsd_->mcastIntfDel(intfId);
  manager_->deleteIntfModule(vrfName, intfId, device);
  if (enabled) {
    vekcsd_->mcastIntfIs(manager_->createIntfModule(vrfName, intfId, device, true, cmdConfigGroup_));
    if (intfVlanIdTable_->vlans().has(intfId)) doIntfIdToVlanId(intfId);
  }
  updateIfIndex(vrfName, intfId, enabled);
}

void McastIntfModuleSm::updateIfIndex(const L3::VrfName& vrfName, Lanx::IntfId intfId,
                                      bool enabled) {
  VEK_TRACE(info, "updateIfIndex( {}, {} ) : Enabled {}", vrfName, intfId, enabled);
  std::optional<std::uint32_t> current;
  if (const auto devices = kernelIntfs(vrfName)) {
    const Interface::DeviceIntfStatus* device = devices->devices().find(intfId);
    if (device && device->ifIndex != 0) current = device->ifIndex;
  }
  const VrfNameAndIntfId key{{vrfName, intfId}};
  std::optional<std::uint32_t> old;
  if (const std::uint32_t* stored = ifIndexByVrfNameAndIntfId_.find(key)) old = *stored;

  const auto container = manager_->vrf(vrfName);
  const Lumo::Ptr<McastAnyRxSet> rxSet = container ? container->mcastAnyRxSet() : nullptr;
  if (old && (!enabled || current != old)) {
    VEK_TRACE(info, "Removing intfId mapping for ifIndex {} in VRF {}", *old, vrfName);
    if (rxSet) rxSet->setIfIndexIntfId(*old, unmappedIntfId);
    ifIndexByVrfNameAndIntfIdDel(key);
  }
  if (enabled && current) {
    VEK_TRACE(info, "Updating ifIndex {} to map to intf {} in VRF {}, currently mapped to intf {}",
              *current, intfId, vrfName, old == current ? intfId.name() : "none");
    if (rxSet) rxSet->setIfIndexIntfId(*current, intfId.value());
    ifIndexByVrfNameAndIntfIdIs(key, *current);
  }
}

void McastIntfModuleSm::updateIfIndexAll(const L3::VrfName& vrfName) {
  const auto devices = kernelIntfs(vrfName);
  if (!devices) return;
  std::vector<Lanx::IntfId> intfs;
  intfs.reserve(devices->devices().size());
  for (const auto& device : devices->devices()) intfs.push_back(device.key);
  for (Lanx::IntfId intfId : intfs) updateIfIndex(vrfName, intfId, intfEnabled(vrfName, intfId));
}

void McastIntfModuleSm::handleIntfIdToVlanId(Lanx::IntfId intfId) {
  if (!initialized()) return;
  doIntfIdToVlanId(intfId);
}

void McastIntfModuleSm::doIntfIdToVlanId(Lanx::IntfId intfId) {
  if (Lanx::VlanIntfId::isVlanIntfId(intfId) && Lanx::VlanIntfId::vlanId(intfId) > maxVlanId) {
    VEK_TRACE(warn, "vlanId for intfId {} is too large ({}), ignoring", intfId,
              Lanx::VlanIntfId::vlanId(intfId));
    return;
  }
  const Bridging::VlanIdOrNone vlanId = intfVlanIdTable_->intfIdToVlanId(intfId);
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& txDemuxer = manager_->txDemuxerModule();
  if (!txDemuxer) return;
  if (vekcsd_->mcastIntfHas(intfId)) {
    const Vek::GateId gate(0);
    VEK_TRACE(info, "Adding intfId ( {} ) vlanId ( {} ) to oGate ( {} ) entry in TxDemuxer",
              intfId, vlanId, gate);
    txDemuxer->addIntfToOutGate(intfId, vlanId, gate);
  } else {
    VEK_TRACE(info, "Deleting intfId ( {} ) to oGate entry in TxDemuxer", intfId);
    txDemuxer->deleteIntfToOutGate(intfId);
  }
}

// ---- Review ----

void McastIntfModuleSm::doFollowNamespaces() {
  std::vector<Lumo::String> namespaces;
  for (const auto& child : vrfDeviceIntfStatusDir_->children()) {
    if (!HN_NestedSm_KernelVrfIntfStatusDir_.sm(child.first)) namespaces.push_back(child.first);
  }
  for (const Lumo::String& ns : namespaces) handleKernelVrfIntfStatusDir(ns);
}

void McastIntfModuleSm::handleNotificationActive() {
  if (!initialized() || isZombie()) return;
  // A namespace whose devices came while notification was off (the default one comes as the
  // agent starts) is followed from now on.
  doFollowNamespaces();
  if (reviewPending()) doUpdateNextReview();
}

template <typename Iterator>
bool McastIntfModuleSm::doReviewOne(Iterator& iter, AddressFamily af) {
  if (iter.done()) return false;
  const VrfIntfPair pair = iter.currNodeMaybeStale().key;
  checkMcastIntf(pair.vrfName, pair.intfId);
  changedVrfIntfDel(af, pair);
  iter.advance();
  return true;
}

void McastIntfModuleSm::handleClock() {
  if (!initialized() || isZombie() || !hasNotificationActive()) return;
  VEK_TRACE(info, "Starting review");
  const double start = Qel::System::currentTime();
  const double deadline = start + reviewTimer_->reviewQuantum();
  ++reviewSlices_;
  const auto startAt = [](const ChangedVrfIntfs& set, const Qel::Optional<VrfIntfPair>& mark) {
    return mark.hasValue() ? set.iteratorAt(mark.value()) : set.iterator();
  };
  using Iterator = decltype(startAt(changedVrfIntfs(AddressFamily::ipv4), {}));
  Lanx::ByFamily<Iterator> iters{
      startAt(changedVrfIntfs(AddressFamily::ipv4), bookmarkVrfIntf_[AddressFamily::ipv4]),
      startAt(changedVrfIntfs(AddressFamily::ipv6), bookmarkVrfIntf_[AddressFamily::ipv6])};
  const auto bookmarkAt = [](const auto& at) {
    return at.done() ? Qel::Optional<VrfIntfPair>() : Qel::Optional<VrfIntfPair>(at.currNodeMaybeStale().key);
  };
  bool suspended = false;
  double stepStart = start;
  for (bool worked = true; worked && !suspended;) {
    worked = false;
    for (AddressFamily af : Lanx::bothFamilies) {
      if (!doReviewOne(iters[af], af)) continue;
      worked = true;
      const double now = Qel::System::currentTime();
      longestReviewStep_ = std::max(longestReviewStep_, now - stepStart);
      stepStart = now;
      if (now >= deadline) {
        suspended = true;
        break;
      }
    }
  }
  for (AddressFamily af : Lanx::bothFamilies) bookmarkVrfIntf_[af] = bookmarkAt(iters[af]);
  longestReviewSlice_ = std::max(longestReviewSlice_, stepStart - start);
  if (suspended) {
    VEK_TRACE(info, "Suspending review");
    reviewTimer_->doUpdateNextReviewImmediately();
  } else if (reviewPending()) {
    reviewTimer_->doUpdateNextReviewImmediately();
  } else {
    VEK_TRACE(info, "Reviewed all vrf intfs");
  }
}

}  // namespace VekL3Mcast
