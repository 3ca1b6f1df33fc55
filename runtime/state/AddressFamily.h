#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace Lanx {

// The family byte of an address as it travels on the command channel.
enum class AddressFamily : std::uint8_t { none = 0, ipv4 = 1, ipv6 = 2 };

// "ipv4", "ipv6", "none"; the words scenarios use.
std::string_view addressFamilyName(AddressFamily af) noexcept;
std::optional<AddressFamily> addressFamilyFromName(std::string_view name) noexcept;

inline std::ostream& operator<<(std::ostream& os, AddressFamily af) {
  return os << addressFamilyName(af);
}

}  // namespace Lanx

template <>
struct fmt::formatter<Lanx::AddressFamily> : fmt::formatter<std::string_view> {
  auto format(Lanx::AddressFamily af, fmt::format_context& ctx) const {
    return fmt::formatter<std::string_view>::format(Lanx::addressFamilyName(af), ctx);
  }
};
