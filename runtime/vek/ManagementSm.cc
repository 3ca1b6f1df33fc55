#include "runtime/vek/ManagementSm.h"

#include <algorithm>

namespace Vek {

std::uint32_t ManagementSm::allocNextWorker(std::uint32_t taskWeight, bool) {
  if (load_.empty()) return 0;
  auto least = std::min_element(load_.begin(), load_.end());
  *least += taskWeight;
  return static_cast<std::uint32_t>(least - load_.begin());
}

}  // namespace Vek
