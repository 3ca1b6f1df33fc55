#pragma once

#include <tuple>
#include <type_traits>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/AttrName.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/lumo/Exceptions.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/StateMachine.h"

namespace Qel {

// A hash collection whose members the owner creates and owns, one per key. is(owner, key,
// args...) makes the member with those constructor arguments (by Lumo::makePtr, or by the
// factory given to isWith); called again for the key with the same arguments it returns
// the member that is there, with others it raises, as InstantiatingAttr does. Changes
// publish the attribute id with the key, as the other collections do.
//
//   Lumo::Ptr<Port> portIs(Lanx::IntfId id, Lumo::String dev) { return port_.is(*this, id, id, dev); }
//   void portDel(Lanx::IntfId id) { port_.del(*this, id); }
//   Qel::InstantiatingCollectionAttr<Lanx::IntfId, Port, kPort, "port", Lanx::IntfId, Lumo::String> port_;
template <typename Key, typename T, AttributeId Id, AttrName Name, typename... Args>
class InstantiatingCollectionAttr {
  static_assert(!std::is_base_of_v<StateMachine, T>,
                "members that are state machines belong in a NestedSmCollection");

 public:
  static constexpr AttributeId kId = Id;
  using Members = HashMap2018<Key, Lumo::Ptr<T>>;

  const Members& members() const noexcept { return members_.members(); }
  std::size_t size() const noexcept { return members_.size(); }
  bool empty() const noexcept { return members_.empty(); }
  bool has(const Key& key) const { return members_.has(key); }
  // The member, or null.
  Lumo::Ptr<T> get(const Key& key) const { return members_.get(key); }

  Lumo::Ptr<T> is(Entity& owner, const Key& key, const Args&... args) {
    return isWith(owner, key, [](const Args&... a) { return Lumo::makePtr<T>(a...); }, args...);
  }
  template <typename Factory>
  Lumo::Ptr<T> isWith(Entity& owner, const Key& key, Factory&& make, const Args&... args) {
    if ((Impl::isNullArgument(args) || ...)) throwMutatorArgNullPointerException(Name.view());
    if (const Lumo::Ptr<T>* present = members_.find(key)) {
      if (*args_.find(key) == std::tie(args...)) return *present;
      Impl::throwMutatorReinstantiating(owner.typeName(), Name.view());
    }
    Lumo::Ptr<T> made = make(args...);
    QEL_ASSERT(made, "instantiating factory gave null");
    args_.set(key, std::tuple<Args...>(args...));
    members_.is(owner, key, made);
    return made;
  }

  void del(Entity& owner, const Key& key) {
    args_.erase(key);
    members_.del(owner, key);
  }
  void delAll(Entity& owner) {
    args_.clear();
    members_.delAll(owner);
  }

 private:
  HashCollectionAttr<Key, Lumo::Ptr<T>, Id> members_;
  HashMap2018<Key, std::tuple<Args...>> args_;
};

}  // namespace Qel
