#pragma once

namespace Qel::Impl {

// Whatever hangs below a state machine and follows its notification-active and zombie
// state: its subscribers and reactors, its nested and owned state machines.
class SmMember {
 public:
  virtual ~SmMember() = default;
  virtual void smMemberNotificationActiveIs(bool on) = 0;
  // Sets or clears the zombie flag of what hangs here, without rescanning anything.
  virtual void smMemberZombieIs(bool on) = 0;
};

}  // namespace Qel::Impl
