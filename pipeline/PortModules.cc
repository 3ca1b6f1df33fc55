#include "pipeline/PortModules.h"

#include <memory>
#include <string>

#include "pipeline/PortCmd.h"
#include "proto/vek.pb.h"
#include "runtime/vek/ModuleClass.h"

namespace VekL3Mcast {

Lumo::String joinedName(std::initializer_list<std::string_view> parts) {
  std::string name;
  for (std::string_view part : parts) name += part;
  return Lumo::String(name);
}

Lumo::Ptr<Vek::Module> makeRxModule(const Lumo::String& name, std::uint32_t maxOutGate,
                                    const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  auto* arg = new bess::pb::PortIncArg;
  arg->set_port(portName.str());
  return Lumo::makePtr<Vek::Module>(name, Vek::VekModule::portInc, 0, maxOutGate, 0, 0, arg,
                                    modulePair);
}

Lumo::Ptr<Vek::Module> makeTxModule(const Lumo::String& name, const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  auto* arg = new vek::pb::PortOutQosArg;
  arg->set_port(portName.str());
  return Lumo::makePtr<Vek::Module>(name, Vek::VekModule::portOut, txModuleInGates, 0, 0, 0, arg,
                                    modulePair);
}

bess::pb::PCAPPortArg* pcapPortArg(std::string_view dev, std::string_view filter,
                                   const Lanx::NamespaceName& netns, std::uint32_t bufSize,
                                   bool txFlag) {
  auto* arg = new bess::pb::PCAPPortArg;
  arg->set_dev(std::string(dev));
  arg->set_filter(std::string(filter));
  arg->set_netns(std::string(netns.view()));
  arg->set_bufsize(bufSize);
  arg->set_openflag(true);
  arg->set_txflag(txFlag);
  return arg;
}

void sendPortCmd(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup, const Lumo::String& portName,
                 std::string_view cmd, google::protobuf::Message* arg) {
  std::unique_ptr<google::protobuf::Message> owned(arg);
  auto* request = new bess::pb::CommandRequest;
  request->set_name(portName.str());
  request->set_cmd(std::string(cmd));
  request->mutable_arg()->PackFrom(*owned);
  configGroup->cmdBatchEnq(portCmdFactory(request));
  configGroup->enqueueVersionInc(1);
}

}  // namespace VekL3Mcast
