#include "runtime/qel/Clock.h"

#include "runtime/lumo/Assert.h"

namespace Qel {

Clock::Clock(Lumo::Ptr<Dov::TaskScheduler> scheduler) : scheduler_(std::move(scheduler)) {
  QEL_ASSERT(scheduler_, "a clock needs a scheduler");
}

void Clock::wakeupDue(const NotifieeConst* notifiee) const {
  // Reactors watch a clock they may not change; a wake-up is the clock's own news.
  const_cast<Clock*>(this)->notify(kWakeup, notifiee);
}

Clock::NotifieeConst::~NotifieeConst() {
  // The timer is on the clock's scheduler, which may go with the clock below.
  wakeupTimeDel();
}

void Clock::NotifieeConst::notifierIs(Lumo::Ptr<Clock const> clock) {
  if (clock == clock_) return;
  wakeupTimeDel();
  isRegisteredNotifieeIs(false);
  clock_ = std::move(clock);
  isRegisteredNotifieeIs(true);
}

void Clock::NotifieeConst::isRegisteredNotifieeIs(bool registered) {
  if (!registered) {
    if (subscriber_.subscribed()) subscriber_.publisher()->subscriberRemove(&subscriber_);
    return;
  }
  if (clock_) const_cast<Clock*>(clock_.get())->subscriberAdd(&subscriber_, false);
}

void Clock::NotifieeConst::wakeupTimeIs(double time) {
  QEL_ASSERT(clock_, "a wake-up needs a clock");
  clock_->scheduler().timerIs(this, time);
}

void Clock::NotifieeConst::wakeupTimeDel() noexcept {
  if (clock_) clock_->scheduler().timerDel(this);
}

void Clock::NotifieeConst::handleTimer() {
  Lumo::Ptr<Clock const> clock = clock_;
  clock->wakeupDue(this);
}

void Clock::NotifieeConst::dispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber,
                                    short attributeId, const void* key, const void*) noexcept {
  NotifieeConst* self = Lumo::OwnedSubscriber<NotifieeConst>::ownerOf(subscriber);
  if (attributeId == kWakeup && key == self) self->handleClock();
}

}  // namespace Qel
