#pragma once

#include <string_view>

#include "pipeline/VekL3McastModuleManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IntfId.h"
#include "runtime/vek/GateId.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

// Gives every routed interface of the agent an output gate of the demultiplexer that feeds
// the interface's egress, and the demultiplexer's entry for it. A gate is not given back
// when its interface goes: an interface that comes back gets a new one.
class VekMcastL3IntfSm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kIntfToGate = 1 };
  // The one ether type by which the demultiplexer joins an egress, for both families.
  static constexpr unsigned short egressEtherType = 0x800;

  VekMcastL3IntfSm(Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                   Lumo::Ptr<McastModuleManager> mcastModuleManager);
  std::string_view typeName() const override { return "VekL3Mcast::VekMcastL3IntfSm"; }

  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd() const noexcept { return vekcsd_; }
  const Lumo::Ptr<McastModuleManager>& mcastModuleManager() const noexcept {
    return mcastModuleManager_;
  }

  const Qel::HashMap2018<Lanx::IntfId, Vek::GateId>& intfToGates() const noexcept {
    return intfToGate_.members();
  }
  Vek::GateId intfToGate(Lanx::IntfId intfId) const { return intfToGate_.get(intfId); }
  void intfToGateIs(Lanx::IntfId intfId, Vek::GateId gate) { intfToGate_.is(*this, intfId, gate); }
  void intfToGateDel(Lanx::IntfId intfId) { intfToGate_.del(*this, intfId); }
  void intfToGateDelAll() { intfToGate_.delAll(*this); }

  void handleInitialized() override;
  void handleTxDemuxer();
  void handleL3Intf(Lanx::IntfId intfId);

 private:
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  Lumo::Ptr<McastModuleManager> mcastModuleManager_;
  Qel::HashCollectionAttr<Lanx::IntfId, Vek::GateId, kIntfToGate> intfToGate_;
  Qel::SmSubscriber<VekMcastL3IntfSm> txDemuxerReactor_{
      this, &Qel::reactorDispatch<VekMcastL3IntfSm, McastModuleManager::kTxDemuxerModule,
                                  &VekMcastL3IntfSm::handleTxDemuxer>};
  Qel::SmSubscriber<VekMcastL3IntfSm> l3IntfReactor_{
      this, &Qel::reactorDispatch<VekMcastL3IntfSm, Vek::VekCommonSmData::kL3Intf,
                                  &VekMcastL3IntfSm::handleL3Intf>};
};

}  // namespace VekL3Mcast
