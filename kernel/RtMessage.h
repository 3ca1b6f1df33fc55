#pragma once

#include <linux/netlink.h>

#include <cstddef>
#include <cstring>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "kernel/KernelEntries.h"

namespace Kernel {

// One routing netlink message, decoded into what the tables keep. Everything else the
// kernel sends (other message types, unicast routes, multicast cache entries that are
// still unresolved) decodes to `Ignored`.
struct Ignored {};
struct LinkAdded {
  Link link;
};
struct LinkRemoved {
  int index = 0;
};
struct RouteAdded {
  McastRoute route;
};
struct RouteRemoved {
  McastRouteKey key;
};
using RtMessage = std::variant<Ignored, LinkAdded, LinkRemoved, RouteAdded, RouteRemoved>;

// Decodes the message that starts `bytes` (its header included); a message shorter than
// its header says, or with attributes that run past it, decodes to Ignored.
RtMessage decodeRtMessage(std::span<const std::byte> bytes);

// The netlink families of the multicast forwarding caches, as rtnetlink numbers them.
constexpr std::uint8_t kIpv4McastFamily = 128;
constexpr std::uint8_t kIpv6McastFamily = 129;

// Message layout helpers, shared by the decoder and the code that builds requests.
constexpr std::size_t netlinkAlign(std::size_t length) { return (length + 3) & ~std::size_t{3}; }

// Walks the messages of one datagram: calls `each(header, bytes)` for each, `bytes`
// spanning that message; stops at a truncated one. Returns the count walked.
template <typename Each>
std::size_t forEachNetlinkMessage(std::span<const std::byte> datagram, Each&& each) {
  std::size_t walked = 0;
  while (datagram.size() >= sizeof(nlmsghdr)) {
    nlmsghdr header;
    std::memcpy(&header, datagram.data(), sizeof header);
    if (header.nlmsg_len < sizeof header || header.nlmsg_len > datagram.size()) break;
    each(header, datagram.first(header.nlmsg_len));
    ++walked;
    const std::size_t step = netlinkAlign(header.nlmsg_len);
    if (step >= datagram.size()) break;
    datagram = datagram.subspan(step);
  }
  return walked;
}

}  // namespace Kernel
