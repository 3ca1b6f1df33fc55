#pragma once

#include <cstdint>

namespace Vek {

// What a daemon-level command asks for.
enum GrpcRequestType : std::uint8_t {
  resumeAllRequest = 10,
  createPortRequest = 20,
  destroyPortRequest = 21,
  portConfRequest = 31,
  createRateLimitTcRequest = 40,
  attachTaskToTcRequest = 41,
  portCmdRequest = 55,
};

}  // namespace Vek
