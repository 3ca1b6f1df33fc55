#include "mfib/VekL3MfibSm.h"

#include <optional>

#include "runtime/state/MfibRoute.h"
#include "runtime/state/MfibVrfRouteIteratorConst.h"
#include "runtime/toggle/ToggleState.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

using Routing::Multicast::Fib::MfibVrfRouteIteratorConst;
using Vash::Multicast::Fib::Route;
using Vash::Multicast::Fib::RouteIntf;

namespace {

// An incoming Null0 removes a route from the module; outgoing Null0 members are dropped.
const Lanx::IntfId& null0() {
  static const Lanx::IntfId id("Null0");
  return id;
}

std::optional<bool>& wcFwdToggle() {
  static std::optional<bool> value;
  return value;
}

}  // namespace

bool VekL3MfibSm::wcFwdEnabled() {
  std::optional<bool>& value = wcFwdToggle();
  if (!value) value = getToggleState("MfaWcFwd", "Mroute.json", true);
  return *value;
}

void VekL3MfibSm::wcFwdEnabledReloadForTest() { wcFwdToggle().reset(); }

VekL3MfibSm::VekL3MfibSm(L3::VrfName vrfName, Lanx::AddressFamily af, bool oru,
                         Lumo::Ptr<MfibAf> mfibModule,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                         Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
                         Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                         Lumo::Ptr<Dov::TaskScheduler> taskScheduler)
    : vrfName_(std::move(vrfName)),
      af_(af),
      oru_(oru),
      configStatusPair_(std::move(configStatusPair)),
      cmdConfigGroup_(std::move(cmdConfigGroup)),
      vekcsd_(std::move(vekcsd)),
      taskScheduler_(std::move(taskScheduler)) {
  QEL_ASSERT(mfibModule, "VekL3MfibSm without a FIB module");
  mfibModule_.is(*this, std::move(mfibModule));
  handleInitialized();
}

VekL3MfibSm::~VekL3MfibSm() {
  hasNotificationActiveIs(false);
  qelDoZombieReactors(true);
  mfibVrfAdapterReactor_.isRegisteredIs(false);
  mfibVrfAdapterReactor_.publisherIs(nullptr);
  kernelMfibConfigReactor_.isRegisteredIs(false);
  kernelMfibConfigReactor_.publisherIs(nullptr);
  mfibVashDelAll();
  taskDel();
  changedRouteDelAll();
}

void VekL3MfibSm::handleInitialized() {
  // The run that taskIs makes at once finds `initialized` false and does nothing.
  taskIs(taskScheduler_, taskPriority, "VekL3MfibSmTask");
  initialized_.is(*this, true);
  bookmarkDel();
  doKickReview();
}

void VekL3MfibSm::doKickReview() {
  if (initialized() && task_) task_->scheduleTask();
}

void VekL3MfibSm::doReviewAllRoutes() {
  bookmarkDel();
  reviewedOnce_.is(*this, false);
  doKickReview();
}

void VekL3MfibSm::handleTask() {
  if (!initialized() || !mfibVrfAdapter()) return;
  handleAllRoutes();
  handleChangedRoutes();
}

// ---- Input ----

void VekL3MfibSm::mfibVrfAdapterIs(Lumo::Ptr<MfibVrfAdapter const> adapter) {
  if (adapter == mfibVrfAdapter()) return;
  mfibVrfAdapterReactor_.isRegisteredIs(false);
  mfibVrfAdapterReactor_.publisherIs(const_cast<MfibVrfAdapter*>(adapter.get()));
  mfibVrfAdapter_.is(*this, adapter);
  if (adapter) mfibVrfAdapterReactor_.isRegisteredIs(true);

  // Machines whose table the new adapter does not hold go; collected first, as the
  // deletion changes the collection.
  std::vector<MfibAppType> gone;
  for (const auto& member : HN_NestedSm_MfibVash_.members()) {
    if (!adapter || !adapter->mfibVashHas(member.key)) gone.push_back(member.key);
  }
  for (MfibAppType app : gone) mfibVashDel(app);
  if (!adapter) return;
  for (const auto& member : adapter->mfibVashMembers()) mfibVashIs(member.key, member.value);
}

void VekL3MfibSm::mfibVrfAdapterDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber,
                                         short attributeId, const void* key,
                                         const void*) noexcept {
  if (attributeId != MfibVrfAdapter::kMfibVash) return;
  VekL3MfibSm* self = Qel::SmSubscriber<VekL3MfibSm>::ownerOf(subscriber);
  if (self->isZombie()) return;
  self->handleMfibVrfAdapterVash(*static_cast<const MfibAppType*>(key));
}

