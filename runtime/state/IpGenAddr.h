#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "runtime/state/AddressFamily.h"
#include "runtime/state/HashMix.h"
#include "runtime/state/ToStringFormatter.h"

namespace Lanx {

// An IPv4 or IPv6 address: a family byte and the raw bytes in network order. The bytes past
// size() are always zero, so equality, order and hash look at all of them alike. A default
// address has no family. Ordered by family, then numerically.
class IpGenAddr {
 public:
  static constexpr std::size_t maxBytes = 16;

  constexpr IpGenAddr() noexcept = default;
  // Parses text; raises Lumo::Exception when it is no address.
  explicit IpGenAddr(std::string_view text);

  static IpGenAddr ipv4(std::uint32_t hostOrder) noexcept;
  // The IPv4 address of 4 raw bytes in network order: what a key kept in a compact form
  // turns back into at every changed route, so it stays inline.
  static IpGenAddr ipv4FromRaw(const std::uint8_t* raw) noexcept {
    IpGenAddr addr;
    addr.family_ = AddressFamily::ipv4;
    std::memcpy(addr.bytes_.data(), raw, 4);
    return addr;
  }
  // 4 bytes are IPv4, 16 IPv6; any other count is no address.
  static std::optional<IpGenAddr> fromRawBytes(std::span<const std::uint8_t> bytes) noexcept;
  static std::optional<IpGenAddr> fromString(std::string_view text, std::string* whyNot = nullptr);

  AddressFamily family() const noexcept { return family_; }
  bool isNone() const noexcept { return family_ == AddressFamily::none; }
  // Raw byte count: 4, 16, or 0 without family.
  std::size_t size() const noexcept {
    return family_ == AddressFamily::ipv4 ? 4 : family_ == AddressFamily::ipv6 ? maxBytes : 0;
  }
  std::span<const std::uint8_t> rawBytes() const noexcept { return {bytes_.data(), size()}; }
  void copyToBuffer(std::uint8_t* buffer) const noexcept {
    std::memcpy(buffer, bytes_.data(), size());
  }
  // The IPv4 address in host order; 0 for any other family.
  std::uint32_t ipv4HostOrder() const noexcept;
  bool isMulticast() const noexcept;
  // The address with every bit past the first prefixLength bits cleared.
  IpGenAddr masked(std::size_t prefixLength) const noexcept;

  // Dotted or RFC 5952 text; "none" without family.
  std::string toString() const;
  std::size_t hash() const noexcept { return hashMix64(hashWord()); }
  // The address and its family folded into one word, not yet mixed: for keys made of
  // several addresses that mix once for all of them.
  std::uint64_t hashWord() const noexcept {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    std::memcpy(&high, bytes_.data(), sizeof(high));
    std::memcpy(&low, bytes_.data() + sizeof(high), sizeof(low));
    // The low half is multiplied first, so that equal halves do not cancel each other.
    return (high ^ (low * 0x9e3779b97f4a7c15ULL)) + static_cast<std::uint64_t>(family_);
  }
  // hashWord() of the IPv4 address with these 4 raw bytes, without making the address.
  static std::uint64_t ipv4HashWord(const std::uint8_t* raw) noexcept {
    std::uint32_t high = 0;
    std::memcpy(&high, raw, sizeof(high));
    return std::uint64_t{high} + static_cast<std::uint64_t>(AddressFamily::ipv4);
  }

  // Two words and the family: a route table compares keys at every lookup, and the
  // generated comparison of the byte array calls out to memcmp.
  friend bool operator==(const IpGenAddr& a, const IpGenAddr& b) noexcept {
    return a.family_ == b.family_ && a.word(0) == b.word(0) && a.word(1) == b.word(1);
  }
  friend std::strong_ordering operator<=>(const IpGenAddr&, const IpGenAddr&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, const IpGenAddr& a) {
    return os << a.toString();
  }

 private:
  std::uint64_t word(std::size_t index) const noexcept {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes_.data() + index * sizeof(value), sizeof(value));
    return value;
  }

  AddressFamily family_ = AddressFamily::none;
  std::array<std::uint8_t, maxBytes> bytes_{};
};

}  // namespace Lanx

template <>
struct std::hash<Lanx::IpGenAddr> : Lanx::MemberHash<Lanx::IpGenAddr> {};
template <>
struct fmt::formatter<Lanx::IpGenAddr> : Lanx::ToStringFormatter<Lanx::IpGenAddr> {};
