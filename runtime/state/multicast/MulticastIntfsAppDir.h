#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Dir.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/MulticastIntfs.h"

namespace Routing::Multicast {

// The multicast-enabled interfaces of every VRF of one family, as the multicast routing
// applications publish them ("multicastIntfs/application", "multicastIntfs6/application").
// A change of any VRF's interfaces reaches this dir's reactors too.
class MulticastIntfsAppDir
    : public Lanx::StateEntity<"Routing::Multicast::MulticastIntfsAppDir", Qel::Dir> {
 public:
  static std::string_view path(Lanx::AddressFamily af) {
    return af == Lanx::AddressFamily::ipv6 ? "multicastIntfs6/application"
                                           : "multicastIntfs/application";
  }

  Lumo::Ptr<MulticastIntfs> vrf(const L3::VrfName& vrf) const {
    return childAs<MulticastIntfs>(vrf.str());
  }
  // Finds or makes the interfaces of a VRF.
  Lumo::Ptr<MulticastIntfs> vrfIs(const L3::VrfName& vrf) {
    if (auto present = this->vrf(vrf)) return present;
    auto made = Lumo::makePtr<MulticastIntfs>();
    childIs(vrf.str(), made);
    return made;
  }
  void vrfDel(const L3::VrfName& vrf) { childDel(vrf.str()); }
};

}  // namespace Routing::Multicast
