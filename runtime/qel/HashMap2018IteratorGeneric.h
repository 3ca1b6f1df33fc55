#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>

#include "runtime/lumo/Assert.h"

namespace Qel {

// The safe iterator, for scans whose handlers change the map. It holds a copy of the
// member it stands on, so that member may be deleted (and its value, a counted pointer
// say, stays alive until the scan moves on); members may be added, and the scan meets
// those whose position is still ahead of it. When the map changed since the last step
// the iterator finds its place again by the current key's position.
template <typename Map>
class HashMap2018IteratorGeneric {
  using MapType = std::remove_const_t<Map>;

 public:
  using Entry = typename MapType::Entry;
  using EntryRef = std::conditional_t<std::is_const_v<Map>, const Entry, Entry>;

  HashMap2018IteratorGeneric(Map* map, std::size_t index) : hashMap_(map) { standAt(index); }

  bool done() const noexcept { return !current_; }
  explicit operator bool() const noexcept { return !done(); }

  // The member as it was when the iterator stepped onto it; it may since have been
  // deleted or changed.
  const Entry& currNodeMaybeStale() const {
    QEL_ASSERT(current_, "iter_");
    return *current_;
  }
  // The member itself, or null if it is no longer in the map.
  EntryRef* currNodeNonStale() {
    QEL_ASSERT(current_, "iter_");
    return relocate() ? &hashMap_->entries_[index_] : nullptr;
  }
  // Steps to the next member in hash order after the current position.
  void advance() {
    QEL_ASSERT(current_, "iter_");
    const std::size_t from = relocate() ? index_ + 1 : index_;
    standAt(hashMap_->firstFrom(from));
  }

 private:
  // Brings index_ up to date with the map; true if the current member is still in it.
  bool relocate() {
    if (version_ != hashMap_->version()) {
      version_ = hashMap_->version();
      const auto [position, found] = hashMap_->findPosition(current_->key);
      index_ = position;
      onMember_ = found;
    }
    return onMember_;
  }
  void standAt(std::size_t index) {
    index_ = index;
    version_ = hashMap_->version();
    onMember_ = index < hashMap_->slots_;
    if (onMember_) {
      current_.emplace(hashMap_->entries_[index]);
    } else {
      current_.reset();
    }
  }

  Map* hashMap_;
  std::optional<Entry> current_;
  std::size_t index_ = 0;
  std::uint32_t version_ = 0;
  bool onMember_ = false;
};

}  // namespace Qel
