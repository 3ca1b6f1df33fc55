#pragma once

#include "runtime/state/vxlan/VtepVlan.h"

namespace VekL3Mcast {

// One VTEP of one VLAN's flood set: the same pair as a key of the VTEP VLAN status.
using VekVlanVtep = VekMVxlan::VtepVlan;

}  // namespace VekL3Mcast
