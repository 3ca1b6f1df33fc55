#pragma once

#include <string>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VashMapBase.h"
#include "runtime/state/multicast/RoutingPath.h"
#include "runtime/state/multicast/UnderlayRoute.h"

namespace Routing::Multicast {

// The underlay routes whose tunnel packets are to be decapsulated, for one family: a
// shared-memory table keyed by route. A change publishes kRoute with the route.
class IpTunnelDecapConfig : public Lanx::StateEntity<"Routing::Multicast::IpTunnelDecapConfig">,
                            public Vash::VashMapBase {
 public:
  enum : Qel::AttributeId { kRoute = 1 };
  using Routes = Qel::HashSet2018<UnderlayRoute>;

  static std::string mountPath(Lanx::AddressFamily af) {
    return routingPath(af, "multicast/ipTunnel/decapConfig");
  }

  const Routes& routes() const noexcept { return route_.members(); }
  bool routeHas(const UnderlayRoute& route) const { return route_.has(route); }

  // Writer side.
  void routeIs(const UnderlayRoute& route) { route_.is(*this, route); }
  void routeDel(const UnderlayRoute& route) { route_.del(*this, route); }

 private:
  Qel::SetAttr<UnderlayRoute, kRoute> route_;
};

}  // namespace Routing::Multicast
