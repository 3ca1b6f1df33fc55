#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string_view>

#include "runtime/lumo/Assert.h"

namespace VekL3Mcast {

// What an interface of a VRF has of its own in the pipeline.
enum class McastIntfType : std::uint8_t {
  rxAndTx = 0,  // its own port, receive, metadata and transmit modules
  txOnly = 1,   // an egress entry of the FIB and nothing more
};

// The three receive paths that each VRF (and the fabric) has, by how the packet was marked.
enum class McastRxType : std::uint8_t {
  mcastHwFwd = 0,
  mcastSwFwd = 1,
  mcastSwFwdPeerLinkOrCore = 2,
};
inline constexpr McastRxType allMcastRxTypes[] = {
    McastRxType::mcastHwFwd, McastRxType::mcastSwFwd, McastRxType::mcastSwFwdPeerLinkOrCore};

std::string_view mcastIntfTypeName(McastIntfType type) noexcept;
std::string_view mcastRxTypeName(McastRxType type) noexcept;

// Gate numbers of a metadata module: each of its output gates is reserved for one peer.
struct Constants {
  static constexpr std::uint32_t reservedMfibIpv4Gate = 0;
  static constexpr std::uint32_t reservedMfibIpv6Gate = 1;
  static constexpr std::uint32_t reservedIgmpV2Gate = 2;
  static constexpr std::uint32_t reservedL3MMplsGate = 3;
  static constexpr std::uint32_t reservedOutGate = 4;  // how many output gates are reserved
  static constexpr std::uint32_t reservedInGate = 0;
};

}  // namespace VekL3Mcast

template <>
struct fmt::formatter<VekL3Mcast::McastIntfType> : fmt::formatter<std::string_view> {
  auto format(VekL3Mcast::McastIntfType type, fmt::format_context& ctx) const {
    return fmt::formatter<std::string_view>::format(VekL3Mcast::mcastIntfTypeName(type), ctx);
  }
};
template <>
struct fmt::formatter<VekL3Mcast::McastRxType> : fmt::formatter<std::string_view> {
  auto format(VekL3Mcast::McastRxType type, fmt::format_context& ctx) const {
    return fmt::formatter<std::string_view>::format(VekL3Mcast::mcastRxTypeName(type), ctx);
  }
};
