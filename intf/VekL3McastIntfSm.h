#pragma once

#include <cstdint>
#include <string_view>

#include "intf/NestedSm_KernelVrfIntfStatusDir.h"
#include "intf/NestedSm_McastIntfVrfSm.h"
#include "intf/NotificationWatch.h"
#include "intf/VrfIntfPair.h"
#include "intf/VrfNameAndIntfIdKey.h"
#include "pipeline/VekL3McastModuleManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Clock.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/Optional.h"
#include "runtime/qel/ReviewTimer.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/ByFamily.h"
#include "runtime/state/ByFamilyAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/intf/IntfVlanIdTable.h"
#include "runtime/state/intf/VrfDeviceIntfStatusDir.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

// Decides which interfaces of which VRF take part in multicast forwarding. An interface is
// enabled when its VRF's namespace has a kernel device for it and it is a multicast
// interface of the VRF in either family. For each enabled interface the tracker keeps a
// transmit-only McastIntf, the ifIndex-to-interface mapping in the VRF's receive paths, and
// the interface's VLAN entry in the demultiplexer.
//
// Changes of the multicast interfaces are queued by VRF and interface, one set per family,
// and worked off under a review timer in slices of reviewQuantum seconds, so that a burst
// cannot hold the agent thread; a slice that runs out of time leaves a bookmark in each set
// and the next one resumes there. A kernel device change is checked at once.
class McastIntfModuleSm : public Qel::StateMachine, public Qel::Clock::NotifieeConst {
 public:
  enum : Qel::AttributeId {
    kChangedVrfIntf = 1,
    kChangedVrfIntf6,
    kIfIndexByVrfNameAndIntfId,
    kInitialized,
  };
  using Roots = Routing::Multicast::MulticastIntfsAppRootSmColl;
  using ChangedVrfIntfs = Qel::HashSet2018<VrfIntfPair>;

  // The key of the ifIndex table.
  using VrfNameAndIntfId = VrfNameAndIntfIdKey;

  static constexpr float reviewFillInterval = 1.0f;
  static constexpr unsigned reviewMaxCredits = 4;
  static constexpr float reviewMinDelay = 0.01f;
  static constexpr float reviewMaxDelay = 0.05f;
  static constexpr double defaultReviewQuantum = 0.5;
  // The ifIndex a receive path maps to when it maps to no interface.
  static constexpr std::uint32_t noIntfId = 0xFFFFFFFF;

  McastIntfModuleSm(Lumo::Ptr<McastModuleManager> manager, Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                    Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
                    Lumo::Ptr<Roots const> mcastIntfRoot, Lumo::Ptr<Roots const> mcastIntfRoot6,
                    Lumo::Ptr<Interface::VrfDeviceIntfStatusDir const> vrfDeviceIntfStatusDir,
                    Lumo::Ptr<IntfVlanId::Table const> intfVlanIdTable,
                    Lumo::Ptr<Qel::Clock const> clock);
  ~McastIntfModuleSm() override;
  std::string_view typeName() const override { return "VekL3Mcast::McastIntfModuleSm"; }

  // ---- Operations ----

  // The kernel device name of the interface in the VRF's namespace; empty if none.
  Lumo::String deviceName(const L3::VrfName& vrfName, Lanx::IntfId intfId) const;
  bool intfEnabled(const L3::VrfName& vrfName, Lanx::IntfId intfId) const;
  // Drops what stands for the interface and, if it is enabled, makes it again.
  void checkMcastIntf(const L3::VrfName& vrfName, Lanx::IntfId intfId);
  void updateIfIndex(const L3::VrfName& vrfName, Lanx::IntfId intfId, bool enabled);
  // Sends the mapping of every interface of the VRF's namespace again: called when the
  // VRF's receive paths are made.
  void updateIfIndexAll(const L3::VrfName& vrfName);

  // ---- Reactors ----

