#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace VekL3Mcast {

// The longest device name the kernel takes in an interface request; longer names are cut
// there (and only there).
inline constexpr std::size_t maxKernelDeviceName = 15;

// Sets or clears IFF_ALLMULTI on a kernel device through a socket of the device's network
// namespace. A failure is traced and changes nothing else: the device keeps its flags.
void allMultiIs(int ioctlFd, std::string_view deviceName, bool on);

// Test hook: hears every flag change asked for, by device name, before the kernel does.
// An empty function removes it.
using AllMultiObserver = std::function<void(std::string_view deviceName, bool on)>;
void allMultiObserverIsForTest(AllMultiObserver observer);

}  // namespace VekL3Mcast
