#pragma once

#include <string_view>

namespace Vash {

// What every shared-memory table offers its readers besides its data: a place to report
// that a read of the table found it inconsistent. Such a table is written by another
// process; a reader that meets a broken walk hands the message here instead of failing.
class VashMapBase {
 public:
  virtual ~VashMapBase() = default;
  // By default the message is traced as an error.
  virtual void doCorruptionDetected(std::string_view message) const;
};

}  // namespace Vash
