#pragma once

#include <string_view>

#include "runtime/state/StateEntity.h"

namespace Ip {

// The status of the VRFs of this host ("ip/vrf/status/local"); its members come with the
// interface tracker that reads them.
class VrfStatusLocalDir : public Lanx::StateEntity<"Ip::VrfStatusLocalDir"> {
 public:
  static constexpr std::string_view path = "ip/vrf/status/local";
};

}  // namespace Ip
