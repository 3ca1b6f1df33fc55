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
#include "runtime/state/ToStringFormatter.h"

namespace Lanx {

// The 64-bit id of an interface. The top byte is the kind of interface, the 56 bits below
// carry its numbers; docs/decisions.md ("Interface ids") has the layout of every kind. Every
// name that parses gives an id whose name() is that name again (up to the case of the kind
// word and its short form). Ids compare, order and hash as plain numbers; the default id, 0,
// is the empty id.
class IntfId {
 public:
  enum class Kind : std::uint8_t {
    none = 0,
    ethernet = 1,     // Ethernet1, Ethernet1/2, Ethernet3/1/4
    vlan = 2,         // Vlan10
    portChannel = 3,  // Port-Channel5
    loopback = 4,     // Loopback0
    vxlan = 5,        // Vxlan1
    null = 6,         // Null0
    register_ = 7,    // Register0
    tunnel = 8,       // Tunnel3
    mcastTunnel = 9,  // McastTunnel1-10.0.0.9, see Multicast::Tunnel::McastTunnelIntfId
    fwd = 10,         // fwd0, the kernel's forwarding devices
  };
  static constexpr int kindShift = 56;
  static constexpr std::uint64_t payloadMask = (std::uint64_t{1} << kindShift) - 1;
  static constexpr int maxEthernetNumbers = 3;

  constexpr IntfId() noexcept = default;
  explicit constexpr IntfId(std::uint64_t value) noexcept : value_(value) {}
  // Parses a name; raises Lumo::Exception with the reason when it is no interface name.
  explicit IntfId(std::string_view name);

  // The id of a name, or nothing with the reason in whyNot ("bad interface name ...").
  static std::optional<IntfId> fromName(std::string_view name, std::string* whyNot = nullptr);
  static IntfId fromNameOrThrow(std::string_view name);

  static constexpr IntfId make(Kind kind, std::uint64_t payload) noexcept {
    return IntfId((std::uint64_t{static_cast<std::uint8_t>(kind)} << kindShift) |
                  (payload & payloadMask));
  }
  // A kind named by one number: every kind but Ethernet and the multicast tunnels.
  static constexpr IntfId numbered(Kind kind, std::uint32_t number) noexcept {
    return make(kind, number);
  }
  static constexpr IntfId ethernet(std::uint16_t a) noexcept { return ethernetOf(1, a, 0, 0); }
  static constexpr IntfId ethernet(std::uint16_t a, std::uint16_t b) noexcept {
    return ethernetOf(2, a, b, 0);
  }
  static constexpr IntfId ethernet(std::uint16_t a, std::uint16_t b, std::uint16_t c) noexcept {
    return ethernetOf(3, a, b, c);
  }
  static constexpr IntfId null0() noexcept { return numbered(Kind::null, 0); }
  static constexpr IntfId register0() noexcept { return numbered(Kind::register_, 0); }

  constexpr std::uint64_t value() const noexcept { return value_; }
  constexpr std::uint64_t intfId() const noexcept { return value_; }
  constexpr Kind kind() const noexcept { return static_cast<Kind>(value_ >> kindShift); }
  constexpr std::uint64_t payload() const noexcept { return value_ & payloadMask; }
  constexpr bool isEmpty() const noexcept { return value_ == 0; }

  // "Ethernet1/2", "Vlan10", ...; "" for the empty id.
  std::string name() const;
  // "Et1/2", "Vl10", "Po5", "Lo0", "Vx1", "Tu3", "Mt1-10.0.0.9"; Null0, Register0 and fwd
  // devices keep their name.
  std::string shortName() const;
  std::string toString() const { return name(); }
  std::size_t hash() const noexcept { return hashMix64(value_); }

  friend constexpr bool operator==(const IntfId&, const IntfId&) noexcept = default;
  friend constexpr std::strong_ordering operator<=>(const IntfId&,
                                                    const IntfId&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, IntfId id) { return os << id.name(); }

 private:
  // Ethernet payload: a, b, c 16 bits each from the top, then the count of numbers written.
  static constexpr IntfId ethernetOf(std::uint8_t count, std::uint16_t a, std::uint16_t b,
                                     std::uint16_t c) noexcept {
    return make(Kind::ethernet, (std::uint64_t{a} << 40) | (std::uint64_t{b} << 24) |
                                    (std::uint64_t{c} << 8) | count);
  }
  std::string text(bool shortForm) const;

  std::uint64_t value_ = 0;
};

}  // namespace Lanx

template <>
struct std::hash<Lanx::IntfId> : Lanx::MemberHash<Lanx::IntfId> {};
template <>
struct fmt::formatter<Lanx::IntfId> : Lanx::ToStringFormatter<Lanx::IntfId> {};