void VekL3MfibSm::handleMfibVrfAdapterVash(MfibAppType app) {
  if (Lumo::Ptr<Status const> status = mfibVrfAdapter()->mfibVash(app)) {
    mfibVashIs(app, std::move(status));
  } else {
    mfibVashDel(app);
  }
}

void VekL3MfibSm::mfibVashIs(MfibAppType app, Lumo::Ptr<Status const> status) {
  QEL_ASSERT(status && status->app() == app, "route table of another application");
  if (Lumo::Ptr<NestedSm_MfibVash> present = HN_NestedSm_MfibVash_.sm(app)) {
    if (present->notifier() == status.get()) return;
    // The routes of the old table must be decided again as much as those of the new one.
    present->handleMfibVash(true);
  }
  HN_NestedSm_MfibVash_.smIs(std::move(status));
}

void VekL3MfibSm::mfibVashDel(MfibAppType app) {
  Lumo::Ptr<NestedSm_MfibVash> present = HN_NestedSm_MfibVash_.sm(app);
  if (!present) return;
  present->handleMfibVash(true);
  HN_NestedSm_MfibVash_.smDel(app);
}

void VekL3MfibSm::mfibVashDelAll() {
  while (HN_NestedSm_MfibVash_.size() > 0) {
    mfibVashDel(HN_NestedSm_MfibVash_.members().begin()->key);
  }
}

// ---- Kernel limits ----

void VekL3MfibSm::kernelMfibConfigIs(Lumo::Ptr<KernelMfibConfig const> config) {
  if (config == kernelMfibConfig()) return;
  if (kernelMfibConfig()) {
    kernelMfibConfigReactor_.isRegisteredIs(false);
    kernelMfibConfigReactor_.publisherIs(nullptr);
    kernelMfibConfig_.del(*this);
    handleKernelMfibConfigDel();
  }
  kernelMfibConfig_.is(*this, config);
  if (!config) return;
  kernelMfibConfigReactor_.publisherIs(const_cast<KernelMfibConfig*>(config.get()));
  kernelMfibConfigReactor_.isRegisteredIs(true);
  handleMaxUnresolvedCacheEntries();
  handleMaxUnresolvedPktBuffers();
}

// Without a config the defaults go out, so that a VRF that never had one has them too.
void VekL3MfibSm::kernelMfibConfigDel() {
  kernelMfibConfigReactor_.isRegisteredIs(false);
  kernelMfibConfigReactor_.publisherIs(nullptr);
  kernelMfibConfig_.del(*this);
  handleKernelMfibConfigDel();
}

void VekL3MfibSm::kernelMfibConfigDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber,
                                           short attributeId, const void*,
                                           const void*) noexcept {
  VekL3MfibSm* self = Qel::SmSubscriber<VekL3MfibSm>::ownerOf(subscriber);
  if (self->isZombie()) return;
  if (attributeId == KernelMfibConfig::kMaxUnresolvedCacheEntries) {
    self->handleMaxUnresolvedCacheEntries();
  } else if (attributeId == KernelMfibConfig::kMaxUnresolvedPktBuffers) {
    self->handleMaxUnresolvedPktBuffers();
  }
}

void VekL3MfibSm::handleMaxUnresolvedCacheEntries() {
  doSendUnresolvedLimit(&Routing::KernelMfib::Config::maxUnresolvedCacheEntries,
                        defaultMaxUnresolvedCacheEntries, &MfibAf::setMaxUnresolvedCacheEntries);
}

void VekL3MfibSm::handleMaxUnresolvedPktBuffers() {
  doSendUnresolvedLimit(&Routing::KernelMfib::Config::maxUnresolvedPktBuffers,
                        defaultMaxUnresolvedPktBuffers, &MfibAf::setMaxUnresolvedPktBuffers);
}

void VekL3MfibSm::doSendUnresolvedLimit(UnresolvedLimit limit, std::uint32_t defaultValue,
                                        void (MfibAf::*send)(std::uint32_t)) {
  std::uint32_t value = defaultValue;
  if (kernelMfibConfig()) {
    value = (*kernelMfibConfig().*limit)();
  } else {
    VEK_TRACE(info, "No kernel mfib config, setting default value");
  }
  (*mfibModule().*send)(value);
}

