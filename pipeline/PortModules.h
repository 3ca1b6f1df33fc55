#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "pipeline/BessPortOru.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "proto/bess.pb.h"

namespace VekL3Mcast {

// A port or module name from its parts, with nothing between them.
Lumo::String joinedName(std::initializer_list<std::string_view> parts);

// The graph ends of a daemon port: a receive (port input) module that reads it, and a
// transmit (port output) module that writes it. Neither reserves a gate.
inline constexpr std::uint32_t txModuleInGates = 4;
Lumo::Ptr<Vek::Module> makeRxModule(const Lumo::String& name, std::uint32_t maxOutGate,
                                    const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
Lumo::Ptr<Vek::Module> makeTxModule(const Lumo::String& name, const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

// The attributes that hold them: made by isWith(owner, &makeRxModule, ...) or &makeTxModule.
template <Qel::AttributeId Id, Qel::AttrName Name>
using RxModuleAttr =
    Qel::InstantiatingAttr<Vek::Module, Id, Name, Lumo::String, std::uint32_t, Lumo::String,
                           Lumo::Ptr<Vek::ModuleConfigStatusPair>>;
template <Qel::AttributeId Id, Qel::AttrName Name>
using TxModuleAttr = Qel::InstantiatingAttr<Vek::Module, Id, Name, Lumo::String, Lumo::String,
                                            Lumo::Ptr<Vek::ModuleConfigStatusPair>>;
template <Qel::AttributeId Id, Qel::AttrName Name>
using BessPortAttr =
    Qel::InstantiatingAttr<BessPortOru, Id, Name, Lumo::String, Lumo::String,
                           google::protobuf::Message*, Lumo::Ptr<Vek::CmdConfigGroup>>;

// The argument of a packet-capture port.
bess::pb::PCAPPortArg* pcapPortArg(std::string_view dev, std::string_view filter,
                                   const Lanx::NamespaceName& netns, std::uint32_t bufSize,
                                   bool txFlag);

// Sends a command of a port's driver through the group that made the port, so that it
// reaches the daemon after the port. Takes `arg`.
void sendPortCmd(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup, const Lumo::String& portName,
                 std::string_view cmd, google::protobuf::Message* arg);

}  // namespace VekL3Mcast
