#include "runtime/vek/L3Intf.h"

#include "runtime/lumo/Assert.h"

namespace Vek {

void L3Intf::egressModuleIs(Lumo::Ptr<Module> egress) {
  if (egress == egressModule_) return;
  egressModule_ = std::move(egress);
  notify(kEgressModule);
}

void L3Intf::connectEgressSourceModule(const Lumo::Ptr<Module>& module, unsigned short etherType,
                                       GateId gate) {
  QEL_ASSERT(module && gate.isValid(), "an egress source needs a module and a gate");
  egressSources_.push_back(EgressSource{module->name(), etherType, gate});
  notify(kEgressSource);
  if (!egressModule_) return;
  const GateId inGate = egressModule_->getInGateForEtherType(etherType);
  if (inGate.isValid()) {
    module->connectViaReservedGates(egressModule_, gate.value(), inGate.value());
  } else {
    module->connectViaReservedGate(egressModule_, gate.value());
  }
}

}  // namespace Vek
