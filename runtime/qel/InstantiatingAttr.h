#pragma once

#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/AttrName.h"
#include "runtime/qel/AttributeAccess.h"
#include "runtime/qel/Entity.h"
#include "runtime/lumo/Exceptions.h"
#include "runtime/qel/StateMachine.h"

namespace Qel {

namespace Impl {
template <typename T>
bool isNullArgument(const T& argument) {
  if constexpr (std::is_pointer_v<T>) {
    return argument == nullptr;
  } else if constexpr (requires { argument.get(); argument == nullptr; }) {
    return argument == nullptr;
  } else {
    return false;
  }
}

// The owned object of an instantiating attribute, when it is a state machine: it follows
// its owner's notification-active and zombie state.
class OwnedSmLink : public SmMember {
 public:
  void attach(Entity& owner, StateMachine* owned);
  void detach();
  ~OwnedSmLink() override { detach(); }
  void smMemberNotificationActiveIs(bool on) override { owned_->hasNotificationActiveIs(on); }
  void smMemberZombieIs(bool on) override { owned_->smMemberZombieIs(on); }

 private:
  StateMachine* owner_ = nullptr;
  StateMachine* owned_ = nullptr;
};
struct NoLink {
  void attach(Entity&, const void*) {}
  void detach() {}
};
}  // namespace Impl

// An attribute whose object the owner creates and owns. is(owner, args...) creates it
// with those constructor arguments (by Lumo::makePtr, or by the factory given to
// isWith); called again with the same arguments it returns the object that is there,
// with others it raises. A null pointer argument raises. When the object is a state
// machine it hangs below its owner: it gets the owner's notification-active state at
// creation and follows it; del makes it a zombie with notification off.
//
//   Lumo::Ptr<Module> moduleIs(Vrf* vrf, int af) { return module_.is(*this, vrf, af); }
//   void moduleDel() { module_.del(*this); }
//   Qel::InstantiatingAttr<Module, kModule, "module", Vrf*, int> module_;
template <typename T, AttributeId Id, AttrName Name, typename... Args>
class InstantiatingAttr {
  static constexpr bool kOwnsMachine = std::is_base_of_v<StateMachine, T>;

 public:
  static constexpr AttributeId kId = Id;

  InstantiatingAttr() = default;
  InstantiatingAttr(const InstantiatingAttr&) = delete;
  InstantiatingAttr& operator=(const InstantiatingAttr&) = delete;

  const Lumo::Ptr<T>& get() const noexcept { return object_; }

  Lumo::Ptr<T> is(Entity& owner, const Args&... args) {
    return isWith(owner, [](const Args&... a) { return Lumo::makePtr<T>(a...); }, args...);
  }
  template <typename Factory>
  Lumo::Ptr<T> isWith(Entity& owner, Factory&& make, const Args&... args) {
    if ((Impl::isNullArgument(args) || ...)) throwMutatorArgNullPointerException(Name.view());
    if (object_) {
      if (*args_ == std::tie(args...)) return object_;
      Impl::throwMutatorReinstantiating(owner.typeName(), Name.view());
    }
    Lumo::Ptr<T> made = make(args...);
    QEL_ASSERT(made, "instantiating factory gave null");
    object_ = made;
    args_.emplace(args...);
    link_.attach(owner, object_.get());
    AttributeAccess<>::notify(owner, Id, nullptr, object_.get());
    return made;
  }

  void del(Entity& owner) {
    if (!object_) return;
    Lumo::Ptr<T> gone = std::move(object_);
    args_.reset();
    link_.detach();
    if constexpr (kOwnsMachine) {
      gone->qelDoZombieReactors(true);
      gone->hasNotificationActiveIs(false);
    }
    AttributeAccess<>::notify(owner, Id, nullptr, nullptr);
  }

 private:
  Lumo::Ptr<T> object_;
  std::optional<std::tuple<Args...>> args_;
  [[no_unique_address]] std::conditional_t<kOwnsMachine, Impl::OwnedSmLink, Impl::NoLink> link_;
};

}  // namespace Qel
