#include "runtime/state/MfibVrfAdapter.h"

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Exceptions.h"

namespace Routing::Multicast::Fib {

bool MfibVrfAdapter::isBestRoute(MfibAppType app, const IpGenRouteKey& key) const {
  const auto index = static_cast<std::size_t>(app);
  if (index == 0 || index >= byApp_.size()) return false;
  return byApp_[index] && byApp_[index]->routeHas(key) && !heldByPreferred(app, key);
}

MfibAppType MfibVrfAdapter::mfibAppKey(const IpGenRouteKey& key) const {
  for (std::size_t index = 1; index < byApp_.size(); ++index) {
    if (byApp_[index] && byApp_[index]->routeHas(key)) return static_cast<MfibAppType>(index);
  }
  return MfibAppType::none;
}

void MfibVrfAdapter::mfibVashIs(MfibAppType app,
                                Lumo::Ptr<Vash::Multicast::Fib::Status const> status) {
  const auto index = static_cast<std::size_t>(app);
  if (index == 0 || index >= byApp_.size()) {
    Qel::throwRangeException("MfibVrfAdapter: no route application " +
                             std::to_string(index));
  }
  if (!status) Qel::throwMutatorArgNullPointerException("mfibVash");
  if (status->app() != app) {
    Qel::throwRangeException("MfibVrfAdapter: a table of another application");
  }
  byApp_[index] = status.get();
  mfibVash_.is(*this, app, std::move(status));
}

void MfibVrfAdapter::mfibVashDel(MfibAppType app) {
  const auto index = static_cast<std::size_t>(app);
  if (index < byApp_.size()) byApp_[index] = nullptr;
  mfibVash_.del(*this, app);
}

void MfibVrfAdapter::mfibVashDelAll() {
  byApp_.fill(nullptr);
  mfibVash_.delAll(*this);
}

}  // namespace Routing::Multicast::Fib
