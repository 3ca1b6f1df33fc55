#include "runtime/qel/StateMachine.h"

#include <algorithm>

namespace Qel {

void StateMachine::hasNotificationActiveIs(bool on) {
  nodeFlagSet(notificationActive, on);
  for (Impl::SmMember* member : members_) member->smMemberNotificationActiveIs(on);
}

void StateMachine::qelDoZombieReactors(bool on) {
  const bool revived = !on && isZombie();
  smMemberZombieIs(on);
  if (revived) handleInitialized();
}

void StateMachine::smMemberZombieIs(bool on) {
  nodeFlagSet(zombie, on);
  for (Impl::SmMember* member : members_) member->smMemberZombieIs(on);
}

void StateMachine::smMemberAdd(Impl::SmMember* member) { members_.push_back(member); }

void StateMachine::smMemberDel(Impl::SmMember* member) {
  members_.erase(std::remove(members_.begin(), members_.end(), member), members_.end());
}

}  // namespace Qel
