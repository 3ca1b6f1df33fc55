#include "runtime/state/MfibVrfRouteIteratorConst.h"

namespace Routing::Multicast::Fib {

namespace {
// Where a walk that has no table stands: the end of an empty map.
const Vash::Multicast::Fib::Status::RouteMap& noRoutes() {
  static const Vash::Multicast::Fib::Status::RouteMap none;
  return none;
}
}  // namespace

MfibVrfRouteIteratorConst::MfibVrfRouteIteratorConst(
    const MfibVrfAdapter& adapter, MfibVrfAdapter::MfibVashIteratorConst vashIterator,
    Vash::Multicast::Fib::Status::RouteIteratorConst routeIterator)
    : adapter_(&adapter), vash_(vashIterator), route_(routeIterator) {
  settle();
}

MfibVrfRouteIteratorConst::MfibVrfRouteIteratorConst(const MfibVrfAdapter& adapter)
    : adapter_(&adapter),
      vash_(adapter.mfibVashIteratorConst()),
      route_(vash_.done() ? noRoutes().begin() : vash_->value->routeIteratorConst()) {
  settle();
}

void MfibVrfRouteIteratorConst::updateToBestRouteIterators(MfibAppType app,
                                                           const IpGenRouteKey& key) {
  if (app == MfibAppType::none) {
    if (done()) return;
    ++route_;
  } else {
    vash_ = adapter_->mfibVashIteratorConstAt(app);
    if (done()) return;
    route_ = vash_->key == app ? vash_->value->routeIteratorConstAt(key)
                               : vash_->value->routeIteratorConst();
  }
  settle();
}

void MfibVrfRouteIteratorConst::settle() {
  while (!vash_.done()) {
    const MfibAppType app = vash_->key;
    for (; !route_.done(); ++route_) {
      if (!adapter_->heldByPreferred(app, route_->key)) return;
    }
    ++vash_;
    if (!vash_.done()) route_ = vash_->value->routeIteratorConst();
  }
}

}  // namespace Routing::Multicast::Fib
