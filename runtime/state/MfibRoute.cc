#include "runtime/state/MfibRoute.h"

#include <fmt/format.h>

#include <algorithm>

namespace Vash::Multicast::Fib {

Route Route::withOifs(const Routing::Multicast::Fib::IpGenRouteKey& key, Lanx::IntfId iif,
                      std::uint8_t routeFlags, std::initializer_list<Lanx::IntfId> oifs) {
  std::vector<RouteIntf> intfs;
  intfs.reserve(oifs.size() + 1);
  if (!iif.isEmpty()) intfs.push_back(RouteIntf{iif, RouteIntf::incomingFlag});
  for (Lanx::IntfId oif : oifs) intfs.push_back(RouteIntf{oif, RouteIntf::outgoingFlag});
  return Route(key, iif, routeFlags, std::move(intfs));
}

void Route::intfIs(Lanx::IntfId intfId, std::uint8_t flags) {
  auto at = std::find_if(intfs_.begin(), intfs_.end(),
                         [&](const RouteIntf& member) { return member.intfId == intfId; });
  if (at != intfs_.end()) {
    at->flags = flags;
  } else {
    intfs_.pushBack(RouteIntf{intfId, flags});
  }
}

void Route::intfDel(Lanx::IntfId intfId) {
  intfs_.eraseIf([&](const RouteIntf& member) { return member.intfId == intfId; });
}

std::string Route::toString() const {
  std::string text = fmt::format("{} iif {} flags {:#04x} [", key_, iif_, routeFlags_);
  for (const RouteIntf& member : intfs_) {
    if (text.back() != '[') text += ' ';
    text += fmt::format("{}:{}", member.intfId, member.flags);
  }
  text += ']';
  return text;
}

}  // namespace Vash::Multicast::Fib
