#include "runtime/qel/ActivityManagerConfig.h"

#include "runtime/dov/TaskSchedulerRoot.h"

namespace Qel {

ActivityManagerConfig::ActivityManagerConfig(Lumo::Ptr<Dov::TaskScheduler> scheduler)
    : clock_(Lumo::makePtr<Clock>(std::move(scheduler))) {}

Lumo::Ptr<ActivityManagerConfig> activityManager() {
  static Lumo::Ptr<ActivityManagerConfig> manager;
  Dov::TaskScheduler& scheduler = Dov::TaskSchedulerRoot::scheduler();
  if (!manager || &manager->clock()->scheduler() != &scheduler) {
    manager = Lumo::makePtr<ActivityManagerConfig>(&scheduler);
  }
  return manager;
}

}  // namespace Qel
