#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Dataplane {

// A traffic class of one worker. The daemon starts with one weighted class per worker; the
// agent adds rate-limiting ones.
struct TrafficClass {
  bool weighted = false;
  std::int32_t worker = 0;
  std::string unit;
  std::int64_t limit = 0;
  std::int32_t burst = 0;
  std::vector<std::string> tasks;  // in the order they were attached, each once

  bool sameLimits(const TrafficClass& other) const {
    return weighted == other.weighted && worker == other.worker && unit == other.unit &&
           limit == other.limit && burst == other.burst;
  }
};

}  // namespace Dataplane
