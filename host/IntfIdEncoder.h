#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace VekHost {

// Turns an interface name into its 64-bit interface id; nullopt for a text that is not an
// interface name. The host has no encoding of its own: the build that hosts the plug-in
// supplies it.
using IntfIdEncoder = std::function<std::optional<uint64_t>(std::string_view name)>;

}  // namespace VekHost
