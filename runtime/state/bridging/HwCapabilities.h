#pragma once

#include <string_view>

#include "runtime/state/StateEntity.h"

namespace Bridging {

// What the switching hardware can do ("bridging/hwcapabilities"); its members come with
// the VXLAN pipeline that reads them.
class HwCapabilities : public Lanx::StateEntity<"Bridging::HwCapabilities"> {
 public:
  static constexpr std::string_view path = "bridging/hwcapabilities";
};

}  // namespace Bridging
