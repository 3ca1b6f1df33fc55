#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "runtime/state/HashMix.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/ToStringFormatter.h"

namespace Lanx {

// An address and a prefix length. The bits past the length are cleared on construction, so
// one prefix has one form. A prefix without family is the wildcard, the source of a *,G route.
class IpGenPrefix {
 public:
  constexpr IpGenPrefix() noexcept = default;
  // The host prefix of an address: full length.
  IpGenPrefix(const IpGenAddr& addr) noexcept  // NOLINT
      : addr_(addr), length_(static_cast<std::uint8_t>(8 * addr.size())) {}
  // Raises Lumo::Exception for a length longer than the address.
  IpGenPrefix(const IpGenAddr& addr, std::uint8_t length);
  // Parses "*", "ADDR" or "ADDR/LEN"; raises Lumo::Exception for anything else.
  explicit IpGenPrefix(std::string_view text);

  static std::optional<IpGenPrefix> fromString(std::string_view text,
                                               std::string* whyNot = nullptr);

  const IpGenAddr& addr() const noexcept { return addr_; }
  std::uint8_t length() const noexcept { return length_; }
  AddressFamily family() const noexcept { return addr_.family(); }
  bool isNone() const noexcept { return addr_.isNone(); }
  bool isHost() const noexcept { return !isNone() && length_ == 8 * addr_.size(); }

  // "*" without family, the bare address for a host prefix, "ADDR/LEN" otherwise.
  std::string toString() const;
  std::size_t hash() const noexcept { return hashCombine(addr_.hash(), length_); }

  friend bool operator==(const IpGenPrefix&, const IpGenPrefix&) noexcept = default;
  friend std::strong_ordering operator<=>(const IpGenPrefix&,
                                          const IpGenPrefix&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, const IpGenPrefix& p) {
    return os << p.toString();
  }

 private:
  IpGenAddr addr_;
  std::uint8_t length_ = 0;
};

}  // namespace Lanx

template <>
struct std::hash<Lanx::IpGenPrefix> : Lanx::MemberHash<Lanx::IpGenPrefix> {};
template <>
struct fmt::formatter<Lanx::IpGenPrefix> : Lanx::ToStringFormatter<Lanx::IpGenPrefix> {};
