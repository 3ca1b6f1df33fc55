#pragma once

#include <cstddef>

#include "mfib/CompactRouteKey.h"
#include "runtime/qel/HashOrderWorkList.h"
#include "runtime/state/AddressFamily.h"
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
    if (const auto compact = CompactRouteKey::of(key)) {
      compact_.insert(*compact);
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
