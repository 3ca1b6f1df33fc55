#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <type_traits>
#include <utility>

#include "runtime/lumo/Assert.h"

namespace Qel {

// The ordered collection, for where the order of keys means something. With Value void
// it is an ordered set. Inserting a key that is present is a programming error.
template <typename Key, typename Value = void>
class RbTreeMap {
  using Storage = std::conditional_t<std::is_void_v<Value>, std::set<Key>, std::map<Key, Value>>;

 public:
  using const_iterator = typename Storage::const_iterator;

  std::size_t size() const noexcept { return members_.size(); }
  bool empty() const noexcept { return members_.empty(); }
  bool has(const Key& key) const { return members_.count(key) != 0; }

  template <typename V = Value>
    requires(!std::is_void_v<V>)
  const V* find(const Key& key) const {
    auto it = members_.find(key);
    return it == members_.end() ? nullptr : &it->second;
  }
  template <typename V = Value>
    requires(!std::is_void_v<V>)
  V* find(const Key& key) {
    auto it = members_.find(key);
    return it == members_.end() ? nullptr : &it->second;
  }

  template <typename V = Value>
    requires(!std::is_void_v<V>)
  void insert(const Key& key, V value) {
    assertDupKey(key);
    members_.emplace(key, std::move(value));
  }
  template <typename V = Value>
    requires std::is_void_v<V>
  void insert(const Key& key) {
    assertDupKey(key);
    members_.insert(key);
  }
  bool erase(const Key& key) { return members_.erase(key) != 0; }
  void clear() noexcept { members_.clear(); }
  void swap(RbTreeMap& other) noexcept { members_.swap(other.members_); }

  const_iterator begin() const noexcept { return members_.begin(); }
  const_iterator end() const noexcept { return members_.end(); }
  const_iterator lowerBound(const Key& key) const { return members_.lower_bound(key); }

  void assertDupKey(const Key& key) const { QEL_ASSERT(!has(key), "assertDupKey"); }

  friend bool operator==(const RbTreeMap&, const RbTreeMap&) = default;

 private:
  Storage members_;
};

}  // namespace Qel
