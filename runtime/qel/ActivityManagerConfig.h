#pragma once

#include <string_view>

#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Clock.h"
#include "runtime/qel/Entity.h"

namespace Qel {

// What the process's activity loop offers its state machines: the clock of the
// process's scheduler.
class ActivityManagerConfig : public Entity {
 public:
  explicit ActivityManagerConfig(Lumo::Ptr<Dov::TaskScheduler> scheduler);
  std::string_view typeName() const override { return "Qel::ActivityManagerConfig"; }

  const Lumo::Ptr<Clock>& clock() const noexcept { return clock_; }

 private:
  Lumo::Ptr<Clock> clock_;
};

// The activity manager of the process's current scheduler; a new one follows when the
// host installs another scheduler.
Lumo::Ptr<ActivityManagerConfig> activityManager();

}  // namespace Qel
