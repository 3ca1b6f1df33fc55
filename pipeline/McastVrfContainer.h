#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <string_view>

#include "mfib/VekL3MfibModule.h"
#include "pipeline/McastAnyRx.h"
#include "pipeline/McastAnyRxSet.h"
#include "pipeline/McastIntf.h"
#include "pipeline/PimRegRx.h"
#include "pipeline/VekL3IgmpV2Module.h"
#include "pipeline/VekMcastTypes.h"
#include "pipeline/VekTxDemuxerModule.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/InstantiatingCollectionAttr.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/ModuleClass.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

class McastModuleManager;

// The modules of one VRF and how they are wired. Whichever element comes last connects
// itself to everything that already stands, so the graph is the same in every order of
// creation. The container lives while the VRF has a FIB module, an interface, receive
// paths or a PIM register path.
class McastVrfContainer : public Qel::Entity {
 public:
  enum : Qel::AttributeId {
    kMfibModule = 1,
    kIntf,
    kMcastAnyRxSet,
    kPimRegRxAf,
    kMMplsOutSm,
  };
  static constexpr std::uint32_t mfibGates = 8192;
  static constexpr std::uint32_t mfibSize = 1024;

  McastVrfContainer(McastModuleManager* manager, L3::VrfName vrfName);
  ~McastVrfContainer() override;
  std::string_view typeName() const override { return "VekL3Mcast::McastVrfContainer"; }

  McastModuleManager* manager() const noexcept { return manager_; }
  const L3::VrfName& vrfName() const noexcept { return vrfName_; }

  // ---- Elements ----

