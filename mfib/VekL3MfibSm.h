#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "mfib/ChangedRouteSet.h"
#include "mfib/NestedSm_MfibVash.h"
#include "mfib/OifSet.h"
#include "mfib/VekL3MfibModule.h"
#include "runtime/dov/TaskAttribute.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/KernelMfibConfig.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MfibVrfAdapter.h"
#include "runtime/state/MfibVrfDirRouteKey.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

// Keeps one FIB module (one VRF, one address family) equal to the best multicast routes of
// the VRF's route tables.
//
// Input: an MfibVrfAdapter, set from outside, with one table per application. Output:
// addMroute and deleteMroute on the module proxy. After start one review walks all routes;
// after it, only keys that changed are worked. Both run in one task that yields, so a
// table of any size never holds the thread; a key that changes many times between two
// runs is worked once, with the state of that moment.
class VekL3MfibSm : public Qel::StateMachine {
 public:
  using IpGenRouteKey = Routing::Multicast::Fib::IpGenRouteKey;
  using MfibAppType = Routing::Multicast::Fib::MfibAppType;
  using MfibVrfAdapter = Routing::Multicast::Fib::MfibVrfAdapter;
  using MfibVrfDirRouteKey = Routing::Multicast::Fib::MfibVrfDirRouteKey;
  using Status = Vash::Multicast::Fib::Status;
  using KernelMfibConfig = Routing::KernelMfib::Config;

  enum : Qel::AttributeId {
    kMfibVrfAdapter = 1,
    kKernelMfibConfig,
    kMfibModule,
    kChangedRoute,
    kBookmark,
    kReviewedOnce,
    kInitialized,
  };

  // Where the review of all routes goes on: a table and a key in it.
  struct Bookmark {
    IpGenRouteKey vashBookmark;
    MfibAppType mfibAppKey = MfibAppType::none;
    friend bool operator==(const Bookmark&, const Bookmark&) = default;
  };

  static constexpr std::uint32_t defaultMaxUnresolvedCacheEntries = 4000;
  static constexpr std::uint32_t defaultMaxUnresolvedPktBuffers = 3;
  static constexpr Dov::TaskPriority taskPriority = 3;

