#pragma once

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace Routing::Multicast::Fib {

// The application that wrote a multicast route; each has its own route table per VRF and
// family. Values are fixed (docs/decisions.md, "Route applications"); 0 is no application.
enum class MfibAppType : std::uint8_t {
  none = 0,
  static_ = 1,  // configured static routes
  pim = 2,
  igmp = 3,
  mld = 4,
  mvpn = 5,
};

inline constexpr std::array<MfibAppType, 5> allMfibAppTypes = {
    MfibAppType::static_, MfibAppType::pim, MfibAppType::igmp, MfibAppType::mld, MfibAppType::mvpn};

// The scenario words: "static", "pim", "igmp", "mld", "mvpn"; "none" for none.
std::string_view mfibAppTypeName(MfibAppType app) noexcept;
// Nothing for an unknown word and for "none".
std::optional<MfibAppType> mfibAppTypeFromName(std::string_view name) noexcept;

inline std::ostream& operator<<(std::ostream& os, MfibAppType app) {
  return os << mfibAppTypeName(app);
}

}  // namespace Routing::Multicast::Fib

template <>
struct fmt::formatter<Routing::Multicast::Fib::MfibAppType> : fmt::formatter<std::string_view> {
  auto format(Routing::Multicast::Fib::MfibAppType app, fmt::format_context& ctx) const {
    return fmt::formatter<std::string_view>::format(Routing::Multicast::Fib::mfibAppTypeName(app),
                                                    ctx);
  }
};
