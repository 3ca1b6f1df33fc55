#pragma once

#include <string_view>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/state/vxlan/MVxlanTepModule.h"
#include "runtime/state/vxlan/VxlanVtepVlanStatus.h"

namespace VekMVxlan {

// The agent's hold on the tunnel-endpoint step's shared entity. The step has no table
// commands: what it shares with the data-plane side, the VTEP VLAN status among it, lives
// in the entity, which the process keeps across agents.
class MVxlanTepStep : public Lumo::Node {
 public:
  MVxlanTepStep() { doVekModuleInit(); }

  const Lumo::Ptr<VekModules::MVxlanTepModule>& module() const noexcept { return module_; }
  void moduleIs(Lumo::Ptr<VekModules::MVxlanTepModule> module) { module_ = std::move(module); }
  const Lumo::Ptr<VxlanVtepVlanStatus>& vxlanVtepVlanStatus() const noexcept {
    return module_->vxlanVtepVlanStatus();
  }

  // Finds the shared entity, or makes it when this process has none yet.
  void doVekModuleInit();
  // The step counts nothing of its own.
  void initCounters() {}

 private:
  Lumo::Ptr<VekModules::MVxlanTepModule> module_;
};

}  // namespace VekMVxlan
