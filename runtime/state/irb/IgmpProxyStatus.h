#pragma once

#include <string_view>

#include "runtime/state/AddressFamily.h"
#include "runtime/state/StateEntity.h"

namespace Irb::Multicast {

// The IGMP proxy's status, and the same of MLD for IPv6; its members come with the VXLAN
// pipeline that reads them.
class IgmpProxyStatus : public Lanx::StateEntity<"Irb::Multicast::IgmpProxyStatus"> {
 public:
  static constexpr std::string_view igmpPath = "irb/multicast/igmpProxyStatus";
  static std::string_view afMountPath(Lanx::AddressFamily af) {
    return af == Lanx::AddressFamily::ipv6 ? "irb/multicast/mldProxyStatus" : igmpPath;
  }
};

}  // namespace Irb::Multicast
