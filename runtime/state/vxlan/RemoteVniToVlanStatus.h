#pragma once

#include <string>
#include <string_view>

#include "runtime/state/IntfId.h"
#include "runtime/state/StateEntity.h"

namespace Vxlan {

// Remote VNI to VLAN mappings of one VXLAN interface, as one source ("static" or "irb")
// wrote them; its members come with the VXLAN pipeline that reads them.
class RemoteVniToVlanStatus : public Lanx::StateEntity<"Vxlan::RemoteVniToVlanStatus"> {
 public:
  // "vxlan/remoteVniToVlan/<source>/<interface>".
  static std::string mountPath(std::string_view source, const Lanx::IntfId& intf) {
    return "vxlan/remoteVniToVlan/" + std::string(source) + "/" + intf.name();
  }
};

}  // namespace Vxlan
