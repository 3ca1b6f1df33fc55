#include "runtime/qel/InstantiatingAttr.h"

namespace Qel::Impl {

void OwnedSmLink::attach(Entity& owner, StateMachine* owned) {
  detach();
  owner_ = dynamic_cast<StateMachine*>(&owner);
  if (!owner_) return;  // an entity that is no machine has no notification state to pass on
  owned_ = owned;
  owner_->smMemberAdd(this);
  owned_->hasNotificationActiveIs(owner_->hasNotificationActive());
}

void OwnedSmLink::detach() {
  if (owner_) owner_->smMemberDel(this);
  owner_ = nullptr;
  owned_ = nullptr;
}

}  // namespace Qel::Impl
