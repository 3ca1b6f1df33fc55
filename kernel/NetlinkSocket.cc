#include "kernel/NetlinkSocket.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kernel/KernelError.h"
#include "kernel/RtMessage.h"

namespace Kernel {

namespace {

// A dump that keeps being interrupted is given up after this many tries.
constexpr int kDumpTries = 5;
// A kernel that does not answer a dump within this is not going to.
constexpr int kDumpTimeoutSeconds = 5;
// Room for one datagram of a dump or a burst of notifications.
constexpr std::size_t kDatagramBytes = 1 << 16;
constexpr std::size_t kHeaderBytes = netlinkAlign(sizeof(nlmsghdr));

}  // namespace

NetlinkSocket::NetlinkSocket(const std::vector<unsigned>& groups, std::size_t receiveBytes)
    : buffer_(kDatagramBytes) {
  fd_ = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (fd_ < 0) throw KernelError::fromErrno("cannot open a routing netlink socket", errno);
  const int bytes = static_cast<int>(receiveBytes);
  // Past the system's limit only with the privilege to do so; the smaller room is kept
  // otherwise, and an overrun costs a resync, not a wrong table.
  if (::setsockopt(fd_, SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0) {
    ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
  }
  const timeval timeout{kDumpTimeoutSeconds, 0};
  ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
  sockaddr_nl local{};
  local.nl_family = AF_NETLINK;
  if (::bind(fd_, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
    const int error = errno;
    ::close(fd_);
    throw KernelError::fromErrno("cannot bind a routing netlink socket", error);
  }
  for (unsigned group : groups) {
    if (::setsockopt(fd_, SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) != 0) {
      const int error = errno;
      ::close(fd_);
      throw KernelError::fromErrno("cannot follow routing notifications", error);
    }
  }
}

NetlinkSocket::~NetlinkSocket() {
  if (fd_ >= 0) ::close(fd_);
}

void NetlinkSocket::dump(std::uint16_t type, std::uint8_t family, const Each& each) {
  for (int tries = 0; tries < kDumpTries; ++tries) {
    if (dumpOnce(type, family, each)) return;
  }
  throw KernelError("the kernel's tables kept changing during a dump; gave up after " +
                    std::to_string(kDumpTries) + " tries");
}

bool NetlinkSocket::dumpOnce(std::uint16_t type, std::uint8_t family, const Each& each) {
  // Both requests start with the family byte; the rest of the larger header stays zero.
  struct {
    nlmsghdr header;
    std::byte payload[netlinkAlign(sizeof(ifinfomsg) > sizeof(rtmsg) ? sizeof(ifinfomsg)
                                                                      : sizeof(rtmsg))];
  } request{};
  const std::size_t payload = type == RTM_GETLINK ? sizeof(ifinfomsg) : sizeof(rtmsg);
  request.header.nlmsg_len = static_cast<std::uint32_t>(kHeaderBytes + payload);
  request.header.nlmsg_type = type;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.header.nlmsg_seq = ++sequence_;
  request.payload[0] = std::byte{family};
  sockaddr_nl kernel{};
  kernel.nl_family = AF_NETLINK;
  if (::sendto(fd_, &request, request.header.nlmsg_len, 0,
               reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel) < 0) {
    throw KernelError::fromErrno("cannot ask the kernel for its tables", errno);
  }
  bool done = false;
  bool interrupted = false;
  while (!done) {
    const ssize_t got = ::recv(fd_, buffer_.data(), buffer_.size(), 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      throw KernelError::fromErrno("reading a dump of the kernel's tables", errno);
    }
    forEachNetlinkMessage(std::span(buffer_).first(static_cast<std::size_t>(got)),
                          [&](const nlmsghdr& header, std::span<const std::byte> message) {
                            if (header.nlmsg_seq != sequence_ || done) return;
                            if (header.nlmsg_flags & NLM_F_DUMP_INTR) interrupted = true;
                            if (header.nlmsg_type == NLMSG_DONE) {
                              done = true;
                            } else if (header.nlmsg_type == NLMSG_ERROR) {
                              nlmsgerr error{};
                              std::memcpy(&error, message.data() + kHeaderBytes,
                                          std::min(sizeof error, message.size() - kHeaderBytes));
                              if (error.error != 0) {
                                throw KernelError::fromErrno("the kernel refused a dump",
                                                             -error.error);
                              }
                              done = true;
                            } else {
                              each(message);
                            }
                          });
  }
  return !interrupted;
}

NetlinkSocket::Read NetlinkSocket::readPending(const Each& each) {
  Read result = Read::nothing;
  for (;;) {
    const ssize_t got = ::recv(fd_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    if (got < 0) {
      if (errno == EINTR) continue;
      if (errno == ENOBUFS) {
        result = Read::overrun;
        continue;
      }
      if (errno == EAGAIN || errno == EWOULDBLOCK) return result;
      throw KernelError::fromErrno("reading routing notifications", errno);
    }
    if (result == Read::nothing) result = Read::some;
    forEachNetlinkMessage(std::span(buffer_).first(static_cast<std::size_t>(got)),
                          [&](const nlmsghdr&, std::span<const std::byte> message) {
                            each(message);
                          });
  }
}

}  // namespace Kernel
