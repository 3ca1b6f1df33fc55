#include "runtime/state/VlanId.h"

#include <fmt/format.h>

#include "runtime/lumo/Exceptions.h"

namespace Bridging {

void VlanId::throwOutOfRange(std::uint32_t value) {
  Qel::throwRangeException(fmt::format("VLAN id {} out of range {}..{}", value, min, max));
}

}  // namespace Bridging
