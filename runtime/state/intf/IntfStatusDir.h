#pragma once

#include <string_view>

#include "runtime/state/StateEntity.h"

namespace Interface {

// The status of all interfaces ("interface/status/all") or of those of this host
// ("interface/status/local"). Multicast hands both to the interface status manager and
// reads nothing of them itself; their members come with the readers that need them.
class IntfStatusDir : public Lanx::StateEntity<"Interface::IntfStatusDir"> {
 public:
  static constexpr std::string_view allPath = "interface/status/all";
  static constexpr std::string_view localPath = "interface/status/local";
};

}  // namespace Interface
