#include "kernel/KernelReader.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include "kernel/NetnsScope.h"

namespace Kernel {

namespace {

// Where a namespace's kernel shows its multicast forwarding caches; only a kernel built
// with multicast routing for a family has the file.
bool hasMcastCache(Family family) {
  const char* file = family == Family::ipv6 ? "/proc/thread-self/net/ip6_mr_cache"
                                            : "/proc/thread-self/net/ip_mr_cache";
  return ::access(file, F_OK) == 0;
}

std::uint8_t mcastFamily(Family family) {
  return family == Family::ipv6 ? kIpv6McastFamily : kIpv4McastFamily;
}

}  // namespace

KernelReader::KernelReader(const std::string& netns, std::size_t receiveBytes) : netns_(netns) {
  NetnsScope inside(netns);
  for (Family family : {Family::ipv4, Family::ipv6}) {
    if (hasMcastCache(family)) families_.push_back(family);
  }
  // Notifications are joined before the first dump: what changes during the dump is then
  // waiting on the socket, and applying it on top of the dump gives the tables as they are.
  events_ = std::make_unique<NetlinkSocket>(
      std::vector<unsigned>{RTNLGRP_LINK, RTNLGRP_IPV4_MROUTE, RTNLGRP_IPV6_MROUTE},
      receiveBytes);
  requests_ = std::make_unique<NetlinkSocket>();
  dumpInto(tables_);
}

void KernelReader::dumpInto(KernelTables& tables) {
  const auto apply = [&tables](std::span<const std::byte> message) {
    tables.apply(decodeRtMessage(message));
  };
  requests_->dump(RTM_GETLINK, AF_UNSPEC, apply);
  for (Family family : families_) requests_->dump(RTM_GETROUTE, mcastFamily(family), apply);
}

void KernelReader::readPending() {
  const auto read = events_->readPending(
      [this](std::span<const std::byte> message) { tables_.apply(decodeRtMessage(message)); });
  if (read == NetlinkSocket::Read::overrun) resync();
}

void KernelReader::resync() {
  ++resyncs_;
  KernelTables fresh;
  dumpInto(fresh);
  tables_.replaceWith(std::move(fresh));
}

}  // namespace Kernel
