#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "runtime/state/HashMix.h"
#include "runtime/state/ToStringFormatter.h"

namespace Lanx {

// An Ethernet (MAC) address, six bytes in wire order; the default one is all zero.
class EthAddr {
 public:
  static constexpr std::size_t bytes = 6;

  constexpr EthAddr() noexcept = default;
  explicit constexpr EthAddr(const std::array<std::uint8_t, bytes>& raw) noexcept : raw_(raw) {}
  // Parses "00:1c:73:aa:bb:cc"; raises Lumo::Exception for anything else.
  explicit EthAddr(std::string_view text);

  static std::optional<EthAddr> fromString(std::string_view text, std::string* whyNot = nullptr);

  std::span<const std::uint8_t> rawBytes() const noexcept { return raw_; }
  bool isZero() const noexcept { return value() == 0; }
  // The 48 bits as one number, first byte highest.
  std::uint64_t value() const noexcept {
    std::uint64_t value = 0;
    for (std::uint8_t byte : raw_) value = (value << 8) | byte;
    return value;
  }

  // Lower-case, colon-separated.
  std::string toString() const;
  std::size_t hash() const noexcept { return hashMix64(value()); }

  friend bool operator==(const EthAddr&, const EthAddr&) noexcept = default;
  friend std::strong_ordering operator<=>(const EthAddr&, const EthAddr&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, const EthAddr& a) { return os << a.toString(); }

 private:
  std::array<std::uint8_t, bytes> raw_{};
};

}  // namespace Lanx

template <>
struct std::hash<Lanx::EthAddr> : Lanx::MemberHash<Lanx::EthAddr> {};
template <>
struct fmt::formatter<Lanx::EthAddr> : Lanx::ToStringFormatter<Lanx::EthAddr> {};
