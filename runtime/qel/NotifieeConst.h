#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/SmSubscriber.h"

namespace Qel {

class StateMachine;

// Base of the reactor classes: watches one entity and hears every change of its
// attributes through onAttribute. A reactor that belongs to a state machine (a nested
// machine passes itself) is enrolled only while the machine's notification is active
// and does nothing while the machine is a zombie. Type-specific notifiees derive from it
// and inherit its constructor.
class NotifieeConst {
 public:
  explicit NotifieeConst(StateMachine* machine = nullptr)
      : subscriber_(this, &NotifieeConst::dispatch, machine) {}
  NotifieeConst(const NotifieeConst&) = delete;
  NotifieeConst& operator=(const NotifieeConst&) = delete;
  virtual ~NotifieeConst() = default;

  // Called for each change of the notifier's attributes; the override compares the id.
  virtual void onAttribute(AttributeId, const void*) {}

  // Binds the reactor to a (new) entity; registration carries over.
  void notifierIs(Lumo::Ptr<Entity const> notifier) {
    subscriber_.publisherIs(const_cast<Entity*>(notifier.get()));
    notifier_ = std::move(notifier);
  }
  const Lumo::Ptr<Entity const>& notifier() const noexcept { return notifier_; }
  void isRegisteredNotifieeIs(bool on) { subscriber_.isRegisteredIs(on); }
  bool isRegisteredNotifiee() const noexcept { return subscriber_.isRegistered(); }

 private:
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short attributeId,
                       const void* key, const void*) noexcept {
    auto* self = static_cast<SmSubscriber<NotifieeConst>*>(subscriber);
    if (self->machineIsZombie()) return;
    self->owner()->onAttribute(attributeId, key);
  }

  // Declared first so that the subscriber goes before the entity it is subscribed to.
  Lumo::Ptr<Entity const> notifier_;
  SmSubscriber<NotifieeConst> subscriber_;
};

// A notifiee of entities of type T, with the notifier at its own type.
template <typename T>
class NotifieeConstOf : public NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  void notifierIs(Lumo::Ptr<T const> notifier) { NotifieeConst::notifierIs(std::move(notifier)); }
  const T* notifier() const noexcept {
    return static_cast<const T*>(NotifieeConst::notifier().get());
  }
};

}  // namespace Qel
