#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <limits>

namespace Vek {

// One numbered input or output of a data-plane module; default-constructed it names none.
class GateId {
 public:
  static constexpr std::uint32_t invalidValue = std::numeric_limits<std::uint32_t>::max();

  constexpr GateId() noexcept = default;
  constexpr explicit GateId(std::uint32_t value) noexcept : value_(value) {}

  constexpr bool isValid() const noexcept { return value_ != invalidValue; }
  constexpr std::uint32_t value() const noexcept { return value_; }

  friend constexpr bool operator==(GateId a, GateId b) noexcept = default;
  friend constexpr auto operator<=>(GateId a, GateId b) noexcept = default;

 private:
  std::uint32_t value_ = invalidValue;
};

}  // namespace Vek

template <>
struct fmt::formatter<Vek::GateId> : fmt::formatter<std::string_view> {
  template <typename Context>
  auto format(Vek::GateId gate, Context& ctx) const {
    if (!gate.isValid()) return fmt::formatter<std::string_view>::format("invalid", ctx);
    return fmt::format_to(ctx.out(), "{}", gate.value());
  }
};
