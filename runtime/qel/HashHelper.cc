#include "runtime/qel/HashHelper.h"

#include <charconv>
#include <cstdlib>
#include <random>
#include <string_view>

namespace Qel {

std::uint32_t HashHelper::randomSeed() noexcept {
  // A fixed seed makes two runs of the same input iterate alike, so that their command
  // logs can be compared line by line.
  if (const char* fixed = std::getenv(seedEnv)) {
    const std::string_view text(fixed);
    std::uint32_t seed = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
    if (error == std::errc() && end == text.data() + text.size()) return seed;
  }
  try {
    std::random_device device;
    return device();
  } catch (...) {
    // No entropy source: the address of the seed still differs between runs under ASLR.
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&seed_) >> 4);
  }
}

}  // namespace Qel
