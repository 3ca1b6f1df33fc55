#pragma once

#include <google/protobuf/message.h>

#include <cstdint>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleClass.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The one module that takes the IGMPv2 packets of every VRF from the metadata modules of
// the VRFs' any-device receive paths. It knows each VRF by name and id so that the daemon
// can map a packet's VRF id back; `vrf` mirrors what was sent, and its emptiness is the
// owner's signal to remove the module.
class IgmpV2 : public Vek::Module {
 public:
  using VrfMap = Qel::HashMap2018<L3::VrfName, Vrf::VrfIdMap::VrfId>;

  // Takes `initArgs`.
  IgmpV2(Lumo::String name, Vek::VekModule::ModuleClass moduleClass, std::uint32_t maxInGate,
         std::uint32_t maxOutGate, google::protobuf::Message* initArgs,
         Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

  void addVrf(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId);
  // Sends the command also for a VRF that was never added; the daemon decides.
  void delVrf(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId);
  void setCounterIds(Vek::CounterId pkt, Vek::CounterId unknownProto, Vek::CounterId unknownVrf);

  const VrfMap& vrfs() const noexcept { return vrf_; }
  Vrf::VrfIdMap::VrfId vrf(const L3::VrfName& vrfName) const;
  bool vrfHas(const L3::VrfName& vrfName) const { return vrf_.has(vrfName); }
  void vrfIs(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId) { vrf_.set(vrfName, vrfId); }
  void vrfDel(const L3::VrfName& vrfName) { vrf_.erase(vrfName); }
  void vrfDelAll() { vrf_.clear(); }

 private:
  VrfMap vrf_;
};

}  // namespace VekL3Mcast
