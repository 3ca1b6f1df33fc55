#pragma once

#include <cstddef>
#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibRoute.h"
#include "runtime/state/VashMapBase.h"
#include "runtime/state/VrfName.h"

namespace Vash::Multicast::Fib {

// The multicast route table of one application in one VRF and address family, as a
// routing agent publishes it. Each change of a route (added, changed, deleted) publishes
// the attribute kRoute with a pointer to the route's key; readers look the key up again
// to learn what became of it.
//
// Routes iterate in the hash order of their keys, which is stable while the table does
// not change and the same in every table; an iterator can start at the position a key
// has, or would have if it is absent, which is how a bookmarked walk resumes.
class Status : public Qel::Entity, public VashMapBase {
 public:
  enum : Qel::AttributeId { kRoute = 1 };
  using RouteKey = Routing::Multicast::Fib::IpGenRouteKey;
  using RouteMap = Qel::HashMap2018<RouteKey, Route>;
  // For a loop in which nobody writes the table; it asserts if somebody does.
  using RouteIteratorConst = RouteMap::UnsafeIteratorConst;

  Status(Routing::Multicast::Fib::MfibAppType app, L3::VrfName vrfName, Lanx::AddressFamily af)
      : app_(app), vrfName_(std::move(vrfName)), af_(af) {}
  std::string_view typeName() const override { return "Vash::Multicast::Fib::Status"; }

  Routing::Multicast::Fib::MfibAppType app() const noexcept { return app_; }
  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }

  // Readers.
  bool routeHas(const RouteKey& key) const { return route_.has(key); }
  // The route, or null when the table has none for the key. Valid until the table changes.
  const Route* routeFind(const RouteKey& key) const { return route_.find(key); }
  // A copy of the route, or the empty route.
  Route route(const RouteKey& key) const { return route_.get(key); }
  std::size_t routeCount() const noexcept { return route_.size(); }
  bool empty() const noexcept { return route_.empty(); }
  const RouteMap& routes() const noexcept { return route_.members(); }
  RouteIteratorConst routeIteratorConst() const { return route_.members().begin(); }
  // At the key, or at the next key after the position it would have.
  RouteIteratorConst routeIteratorConstAt(const RouteKey& key) const {
    return route_.members().lowerBound(key);
  }

  // Writer side (the routing agent, or the host standing in for it). A route equal to the
  // one there publishes nothing.
  void routeIs(const Route& route) { route_.is(*this, route.key(), route); }
  void routeDel(const RouteKey& key) { route_.del(*this, key); }
  void routeDelAll() { route_.delAll(*this); }

 private:
  Routing::Multicast::Fib::MfibAppType app_;
  L3::VrfName vrfName_;
  Lanx::AddressFamily af_;
  Qel::HashCollectionAttr<RouteKey, Route, kRoute> route_;
};

}  // namespace Vash::Multicast::Fib
