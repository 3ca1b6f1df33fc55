#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kernel/KernelTables.h"
#include "kernel/NetlinkSocket.h"

namespace Kernel {

// Follows the devices and multicast forwarding caches of one network namespace: reads them
// whole when made, then keeps its tables up to date from the kernel's notifications, and
// reads everything afresh when the kernel says that notifications were lost.
class KernelReader {
 public:
  // `netns` is a name under /run/netns, or empty for the namespace of the calling thread.
  // Throws KernelError when the namespace cannot be entered or read.
  explicit KernelReader(const std::string& netns,
                        std::size_t receiveBytes = NetlinkSocket::kDefaultReceiveBytes);

  // The namespace followed, as given: empty for the one the reader was made in.
  const std::string& netns() const { return netns_; }
  // Readable when notifications wait.
  int fd() const { return events_->fd(); }
  // The families whose multicast forwarding cache the namespace's kernel has.
  const std::vector<Family>& families() const { return families_; }
  KernelTables& tables() { return tables_; }
  const KernelTables& tables() const { return tables_; }
  // Applies the notifications that wait, without waiting for more.
  void readPending();
  // Reads every table afresh and applies the differences.
  void resync();
  std::uint64_t resyncs() const { return resyncs_; }

 private:
  void dumpInto(KernelTables& tables);

  std::string netns_;
  std::unique_ptr<NetlinkSocket> events_;
  std::unique_ptr<NetlinkSocket> requests_;
  std::vector<Family> families_;
  KernelTables tables_;
  std::uint64_t resyncs_ = 0;
};

}  // namespace Kernel
