#pragma once

#include <cstddef>

#include "mfib/CompactRouteKey.h"
#include "runtime/qel/BufferedHashSet.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/MfibVrfDirRouteKey.h"

namespace VekL3Mcast {

// The keys of changed routes that wait for their decision. IPv4 keys wait in their
// compact form, all others as they are; a machine of one family fills one of the two
// parts. Each part walks in its own hash order, which is the order of the route tables.
//
// A pass walks the set from its beginning (walk()) and then drops what it worked
// (drainBefore, drainAll); keys recorded since the pass began wait for the next one.
//
// The compact part is filled at random by the reactors of a busy table, a million keys
// between two passes: it grows at two thirds of its slots rather than four fifths, so
// that an insertion shifts a few members instead of a dozen. A waiting key still takes
// at most 60 bytes (20 a slot, a third of the slots used just after a growth).
class ChangedRouteSet {
 public:
  using Key = Routing::Multicast::Fib::MfibVrfDirRouteKey;
  static constexpr unsigned kCompactMaxLoadPercent = 66;
  using CompactSet =
      Qel::BufferedHashSet<CompactRouteKey, Qel::kHashMap2018TypeConstant, kCompactMaxLoadPercent>;

  // A walk over the compact part, then the other one. Neither may change meanwhile.
  class Walk {
   public:
    bool done() const noexcept { return compact_.done() && wide_.done(); }
    Key key() const { return compact_.done() ? wide_->key : compact_->key.key(); }
    void next() {
      if (compact_.done()) {
        ++wide_;
      } else {
        ++compact_;
      }
    }

   private:
    friend class ChangedRouteSet;
    Walk(const ChangedRouteSet& set) : compact_(set.compact_.begin()), wide_(set.wide_.begin()) {}

    CompactSet::UnsafeIteratorConst compact_;
    Qel::BufferedHashSet<Key>::UnsafeIteratorConst wide_;
  };

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

  Walk walk() const { return Walk(*this); }
  // Drops the keys the walk has passed; those recorded since the walk began stay.
  void drainBefore(const Walk& at) {
    if (at.compact_.done()) {
      compact_.drainAll();
      if (!at.wide_.done()) wide_.drainBefore(at.wide_->key);
    } else {
      compact_.drainBefore(at.compact_->key);
    }
  }
  void drainAll() {
    compact_.drainAll();
    wide_.drainAll();
  }

 private:
  CompactSet compact_;
  Qel::BufferedHashSet<Key> wide_;
};

}  // namespace VekL3Mcast
