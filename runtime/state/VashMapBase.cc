#include "runtime/state/VashMapBase.h"

#include "runtime/trace/Trace.h"

namespace Vash {

void VashMapBase::doCorruptionDetected(std::string_view message) const {
  VEK_TRACE(err, "Shared-memory table corruption detected: {}", message);
}

}  // namespace Vash
