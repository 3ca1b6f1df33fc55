#include "pipeline/MetaDataModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"

namespace VekL3Mcast {

MetaDataModule::MetaDataModule(Lumo::String name, google::protobuf::Message* initArgs,
                               Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair,
                               L3::VrfName vrfName, bool portDeviceAny, bool mcastHwFwd,
                               bool staticSrcIntf, std::uint64_t staticSrcIntfId,
                               bool rxPeerLinkOrCore)
    : Vek::Module(std::move(name), Vek::VekModule::metaData, maxInGate, maxOutGate,
                  Constants::reservedInGate, Constants::reservedOutGate, initArgs,
                  std::move(modulePair)),
      vrfName_(std::move(vrfName)),
      portDeviceAny_(portDeviceAny),
      mcastHwFwd_(mcastHwFwd),
      staticSrcIntf_(staticSrcIntf),
      staticSrcIntfId_(staticSrcIntfId),
      rxPeerLinkOrCore_(rxPeerLinkOrCore) {}

void MetaDataModule::setIfIndexIntfId(std::uint32_t ifIndex, std::uint64_t intfId) {
  VEK_TRACE(info, "{} vrfName: {}, ifIndex: {}, intfId: {:#x}", name(), vrfName_, ifIndex, intfId);
  auto* arg = new vek::pb::IfIndexIntfIdArg;
  arg->set_ifindex(ifIndex);
  arg->set_intfid(intfId);
  enqueueModuleCmd(*this, "setIfIndexIntfId", arg);
}

}  // namespace VekL3Mcast
