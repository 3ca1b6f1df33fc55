#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace Vek {

// Hands out the lowest free number in [floor, limit) and takes back what is released.
// Numbers below the floor are never handed out but can be taken by number.
class IdAllocator {
 public:
  IdAllocator(std::uint32_t floor, std::uint32_t limit) : floor_(floor), limit_(limit) {}

  std::optional<std::uint32_t> allocate();
  // Marks one given number used; false if it is out of range or already in use.
  bool take(std::uint32_t id);
  void release(std::uint32_t id);
  bool inUse(std::uint32_t id) const;

  std::uint32_t floor() const noexcept { return floor_; }
  std::uint32_t limit() const noexcept { return limit_; }

 private:
  static constexpr std::uint32_t wordBits = 64;

  std::uint32_t floor_;
  std::uint32_t limit_;
  std::vector<std::uint64_t> used_;  // grows with the highest number in use
};

}  // namespace Vek
