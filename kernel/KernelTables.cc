#include "kernel/KernelTables.h"

#include <type_traits>
#include <utility>

namespace Kernel {

void KernelTables::apply(const RtMessage& message) {
  std::visit(
      [this](const auto& decoded) {
        using Kind = std::decay_t<decltype(decoded)>;
        if constexpr (std::is_same_v<Kind, LinkAdded>) {
          Link& held = links_[decoded.link.index];
          if (held == decoded.link) return;
          held = decoded.link;
          changes_.links = true;
        } else if constexpr (std::is_same_v<Kind, LinkRemoved>) {
          if (links_.erase(decoded.index)) changes_.links = true;
        } else if constexpr (std::is_same_v<Kind, RouteAdded>) {
          auto [it, added] = routes_.try_emplace(decoded.route.key, decoded.route);
          if (!added) {
            if (it->second == decoded.route) return;
            it->second = decoded.route;
          }
          changes_.routes.insert(decoded.route.key);
        } else if constexpr (std::is_same_v<Kind, RouteRemoved>) {
          if (routes_.erase(decoded.key)) changes_.routes.insert(decoded.key);
        }
      },
      message);
}

void KernelTables::replaceWith(KernelTables fresh) {
  if (fresh.links_ != links_) changes_.links = true;
  // Both maps are ordered by key: one pass finds what went, came or differs.
  auto mine = routes_.begin();
  auto theirs = fresh.routes_.begin();
  while (mine != routes_.end() || theirs != fresh.routes_.end()) {
    if (theirs == fresh.routes_.end() || (mine != routes_.end() && mine->first < theirs->first)) {
      changes_.routes.insert((mine++)->first);
    } else if (mine == routes_.end() || theirs->first < mine->first) {
      changes_.routes.insert((theirs++)->first);
    } else {
      if (mine->second != theirs->second) changes_.routes.insert(mine->first);
      ++mine;
      ++theirs;
    }
  }
  links_ = std::move(fresh.links_);
  routes_ = std::move(fresh.routes_);
}

const McastRoute* KernelTables::route(const McastRouteKey& key) const {
  auto it = routes_.find(key);
  return it == routes_.end() ? nullptr : &it->second;
}

KernelTables::Changes KernelTables::takeChanges() { return std::exchange(changes_, {}); }

}  // namespace Kernel
