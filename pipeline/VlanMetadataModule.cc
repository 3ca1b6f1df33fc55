#include "pipeline/VlanMetadataModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/vek/ModuleClass.h"
#include "runtime/vek/ModuleCounters.h"

namespace VekL3Mcast {

VlanMetadataModule::VlanMetadataModule(Lumo::String name, std::uint32_t maxInGate,
                                       std::uint32_t maxOutGate,
                                       google::protobuf::Message* initArgs,
                                       Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair,
                                       bool mcastHwFwd, bool rxPeerLinkOrCore)
    : Vek::Module(std::move(name), Vek::VekModule::vlanMetadata, maxInGate, maxOutGate, 0, 0,
                  initArgs, std::move(modulePair)),
      mcastHwFwd_(mcastHwFwd),
      rxPeerLinkOrCore_(rxPeerLinkOrCore) {}

void VlanMetadataModule::setCounterIds(Vek::CounterId invalidEtherTypeCounter,
                                       Vek::CounterId invalidVlanIdCounter) {
  auto* arg = new vek::pb::VlanMetadataCounterIdArg;
  arg->set_invalidethertypecounter(invalidEtherTypeCounter.value());
  arg->set_invalidvlanidcounter(invalidVlanIdCounter.value());
  enqueueModuleCmd(*this, "setCounterIds", arg);
}

void addVlanMetadataCounters(const Lumo::Ptr<VlanMetadataModule>& module,
                             const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  const Vek::CounterId invalidEtherType = Vek::allocateModulePacketCounter(
      module, vekcsd, "Invalid_Ether_Type", Vek::counterUnitPackets);
  const Vek::CounterId invalidVlanId = Vek::allocateModulePacketCounter(
      module, vekcsd, "Invalid_Vlan_Id", Vek::counterUnitPackets);
  module->setCounterIds(invalidEtherType, invalidVlanId);
}

}  // namespace VekL3Mcast
