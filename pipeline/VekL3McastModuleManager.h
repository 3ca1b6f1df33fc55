#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "pipeline/McastVrfContainer.h"
#include "pipeline/VekL3IgmpV2Module.h"
#include "pipeline/VekTxDemuxerModule.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/InstantiatingCollectionAttr.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

// Owns the multicast pipeline apart from VXLAN and MPLS: the one egress demultiplexer,
// the one IGMPv2 module, the receive buffer that all multicast ports share, and one
// container of modules per VRF that has any pipeline element.
class McastModuleManager : public Qel::Entity {
 public:
  enum : Qel::AttributeId {
    kModulePair = 1,
    kRxBufSize,
    kTxDemuxerModule,
    kVrf,
    kIgmpV2Module,
  };
  static constexpr std::uint32_t rxBufBytes = 8388608;
  static constexpr std::uint32_t txDemuxerGates = 8192;
  static constexpr std::string_view txDemuxerName = "TxDemuxer";
  // Set to any value, it keeps the demultiplexer from being made.
  static constexpr const char* bypassTxDemuxerEnv = "BYPASS_TXDEMUXER";
  static constexpr std::string_view igmpV2Name = "IgmpV2";
  static constexpr std::uint32_t igmpV2Gates = 8192;

  explicit McastModuleManager(Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);
  std::string_view typeName() const override { return "VekL3Mcast::McastModuleManager"; }

  // ---- Per-VRF elements; a create makes the VRF's container on demand, a delete of the
  // last element removes it. A delete for a VRF or element that is not there does nothing.

  // Finds or makes the container, and opens its socket if that has not worked yet: a
  // namespace that could not be entered is tried again at the next call.
  Lumo::Ptr<McastVrfContainer> createVrfContainer(const L3::VrfName& vrfName);
  void maybeDeleteVrfContainer(const Lumo::Ptr<McastVrfContainer>& container);

