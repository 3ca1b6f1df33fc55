#pragma once

#include <google/protobuf/message.h>

#include <cstdint>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

// The metadata module of a fabric receive path: it stamps the packet's VLAN and mark
// class. Gate counts come from the caller; none is reserved. `mcastHwFwd` is the value the
// path asked for, also where a namespace device leaves it out of the init message.
class VlanMetadataModule : public Vek::Module {
 public:
  // Takes `initArgs`.
  VlanMetadataModule(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                     google::protobuf::Message* initArgs,
                     Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair, bool mcastHwFwd,
                     bool rxPeerLinkOrCore);

  bool mcastHwFwd() const noexcept { return mcastHwFwd_; }
  bool rxPeerLinkOrCore() const noexcept { return rxPeerLinkOrCore_; }

  void setCounterIds(Vek::CounterId invalidEtherTypeCounter, Vek::CounterId invalidVlanIdCounter);

 private:
  bool mcastHwFwd_;
  bool rxPeerLinkOrCore_;
};

// Allocates the two counters of a VLAN metadata module and sends them to it.
void addVlanMetadataCounters(const Lumo::Ptr<VlanMetadataModule>& module,
                             const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);

}  // namespace VekL3Mcast
