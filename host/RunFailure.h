#pragma once

#include <stdexcept>

namespace VekHost {

// A step that was carried out but could not end as a run must (a task that never finished,
// a refusal that never came): the run fails with exit status 1, as a failed expectation does.
class RunFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace VekHost
