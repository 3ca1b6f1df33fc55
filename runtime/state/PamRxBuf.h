#pragma once

#include <cstdint>

#include "runtime/state/PamBuf.h"

namespace Lanx {

// The receive buffer that packet-capture ports share. The kernel hands out capture
// rings in whole pages, so a port asks for the configured size rounded up to a page;
// a port always gets at least one page.
class PamRxBuf : public PamBuf {
 public:
  static constexpr std::uint32_t pageSize = 4096;

  using PamBuf::PamBuf;

  std::uint32_t adjustedPamRxBufSize() const noexcept {
    const std::uint64_t pages = (std::uint64_t{origSize()} + pageSize - 1) / pageSize;
    const std::uint64_t bytes = (pages == 0 ? 1 : pages) * pageSize;
    constexpr std::uint64_t largestWholePages = std::uint64_t{0xffffffff} / pageSize * pageSize;
    return static_cast<std::uint32_t>(bytes > largestWholePages ? largestWholePages : bytes);
  }
};

}  // namespace Lanx
