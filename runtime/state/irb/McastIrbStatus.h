#pragma once

#include <string_view>

#include "runtime/state/AddressFamily.h"
#include "runtime/state/StateEntity.h"

namespace Irb::Multicast {

// Multicast routing status of the routed VLAN interfaces of one family; its members come
// with the VXLAN pipeline that reads them.
class McastIrbStatus : public Lanx::StateEntity<"Irb::Multicast::McastIrbStatus"> {
 public:
  static std::string_view mountPath(Lanx::AddressFamily af) {
    return af == Lanx::AddressFamily::ipv6 ? "irb/multicast6/status" : "irb/multicast/status";
  }
};

}  // namespace Irb::Multicast
