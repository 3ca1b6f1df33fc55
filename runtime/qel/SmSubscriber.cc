#include "runtime/qel/SmSubscriber.h"

namespace Qel::Impl {

SmSubscription::SmSubscription(Lumo::DispatchFunction dispatch, StateMachine* machine)
    : Subscriber(dispatch), machine_(machine) {
  if (machine_) machine_->smMemberAdd(this);
}

SmSubscription::~SmSubscription() {
  if (machine_) machine_->smMemberDel(this);
}

void SmSubscription::publisherIs(Lumo::Publisher* publisher) {
  if (publisher == target_) return;
  if (subscribed()) this->publisher()->subscriberRemove(this);
  target_ = publisher;
  sync();
}

void SmSubscription::isRegisteredIs(bool on) {
  registered_ = on;
  sync();
}

void SmSubscription::sync() {
  const bool wanted = target_ && registered_ && (!machine_ || machine_->hasNotificationActive());
  if (wanted && !subscribed()) {
    target_->subscriberAdd(this, false);
  } else if (!wanted && subscribed()) {
    publisher()->subscriberRemove(this);
  }
}

}  // namespace Qel::Impl