  Lumo::Ptr<MfibAf> createMfibModule(Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId, bool oru,
                                     const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void deleteMfibModule(Lanx::AddressFamily af);
  Lumo::Ptr<McastAnyRxSet> createMcastAnyRxSet(Vrf::VrfIdMap::VrfId vrfId,
                                               const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
                                               const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void deleteMcastAnyRxSet();
  Lumo::Ptr<PimRegRx> createPimRegRx(Lanx::AddressFamily af,
                                     const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
                                     const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void deletePimRegRx(Lanx::AddressFamily af);
  // A second call for an interface returns what stands, whatever `txOnly` says.
  Lumo::Ptr<McastIntf> createIntfModule(Lanx::IntfId intfId, const Lumo::String& deviceName,
                                        bool txOnly,
                                        const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
                                        const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void deleteIntfModule(Lanx::IntfId intfId, const Lumo::String& deviceName);

  // ---- Wiring ----

  void connectMfibModule(Lanx::AddressFamily af);
  void disconnectMfibModule(Lanx::AddressFamily af);
  void connectMcastAnyRxSet();
  void disconnectMcastAnyRxSet();
  void connectMcastAnyRxMfib(const Lumo::Ptr<McastAnyRx>& rx, const Lumo::Ptr<MfibAf>& mfib);
  void disconnectMcastAnyRxMfib(const Lumo::Ptr<McastAnyRx>& rx, const Lumo::Ptr<MfibAf>& mfib);
  void connectMcastAnyRxIgmpV2(const Lumo::Ptr<McastAnyRx>& rx, const Lumo::Ptr<IgmpV2>& igmpV2);
  void disconnectMcastAnyRxIgmpV2(const Lumo::Ptr<McastAnyRx>& rx,
                                  const Lumo::Ptr<IgmpV2>& igmpV2);
  void connectPimRegRx(Lanx::AddressFamily af);
  void disconnectPimRegRx(Lanx::AddressFamily af);
  void connectPimRegRxMfib(const Lumo::Ptr<PimRegRx>& pimRegRx, const Lumo::Ptr<MfibAf>& mfib);
  void disconnectPimRegRxMfib(const Lumo::Ptr<PimRegRx>& pimRegRx, const Lumo::Ptr<MfibAf>& mfib);
  void connectIntfModule(Lanx::IntfId intfId, bool txOnly);
  void disconnectIntfModule(Lanx::IntfId intfId);
  // Uses no state of the container.
  static void connectIntfMfib(const Lumo::Ptr<McastIntf>& intf, const Lumo::Ptr<MfibAf>& mfib,
                              const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& txDemuxer);
  static void disconnectIntfMfib(const Lumo::Ptr<McastIntf>& intf, const Lumo::Ptr<MfibAf>& mfib);

  // True when the container holds none of the elements that keep it.
  bool isDefault() const noexcept;

  // ---- Attributes ----

  const Qel::HashMap2018<Lanx::AddressFamily, Lumo::Ptr<MfibAf>>& mfibModules() const noexcept {
    return mfibModule_.members();
  }
  Lumo::Ptr<MfibAf> mfibModule(Lanx::AddressFamily af) const { return mfibModule_.get(af); }
  Lumo::Ptr<MfibAf> mfibModuleIs(const Lumo::String& name, Vek::VekModule::ModuleClass moduleClass,
                                 std::uint32_t maxInGate, std::uint32_t maxOutGate,
                                 google::protobuf::Message* initArgs,
                                 const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
                                 const L3::VrfName& vrfName, Lanx::AddressFamily af) {
    return mfibModule_.is(*this, af, name, moduleClass, maxInGate, maxOutGate, initArgs,
                          modulePair, vrfName, af);
  }
  void mfibModuleDel(Lanx::AddressFamily af) { mfibModule_.del(*this, af); }
  void mfibModuleDelAll() { mfibModule_.delAll(*this); }

  const Qel::HashMap2018<Lanx::IntfId, Lumo::Ptr<McastIntf>>& intfs() const noexcept {
    return intf_.members();
  }
  Lumo::Ptr<McastIntf> intf(Lanx::IntfId intfId) const { return intf_.get(intfId); }
  Lumo::Ptr<McastIntf> intfIs(const L3::VrfName& vrfName, Lanx::IntfId intfId,
                              McastIntfType intfType) {
    return intf_.is(*this, intfId, vrfName, intfId, intfType);
  }
  void intfDel(Lanx::IntfId intfId) { intf_.del(*this, intfId); }
  void intfDelAll() { intf_.delAll(*this); }

  const Lumo::Ptr<McastAnyRxSet>& mcastAnyRxSet() const noexcept { return mcastAnyRxSet_.get(); }
  Lumo::Ptr<McastAnyRxSet> mcastAnyRxSetIs(const L3::VrfName& vrfName) {
    return mcastAnyRxSet_.is(*this, vrfName);
  }
  void mcastAnyRxSetDel() { mcastAnyRxSet_.del(*this); }

  const Qel::HashMap2018<Lanx::AddressFamily, Lumo::Ptr<PimRegRx>>& pimRegRxAfs() const noexcept {
    return pimRegRxAf_.members();
  }
  Lumo::Ptr<PimRegRx> pimRegRxAf(Lanx::AddressFamily af) const { return pimRegRxAf_.get(af); }
  Lumo::Ptr<PimRegRx> pimRegRxAfIs(const L3::VrfName& vrfName, Lanx::AddressFamily af) {
    return pimRegRxAf_.is(*this, af, vrfName, af);
  }
  void pimRegRxAfDel(Lanx::AddressFamily af) { pimRegRxAf_.del(*this, af); }
  void pimRegRxAfDelAll() { pimRegRxAf_.delAll(*this); }

  // The VRF's MPLS decapsulation machine, which the MPLS pipeline makes and sets. The
  // container holds it by its base, as the pipeline folder does not know the MPLS one, and
  // does not count it among what keeps the container: it goes with the container.
  const Lumo::Ptr<Qel::StateMachine>& mMplsOutSm() const noexcept { return mMplsOutSm_; }
  void mMplsOutSmIs(Lumo::Ptr<Qel::StateMachine> sm);
  void mMplsOutSmDel();

  // A datagram socket in the VRF's network namespace, for interface flags; -1 until open.
  int ioctlFd() const noexcept { return ioctlFd_; }
  // Takes the socket, or -1 after a failure to open it. An interface made without one keeps
  // its device's flags as they are.
  void ioctlFdIs(int fd) noexcept { ioctlFd_ = fd; }
  // Closes the socket, if open.
  void ioctlFdClose() noexcept;

 private:
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& txDemuxer() const;
  const Lumo::Ptr<IgmpV2>& igmpV2() const;

  McastModuleManager* manager_;
  L3::VrfName vrfName_;
  Qel::InstantiatingCollectionAttr<Lanx::AddressFamily, MfibAf, kMfibModule, "mfibModule",
                                   Lumo::String, Vek::VekModule::ModuleClass, std::uint32_t,
                                   std::uint32_t, google::protobuf::Message*,
                                   Lumo::Ptr<Vek::ModuleConfigStatusPair>, L3::VrfName,
                                   Lanx::AddressFamily>
      mfibModule_;
  Qel::InstantiatingCollectionAttr<Lanx::IntfId, McastIntf, kIntf, "intf", L3::VrfName,
                                   Lanx::IntfId, McastIntfType>
      intf_;
  Qel::InstantiatingAttr<McastAnyRxSet, kMcastAnyRxSet, "mcastAnyRxSet", L3::VrfName>
      mcastAnyRxSet_;
  Qel::InstantiatingCollectionAttr<Lanx::AddressFamily, PimRegRx, kPimRegRxAf, "pimRegRxAf",
                                   L3::VrfName, Lanx::AddressFamily>
      pimRegRxAf_;
  Lumo::Ptr<Qel::StateMachine> mMplsOutSm_;
  int ioctlFd_ = -1;
};

}  // namespace VekL3Mcast
