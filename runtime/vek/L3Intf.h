#pragma once

#include <string_view>
#include <vector>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/IntfId.h"
#include "runtime/vek/GateId.h"
#include "runtime/vek/Module.h"

namespace Vek {

// A routed interface of the forwarding agent as far as the plug-in needs it: other
// modules join its egress by ether type. Where the agent has made the interface's egress
// module, a source is linked to it at once. Each source is also recorded by name, ether
// type and gate; the record holds no reference, so a source module still goes with its
// owner.
class L3Intf : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kEgressModule = 1, kEgressSource };

  struct EgressSource {
    Lumo::String moduleName;
    unsigned short etherType;
    GateId gate;
  };

  explicit L3Intf(Lanx::IntfId intfId) : intfId_(intfId) {}
  std::string_view typeName() const override { return "Vek::L3Intf"; }

  Lanx::IntfId intfId() const noexcept { return intfId_; }

  const Lumo::Ptr<Module>& egressModule() const noexcept { return egressModule_; }
  void egressModuleIs(Lumo::Ptr<Module> egress);

  // `gate` is an output gate of `module` (from getOutGate) that carries packets of
  // `etherType` to this interface.
  void connectEgressSourceModule(const Lumo::Ptr<Module>& module, unsigned short etherType,
                                 GateId gate);
  const std::vector<EgressSource>& egressSources() const noexcept { return egressSources_; }

 private:
  Lanx::IntfId intfId_;
  Lumo::Ptr<Module> egressModule_;
  std::vector<EgressSource> egressSources_;
};

}  // namespace Vek
