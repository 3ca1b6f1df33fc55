#pragma once

#include <string_view>

#include "pipeline/VekTxDemuxerModule.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/VrfId.h"

namespace VekTxDemuxer {

// Keeps the demultiplexer's table of VRF id to provider VLAN equal to the multicast VPN
// interface status: a VRF whose provider interface is a VLAN interface gets that VLAN.
class TxDemuxerModuleProgrammer : public Qel::StateMachine {
 public:
  TxDemuxerModuleProgrammer(Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const> intfStatus,
                            Lumo::Ptr<TxDemuxer> demuxModule);
  std::string_view typeName() const override { return "VekTxDemuxer::TxDemuxerModuleProgrammer"; }

  const Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const>& intfStatus() const noexcept {
    return intfStatus_;
  }
  const Lumo::Ptr<TxDemuxer>& demuxModule() const noexcept { return demuxModule_; }

  void handleInitialized() override;
  // Every VRF of the table.
  void handleIntfStatus();
  // One VRF: its provider VLAN, or none.
  void handleIntfStatus(Vrf::VrfIdMap::VrfId vrfId);

 private:
  void doCorruptionDetected(std::string_view message) const;

  Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const> intfStatus_;
  Lumo::Ptr<TxDemuxer> demuxModule_;
  Qel::SmSubscriber<TxDemuxerModuleProgrammer> intfStatusReactor_{
      this, &Qel::reactorDispatch<
                TxDemuxerModuleProgrammer, Routing::Multicast::MvpnIntfStatus::kIntf,
                static_cast<void (TxDemuxerModuleProgrammer::*)(Vrf::VrfIdMap::VrfId)>(
                    &TxDemuxerModuleProgrammer::handleIntfStatus)>};
};

}  // namespace VekTxDemuxer
