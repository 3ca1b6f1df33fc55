#pragma once

#include <cstdint>

#include "runtime/lumo/Exception.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/ModuleCounters.h"
#include "runtime/vek/ModuleRegistry.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekMMpls {

// A module proxy whose tables live in a shared entity of type Dv instead of travelling as
// commands: the daemon's module and the proxy meet in the entity of the instance name, so
// the proxy sends no table commands. Every output gate is reserved, as each has a fixed
// use that the owner connects by number.
template <typename Dv>
class SharedEntityModule : public Vek::Module {
 public:
  SharedEntityModule(Lumo::String name, Vek::VekModule::ModuleClass moduleClass,
                     std::uint32_t maxInGate, std::uint32_t maxOutGate,
                     Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair)
      : Vek::Module(std::move(name), moduleClass, maxInGate, maxOutGate, 0, maxOutGate, nullptr,
                    std::move(configStatusPair)) {}

  // The shared entity; null until doVekModuleInit found one of the right type.
  const Lumo::Ptr<Dv>& module() const noexcept { return module_; }
  void moduleIs(Lumo::Ptr<Dv> module) { module_ = std::move(module); }

  // Finds the shared entity of this instance. When the proxy comes before the daemon's
  // module there is none yet, and the proxy makes it for both. An entity of another type
  // under the name is left alone, and the proxy stays without one.
  void doVekModuleInit() override {
    const std::string_view instance = name().view();
    if (VekModules::ModuleRegistry::exists() &&
        VekModules::ModuleRegistry::registryIs()->childHas(Lumo::String(instance))) {
      moduleIs(VekModules::ModuleRegistry::entity<Dv>(instance));
      if (!module_) VEK_TRACE(err, "{}: shared entity of another type", instance);
      return;
    }
    VEK_TRACE(info, "{} not found", instance);
    moduleIs(VekModules::ModuleRegistry::entityIs<Dv>(instance));
  }

  // Allocates the module's counters, in the order of its slots, and fills the slots.
  void addCounters(const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
    if (!module_) throw Lumo::Exception("Vek Module not present.");
    for (std::string_view counter : Dv::kCounterNames) {
      module_->counterIdIs(counter, Vek::allocateModulePacketCounter(this, vekcsd, counter,
                                                                     Vek::counterUnitPackets));
    }
  }

 private:
  Lumo::Ptr<Dv> module_;
};

}  // namespace VekMMpls
