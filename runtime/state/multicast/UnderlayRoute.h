#pragma once

#include "runtime/state/multicast/TunnelRoute.h"

namespace Routing::Multicast {

struct UnderlaySide;
// A multicast route of the provider's network that a tunnel sends on: the local tunnel
// source (no family when none is set) and the underlay group.
using UnderlayRoute = TunnelRoute<UnderlaySide>;

}  // namespace Routing::Multicast
