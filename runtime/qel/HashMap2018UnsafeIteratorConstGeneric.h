#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/lumo/Assert.h"

namespace Qel {

// The checking iterator, for a map that nobody may change during the loop. Every step
// compares the map's structural version with the one it started from and ends the
// process if the map was changed under it.
template <typename Map>
class HashMap2018UnsafeIteratorConstGeneric {
 public:
  using Entry = typename Map::Entry;

  HashMap2018UnsafeIteratorConstGeneric(const Map* map, std::size_t index) noexcept
      : hashMap_(map), version_(map->version()) {
    standAt(index);
  }

  const Entry& operator*() const {
    checkVersion();
    QEL_ASSERT(iter_, "iter_");
    return *iter_;
  }
  const Entry* operator->() const { return &**this; }
  HashMap2018UnsafeIteratorConstGeneric& operator++() {
    checkVersion();
    QEL_ASSERT(iter_, "iter_");
    standAt(hashMap_->firstFrom(index_ + 1));
    return *this;
  }
  bool operator==(const HashMap2018UnsafeIteratorConstGeneric& other) const noexcept {
    return iter_ == other.iter_;
  }
  bool done() const noexcept { return iter_ == nullptr; }

 private:
  void checkVersion() const {
    QEL_ASSERT(version_ == hashMap_->version(), "version_ == hashMap_->version()");
  }
  void standAt(std::size_t index) noexcept {
    index_ = index;
    iter_ = index < hashMap_->slots_ ? &hashMap_->entries_[index] : nullptr;
  }

  const Map* hashMap_;
  const Entry* iter_ = nullptr;
  std::size_t index_ = 0;
  std::uint32_t version_;
};

}  // namespace Qel
