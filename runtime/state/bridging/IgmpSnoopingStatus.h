#pragma once

#include "runtime/state/StateEntity.h"

namespace Bridging::IgmpSnooping {

// Snooped group membership by VLAN, of IGMP ("bridging/igmpsnooping/forwarding/status")
// and of MLD ("bridging/mldsnooping/forwarding/status"); its members come with the
// snooping state machines that read them.
class Status : public Lanx::StateEntity<"Bridging::IgmpSnooping::Status"> {
 public:
  static constexpr std::string_view igmpPath = "bridging/igmpsnooping/forwarding/status";
  static constexpr std::string_view mldPath = "bridging/mldsnooping/forwarding/status";
};

}  // namespace Bridging::IgmpSnooping
