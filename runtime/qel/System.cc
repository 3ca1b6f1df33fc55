#include "runtime/qel/System.h"

#include "runtime/dov/TaskSchedulerRoot.h"

namespace Qel {

double System::currentTime() { return Dov::TaskSchedulerRoot::scheduler().currentTime(); }

}  // namespace Qel
