#include "vxlan/AddrBytes.h"

#include <algorithm>
#include <cstdint>

namespace VekMVxlan {

void copyAddrToBuffer(std::string& buffer, const Lanx::IpGenAddr& addr) {
  buffer.assign(addr.size(), '\0');
  addr.copyToBuffer(reinterpret_cast<std::uint8_t*>(buffer.data()));
}

bool isAddrZero(const Lanx::IpGenAddr& addr) noexcept {
  const auto bytes = addr.rawBytes();
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; });
}

std::string addrBytesUnlessZero(const Lanx::IpGenAddr& addr) {
  std::string bytes;
  if (!isAddrZero(addr)) copyAddrToBuffer(bytes, addr);
  return bytes;
}

}  // namespace VekMVxlan