void VekL3MfibSm::handleKernelMfibConfigDel() {
  handleMaxUnresolvedCacheEntries();
  handleMaxUnresolvedPktBuffers();
}

// ---- Routes ----

void VekL3MfibSm::doUpdateRoute(MfibAppType mfibAppKey, const IpGenRouteKey& key) {
  doUpdateRoute(mfibAppKey, key, nullptr, false);
}

void VekL3MfibSm::doUpdateRoute(MfibAppType mfibAppKey, const IpGenRouteKey& key,
                                const Route* found, bool walked) {
  // A *,G route programmed before the toggle went off is left as it is.
  if (key.isStarG() && !wcFwdEnabled()) {
    VEK_TRACE(debug, "Skipping *,G route {}", key);
    return;
  }
  const MfibVrfAdapter& adapter = *mfibVrfAdapter();
  const Status* table = adapter.mfibVashFind(mfibAppKey);
  const Route* route = nullptr;
  if (table) {
    route = found ? found : table->routeFind(key);
  } else {
    VEK_TRACE(debug, "mfibVash for the route {} does not exist.", key);
  }

  if (!route) {
    VEK_TRACE(debug, "Route {} is deleted from mfib table {}", key, mfibAppKey);
    const MfibAppType best = adapter.mfibAppKey(key);
    table = adapter.mfibVashFind(best);
    if (table) {
      route = table->routeFind(key);
      VEK_TRACE(debug, "Found alternate route {} from vash table {}", key, best);
    }
  }
  // A table behind a preferred one that holds the key decides nothing, whether it holds
  // the key or has just let it go: the module has the better application's route, which
  // has changes of its own. A route given by the walk of all routes needs no asking: the
  // walk gives each key from the table of its best route.
  if (route && !walked && adapter.heldByPreferred(mfibAppKey, key)) {
    VEK_TRACE(debug, "{} does not contain the best route for {}", mfibAppKey, key);
    return;
  }

  OifSet& oifSet = oifSet_;
  oifSet.oifDelAll();
  std::uint64_t iif = 0;
  if (route) {
    VEK_TRACE(debug, "Programming route {} from {} iif Register {} oif Register {}", key,
              static_cast<unsigned>(table->app()), route->iifRegister(), route->oifRegister());
    // `route` is the table's current one: nothing has written the table since the lookup.
    const Lanx::IntfId& null0Id = null0();
    for (auto it = route->oifIteratorConst(); !it.done(); it.next()) {
      const Lanx::IntfId intfId = it.intfId();
      if (intfId == null0Id) continue;
      if (it.flags() & RouteIntf::incomingFlag) {
        iif = intfId.value();
      } else if (it.flags() & RouteIntf::outgoingFlag) {
        oifSet.oifIs(intfId, true);
      }
    }
  }

  bool deleteRoute = !route || route->iif() == null0() || route->iif().isEmpty();
  if (!deleteRoute) {
    deleteRoute = oru_;
    if (oru_ && !route->iifRegister() && route->switching()) {
      VEK_TRACE(debug, "Route in switching state, remove the route from bess: {}", key);
    } else {
      mfibModule()->addMroute(key.source(), key.group(), iif, 0, 0, 0, 0, route->fastdrop(),
                              route->iifRegister(), route->oifRegister(), oifSet);
      deleteRoute = false;
    }
  }
  if (deleteRoute) {
    VEK_TRACE(debug, "{} is being deleted", key);
    mfibModule()->deleteMroute(key.source(), key.group());
  }
}

