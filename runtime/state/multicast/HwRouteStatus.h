#pragma once

#include <string_view>

#include "runtime/state/StateEntity.h"

namespace Routing::Hardware {

// The hardware route status ("routing/hardware/route/status"); its members come with the
// forwarding-device state machine that reads them.
class RouteStatus : public Lanx::StateEntity<"Routing::Hardware::RouteStatus"> {
 public:
  static constexpr std::string_view path = "routing/hardware/route/status";
};

}  // namespace Routing::Hardware