  VekL3MfibSm(L3::VrfName vrfName, Lanx::AddressFamily af, bool oru,
              Lumo::Ptr<MfibAf> mfibModule,
              Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
              Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
              Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
              Lumo::Ptr<Dov::TaskScheduler> taskScheduler);
  ~VekL3MfibSm() override;
  std::string_view typeName() const override { return "VekL3Mcast::VekL3MfibSm"; }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }
  bool oru() const noexcept { return oru_; }
  const Lumo::Ptr<MfibAf>& mfibModule() const noexcept { return mfibModule_.get(); }
  const Lumo::Ptr<Vek::ModuleConfigStatusPair>& configStatusPair() const noexcept {
    return configStatusPair_;
  }
  const Lumo::Ptr<Vek::CmdConfigGroup>& cmdConfigGroup() const noexcept { return cmdConfigGroup_; }
  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd() const noexcept { return vekcsd_; }
  const Lumo::Ptr<Dov::TaskScheduler>& taskScheduler() const noexcept { return taskScheduler_; }

  // The input. Setting the same adapter does nothing; another one replaces the
  // subscription, drops the table machines whose table is gone and brings up one for each
  // table. Called again whenever a table's mount finishes.
  const Lumo::Ptr<MfibVrfAdapter const>& mfibVrfAdapter() const noexcept {
    return mfibVrfAdapter_.get();
  }
  void mfibVrfAdapterIs(Lumo::Ptr<MfibVrfAdapter const> adapter);
  void mfibVrfAdapterDel() { mfibVrfAdapterIs(nullptr); }

  // The machines of the tables, by application.
  Lumo::Ptr<NestedSm_MfibVash> mfibVash(MfibAppType app) const { return HN_NestedSm_MfibVash_.sm(app); }
  std::size_t mfibVashCount() const noexcept { return HN_NestedSm_MfibVash_.size(); }
  void mfibVashIs(MfibAppType app, Lumo::Ptr<Status const> status);
  void mfibVashDel(MfibAppType app);
  void mfibVashDelAll();

  // The kernel's limits of unresolved traffic; without a config the defaults hold.
  const Lumo::Ptr<KernelMfibConfig const>& kernelMfibConfig() const noexcept {
    return kernelMfibConfig_.get();
  }
  void kernelMfibConfigIs(Lumo::Ptr<KernelMfibConfig const> config);
  void kernelMfibConfigDel();

  // Keys waiting to be worked. A key that changes many times before its turn is worked
  // once (the count may hold it more than once until then). The set is the machine's own
  // work list: nobody watches it, and its changes are not announced.
  bool changedRouteHas(const MfibVrfDirRouteKey& key) const { return changedRoute_.has(key); }
  std::size_t changedRouteCount() const { return changedRoute_.size(); }
  void changedRouteIs(const MfibVrfDirRouteKey& key) { changedRoute_.insert(key); }
  void changedRouteDel(const MfibVrfDirRouteKey& key) { changedRoute_.erase(key); }
  void changedRouteDelAll() { changedRoute_.clear(); }
  // Room for that many waiting keys, made before a walk adds a whole table's keys.
  void changedRouteReserve(std::size_t members) { changedRoute_.reserve(members, af_); }

  const Bookmark& bookmark() const noexcept { return bookmark_.get(); }
  void bookmarkIs(const Bookmark& bookmark) { bookmark_.is(*this, bookmark); }
  void bookmarkDel() { bookmark_.del(*this); }
  bool bookmarkNotNull() const { return !(bookmark().vashBookmark == IpGenRouteKey()); }

  bool reviewedOnce() const noexcept { return reviewedOnce_.get(); }
  bool initialized() const noexcept { return initialized_.get(); }

  Dov::Task* task() const noexcept { return task_.get(); }
  void taskIs(Lumo::Ptr<Dov::TaskScheduler> scheduler, Dov::TaskPriority priority,
              Lumo::String name) {
    task_.is(std::move(scheduler), priority, std::move(name));
  }
  void taskDel() { task_.del(); }

  // Synchronises one key of one application's table with the module.
  void doUpdateRoute(MfibAppType mfibAppKey, const IpGenRouteKey& key);
  // The review of all routes, resumed at the bookmark.
  void handleAllRoutes();
  // The keys that changed since, once the review has ended.
  void handleChangedRoutes();
  void handleMaxUnresolvedCacheEntries();
  void handleMaxUnresolvedPktBuffers();
  // Sends one of the kernel's limits of unresolved traffic: the config's, or the default
  // without a config.
  using UnresolvedLimit = std::uint32_t (Routing::KernelMfib::Config::*)() const noexcept;
  void doSendUnresolvedLimit(UnresolvedLimit limit, std::uint32_t defaultValue,
                             void (MfibAf::*send)(std::uint32_t));
  void handleKernelMfibConfigDel();
  void handleTask();
  void doKickReview();
  // Walks every route again and sends it: what a route's command says changed outside the
  // tables (the gate of an outgoing interface).
  void doReviewAllRoutes();
  void handleInitialized() override;

  // Whether *,G routes are programmed: the toggle "MfaWcFwd", read once for the process.
  static bool wcFwdEnabled();
  static void wcFwdEnabledReloadForTest();

 private:
  static void mfibVrfAdapterDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber,
                                     short attributeId, const void* key, const void*) noexcept;
  static void kernelMfibConfigDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber,
                                       short attributeId, const void*, const void*) noexcept;
  // The same; `found`, when given, is the route of `key` in the table of `mfibAppKey`,
  // which the caller has at hand and need not be looked up again. `walked` says it comes
  // from the walk of all routes, which gives each key from the table of its best route.
  void doUpdateRoute(MfibAppType mfibAppKey, const IpGenRouteKey& key,
                     const Vash::Multicast::Fib::Route* found, bool walked);
  // A member of the adapter's table collection came, changed or went.
  void handleMfibVrfAdapterVash(MfibAppType app);

  const L3::VrfName vrfName_;
  const Lanx::AddressFamily af_;
  const bool oru_;
  Qel::ValueAttr<Lumo::Ptr<MfibVrfAdapter const>, kMfibVrfAdapter> mfibVrfAdapter_;
  Qel::ValueAttr<Lumo::Ptr<KernelMfibConfig const>, kKernelMfibConfig> kernelMfibConfig_;
  Qel::ValueAttr<Lumo::Ptr<MfibAf>, kMfibModule> mfibModule_;
  const Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair_;
  const Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup_;
  const Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  const Lumo::Ptr<Dov::TaskScheduler> taskScheduler_;
  Qel::NestedSmCollection<VekL3MfibSm, NestedSm_MfibVash, &Status::app> HN_NestedSm_MfibVash_{this};
  ChangedRouteSet changedRoute_;
  Qel::ValueAttr<Bookmark, kBookmark> bookmark_;
  Qel::ValueAttr<bool, kReviewedOnce> reviewedOnce_;
  Qel::ValueAttr<bool, kInitialized> initialized_;
  Qel::SmSubscriber<VekL3MfibSm> mfibVrfAdapterReactor_{this, &mfibVrfAdapterDispatch};
  Qel::SmSubscriber<VekL3MfibSm> kernelMfibConfigReactor_{this, &kernelMfibConfigDispatch};
  Dov::TaskAttribute<VekL3MfibSm, &VekL3MfibSm::handleTask> task_{this};
  // The outgoing interfaces of the route being worked; kept so that its storage is reused.
  OifSet oifSet_;
};

// Makes the route machine of one VRF and family; the caller sets its adapter and switches
// its notification on with the rest of the agent's tree.
Lumo::Ptr<VekL3MfibSm> vekL3MfibSmFactory(L3::VrfName vrfName, Lanx::AddressFamily af, bool oru,
                                          Lumo::Ptr<MfibAf> mfibModule,
                                          Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                                          Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
                                          Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                                          Lumo::Ptr<Dov::TaskScheduler> taskScheduler);

}  // namespace VekL3Mcast
