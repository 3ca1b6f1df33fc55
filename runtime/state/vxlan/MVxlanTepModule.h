#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/vxlan/VxlanVtepVlanStatus.h"

namespace VekModules {

// The shared entity of the VXLAN tunnel-endpoint step: where the agent and the data-plane
// side meet without commands. One per process, found by its name; it holds the VTEP VLAN
// status table, so the table lives as long as the process and survives an agent restart.
class MVxlanTepModule : public Qel::Entity {
 public:
  static constexpr std::string_view singletonName = "MVxlanTepModule";

  // The process's entity, made with an empty table on first use.
  static Lumo::Ptr<MVxlanTepModule> moduleIs() {
    return Qel::Entity::singletonIs<MVxlanTepModule>(singletonName);
  }

  std::string_view typeName() const override { return "VekModules::MVxlanTepModule"; }

  const Lumo::Ptr<VekMVxlan::VxlanVtepVlanStatus>& vxlanVtepVlanStatus() const noexcept {
    return vxlanVtepVlanStatus_;
  }

 private:
  const Lumo::Ptr<VekMVxlan::VxlanVtepVlanStatus> vxlanVtepVlanStatus_ =
      Lumo::makePtr<VekMVxlan::VxlanVtepVlanStatus>();
};

}  // namespace VekModules
