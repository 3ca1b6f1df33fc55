#include "pipeline/IntfAllMulti.h"

#include <net/if.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {
AllMultiObserver& allMultiObserver() {
  static AllMultiObserver observer;
  return observer;
}
}  // namespace

void allMultiObserverIsForTest(AllMultiObserver observer) {
  allMultiObserver() = std::move(observer);
}

void allMultiIs(int ioctlFd, std::string_view deviceName, bool on) {
  if (allMultiObserver()) allMultiObserver()(deviceName, on);
  struct ifreq request;
  std::memset(&request, 0, sizeof(request));
  std::memcpy(request.ifr_name, deviceName.data(),
              std::min(deviceName.size(), maxKernelDeviceName));
  if (::ioctl(ioctlFd, SIOCGIFFLAGS, &request) < 0) {
    VEK_TRACE(err, "SIOCGIFFLAGS error: {}", std::strerror(errno));
    return;
  }
  const int flags = on ? (request.ifr_flags | IFF_ALLMULTI) : (request.ifr_flags & ~IFF_ALLMULTI);
  request.ifr_flags = static_cast<short>(flags);
  if (::ioctl(ioctlFd, SIOCSIFFLAGS, &request) < 0) {
    VEK_TRACE(err, "SIOCSIFFLAGS error: {}", std::strerror(errno));
  }
}

}  // namespace VekL3Mcast
