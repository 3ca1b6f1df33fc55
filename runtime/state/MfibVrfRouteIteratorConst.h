#pragma once

#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibRoute.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MfibVrfAdapter.h"

namespace Routing::Multicast::Fib {

// A walk over the routes of all tables of an adapter that meets each key once, in the
// table that holds its best route. Tables are walked one after the other in the order of
// the adapter's collection, each in its own order; a key is taken where its table is the
// best one and passed over elsewhere.
//
// The walk reads the tables directly: nobody may change the adapter or its tables while
// it lasts (one task run). To resume later, keep (mfibAppKey(), key()) and build a new
// walk at that position.
class MfibVrfRouteIteratorConst {
 public:
  // Starts at the table of `vashIterator` and, in it, at `routeIterator`, then moves on to
  // the first best route from there.
  MfibVrfRouteIteratorConst(const MfibVrfAdapter& adapter,
                            MfibVrfAdapter::MfibVashIteratorConst vashIterator,
                            Vash::Multicast::Fib::Status::RouteIteratorConst routeIterator);
  // The whole walk, from the beginning.
  explicit MfibVrfRouteIteratorConst(const MfibVrfAdapter& adapter);

  bool done() const noexcept { return vash_.done(); }
  const IpGenRouteKey& key() const { return route_->key; }
  MfibAppType mfibAppKey() const { return vash_->key; }
  const Vash::Multicast::Fib::Route& route() const { return route_->value; }

  // With no application: steps to the next best route. With one: goes to the position of
  // `key` in that application's table (the key or the next after it) and on to the first
  // best route from there.
  void updateToBestRouteIterators(MfibAppType app, const IpGenRouteKey& key);

 private:
  // From the current position to the first key whose best route is in its table.
  void settle();

  const MfibVrfAdapter* adapter_;
  MfibVrfAdapter::MfibVashIteratorConst vash_;
  Vash::Multicast::Fib::Status::RouteIteratorConst route_;
};

}  // namespace Routing::Multicast::Fib
