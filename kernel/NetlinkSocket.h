#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Kernel {

// A routing netlink socket of the namespace the calling thread is in when it is made.
class NetlinkSocket {
 public:
  using Each = std::function<void(std::span<const std::byte> message)>;
  enum class Read { nothing, some, overrun };

  // Joins the notification groups `groups` (rtnetlink group numbers); `receiveBytes` is
  // the room the kernel keeps for notifications not yet read. Throws KernelError.
  explicit NetlinkSocket(const std::vector<unsigned>& groups = {},
                         std::size_t receiveBytes = kDefaultReceiveBytes);
  ~NetlinkSocket();
  NetlinkSocket(const NetlinkSocket&) = delete;
  NetlinkSocket& operator=(const NetlinkSocket&) = delete;

  int fd() const { return fd_; }
  // Asks for every entry of message type `type` (RTM_GETLINK, RTM_GETROUTE) of `family`
  // and calls `each` for every message of the answer. A dump that the kernel interrupts
  // because its tables changed meanwhile is asked again. Throws KernelError.
  void dump(std::uint16_t type, std::uint8_t family, const Each& each);
  // Calls `each` for every message that waits, without waiting for more. `overrun`: the
  // kernel dropped notifications for want of room; what waited after that is still given.
  Read readPending(const Each& each);

  // Notifications a burst of 10^4 route changes needs, with room to spare.
  static constexpr std::size_t kDefaultReceiveBytes = std::size_t{8} << 20;

 private:
  // One dump; false when the kernel interrupted it.
  bool dumpOnce(std::uint16_t type, std::uint8_t family, const Each& each);

  int fd_ = -1;
  std::uint32_t sequence_ = 0;
  std::vector<std::byte> buffer_;
};

}  // namespace Kernel
