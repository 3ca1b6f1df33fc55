#pragma once

#include <cstdint>
#include <vector>

#include "runtime/lumo/Node.h"

namespace Vek {

// Spreads tasks over the daemon's workers by the weights already placed on each.
class ManagementSm : public Lumo::Node {
 public:
  explicit ManagementSm(std::uint16_t workerCount) : load_(workerCount, 0) {}

  // The worker with the least weight so far (the lowest id among equals); it takes the
  // task's weight. With no workers at all, 0 comes back and nothing is recorded.
  std::uint32_t allocNextWorker(std::uint32_t taskWeight, bool pinned);

  std::uint16_t workerCount() const noexcept { return static_cast<std::uint16_t>(load_.size()); }
  std::uint64_t workerLoad(std::uint32_t worker) const {
    return worker < load_.size() ? load_[worker] : 0;
  }

 private:
  std::vector<std::uint64_t> load_;
};

}  // namespace Vek
