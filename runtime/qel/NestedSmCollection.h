#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/SmMember.h"
#include "runtime/qel/StateMachine.h"

namespace Qel {

namespace Impl {
template <typename MemberPointer>
struct MemberClass;
template <typename Type, typename Class>
struct MemberClass<Type Class::*> {
  using type = Class;
};
}  // namespace Impl

// The nested state machines of an owner, one per input, in a HashMap2018 keyed by the
// input's key (InputKey: a member function or data member of the input, e.g.
// &Table::name). Sm is a StateMachine and a notifiee of the input, constructed as
// Sm(Owner*, Lumo::Ptr<Input const>); its constructor binds the input and ends with
// handleInitialized. The collection hangs below the owner: the owner's notification and
// zombie state reach every nested machine.
//
//   void tableSmIs(Lumo::Ptr<Table const> t) { HN_NestedSm_Table_.smIs(t); }
//   void tableSmDel(const TableName& k) { HN_NestedSm_Table_.smDel(k); }
//   Qel::NestedSmCollection<VrfSm, NestedSm_Table, &Table::name> HN_NestedSm_Table_{this};
template <typename Owner, typename Sm, auto InputKey>
class NestedSmCollection : public Impl::SmMember {
 public:
  using Input = typename Impl::MemberClass<decltype(InputKey)>::type;
  using Key = std::remove_cvref_t<std::invoke_result_t<decltype(InputKey), const Input&>>;
  using Map = HashMap2018<Key, Lumo::Ptr<Sm>>;

  explicit NestedSmCollection(Owner* owner) : owner_(owner) { owner_->smMemberAdd(this); }
  NestedSmCollection(const NestedSmCollection&) = delete;
  NestedSmCollection& operator=(const NestedSmCollection&) = delete;
  ~NestedSmCollection() override { owner_->smMemberDel(this); }

  // The machine of this input's key: re-pointed at the input and revived if it exists
  // (either way it rescans), otherwise made, enrolled and given the owner's
  // notification-active state.
  Lumo::Ptr<Sm> smIs(Lumo::Ptr<Input const> input) {
    QEL_ASSERT(input, "nested state machine without input");
    const Key key = std::invoke(InputKey, *input);
    if (const Lumo::Ptr<Sm>* present = machines_.find(key)) {
      Lumo::Ptr<Sm> sm = *present;
      const bool wasZombie = sm->isZombie();
      sm->notifierIs(input);
      sm->qelDoZombieReactors(false);  // a revive rescans
      if (!wasZombie) sm->handleInitialized();
      return sm;
    }
    Lumo::Ptr<Sm> sm = Lumo::makePtr<Sm>(owner_, input);
    sm->notifierIs(input);
    sm->isRegisteredNotifieeIs(true);
    sm->hasNotificationActiveIs(owner_->hasNotificationActive());
    machines_.set(key, sm);
    return sm;
  }

  // Removes the machine of this key: zombie, notification off, reference dropped. A
  // notification already on its way to it then does nothing.
  void smDel(const Key& key) {
    Lumo::Ptr<Sm>* present = machines_.find(key);
    if (!present) return;
    Lumo::Ptr<Sm> sm = std::move(*present);
    machines_.erase(Key(key));  // `key` may be the member's own
    sm->qelDoZombieReactors(true);
    sm->hasNotificationActiveIs(false);
  }
  void smDelAll() {
    while (!machines_.empty()) smDel(Key(machines_.begin()->key));
  }

  Lumo::Ptr<Sm> sm(const Key& key) const {
    const Lumo::Ptr<Sm>* present = machines_.find(key);
    return present ? *present : Lumo::Ptr<Sm>();
  }
  bool has(const Key& key) const { return machines_.has(key); }
  std::size_t size() const noexcept { return machines_.size(); }
  const Map& members() const noexcept { return machines_; }

  void smMemberNotificationActiveIs(bool on) override {
    for (const auto& member : machines_) member.value->hasNotificationActiveIs(on);
  }
  void smMemberZombieIs(bool on) override {
    for (const auto& member : machines_) member.value->smMemberZombieIs(on);
  }

 private:
  Owner* owner_;
  Map machines_;
};

}  // namespace Qel
