#pragma once

#include <string_view>

#include "pipeline/VekMcastTypes.h"
#include "proto/bess.pb.h"

namespace VekL3Mcast {

// The names and flags of one receive path type, as the per-VRF any-device paths and the
// fabric paths use them.
struct McastRxPath {
  std::string_view anyPortStem;       // then the VRF name
  std::string_view rxModuleStem;      // then the VRF name, or "fabric"
  std::string_view metaDataStem;      // then the VRF name
  std::string_view fabricPort;
  std::string_view vlanMetadataName;
  bool mcastHwFwd;
  bool rxPeerLinkOrCore;
};

// Asserts "Unsupported rxType" for a value that is none of the three.
const McastRxPath& mcastRxPath(McastRxType rxType);

// The mark filter that a receive port of this type applies; `anyDevice` tells a port on
// the "any" device of a VRF from a port on one device.
bess::pb::PCAPPortFilterMcastMarkArg* mcastMarkFilterArg(McastRxType rxType, bool anyDevice);

// The hardware-forwarding flag that a metadata message carries for a path that wants it:
// a namespace device has no hardware, so there it is always false (and said so).
bool mcastHwFwdInMetadata(bool wanted);

}  // namespace VekL3Mcast
