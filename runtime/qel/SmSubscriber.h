#pragma once

#include <concepts>

#include "runtime/lumo/Publisher.h"
#include "runtime/qel/SmMember.h"
#include "runtime/qel/StateMachine.h"

namespace Qel {

namespace Impl {

// A subscriber that belongs to a state machine: it is subscribed to its publisher while
// it is registered and the machine's notification is active (always, without a machine).
class SmSubscription : public Lumo::Subscriber, public SmMember {
 public:
  SmSubscription(Lumo::DispatchFunction dispatch, StateMachine* machine);
  ~SmSubscription() override;

  void publisherIs(Lumo::Publisher* publisher);
  Lumo::Publisher* publisherTarget() const noexcept { return target_; }
  void isRegisteredIs(bool on);
  bool isRegistered() const noexcept { return registered_; }
  StateMachine* machine() const noexcept { return machine_; }
  bool machineIsZombie() const noexcept { return machine_ && machine_->isZombie(); }

  void smMemberNotificationActiveIs(bool) override { sync(); }
  void smMemberZombieIs(bool) override {}

 private:
  void sync();

  StateMachine* machine_;
  Lumo::Publisher* target_ = nullptr;
  bool registered_ = false;
};

}  // namespace Impl

// The light reactor of a state machine: a subscriber embedded in its owner with a
// static dispatch function (see reactorDispatch). The owner's hasNotificationActiveIs
// enrols and withdraws it.
template <typename Owner>
class SmSubscriber : public Impl::SmSubscription {
 public:
  SmSubscriber(Owner* owner, Lumo::DispatchFunction dispatch, StateMachine* machine)
      : SmSubscription(dispatch, machine), owner_(owner) {}
  // For an owner that is the state machine itself. No constraint says so: an owner is
  // still incomplete where its members are declared, and the conversion below refuses any
  // other owner all the same.
  SmSubscriber(Owner* owner, Lumo::DispatchFunction dispatch)
      : SmSubscriber(owner, dispatch, owner) {}

  Owner* owner() const noexcept { return owner_; }
  static Owner* ownerOf(Lumo::Subscriber* subscriber) noexcept {
    return static_cast<SmSubscriber*>(subscriber)->owner_;
  }

 private:
  Owner* owner_;
};

namespace Impl {
template <typename Object, typename Class>
void callHandler(Object* object, void (Class::*handler)(), const void*) {
  (object->*handler)();
}
template <typename Object, typename Class, typename Key>
void callHandler(Object* object, void (Class::*handler)(Key), const void* key) {
  (object->*handler)(*static_cast<const std::remove_cvref_t<Key>*>(key));
}
}  // namespace Impl

// The dispatch function of a light reactor: compares the attribute id, returns at once
// if the owning machine is a zombie, and calls the handler with the key unpacked (or
// without one, for a handler that takes none). An exception that gets here ends the
// process: reactors must not throw.
template <typename Owner, AttributeId Id, auto Handler>
void reactorDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short attributeId,
                     const void* key, const void*) noexcept {
  if (attributeId != Id) return;
  auto* self = static_cast<SmSubscriber<Owner>*>(subscriber);
  if (self->machineIsZombie()) return;
  Impl::callHandler(self->owner(), Handler, key);
}

}  // namespace Qel
