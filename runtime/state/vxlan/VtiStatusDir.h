#pragma once

#include "runtime/state/StateEntity.h"

namespace Vxlan {

// The status of the VXLAN tunnel interfaces ("interface/status/eth/vxlan"); its members
// come with the VXLAN pipeline that reads them.
class VtiStatusDir : public Lanx::StateEntity<"Vxlan::VtiStatusDir"> {
 public:
  static constexpr std::string_view path = "interface/status/eth/vxlan";
};

}  // namespace Vxlan
