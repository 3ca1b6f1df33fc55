#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibRouteIntf.h"
#include "runtime/state/MfibRouteIntfIteratorConst.h"
#include "runtime/state/MfibRouteIntfList.h"

namespace Vash::Multicast::Fib {

// One multicast route of an application's table: its key, the incoming interface, the
// route flags and the interface list (incoming and outgoing members with their flags).
// A default-constructed route has every member empty and stands for "no route".
class Route {
 public:
  // Bits of routeFlags.
  static constexpr std::uint8_t fastdropFlag = 0x02;
  // The incoming interface is the Register interface.
  static constexpr std::uint8_t iifRegisterFlag = 0x04;
  // The outgoing list holds the Register interface.
  static constexpr std::uint8_t oifRegisterFlag = 0x08;
  // The route is in switching state.
  static constexpr std::uint8_t switchingFlag = 0x20;

  Route() = default;
  Route(const Routing::Multicast::Fib::IpGenRouteKey& key, Lanx::IntfId iif,
        std::uint8_t routeFlags, std::vector<RouteIntf> intfs = {})
      : key_(key), iif_(iif), routeFlags_(routeFlags), intfs_(std::move(intfs)) {}

  // The shape most writers have: an incoming interface and a list of outgoing ones. The
  // incoming interface joins the list with the incoming flag unless it is empty.
  static Route withOifs(const Routing::Multicast::Fib::IpGenRouteKey& key, Lanx::IntfId iif,
                        std::uint8_t routeFlags, std::initializer_list<Lanx::IntfId> oifs);

  const Routing::Multicast::Fib::IpGenRouteKey& key() const noexcept { return key_; }
  Lanx::IntfId iif() const noexcept { return iif_; }
  std::uint8_t routeFlags() const noexcept { return routeFlags_; }
  bool fastdrop() const noexcept { return (routeFlags_ & fastdropFlag) != 0; }
  bool iifRegister() const noexcept { return (routeFlags_ & iifRegisterFlag) != 0; }
  bool oifRegister() const noexcept { return (routeFlags_ & oifRegisterFlag) != 0; }
  bool switching() const noexcept { return (routeFlags_ & switchingFlag) != 0; }

  std::span<const RouteIntf> intfs() const noexcept { return {intfs_.begin(), intfs_.size()}; }
  RouteIntfIteratorConst oifIteratorConst() const noexcept {
    return RouteIntfIteratorConst(intfs_.begin(), intfs_.end());
  }

  void iifIs(Lanx::IntfId iif) noexcept { iif_ = iif; }
  void routeFlagsIs(std::uint8_t flags) noexcept { routeFlags_ = flags; }
  // Adds a member or replaces the flags of the one there.
  void intfIs(Lanx::IntfId intfId, std::uint8_t flags);
  void intfDel(Lanx::IntfId intfId);

  bool isEq(const Route& other) const { return *this == other; }
  bool isEmpty() const { return isEq(Route()); }
  // "<key> iif <name> flags 0x<hex> [<intf>:<flags> ...]", for traces and test messages.
  std::string toString() const;
  friend bool operator==(const Route&, const Route&) = default;

 private:
  Routing::Multicast::Fib::IpGenRouteKey key_;
  Lanx::IntfId iif_;
  std::uint8_t routeFlags_ = 0;
  RouteIntfList intfs_;
};

}  // namespace Vash::Multicast::Fib
