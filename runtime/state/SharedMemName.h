#pragma once

#include <string_view>

namespace Lanx {

// The shared-memory entity manager that holds the tables multicast mounts.
inline constexpr std::string_view sharedMemManagerName = "mfa";

}  // namespace Lanx
