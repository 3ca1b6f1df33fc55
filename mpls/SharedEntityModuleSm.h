#pragma once

#include <cstdint>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/ModuleCounters.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekMMpls {

// The owner of one module proxy with a shared entity (an M): it creates the proxy with its
// counters, and frees both when it goes. Dropping the owner is what removes the module.
template <typename M>
class SharedEntityModuleSm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kInitialized = 1, kModule };
  // Every module of this kind takes packets from many sources.
  static constexpr std::uint32_t maxInGate = 8192;

  ~SharedEntityModuleSm() override { cleanup(); }

  const Lumo::Ptr<Vek::ModuleConfigStatusPair>& configStatusPair() const noexcept {
    return configStatusPair_;
  }
  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd() const noexcept { return vekcsd_; }
  bool initialized() const noexcept { return initialized_.get(); }
  const Lumo::Ptr<M>& module() const noexcept { return module_.get(); }
  Lumo::Ptr<M> moduleIs(const Lumo::String& name, std::uint32_t inGates, std::uint32_t outGates,
                        const Lumo::Ptr<Vek::ModuleConfigStatusPair>& pair) {
    return module_.isWith(
        *this,
        [](const Lumo::String& n, std::uint32_t in, std::uint32_t out,
           const Lumo::Ptr<Vek::ModuleConfigStatusPair>& p) {
          return Vek::makeModule<M>(n, in, out, p);
        },
        name, inGates, outGates, pair);
  }
  void moduleDel() { module_.del(*this); }

  // Frees the module's counters, empties its slots and drops the proxy.
  void cleanup() {
    const Lumo::Ptr<M> module = module_.get();
    if (!module) return;
    Vek::freeModuleCounters(module, vekcsd_);
    if (module->module()) module->module()->counterIdDelAll();
    moduleDel();
    initialized_.is(*this, false);
  }

 protected:
  SharedEntityModuleSm(Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                       Lumo::Ptr<Vek::VekCommonSmData> vekcsd)
      : configStatusPair_(std::move(configStatusPair)), vekcsd_(std::move(vekcsd)) {}

  // The body of a derived machine's handleInitialized; `owner` names what the module
  // serves in the trace. Raises if the proxy found no shared entity.
  void doCreateModule(std::string_view owner, const Lumo::String& name, std::uint32_t outGates) {
    VEK_TRACE(info, "{}: create Mfib module {}", owner, name);
    moduleIs(name, maxInGate, outGates, configStatusPair_)->addCounters(vekcsd_);
    initialized_.is(*this, true);
  }

 private:
  const Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair_;
  const Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  Qel::ValueAttr<bool, kInitialized> initialized_;
  Qel::InstantiatingAttr<M, kModule, "module", Lumo::String, std::uint32_t, std::uint32_t,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>>
      module_;
};

}  // namespace VekMMpls
