#pragma once

#include <fmt/format.h>

#include <cstdint>

namespace Vek {

// The handle of one allocated data-plane packet counter. Ids start at 1; 0 names none.
class CounterId {
 public:
  constexpr CounterId() noexcept = default;
  constexpr explicit CounterId(std::uint32_t value) noexcept : value_(value) {}

  constexpr bool isValid() const noexcept { return value_ != 0; }
  constexpr std::uint32_t value() const noexcept { return value_; }

  friend constexpr bool operator==(CounterId a, CounterId b) noexcept = default;
  friend constexpr auto operator<=>(CounterId a, CounterId b) noexcept = default;

 private:
  std::uint32_t value_ = 0;
};

// The unit a counter counts in; the modules of this system count packets.
using CounterUnit = std::uint32_t;
inline constexpr CounterUnit counterUnitPackets = 1;

}  // namespace Vek

template <>
struct fmt::formatter<Vek::CounterId> : fmt::formatter<std::uint32_t> {
  template <typename Context>
  auto format(Vek::CounterId id, Context& ctx) const {
    return fmt::formatter<std::uint32_t>::format(id.value(), ctx);
  }
};
