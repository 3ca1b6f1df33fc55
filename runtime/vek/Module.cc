#include "runtime/vek/Module.h"

#include <fmt/format.h>

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace Vek {

Module::Module(Lumo::String name, VekModule::ModuleClass moduleClass, std::uint32_t maxInGate,
               std::uint32_t maxOutGate, std::uint32_t reservedInGate,
               std::uint32_t reservedOutGate, google::protobuf::Message* initArgs,
               Lumo::Ptr<ModuleConfigStatusPair> configStatusPair)
    : name_(std::move(name)),
      moduleClass_(moduleClass),
      initArgs_(initArgs),
      pair_(std::move(configStatusPair)),
      inGates_(reservedInGate, maxInGate),
      outGates_(reservedOutGate, maxOutGate) {
  QEL_ASSERT(pair_, "a module needs a command channel");
  QEL_ASSERT(reservedInGate <= maxInGate && reservedOutGate <= maxOutGate,
             "more reserved gates than gates");
  channel()->moduleAwaitingCreationIs(this);
}

Module::~Module() {
  if (!created_) {
    channel()->moduleAwaitingCreationDel(this);
    return;
  }
  // The daemon drops a module's links with it; saying so link by link keeps the peers'
  // gates and the log in step.
  while (!outLinks_.empty()) unlinkOut(outLinks_.begin());
  while (!inLinks_.empty()) {
    Module& from = *inLinks_.begin()->second.from;
    from.unlinkOut(from.outLinks_.find(inLinks_.begin()->second.ogate));
  }
  VEK_TRACE(debug, "destroy module {}", name_);
  channel()->recordIs(DestroyModuleRecord{name_});
}

void Module::initArgsIs(google::protobuf::Message* initArgs) {
  if (created_) {
    VEK_TRACE(warn, "module {} exists in the daemon: its new init message is not sent", name_);
  }
  initArgs_.reset(initArgs);
}

void Module::createInDaemon() {
  if (created_) return;
  created_ = true;
  channel()->moduleAwaitingCreationDel(this);
  std::shared_ptr<google::protobuf::Message> init;
  if (initArgs_) {
    init.reset(initArgs_->New());
    init->CopyFrom(*initArgs_);
  }
  VEK_TRACE(debug, "create module {} class {}", name_, static_cast<unsigned>(moduleClass_));
  channel()->recordIs(CreateModuleRecord{name_, moduleClass_, maxInGate(), maxOutGate(),
                                         reservedInGate(), reservedOutGate(), std::move(init)});
}

void Module::connectModule(const Lumo::Ptr<Module>& next) {
  QEL_ASSERT(next, "connectModule needs a module");
  for (const auto& [gate, out] : outLinks_) {
    if (out.to == next.get()) return;
  }
  auto outGate = outGates_.allocate();
  if (!outGate) {
    throw Lumo::Exception(fmt::format("module {}: no free output gate", name_));
  }
  auto inGate = next->inGates_.allocate();
  if (!inGate) {
    outGates_.release(*outGate);
    throw Lumo::Exception(fmt::format("module {}: no free input gate", next->name_));
  }
  link(*next, *outGate, *inGate);
}

void Module::connectViaReservedGate(const Lumo::Ptr<Module>& next, std::uint32_t outGate) {
  QEL_ASSERT(next, "connectViaReservedGate needs a module");
  QEL_ASSERT(outGate < maxOutGate(), "output gate out of range");
  if (auto it = outLinks_.find(outGate); it != outLinks_.end()) {
    QEL_ASSERT(it->second.to == next.get(), "output gate already connected to another module");
    return;
  }
  auto inGate = next->inGates_.allocate();
  if (!inGate) {
    throw Lumo::Exception(fmt::format("module {}: no free input gate", next->name_));
  }
  outGates_.take(outGate);  // may already be held through getOutGate
  link(*next, outGate, *inGate);
}

void Module::connectViaReservedGates(const Lumo::Ptr<Module>& next, std::uint32_t outGate,
                                     std::uint32_t inGate) {
  QEL_ASSERT(next, "connectViaReservedGates needs a module");
  QEL_ASSERT(outGate < maxOutGate() && inGate < next->maxInGate(), "gate out of range");
  if (auto it = outLinks_.find(outGate); it != outLinks_.end()) {
    QEL_ASSERT(it->second.to == next.get() && it->second.igate == inGate,
               "output gate already connected elsewhere");
    return;
  }
  QEL_ASSERT(inGate < next->reservedInGate() || !next->inLinks_.contains(inGate),
             "input gate already connected");
  outGates_.take(outGate);
  next->inGates_.take(inGate);  // a reserved gate fed already stays taken
  link(*next, outGate, inGate);
}

void Module::link(Module& next, std::uint32_t outGate, std::uint32_t inGate) {
  // The link's record creates both modules first, if they wait.
  outLinks_[outGate] = OutLink{&next, inGate};
  next.inLinks_.emplace(inGate, InLink{this, outGate});
  channel()->recordIs(ConnectRecord{{name_, outGate, next.name_, inGate}});
}

void Module::disconnectModule(const Lumo::Ptr<Module>& next) {
  if (!next) return;
  for (auto it = outLinks_.begin(); it != outLinks_.end();) {
    auto current = it++;
    if (current->second.to == next.get()) unlinkOut(current);
  }
}

void Module::unlinkOut(std::map<std::uint32_t, OutLink>::iterator link) {
  const std::uint32_t outGate = link->first;
  Module& next = *link->second.to;
  const std::uint32_t inGate = link->second.igate;
  outLinks_.erase(link);
  outGates_.release(outGate);
  auto [first, last] = next.inLinks_.equal_range(inGate);
  for (auto in = first; in != last; ++in) {
    if (in->second.from == this && in->second.ogate == outGate) {
      next.inLinks_.erase(in);
      break;
    }
  }
  if (!next.inLinks_.contains(inGate)) next.inGates_.release(inGate);
  channel()->recordIs(DisconnectRecord{{name_, outGate, next.name_, inGate}});
}

GateId Module::findGateByName(std::string_view moduleName, bool) const {
  for (const auto& [gate, out] : outLinks_) {
    if (out.to->name_ == moduleName) return GateId(gate);
  }
  return GateId();
}

GateId Module::getOutGate() {
  auto gate = outGates_.allocate();
  if (!gate) throw Lumo::Exception(fmt::format("module {}: no free output gate", name_));
  return GateId(*gate);
}

GateId Module::getInGateForEtherType(unsigned short) const { return GateId(); }

}  // namespace Vek
