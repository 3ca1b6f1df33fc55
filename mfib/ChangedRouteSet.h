#pragma once

#include <cstddef>

#include "mfib/CompactRouteKey.h"
#include "runtime/qel/HashOrderWorkList.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MfibVrfDirRouteKey.h"

namespace VekL3Mcast {

// The keys of changed routes that wait for their decision. IPv4 keys wait in their
// compact form, all others as they are; a machine of one family fills one of the two
// parts. Each part is worked in its own hash order, which is the order of the route
// tables, the compact part first.
//
// A pass takes the first key (front()) and drops it once decided (popFront()). A key
// recorded many times before its turn is worked once. Recording costs an append, not a
// search: the reactors of a busy table record a million keys between two passes.
class ChangedRouteSet {
 public:
  using Key = Routing::Multicast::Fib::MfibVrfDirRouteKey;

  void insert(const Key& key) {
    const Routing::Multicast::Fib::IpGenRouteKey& route = key.key();
    if (CompactRouteKey::fits(route)) {
      // The compact form hashes as the route key, which is hashed where it stands.
      compact_.insertMade(route.hash(), [&](CompactRouteKey& into) {
        CompactRouteKey::write(into, key.app(), route);
      });
    } else {
      wide_.insert(key);
    }
  }
  bool has(const Key& key) const {
    const auto compact = CompactRouteKey::of(key);
    return compact ? compact_.has(*compact) : wide_.has(key);
  }
  bool erase(const Key& key) {
    const auto compact = CompactRouteKey::of(key);
    return compact ? compact_.erase(*compact) : wide_.erase(key);
  }
  // A key recorded more than once may count more than once until its turn.
  std::size_t size() const { return compact_.size() + wide_.size(); }
  bool empty() const { return compact_.empty() && wide_.empty(); }
  void clear() {
    compact_.clear();
    wide_.clear();
  }
  // Room for that many keys of the family in all.
  void reserve(std::size_t members, Lanx::AddressFamily af) {
    if (af == Lanx::AddressFamily::ipv4) {
      compact_.reserve(members);
    } else {
      wide_.reserve(members);
    }
  }

  // The next key to decide. The set must not be empty.
  Key front() { return compact_.empty() ? wide_.front() : compact_.front().key(); }
  // The next key's application. The set must not be empty.
  Routing::Multicast::Fib::MfibAppType frontApp() {
    return compact_.empty() ? wide_.front().app() : compact_.front().app();
  }
  // The next key's route in `routes`, the table of frontApp(), found by the hash the set
  // kept with the key; null when the table does not hold it. A compact key is not made
  // back into a route key for it.
  const Vash::Multicast::Fib::Route* frontRouteIn(
      const Vash::Multicast::Fib::Status::RouteMap& routes) {
    using Routing::Multicast::Fib::IpGenRouteKey;
    const Vash::Multicast::Fib::Status::RouteMap::Entry* entry = nullptr;
    if (compact_.empty()) {
      const IpGenRouteKey& key = wide_.front().key();
      entry = routes.findHashed(wide_.frontHash(),
                                [&](const IpGenRouteKey& member) { return member == key; });
    } else {
      const CompactRouteKey& key = compact_.front();
      entry = routes.findHashed(compact_.frontHash(),
                                [&](const IpGenRouteKey& member) { return key.sameAs(member); });
    }
    return entry ? &entry->value : nullptr;
  }
  void popFront() {
    if (compact_.empty()) {
      wide_.popFront();
    } else {
      compact_.popFront();
    }
  }

 private:
  Qel::HashOrderWorkList<CompactRouteKey> compact_;
  Qel::HashOrderWorkList<Key> wide_;
};

}  // namespace VekL3Mcast
