#pragma once

#include <arpa/inet.h>
#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/RtMessage.h"

namespace Kernel {

// Builds routing netlink messages as the kernel lays them out, for the decoder's tests.
class NetlinkMessageBuilder {
 public:
  template <typename Header>
  NetlinkMessageBuilder(std::uint16_t type, const Header& header) {
    append(nlmsghdr{0, type, 0, 0, 0});
    append(header);
  }
  static NetlinkMessageBuilder route(std::uint16_t type, std::uint8_t family,
                                     unsigned flags = 0) {
    rtmsg rt{};
    rt.rtm_family = family;
    rt.rtm_flags = flags;
    return NetlinkMessageBuilder(type, rt);
  }
  static NetlinkMessageBuilder link(std::uint16_t type, int index, unsigned flags) {
    ifinfomsg info{};
    info.ifi_index = index;
    info.ifi_flags = flags;
    return NetlinkMessageBuilder(type, info);
  }

  NetlinkMessageBuilder& attr(unsigned short type, const void* data, std::size_t size) {
    append(rtattr{static_cast<unsigned short>(sizeof(rtattr) + size), type});
    appendBytes(data, size);
    return *this;
  }
  NetlinkMessageBuilder& u32(unsigned short type, std::uint32_t value) {
    return attr(type, &value, sizeof value);
  }
  NetlinkMessageBuilder& text(unsigned short type, const std::string& value) {
    return attr(type, value.c_str(), value.size() + 1);
  }
  NetlinkMessageBuilder& address(unsigned short type, int family, const char* text) {
    std::byte raw[16];
    inet_pton(family, text, raw);
    return attr(type, raw, family == AF_INET6 ? 16 : 4);
  }
  // A nested attribute whose contents another builder's attributes make.
  NetlinkMessageBuilder& nested(unsigned short type, const std::vector<std::byte>& inner) {
    return attr(type, inner.data(), inner.size());
  }
  NetlinkMessageBuilder& nexthops(const std::vector<int>& indexes) {
    std::vector<std::byte> hops;
    for (int index : indexes) {
      rtnexthop hop{};
      hop.rtnh_len = sizeof hop;
      hop.rtnh_ifindex = index;
      const auto* raw = reinterpret_cast<const std::byte*>(&hop);
      hops.insert(hops.end(), raw, raw + sizeof hop);
    }
    return attr(RTA_MULTIPATH, hops.data(), hops.size());
  }

  // The attributes alone, to nest in another message.
  static std::vector<std::byte> attributes(
      const std::vector<std::pair<unsigned short, std::vector<std::byte>>>& attrs) {
    std::vector<std::byte> out;
    for (const auto& [type, value] : attrs) {
      rtattr head{static_cast<unsigned short>(sizeof(rtattr) + value.size()), type};
      const auto* raw = reinterpret_cast<const std::byte*>(&head);
      out.insert(out.end(), raw, raw + sizeof head);
      out.insert(out.end(), value.begin(), value.end());
      out.resize(netlinkAlign(out.size()));
    }
    return out;
  }

  std::vector<std::byte> bytes() const {
    std::vector<std::byte> done = bytes_;
    const auto length = static_cast<std::uint32_t>(done.size());
    std::memcpy(done.data(), &length, sizeof length);
    return done;
  }

 private:
  template <typename Value>
  void append(const Value& value) {
    appendBytes(&value, sizeof value);
  }
  void appendBytes(const void* data, std::size_t size) {
    const auto* raw = static_cast<const std::byte*>(data);
    bytes_.insert(bytes_.end(), raw, raw + size);
    bytes_.resize(netlinkAlign(bytes_.size()));
  }

  std::vector<std::byte> bytes_;
};

}  // namespace Kernel
