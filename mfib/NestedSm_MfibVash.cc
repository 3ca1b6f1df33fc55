#include "mfib/NestedSm_MfibVash.h"

#include <exception>

#include <fmt/format.h>

#include "mfib/VekL3MfibSm.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

NestedSm_MfibVash::NestedSm_MfibVash(VekL3MfibSm* owner,
                                     Lumo::Ptr<Vash::Multicast::Fib::Status const> status)
    : Qel::NotifieeConstOf<Vash::Multicast::Fib::Status>(this), owner_(owner) {
  notifierIs(std::move(status));
  handleInitialized();
}

void NestedSm_MfibVash::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == Vash::Multicast::Fib::Status::kRoute) {
    handleMfibRouteChange(*static_cast<const Routing::Multicast::Fib::IpGenRouteKey*>(key));
  }
}

// Additions, changes and deletions are alike here: the decision reads the tables again.
void NestedSm_MfibVash::handleMfibRouteChange(const Routing::Multicast::Fib::IpGenRouteKey& key) {
  VEK_TRACE(debug, "Route changed in Vash Table [{}] {}", app(), key);
  owner_->changedRouteIs(Routing::Multicast::Fib::MfibVrfDirRouteKey(app(), key));
  owner_->doKickReview();
}

void NestedSm_MfibVash::handleMfibVash(bool vashDeleted) {
  VEK_TRACE(info, "Vash deleted: {}", vashDeleted);
  const Vash::Multicast::Fib::Status* table = notifier();
  if (!table || table->empty()) return;
  // An owner that is going away keeps no changed keys: its set goes with it.
  if (owner_->isZombie()) return;
  // Every key is recorded, even before the review has begun: the review then meets the
  // key as well, and the second decision finds the module as the first one left it.
  const Routing::Multicast::Fib::MfibAppType application = app();
  try {
    // Room for the whole table first: the walk then only appends, in the set's own order.
    owner_->changedRouteReserve(owner_->changedRouteCount() + table->routeCount());
    for (const auto& member : table->routes()) {
      VEK_TRACE(debug, "Add route key in vash table to backlog, key: {}", member.key);
      owner_->changedRouteIs(Routing::Multicast::Fib::MfibVrfDirRouteKey(application, member.key));
    }
  } catch (const std::exception& e) {
    // No exception may leave a reactor; what was recorded so far stays.
    table->doCorruptionDetected(
        fmt::format("walk of the {} route table failed: {}", application, e.what()));
  }
  owner_->doKickReview();
}

}  // namespace VekL3Mcast
