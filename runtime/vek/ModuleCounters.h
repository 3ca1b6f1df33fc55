#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/VekCommonSmData.h"

namespace Vek {

// Allocates one named packet counter for a module; the id is known at once, the daemon
// learns of it through the module's channel.
// A proxy may pass itself: no reference is taken.
CounterId allocateModulePacketCounter(Module* module, const Lumo::Ptr<VekCommonSmData>& vekcsd,
                                      Lumo::String name, CounterUnit unit);
// Frees every counter of the module; called before the module is dropped.
void freeModuleCounters(Module* module, const Lumo::Ptr<VekCommonSmData>& vekcsd);

template <typename T>
CounterId allocateModulePacketCounter(const Lumo::Ptr<T>& module,
                                      const Lumo::Ptr<VekCommonSmData>& vekcsd, Lumo::String name,
                                      CounterUnit unit) {
  return allocateModulePacketCounter(module.get(), vekcsd, std::move(name), unit);
}
template <typename T>
void freeModuleCounters(const Lumo::Ptr<T>& module, const Lumo::Ptr<VekCommonSmData>& vekcsd) {
  freeModuleCounters(module.get(), vekcsd);
}

}  // namespace Vek