  void handleInitialized() override;
  // Follows every namespace with a device directory that is not followed yet.
  void doFollowNamespaces();
  void handleClock() override;
  // A review that fell due while notification was off was spent doing nothing: the work
  // still queued asks for one again once notification is back.
  void handleNotificationActive();
  void handleIntfIdToVlanId(Lanx::IntfId intfId);
  // Follows the VRF's multicast interfaces of the family while the VRF has them.
  void handleMcastIntfVrf(Lanx::AddressFamily af, const L3::VrfName& vrfName);
  void handleKernelVrfIntfStatusDir(const Lumo::String& nsName);

  // ---- Attributes ----

  const Lumo::Ptr<McastModuleManager>& manager() const noexcept { return manager_; }
  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd() const noexcept { return vekcsd_; }
  const Lumo::Ptr<Vek::CmdConfigGroup>& cmdConfigGroup() const noexcept { return cmdConfigGroup_; }
  const Lumo::Ptr<Roots const>& mcastIntfRoot(Lanx::AddressFamily af) const noexcept {
    return mcastIntfRoot_[af];
  }
  const Lumo::Ptr<Interface::VrfDeviceIntfStatusDir const>& vrfDeviceIntfStatusDir()
      const noexcept {
    return vrfDeviceIntfStatusDir_;
  }
  const Lumo::Ptr<IntfVlanId::Table const>& intfVlanIdTable() const noexcept {
    return intfVlanIdTable_;
  }

  bool mcastIntfVrfSmHas(const L3::VrfName& vrfName, Lanx::AddressFamily af) const {
    return HN_NestedSm_McastIntfVrfSm_[af].has(vrfName);
  }
  Lumo::Ptr<NestedSm_KernelVrfIntfStatusDir> kernelVrfIntfStatusDir(
      const Lumo::String& nsName) const {
    return HN_NestedSm_KernelVrfIntfStatusDir_.sm(nsName);
  }

  const ChangedVrfIntfs& changedVrfIntfs(Lanx::AddressFamily af) const noexcept {
    return changedVrfIntf_[af].members();
  }
  void changedVrfIntfIs(Lanx::AddressFamily af, const VrfIntfPair& pair) {
    changedVrfIntf_[af].is(*this, pair);
  }
  void changedVrfIntfDel(Lanx::AddressFamily af, const VrfIntfPair& pair) {
    changedVrfIntf_[af].del(*this, pair);
  }
  // Asks for a review, once the review timer stands.
  void doUpdateNextReview();

  const Qel::Optional<VrfIntfPair>& bookmarkVrfIntf(Lanx::AddressFamily af) const noexcept {
    return bookmarkVrfIntf_[af];
  }

  // The ifIndex last sent for an interface; 0 if none.
  std::uint32_t ifIndexByVrfNameAndIntfId(const VrfNameAndIntfId& key) const {
    return ifIndexByVrfNameAndIntfId_.get(key);
  }
  bool ifIndexByVrfNameAndIntfIdHas(const VrfNameAndIntfId& key) const {
    return ifIndexByVrfNameAndIntfId_.has(key);
  }
  void ifIndexByVrfNameAndIntfIdIs(const VrfNameAndIntfId& key, std::uint32_t ifIndex) {
    ifIndexByVrfNameAndIntfId_.is(*this, key, ifIndex);
  }
  void ifIndexByVrfNameAndIntfIdDel(const VrfNameAndIntfId& key) {
    ifIndexByVrfNameAndIntfId_.del(*this, key);
  }

  const Lumo::Ptr<Dov::ReviewTimer>& reviewTimer() const noexcept { return reviewTimer_; }
  void reviewTimerIs(float fillInterval, unsigned maxCredits, float minDelay, float maxDelay);
  double reviewQuantum() const noexcept { return reviewQuantum_; }
  void reviewQuantumIs(double seconds);
  bool initialized() const noexcept { return initialized_.get(); }