void VekL3MfibSm::handleAllRoutes() {
  if (reviewedOnce()) return;
  const MfibVrfAdapter& adapter = *mfibVrfAdapter();
  const Bookmark start = bookmark();
  if (start.mfibAppKey == MfibAppType::none && !bookmarkNotNull()) {
    VEK_TRACE(info, "Starting review of all routes");
  } else {
    VEK_TRACE(info, "Resuming review at {} {}", start.vashBookmark, start.mfibAppKey);
  }

  const auto vashIterator = start.mfibAppKey == MfibAppType::none
                                ? adapter.mfibVashIteratorConst()
                                : adapter.mfibVashIteratorConstAt(start.mfibAppKey);
  if (vashIterator.done()) {
    VEK_TRACE(info, "mfibVash at {} does not exist.", start.mfibAppKey);
    bookmarkDel();
    return;
  }
  const MfibAppType firstApp = vashIterator->key;
  const Status* table = adapter.mfibVashFind(firstApp);
  if (!table) {
    VEK_TRACE(info, "mfibVash for {} does not exist.", firstApp);
    bookmarkDel();
    return;
  }
  // The bookmark's key is a position in its own table only: if that table went, the next
  // one is walked from its beginning.
  const bool resumeInTable = bookmarkNotNull() && firstApp == start.mfibAppKey;
  MfibVrfRouteIteratorConst it(adapter, vashIterator,
                               resumeInTable ? table->routeIteratorConstAt(start.vashBookmark)
                                             : table->routeIteratorConst());
  if (!it.done()) VEK_TRACE(info, "Starting from {} in mfib table {}", it.key(), it.mfibAppKey());

  Dov::Task& task = *task_.get();
  std::uint64_t count = 0;
  bool yielded = false;
  while (!it.done()) {
    const MfibAppType app = it.mfibAppKey();
    const IpGenRouteKey& key = it.key();
    VEK_TRACE(debug, "Syncing {} from mfib table {}", key, app);
    doUpdateRoute(app, key, &it.route(), true);
    ++count;
    if (task.taskShouldYield()) {
      yielded = true;
      break;
    }
    it.updateToBestRouteIterators(MfibAppType::none, IpGenRouteKey());
  }
  task.taskWorkCountInc(count);

  if (yielded) {
    // The route at the position was synchronised already.
    it.updateToBestRouteIterators(MfibAppType::none, IpGenRouteKey());
    if (!it.done()) {
      bookmarkIs(Bookmark{it.key(), it.mfibAppKey()});
      task.scheduleTask();
      task.taskWorkPendingIs(table->routeCount());
      VEK_TRACE(info, "Suspending review at {} {}", it.key(), it.mfibAppKey());
      return;
    }
  }
  bookmarkDel();
  reviewedOnce_.is(*this, true);
  task.taskWorkPendingIs(0);
  VEK_TRACE(info, "Finished review of all routes");
}

void VekL3MfibSm::handleChangedRoutes() {
  // Changes wait for the end of the review, which sees their new state in any case.
  if (!reviewedOnce()) return;
  VEK_TRACE(info, "Starting/resuming review of changed routes");
  Dov::Task& task = *task_.get();
  std::uint64_t count = 0;
  // A decision only queues commands: nothing records a key while this loop runs. The
  // scheduler is asked between keys, never before the first: a run always works at least
  // one key, whatever it answers. Keys recorded before the next run are worked by it in
  // their order, those that stand before the rest first.
  while (!changedRoute_.empty()) {
    if (count > 0 && task.taskShouldYield()) break;
    // A key whose table holds it is worked from the table's own copy of the key; only a
    // key that went is made from the set's form.
    const MfibAppType app = changedRoute_.frontApp();
    const Status* table = mfibVrfAdapter()->mfibVashFind(app);
    if (const Route* route = table ? changedRoute_.frontRouteIn(table->routes()) : nullptr) {
      VEK_TRACE(debug, "Syncing key {} from vash table {}", route->key(), app);
      doUpdateRoute(app, route->key(), route, false);
    } else {
      const MfibVrfDirRouteKey member = changedRoute_.front();
      VEK_TRACE(debug, "Syncing key {} from vash table {}", member.key(), app);
      doUpdateRoute(app, member.key());
    }
    changedRoute_.popFront();
    ++count;
  }
  task.taskWorkCountInc(count);
  const std::size_t left = changedRouteCount();
  if (left == 0) {
    VEK_TRACE(info, "Review of changed routes finished");
    task.taskWorkPendingIs(0);
  } else {
    VEK_TRACE(info, "Suspending review with {} routes left", left);
    task.scheduleTask();
    task.taskWorkPendingIs(left);
  }
}

Lumo::Ptr<VekL3MfibSm> vekL3MfibSmFactory(L3::VrfName vrfName, Lanx::AddressFamily af, bool oru,
                                          Lumo::Ptr<MfibAf> mfibModule,
                                          Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                                          Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
                                          Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                                          Lumo::Ptr<Dov::TaskScheduler> taskScheduler) {
  return Lumo::makePtr<VekL3MfibSm>(std::move(vrfName), af, oru, std::move(mfibModule),
                                    std::move(configStatusPair), std::move(cmdConfigGroup),
                                    std::move(vekcsd), std::move(taskScheduler));
}

}  // namespace VekL3Mcast
