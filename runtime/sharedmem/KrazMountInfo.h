#pragma once

namespace QelKraz {

// A mount of a value-map table; it has no mode of its own.
class MountInfo {
 public:
  MountInfo() noexcept = default;
};

}  // namespace QelKraz
