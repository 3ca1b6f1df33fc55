#pragma once

#include <cstdint>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VrfId.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/GateId.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekTxDemuxer {

// The egress demultiplexer: the one module at the end of every FIB. It picks the output
// gate and the VLAN tag from the destination interface a packet carries, and keeps the
// provider VLAN of each VRF. Two output gates at the low end are reserved. The proxy keeps
// no mirror of the tables: each operation sends its command and nothing else.
class TxDemuxer : public Vek::Module {
 public:
  static constexpr std::uint32_t reservedInGate = 0;
  static constexpr std::uint32_t reservedOutGate = 2;
  // The reserved output gate towards the fabric transmit path; the other one feeds the MPLS
  // encapsulation.
  static constexpr std::uint32_t fabricGate = 0;

  TxDemuxer(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
            Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

  // The last command for an interface decides in the daemon, so adding again replaces.
  void addIntfToOutGate(Lanx::IntfId intfId, Bridging::VlanIdOrNone vlanId, Vek::GateId oGate);
  void deleteIntfToOutGate(Lanx::IntfId intfId);
  void addVrfIdToPmsiVlan(Vrf::VrfIdMap::VrfId vrfId, std::uint16_t vlanId);
  void deleteVrfIdToPmsiVlan(Vrf::VrfIdMap::VrfId vrfId);
  void setCounterIds(Vek::CounterId noIntfDstCounter, Vek::CounterId noIntfDstOgateCounter);
};

Lumo::Ptr<TxDemuxer> txDemuxerFactory(const Lumo::String& name, std::uint32_t maxInGate,
                                      std::uint32_t maxOutGate,
                                      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

}  // namespace VekTxDemuxer
