#include "kernel/RtMessage.h"

#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

#include <array>
#include <map>
#include <string_view>

namespace Kernel {

namespace {

// The attributes of one level, by type; a type given twice keeps its last value.
using Attributes = std::map<unsigned, std::span<const std::byte>>;

std::optional<Attributes> attributes(std::span<const std::byte> bytes) {
  Attributes found;
  while (!bytes.empty()) {
    rtattr attr;
    if (bytes.size() < sizeof attr) return std::nullopt;
    std::memcpy(&attr, bytes.data(), sizeof attr);
    if (attr.rta_len < sizeof attr || attr.rta_len > bytes.size()) return std::nullopt;
    found[attr.rta_type & NLA_TYPE_MASK] =
        bytes.subspan(sizeof attr, attr.rta_len - sizeof attr);
    const std::size_t step = netlinkAlign(attr.rta_len);
    bytes = step >= bytes.size() ? std::span<const std::byte>() : bytes.subspan(step);
  }
  return found;
}

template <typename Value>
std::optional<Value> scalar(const Attributes& attrs, unsigned type) {
  auto it = attrs.find(type);
  if (it == attrs.end() || it->second.size() < sizeof(Value)) return std::nullopt;
  Value value;
  std::memcpy(&value, it->second.data(), sizeof value);
  return value;
}

std::string_view text(const Attributes& attrs, unsigned type) {
  auto it = attrs.find(type);
  if (it == attrs.end()) return {};
  std::string_view raw(reinterpret_cast<const char*>(it->second.data()), it->second.size());
  return raw.substr(0, raw.find('\0'));
}

// The fixed header that follows the netlink header, and the attributes after it.
template <typename Header>
std::optional<std::pair<Header, Attributes>> body(std::span<const std::byte> message) {
  const std::size_t start = netlinkAlign(sizeof(nlmsghdr));
  if (message.size() < start + sizeof(Header)) return std::nullopt;
  Header header;
  std::memcpy(&header, message.data() + start, sizeof header);
  const std::size_t rest = start + netlinkAlign(sizeof(Header));
  auto attrs = attributes(rest >= message.size() ? std::span<const std::byte>()
                                                 : message.subspan(rest));
  if (!attrs) return std::nullopt;
  return std::pair{header, std::move(*attrs)};
}

std::optional<std::uint32_t> vrfTable(const Attributes& attrs) {
  auto info = attrs.find(IFLA_LINKINFO);
  if (info == attrs.end()) return std::nullopt;
  auto nested = attributes(info->second);
  if (!nested || text(*nested, IFLA_INFO_KIND) != "vrf") return std::nullopt;
  auto data = nested->find(IFLA_INFO_DATA);
  if (data == nested->end()) return std::nullopt;
  auto vrf = attributes(data->second);
  if (!vrf) return std::nullopt;
  return scalar<std::uint32_t>(*vrf, IFLA_VRF_TABLE);
}

RtMessage link(const nlmsghdr& header, std::span<const std::byte> message) {
  auto decoded = body<ifinfomsg>(message);
  if (!decoded) return Ignored{};
  const auto& [info, attrs] = *decoded;
  if (header.nlmsg_type == RTM_DELLINK) return LinkRemoved{info.ifi_index};
  Link made;
  made.index = info.ifi_index;
  made.name = std::string(text(attrs, IFLA_IFNAME));
  made.up = (info.ifi_flags & IFF_UP) && (info.ifi_flags & IFF_RUNNING);
  made.multicast = (info.ifi_flags & IFF_MULTICAST) && !(info.ifi_flags & IFF_LOOPBACK);
  made.master = static_cast<int>(scalar<std::uint32_t>(attrs, IFLA_MASTER).value_or(0));
  made.vrfTable = vrfTable(attrs);
  if (made.name.empty()) return Ignored{};
  return LinkAdded{std::move(made)};
}

// Canonical text of an address of `family`; nullopt when the bytes do not fit it.
std::optional<std::string> address(Family family, std::span<const std::byte> bytes) {
  const bool v6 = family == Family::ipv6;
  if (bytes.size() != (v6 ? 16u : 4u)) return std::nullopt;
  std::array<char, INET6_ADDRSTRLEN> buffer{};
  if (!::inet_ntop(v6 ? AF_INET6 : AF_INET, bytes.data(), buffer.data(), buffer.size())) {
    return std::nullopt;
  }
  return std::string(buffer.data());
}

// The kernel also keeps entries for any group ((*,*) with a zero group), which name no
// multicast route of their own.
bool multicastGroup(Family family, std::span<const std::byte> bytes) {
  const auto first = std::to_integer<unsigned>(bytes.front());
  return family == Family::ipv6 ? first == 0xff : (first & 0xf0) == 0xe0;
}

bool allZero(std::span<const std::byte> bytes) {
  for (std::byte b : bytes) {
    if (b != std::byte{0}) return false;
  }
  return true;
}

std::vector<int> nexthops(std::span<const std::byte> bytes) {
  std::vector<int> indexes;
  while (bytes.size() >= sizeof(rtnexthop)) {
    rtnexthop hop;
    std::memcpy(&hop, bytes.data(), sizeof hop);
    if (hop.rtnh_len < sizeof hop || hop.rtnh_len > bytes.size()) break;
    indexes.push_back(hop.rtnh_ifindex);
    const std::size_t step = netlinkAlign(hop.rtnh_len);
    if (step >= bytes.size()) break;
    bytes = bytes.subspan(step);
  }
  return indexes;
}

RtMessage route(const nlmsghdr& header, std::span<const std::byte> message) {
  auto decoded = body<rtmsg>(message);
  if (!decoded) return Ignored{};
  const auto& [rt, attrs] = *decoded;
  if (rt.rtm_family != kIpv4McastFamily && rt.rtm_family != kIpv6McastFamily) return Ignored{};
  const Family family = rt.rtm_family == kIpv6McastFamily ? Family::ipv6 : Family::ipv4;
  auto groupBytes = attrs.find(RTA_DST);
  if (groupBytes == attrs.end()) return Ignored{};
  McastRoute made;
  made.key.family = family;
  made.key.table = scalar<std::uint32_t>(attrs, RTA_TABLE).value_or(rt.rtm_table);
  auto group = address(family, groupBytes->second);
  if (!group || !multicastGroup(family, groupBytes->second)) return Ignored{};
  made.key.group = *group;
  auto sourceBytes = attrs.find(RTA_SRC);
  if (sourceBytes == attrs.end() || allZero(sourceBytes->second)) {
    made.key.source.assign(1, '*');  // any source
  } else {
    auto source = address(family, sourceBytes->second);
    if (!source) return Ignored{};
    made.key.source = *source;
  }
  if (header.nlmsg_type == RTM_DELROUTE) return RouteRemoved{std::move(made.key)};
  // An entry still waiting for its incoming interface forwards nothing yet.
  if (rt.rtm_flags & RTNH_F_UNRESOLVED) return Ignored{};
  auto iif = scalar<std::uint32_t>(attrs, RTA_IIF);
  if (!iif) return Ignored{};
  made.iif = static_cast<int>(*iif);
  if (auto hops = attrs.find(RTA_MULTIPATH); hops != attrs.end()) {
    made.oifs = nexthops(hops->second);
  }
  return RouteAdded{std::move(made)};
}

}  // namespace

RtMessage decodeRtMessage(std::span<const std::byte> bytes) {
  if (bytes.size() < sizeof(nlmsghdr)) return Ignored{};
  nlmsghdr header;
  std::memcpy(&header, bytes.data(), sizeof header);
  if (header.nlmsg_len > bytes.size()) return Ignored{};
  const auto message = bytes.first(header.nlmsg_len);
  switch (header.nlmsg_type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
      return link(header, message);
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
      return route(header, message);
    default:
      return Ignored{};
  }
}

}  // namespace Kernel
