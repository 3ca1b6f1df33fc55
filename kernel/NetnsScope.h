#pragma once

#include <string>

namespace Kernel {

// Moves the calling thread into a named network namespace (as `ip netns` names them, under
// /run/netns) for the life of the object, and back into the one it came from after.
// Sockets opened meanwhile stay in the namespace they were opened in. An empty name stays
// where the thread is.
class NetnsScope {
 public:
  // Throws KernelError saying whether the namespace does not exist or may not be entered.
  explicit NetnsScope(const std::string& name);
  ~NetnsScope();
  NetnsScope(const NetnsScope&) = delete;
  NetnsScope& operator=(const NetnsScope&) = delete;

  // Where named namespaces are found.
  static constexpr const char* kNetnsDir = "/run/netns";

 private:
  int home_ = -1;  // the namespace to go back to; -1 when the thread never left
};

}  // namespace Kernel
