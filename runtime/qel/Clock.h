#pragma once

#include <string_view>

#include "runtime/dov/TaskScheduler.h"
#include "runtime/dov/Timer.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"
#include "runtime/qel/Entity.h"

namespace Qel {

// The time of a scheduler, as an entity. A reactor on it (a Clock::NotifieeConst) asks
// for a wake-up at a time; when that comes due the clock publishes kWakeup keyed by that
// reactor, and the reactor's handleClock runs.
class Clock : public Entity {
 public:
  static constexpr AttributeId kWakeup = 1;
  class NotifieeConst;

  explicit Clock(Lumo::Ptr<Dov::TaskScheduler> scheduler);
  std::string_view typeName() const override { return "Qel::Clock"; }

  double currentTime() const { return scheduler_->currentTime(); }
  Dov::TaskScheduler& scheduler() const noexcept { return *scheduler_; }

 private:
  void wakeupDue(const NotifieeConst* notifiee) const;

  Lumo::Ptr<Dov::TaskScheduler> scheduler_;
};

// The reactor of a clock. notifierIs binds and enrols it; a wake-up asked for again
// replaces the earlier one, and is cancelled when the reactor is re-bound or goes.
class Clock::NotifieeConst : private Dov::Timer {
 public:
  NotifieeConst() noexcept : subscriber_(this, &dispatch) {}
  NotifieeConst(const NotifieeConst&) = delete;
  NotifieeConst& operator=(const NotifieeConst&) = delete;
  ~NotifieeConst() override;

  const Lumo::Ptr<Clock const>& notifier() const noexcept { return clock_; }
  void notifierIs(Lumo::Ptr<Clock const> clock);
  bool isRegisteredNotifiee() const noexcept { return subscriber_.subscribed(); }
  void isRegisteredNotifieeIs(bool registered);

  // Asks for handleClock at `time` on the clock's time line.
  void wakeupTimeIs(double time);
  void wakeupTimeDel() noexcept;
  bool wakeupPending() const noexcept { return timerArmed(); }
  double wakeupTime() const noexcept { return timerDue(); }

  virtual void handleClock() = 0;

 private:
  friend class Clock;
  void handleTimer() override;
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short attributeId,
                       const void* key, const void*) noexcept;

  Lumo::OwnedSubscriber<NotifieeConst> subscriber_;
  Lumo::Ptr<Clock const> clock_;
};

}  // namespace Qel
