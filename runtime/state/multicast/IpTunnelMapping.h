#pragma once

#include <utility>

#include "runtime/state/multicast/UnderlayRoute.h"

namespace Routing::Multicast {

// Where the traffic of one overlay route goes in the underlay.
class IpTunnelMapping {
 public:
  IpTunnelMapping() = default;
  explicit IpTunnelMapping(UnderlayRoute underlayRoute) : underlayRoute_(std::move(underlayRoute)) {}

  const UnderlayRoute& underlayRoute() const noexcept { return underlayRoute_; }

  friend bool operator==(const IpTunnelMapping&, const IpTunnelMapping&) noexcept = default;

 private:
  UnderlayRoute underlayRoute_;
};

}  // namespace Routing::Multicast
