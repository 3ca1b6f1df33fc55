#include "runtime/state/VlanIdOrNone.h"

#include "runtime/lumo/Exceptions.h"

namespace Bridging {

VlanId VlanIdOrNone::vlanId() const {
  if (isNone()) Qel::throwBadOptionalAccess();
  return VlanId(value());
}

}  // namespace Bridging