  Lumo::Ptr<MfibAf> createMfibModule(Lanx::AddressFamily af, const L3::VrfName& vrfName,
                                     Vrf::VrfIdMap::VrfId vrfId, bool oru);
  void deleteMfibModule(Lanx::AddressFamily af, const L3::VrfName& vrfName);
  Lumo::Ptr<PimRegRx> createPimRegRx(Lanx::AddressFamily af, const L3::VrfName& vrfName,
                                     const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void deletePimRegRx(Lanx::AddressFamily af, const L3::VrfName& vrfName);
  Lumo::Ptr<McastAnyRxSet> createMcastAnyRxSet(const L3::VrfName& vrfName,
                                               Vrf::VrfIdMap::VrfId vrfId,
                                               const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void deleteMcastAnyRxSet(const L3::VrfName& vrfName);
  Lumo::Ptr<McastIntf> createIntfModule(const L3::VrfName& vrfName, Lanx::IntfId intfId,
                                        const Lumo::String& deviceName, bool txOnly,
                                        const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void deleteIntfModule(const L3::VrfName& vrfName, Lanx::IntfId intfId,
                        const Lumo::String& deviceName);

  // The one IGMPv2 module, made at the first IPv4 request; IPv6 has none and gets what
  // stands, possibly null. It goes when its last VRF goes, whatever the family of the call.
  // Neither touches the lifetime of the VRF's container.
  Lumo::Ptr<IgmpV2> createIgmpV2Module(Lanx::AddressFamily af, const L3::VrfName& vrfName,
                                       Vrf::VrfIdMap::VrfId vrfId, bool oru,
                                       const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);
  void deleteIgmpV2Module(Lanx::AddressFamily af, const L3::VrfName& vrfName,
                          Vrf::VrfIdMap::VrfId vrfId,
                          const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);
  // A VRF that IGMPv2 serves has a new id: the module maps a packet's VRF id back to the
  // VRF, so its entry follows, as a start now would send it. A VRF that loses its id keeps
  // running, and its entry stays as it was.
  void igmpV2VrfIdIs(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId);

  // ---- Attributes ----

  const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair() const noexcept {
    return modulePair_.get();
  }

  // Makes the shared receive buffer, or resizes the one that exists.
  void rxBufSizeIs(std::uint32_t origSize);
  const Lumo::Ptr<Lanx::PamRxBuf>& rxBufSize() const noexcept { return rxBufSize_.get(); }

  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& txDemuxerModule() const noexcept {
    return txDemuxerModule_.get();
  }
  Lumo::Ptr<VekTxDemuxer::TxDemuxer> txDemuxerModuleIs(
      const Lumo::String& name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return txDemuxerModule_.isWith(*this, &VekTxDemuxer::txDemuxerFactory, name, maxInGate,
                                   maxOutGate, modulePair);
  }
  void txDemuxerModuleDel() { txDemuxerModule_.del(*this); }

  // The containers, by VRF.
  const Qel::HashMap2018<L3::VrfName, Lumo::Ptr<McastVrfContainer>>& vrfs() const noexcept {
    return vrf_.members();
  }
  Lumo::Ptr<McastVrfContainer> vrf(const L3::VrfName& vrfName) const { return vrf_.get(vrfName); }
  bool vrfHas(const L3::VrfName& vrfName) const { return vrf_.has(vrfName); }
  Lumo::Ptr<McastVrfContainer> vrfIs(McastModuleManager* manager, const L3::VrfName& vrfName) {
    return vrf_.is(*this, vrfName, manager, vrfName);
  }
  void vrfDel(const L3::VrfName& vrfName) { vrf_.del(*this, vrfName); }
  void vrfDelAll() { vrf_.delAll(*this); }

  const Lumo::Ptr<IgmpV2>& igmpV2Module() const noexcept { return igmpV2Module_.get(); }
  Lumo::Ptr<IgmpV2> igmpV2ModuleIs(const Lumo::String& name,
                                   Vek::VekModule::ModuleClass moduleClass,
                                   std::uint32_t maxInGate, std::uint32_t maxOutGate,
                                   google::protobuf::Message* initArgs,
                                   const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return igmpV2Module_.is(*this, name, moduleClass, maxInGate, maxOutGate, initArgs,
                            modulePair);
  }
  void igmpV2ModuleDel() { igmpV2Module_.del(*this); }

  // Test hook: opens the socket of a namespace in place of the kernel, returning the
  // descriptor or -1 with errno set. An empty function puts the kernel back.
  using IoctlSocketOpener = std::function<int(const Lanx::NamespaceName&)>;
  void ioctlSocketOpenerIsForTest(IoctlSocketOpener opener) {
    ioctlSocketOpener_ = std::move(opener);
  }

 private:
  void handleInitialized();
  // Joins (or parts) the container's receive set, if it has one, and the IGMPv2 module.
  void doWireIgmpV2(McastVrfContainer& container, bool connect);

  Qel::ValueAttr<Lumo::Ptr<Vek::ModuleConfigStatusPair>, kModulePair> modulePair_;
  Qel::ValueAttr<Lumo::Ptr<Lanx::PamRxBuf>, kRxBufSize> rxBufSize_;
  Qel::InstantiatingAttr<VekTxDemuxer::TxDemuxer, kTxDemuxerModule, "txDemuxerModule",
                         Lumo::String, std::uint32_t, std::uint32_t,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>>
      txDemuxerModule_;
  Qel::InstantiatingCollectionAttr<L3::VrfName, McastVrfContainer, kVrf, "vrf",
                                   McastModuleManager*, L3::VrfName>
      vrf_;
  Qel::InstantiatingAttr<IgmpV2, kIgmpV2Module, "igmpV2Module", Lumo::String,
                         Vek::VekModule::ModuleClass, std::uint32_t, std::uint32_t,
                         google::protobuf::Message*, Lumo::Ptr<Vek::ModuleConfigStatusPair>>
      igmpV2Module_;
  IoctlSocketOpener ioctlSocketOpener_;
};

Lumo::Ptr<McastModuleManager> mcastModuleManagerFactory(
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

}  // namespace VekL3Mcast
