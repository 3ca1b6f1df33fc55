#include "runtime/qel/HashHelper.h"

#include <random>

namespace Qel {

std::uint32_t HashHelper::randomSeed() noexcept {
  try {
    std::random_device device;
    return device();
  } catch (...) {
    // No entropy source: the address of the seed still differs between runs under ASLR.
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&seed_) >> 4);
  }
}

}  // namespace Qel
