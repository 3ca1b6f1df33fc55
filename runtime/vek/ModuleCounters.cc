#include "runtime/vek/ModuleCounters.h"

#include "runtime/lumo/Assert.h"

namespace Vek {

CounterId allocateModulePacketCounter(Module* module, const Lumo::Ptr<VekCommonSmData>& vekcsd,
                                      Lumo::String name, CounterUnit unit) {
  QEL_ASSERT(module && vekcsd, "allocateModulePacketCounter needs a module and vekcsd");
  const CounterId id = vekcsd->counterAlloc(module->name());
  module->createInDaemon();
  module->channel()->recordIs(AllocateCounterRecord{module->name(), std::move(name), unit, id});
  return id;
}

void freeModuleCounters(Module* module, const Lumo::Ptr<VekCommonSmData>& vekcsd) {
  QEL_ASSERT(module && vekcsd, "freeModuleCounters needs a module and vekcsd");
  if (vekcsd->countersFree(module->name()).empty()) return;
  module->channel()->recordIs(FreeCountersRecord{module->name()});
}

}  // namespace Vek
