#pragma once

#include <string_view>
#include <vector>

#include "runtime/qel/Entity.h"
#include "runtime/qel/SmMember.h"

namespace Qel {

// Base of the state machines. It records what hangs below it (subscribers, reactors,
// nested and owned state machines register themselves), so that switching notification
// on or off and marking the machine a zombie reach all of them.
//
// Lifecycle: construction with the inputs; handleInitialized as the constructor's last
// step; notification active; at the end zombie and notification off; destruction when
// the last pointer goes.
class StateMachine : public Entity, public Impl::SmMember {
 public:
  StateMachine() = default;
  std::string_view typeName() const override { return "Qel::StateMachine"; }

  // Sets the notification-active flag, then enrols or withdraws every subscriber of this
  // machine and does the same on every machine below it. With false nothing more is
  // delivered to anything below.
  void hasNotificationActiveIs(bool on);
  bool hasNotificationActive() const noexcept { return nodeFlag(notificationActive); }

  // Sets or clears the zombie flag of this machine and all below it. A zombie's reactors
  // return at once. Clearing the flag of a zombie revives it: its handleInitialized runs
  // again and rescans the inputs; the machines below come back with it and are rescanned
  // when that scan points them at their inputs again.
  void qelDoZombieReactors(bool on);
  bool isZombie() const noexcept { return nodeFlag(zombie); }

  // The scan of the inputs. Derived machines call it as their constructor's last step.
  virtual void handleInitialized() {}

  void smMemberAdd(Impl::SmMember* member);
  void smMemberDel(Impl::SmMember* member);

  void smMemberNotificationActiveIs(bool on) override { hasNotificationActiveIs(on); }
  void smMemberZombieIs(bool on) override;

 private:
  std::vector<Impl::SmMember*> members_;
};

}  // namespace Qel
