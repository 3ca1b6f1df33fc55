#pragma once

#include "runtime/qel/SmMember.h"
#include "runtime/qel/StateMachine.h"

namespace VekL3Mcast {

// Hangs below a state machine as its reactors do and calls the owner's handler each time
// the machine's notification is switched on, after the reactors are enrolled again. For
// work a machine put off while it heard nothing.
template <typename Owner>
class NotificationWatch : public Qel::Impl::SmMember {
 public:
  using Handler = void (Owner::*)();

  NotificationWatch(Owner* owner, Handler handler) : owner_(owner), handler_(handler) {
    owner_->smMemberAdd(this);
  }
  ~NotificationWatch() override { owner_->smMemberDel(this); }
  NotificationWatch(const NotificationWatch&) = delete;
  NotificationWatch& operator=(const NotificationWatch&) = delete;

  void smMemberNotificationActiveIs(bool on) override {
    if (on) (owner_->*handler_)();
  }
  void smMemberZombieIs(bool) override {}

 private:
  Owner* owner_;
  Handler handler_;
};

}  // namespace VekL3Mcast
