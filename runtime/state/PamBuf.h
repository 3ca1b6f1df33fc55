#pragma once

#include <cstdint>

#include "runtime/lumo/Node.h"

namespace Lanx {

// The size of a packet buffer that a port asks the kernel for, as configured.
class PamBuf : public Lumo::Node {
 public:
  explicit PamBuf(std::uint32_t origSize) noexcept : origSize_(origSize) {}

  std::uint32_t origSize() const noexcept { return origSize_; }
  void origSizeIs(std::uint32_t origSize) noexcept { origSize_ = origSize; }

 private:
  std::uint32_t origSize_;
};

}  // namespace Lanx
