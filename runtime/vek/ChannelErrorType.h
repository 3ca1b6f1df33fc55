#pragma once

#include <cstdint>

namespace Vek {

// The type byte of an error record: which kind of channel record the daemon refused.
enum ChannelErrorType : std::uint8_t {
  moduleCmdError = 1,
  createModuleError = 2,
  destroyModuleError = 3,
  connectError = 4,
  disconnectError = 5,
  counterError = 6,
  groupCmdError = 7,
};

}  // namespace Vek
