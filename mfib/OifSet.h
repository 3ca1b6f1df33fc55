#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/lumo/Assert.h"
#include "runtime/state/IntfId.h"

namespace VekL3Mcast {

// The outgoing interfaces of one route: the collection `oif` of interface id to a flag.
// Membership is what counts when a route is sent; the flag travels with the member only.
// Members iterate in the order of their ids, so two equal sets send the same gate list.
//
// A route rarely has more than a handful of outgoing interfaces: a sorted vector keeps
// the set in one block and iterates without chasing nodes.
class OifSet {
 public:
  using Member = std::pair<Lanx::IntfId, bool>;
  using const_iterator = std::vector<Member>::const_iterator;

  OifSet() = default;
  // A set has no text form: it holds a collection.
  explicit OifSet(std::string_view) {
    QEL_ASSERT(false, "No String constructor for OifSet - has collection");
  }

  // Adds a member, or overwrites the flag of one that is there.
  void oifIs(Lanx::IntfId intfId, bool value) {
    auto at = position(intfId);
    if (at != oif_.end() && at->first == intfId) {
      at->second = value;
    } else {
      oif_.insert(at, Member{intfId, value});
    }
  }
  void oifDel(Lanx::IntfId intfId) {
    auto at = position(intfId);
    if (at != oif_.end() && at->first == intfId) oif_.erase(at);
  }
  // Keeps the storage, so a set that is filled again does not allocate.
  void oifDelAll() noexcept { oif_.clear(); }

  bool oifHas(Lanx::IntfId intfId) const {
    auto at = std::lower_bound(oif_.begin(), oif_.end(), intfId, IdLess{});
    return at != oif_.end() && at->first == intfId;
  }
  // The flag of a member; false for an interface that is no member.
  bool oif(Lanx::IntfId intfId) const {
    auto at = std::lower_bound(oif_.begin(), oif_.end(), intfId, IdLess{});
    return at != oif_.end() && at->first == intfId && at->second;
  }
  std::size_t oifCount() const noexcept { return oif_.size(); }
  bool empty() const noexcept { return oif_.empty(); }

  const_iterator begin() const noexcept { return oif_.begin(); }
  const_iterator end() const noexcept { return oif_.end(); }

  bool isEq(const OifSet& other) const { return oif_ == other.oif_; }
  friend bool operator==(const OifSet& a, const OifSet& b) { return a.isEq(b); }
  friend std::strong_ordering operator<=>(const OifSet& a, const OifSet& b) {
    return std::lexicographical_compare_three_way(a.oif_.begin(), a.oif_.end(), b.oif_.begin(),
                                                  b.oif_.end());
  }

 private:
  struct IdLess {
    bool operator()(const Member& member, Lanx::IntfId id) const noexcept {
      return member.first < id;
    }
  };
  std::vector<Member>::iterator position(Lanx::IntfId intfId) {
    return std::lower_bound(oif_.begin(), oif_.end(), intfId, IdLess{});
  }

  std::vector<Member> oif_;
};

}  // namespace VekL3Mcast
