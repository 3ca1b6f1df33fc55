#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "runtime/qel/AttributeAccess.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/RbTreeMap.h"

namespace Qel {

namespace Impl {
template <typename Key, typename Value>
const Key& memberKey(const HashMap2018Entry<Key, Value>& entry) {
  return entry.key;
}
template <typename Key, typename Value>
const Key& memberKey(const std::pair<const Key, Value>& entry) {
  return entry.first;
}
template <typename Key>
const Key& memberKey(const Key& key) {
  return key;
}
}  // namespace Impl

// A collection attribute over a HashMap2018 or an RbTreeMap, with or without values.
// Every change of a member publishes the attribute id with a pointer to the member's
// key; setting a member to the value it has publishes nothing.
//
//   void changedRouteIs(const RouteKey& k) { changedRoute_.is(*this, k); }
//   void changedRouteDel(const RouteKey& k) { changedRoute_.del(*this, k); }
//   void changedRouteDelAll() { changedRoute_.delAll(*this); }
//   bool changedRouteHas(const RouteKey& k) const { return changedRoute_.has(k); }
//   Qel::SetAttr<RouteKey, kChangedRoute> changedRoute_;
template <typename Container, typename Key, typename Value, AttributeId Id>
class CollectionAttr {
 public:
  static constexpr AttributeId kId = Id;

  const Container& members() const noexcept { return members_; }
  std::size_t size() const noexcept { return members_.size(); }
  bool empty() const noexcept { return members_.empty(); }
  bool has(const Key& key) const { return members_.has(key); }

  // The member's value, or the empty value (a null pointer) for an absent key.
  template <typename V = Value>
    requires(!std::is_void_v<V>)
  V get(const Key& key) const {
    const V* value = members_.find(key);
    return value ? *value : V{};
  }
  template <typename V = Value>
    requires(!std::is_void_v<V>)
  const V* find(const Key& key) const {
    return members_.find(key);
  }

  template <typename V = Value>
    requires(!std::is_void_v<V>)
  void is(Entity& owner, const Key& key, V value) {
    if (V* present = members_.find(key)) {
      if (*present == value) return;
      *present = std::move(value);
    } else {
      members_.insert(key, std::move(value));
    }
    AttributeAccess<>::notify(owner, Id, &key, nullptr);
  }
  template <typename V = Value>
    requires std::is_void_v<V>
  void is(Entity& owner, const Key& key) {
    if (members_.has(key)) return;
    members_.insert(key);
    AttributeAccess<>::notify(owner, Id, &key, nullptr);
  }

  void del(Entity& owner, const Key& key) {
    const Key gone = key;  // `key` may be one of our own members
    if (!members_.erase(gone)) return;
    AttributeAccess<>::notify(owner, Id, &gone, nullptr);
  }
  // Empties the collection, then publishes each key that went; reactors see the
  // collection already empty.
  void delAll(Entity& owner) {
    Container gone;
    gone.swap(members_);
    for (const auto& member : gone) {
      AttributeAccess<>::notify(owner, Id, &Impl::memberKey(member), nullptr);
    }
  }

 private:
  Container members_;
};

template <typename Key, typename Value, AttributeId Id>
using HashCollectionAttr = CollectionAttr<HashMap2018<Key, Value>, Key, Value, Id>;
template <typename Key, AttributeId Id>
using SetAttr = CollectionAttr<HashSet2018<Key>, Key, void, Id>;
template <typename Key, typename Value, AttributeId Id>
using OrderedCollectionAttr = CollectionAttr<RbTreeMap<Key, Value>, Key, Value, Id>;

}  // namespace Qel
