#pragma once

#include "runtime/state/multicast/TunnelRoute.h"

namespace Routing::Multicast {

struct OverlaySide;
// A multicast route of a tenant's network, carried through the tunnels.
using OverlayRoute = TunnelRoute<OverlaySide>;

}  // namespace Routing::Multicast