  // Review slices so far, the longest one and the longest single step of one (the check of
  // one interface), in the clock's seconds.
  std::uint64_t reviewSlices() const noexcept { return reviewSlices_; }
  double longestReviewSlice() const noexcept { return longestReviewSlice_; }
  double longestReviewStep() const noexcept { return longestReviewStep_; }

 private:
  // One step of a review: checks the pair the iterator stands on, takes it out of its set
  // and moves on. False when the iterator had nothing left.
  template <typename Iterator>
  bool doReviewOne(Iterator& iter, Lanx::AddressFamily af);
  // Whether either family still has interfaces queued for review.
  bool reviewPending() const {
    return !changedVrfIntf_[Lanx::AddressFamily::ipv4].empty() ||
           !changedVrfIntf_[Lanx::AddressFamily::ipv6].empty();
  }
  // The interface's entry in the demultiplexer, with its VLAN.
  void doIntfIdToVlanId(Lanx::IntfId intfId);
  Lumo::Ptr<Interface::DeviceIntfStatusDir> kernelIntfs(const L3::VrfName& vrfName) const;

  Lumo::Ptr<McastModuleManager> manager_;
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup_;
  Lanx::ByFamily<Lumo::Ptr<Roots const>> mcastIntfRoot_;
  Lumo::Ptr<Interface::VrfDeviceIntfStatusDir const> vrfDeviceIntfStatusDir_;
  Lumo::Ptr<IntfVlanId::Table const> intfVlanIdTable_;

  using McastIntfVrfSms = Qel::NestedSmCollection<McastIntfModuleSm, NestedSm_McastIntfVrfSm,
                                                  &Routing::Multicast::MulticastIntfsAppRootSm::vrfName>;
  Lanx::ByFamily<McastIntfVrfSms> HN_NestedSm_McastIntfVrfSm_{McastIntfVrfSms(this),
                                                              McastIntfVrfSms(this)};
  Qel::NestedSmCollection<McastIntfModuleSm, NestedSm_KernelVrfIntfStatusDir,
                          &Interface::DeviceVrfIntfStatusDir::name>
      HN_NestedSm_KernelVrfIntfStatusDir_{this};

  Lanx::ByFamilyAttr<Qel::SetAttr<VrfIntfPair, kChangedVrfIntf>, kChangedVrfIntf6> changedVrfIntf_;
  Lanx::ByFamily<Qel::Optional<VrfIntfPair>> bookmarkVrfIntf_;
  Qel::HashCollectionAttr<VrfNameAndIntfId, std::uint32_t, kIfIndexByVrfNameAndIntfId>
      ifIndexByVrfNameAndIntfId_;
  Lumo::Ptr<Dov::ReviewTimer> reviewTimer_;
  double reviewQuantum_ = defaultReviewQuantum;
  Qel::ValueAttr<bool, kInitialized> initialized_;
  std::uint64_t reviewSlices_ = 0;
  double longestReviewSlice_ = 0;
  double longestReviewStep_ = 0;

  // Reactors, declared last so that they go before what they watch.
  Qel::SmSubscriber<McastIntfModuleSm> intfVlanIdTableReactor_{
      this, &Qel::reactorDispatch<McastIntfModuleSm, IntfVlanId::Table::kIntfIdToVlanId,
                                  &McastIntfModuleSm::handleIntfIdToVlanId>};
  Lanx::ByFamilyReactor<McastIntfModuleSm, Roots::kVrfSm, &McastIntfModuleSm::handleMcastIntfVrf>
      mcastIntfRootReactor_{this};
  Qel::SmSubscriber<McastIntfModuleSm> vrfDeviceIntfStatusDirReactor_{
      this, &Qel::reactorDispatch<McastIntfModuleSm, Qel::Dir::kChild,
                                  &McastIntfModuleSm::handleKernelVrfIntfStatusDir>};
  NotificationWatch<McastIntfModuleSm> notificationWatch_{
      this, &McastIntfModuleSm::handleNotificationActive};
};

}  // namespace VekL3Mcast
