#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "runtime/state/MfibRouteIntf.h"

namespace Vash::Multicast::Fib {

// The interface list of a route. Most routes have a handful of members: those are kept in
// the route itself, so that a reader walking a large table finds the list in the entry it
// reads anyway instead of in a separate allocation; longer lists go to the heap.
class RouteIntfList {
 public:
  static constexpr std::size_t inlineCapacity = 4;

  RouteIntfList() = default;
  explicit RouteIntfList(std::vector<RouteIntf> members) {
    if (members.size() > inlineCapacity) {
      spilled_ = std::move(members);
    } else {
      std::copy(members.begin(), members.end(), inline_.begin());
      inlineCount_ = members.size();
    }
  }

  std::size_t size() const noexcept { return spilled_.empty() ? inlineCount_ : spilled_.size(); }
  const RouteIntf* begin() const noexcept {
    return spilled_.empty() ? inline_.data() : spilled_.data();
  }
  const RouteIntf* end() const noexcept { return begin() + size(); }
  RouteIntf* begin() noexcept { return spilled_.empty() ? inline_.data() : spilled_.data(); }
  RouteIntf* end() noexcept { return begin() + size(); }

  void pushBack(const RouteIntf& member) {
    if (spilled_.empty() && inlineCount_ < inlineCapacity) {
      inline_[inlineCount_++] = member;
      return;
    }
    if (spilled_.empty()) {
      spilled_.assign(inline_.begin(), inline_.begin() + inlineCount_);
      inlineCount_ = 0;
    }
    spilled_.push_back(member);
  }
  template <typename Predicate>
  void eraseIf(Predicate predicate) {
    if (!spilled_.empty()) {
      std::erase_if(spilled_, predicate);
      return;
    }
    inlineCount_ = static_cast<std::size_t>(
        std::remove_if(inline_.begin(), inline_.begin() + inlineCount_, predicate) -
        inline_.begin());
  }

  friend bool operator==(const RouteIntfList& a, const RouteIntfList& b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  }

 private:
  std::array<RouteIntf, inlineCapacity> inline_{};
  std::size_t inlineCount_ = 0;
  std::vector<RouteIntf> spilled_;  // the whole list once it outgrows the inline room
};

}  // namespace Vash::Multicast::Fib
