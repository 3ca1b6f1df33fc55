#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/GateId.h"
#include "runtime/vek/IdAllocator.h"
#include "runtime/vek/ModuleClass.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace Vek {

// The proxy of one data-plane module. It creates the module in the daemon, wires its gates
// and is the address of its commands; the daemon's module goes with the last reference.
//
// The daemon's module is created at the next record of the channel (whatever it is for) or
// at the channel's next pump, whichever comes first, so that initArgsIs can still change the
// init message right after construction and the daemon still sees modules in the order
// they were made. Gate numbers are decided here, at
// once; the daemon applies them.
class Module : public Lumo::Node {
 public:
  struct OutLink {
    Module* to;
    std::uint32_t igate;
  };
  struct InLink {
    Module* from;
    std::uint32_t ogate;
  };

  // Takes `initArgs`, which may be null.
  Module(Lumo::String name, VekModule::ModuleClass moduleClass, std::uint32_t maxInGate,
         std::uint32_t maxOutGate, std::uint32_t reservedInGate, std::uint32_t reservedOutGate,
         google::protobuf::Message* initArgs, Lumo::Ptr<ModuleConfigStatusPair> configStatusPair);
  ~Module() override;
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  const Lumo::String& name() const noexcept { return name_; }
  VekModule::ModuleClass moduleClass() const noexcept { return moduleClass_; }
  std::uint32_t maxInGate() const noexcept { return inGates_.limit(); }
  std::uint32_t maxOutGate() const noexcept { return outGates_.limit(); }
  std::uint32_t reservedInGate() const noexcept { return inGates_.floor(); }
  std::uint32_t reservedOutGate() const noexcept { return outGates_.floor(); }
  const google::protobuf::Message* initArgs() const noexcept { return initArgs_.get(); }
  const Lumo::Ptr<ModuleConfigStatusPair>& configStatusPair() const noexcept { return pair_; }
  const Lumo::Ptr<CommandChannel>& channel() const noexcept { return pair_->channel(); }

  // Sets or replaces the init message; takes it. After the daemon's module exists this
  // changes nothing there.
  void initArgsIs(google::protobuf::Message* initArgs);

  // Connects the lowest free output gate to the lowest free input gate of `next`. A module
  // that is already connected to `next` stays as it is.
  void connectModule(const Lumo::Ptr<Module>& next);
  // Connects through the given output gate of this module.
  void connectViaReservedGate(const Lumo::Ptr<Module>& next, std::uint32_t outGate);
  // A reserved input gate is a meeting point: several modules may feed it, each through a
  // link of its own. An input gate handed out by connectModule takes one link.
  void connectViaReservedGates(const Lumo::Ptr<Module>& next, std::uint32_t outGate,
                               std::uint32_t inGate);
  // Undoes every link from this module to `next`; a null `next` or no link does nothing.
  void disconnectModule(const Lumo::Ptr<Module>& next);

  // The output gate that serves the module of that name, or an invalid GateId.
  GateId findGateByName(std::string_view moduleName, bool byPort) const;
  // Takes a free output gate without connecting it; it stays taken until a link through
  // it is undone.
  GateId getOutGate();
  // The input gate this module takes a given ether type on; none by default.
  virtual GateId getInGateForEtherType(unsigned short etherType) const;

  const std::map<std::uint32_t, OutLink>& outLinks() const noexcept { return outLinks_; }
  const std::multimap<std::uint32_t, InLink>& inLinks() const noexcept { return inLinks_; }
  bool outGateInUse(std::uint32_t gate) const { return outGates_.inUse(gate); }
  bool inGateInUse(std::uint32_t gate) const { return inGates_.inUse(gate); }

  bool createdInDaemon() const noexcept { return created_; }
  // Queues the creation of the daemon's module unless that was done.
  void createInDaemon();

  // Work a proxy needs once it stands and before it is used; makeModule calls it.
  virtual void doVekModuleInit() {}

 private:
  void link(Module& next, std::uint32_t outGate, std::uint32_t inGate);
  void unlinkOut(std::map<std::uint32_t, OutLink>::iterator link);

  Lumo::String name_;
  VekModule::ModuleClass moduleClass_;
  std::unique_ptr<google::protobuf::Message> initArgs_;
  Lumo::Ptr<ModuleConfigStatusPair> pair_;
  IdAllocator inGates_;
  IdAllocator outGates_;
  std::map<std::uint32_t, OutLink> outLinks_;
  std::multimap<std::uint32_t, InLink> inLinks_;
  bool created_ = false;
};

// Builds a proxy and runs its doVekModuleInit.
template <typename T, typename... Args>
Lumo::Ptr<T> makeModule(Args&&... args) {
  Lumo::Ptr<T> module = Lumo::makePtr<T>(std::forward<Args>(args)...);
  module->doVekModuleInit();
  return module;
}

}  // namespace Vek
