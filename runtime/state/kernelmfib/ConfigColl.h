#pragma once

#include <string>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/KernelMfibConfig.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/RoutingPath.h"

namespace Routing::KernelMfib {

// The kernel multicast FIB limits of the VRFs of one family, by VRF. A VRF without a
// member keeps the module's defaults.
class ConfigColl : public Lanx::StateEntity<"Routing::KernelMfib::ConfigColl"> {
 public:
  enum : Qel::AttributeId { kConfig = 1 };
  using Configs = Qel::HashMap2018<L3::VrfName, Lumo::Ptr<Config>>;

  static std::string mountPath(Lanx::AddressFamily af) {
    return routingPath(af, "kernelmfib/config");
  }

  Lumo::Ptr<Config const> config(const L3::VrfName& vrf) const { return config_.get(vrf); }
  bool configHas(const L3::VrfName& vrf) const { return config_.has(vrf); }
  const Configs& configs() const noexcept { return config_.members(); }

  // Finds or makes the limits of a VRF; the writer then sets its values.
  Lumo::Ptr<Config> configIs(const L3::VrfName& vrf) {
    if (auto present = config_.get(vrf)) return present;
    auto made = Lumo::makePtr<Config>();
    config_.is(*this, vrf, made);
    return made;
  }
  void configDel(const L3::VrfName& vrf) { config_.del(*this, vrf); }

 private:
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<Config>, kConfig> config_;
};

}  // namespace Routing::KernelMfib
