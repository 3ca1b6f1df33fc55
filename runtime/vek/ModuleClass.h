#pragma once

#include <cstdint>

namespace Vek::VekModule {

// The data-plane module classes that the multicast pipeline instantiates; the numbers are
// the daemon's.
enum ModuleClass : std::uint32_t {
  portInc = 5,
  portOut = 6,
  mfib = 26,
  mfibVek = 27,
  metaData = 28,
  vlanMetadata = 83,
  l2MVxlanIn = 84,
  l2MVxlanOut = 85,
  l3MVxlanIn = 86,
  l3MVxlanOut = 87,
  txDemuxer = 105,
  igmpV2 = 120,
  mMplsIn = 140,
  mMplsOut = 141,
};

}  // namespace Vek::VekModule
