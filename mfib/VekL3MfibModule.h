#pragma once

#include <google/protobuf/message.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "mfib/OifSet.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenPrefix.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/GateId.h"
#include "runtime/vek/MessagePool.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleClass.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace vek::pb {
class MfibRouteArg;
}

namespace VekL3Mcast {

// The proxy of one multicast FIB module, one per VRF and address family. It turns a route,
// given as a set of outgoing interfaces, into output gates of the module and sends it; it
// also carries the module's limits, counters and worker-task registration.
//
// No route is kept here: gates are looked up when a route is sent, so a gate that changes
// later reaches the module with the next send of the route.
class MfibAf : public Vek::Module {
 public:
  static constexpr std::uint32_t reservedInGates = 0;
  static constexpr std::uint32_t reservedOutGates = 4;
  // The fixed gates of the interfaces of the VRF's SBD VLAN.
  static constexpr Vek::GateId sbdGateDefaultVrf{2};
  static constexpr Vek::GateId sbdGate{1};
  static constexpr std::size_t counterCount = 10;
  using CounterIds = std::array<Vek::CounterId, counterCount>;

  // Takes `initArgs`.
  MfibAf(Lumo::String name, Vek::VekModule::ModuleClass moduleClass, std::uint32_t maxInGate,
         std::uint32_t maxOutGate, google::protobuf::Message* initArgs,
         Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair, L3::VrfName vrfName,
         Lanx::AddressFamily af);
  ~MfibAf() override;

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }

  // The output gate that serves an interface; invalid when there is none.
  Vek::GateId intfIdToOutGate(Lanx::IntfId intfId) const;
  void intfIdToOutGateIs(Lanx::IntfId intfId, Vek::GateId gate) {
    intfIdToOutGate_.set(intfId, gate);
    recentGates_.fill(RecentGate{});
  }
  void intfIdToOutGateDel(Lanx::IntfId intfId) {
    intfIdToOutGate_.erase(intfId);
    recentGates_.fill(RecentGate{});
  }
  void intfIdToOutGateDelAll() {
    intfIdToOutGate_.clear();
    recentGates_.fill(RecentGate{});
  }
  std::size_t intfIdToOutGateCount() const noexcept { return intfIdToOutGate_.size(); }

  bool sbdVlanIntfIdHas(Lanx::IntfId intfId) const { return sbdVlanIntfId_.has(intfId); }
  void sbdVlanIntfIdIs(Lanx::IntfId intfId) { sbdVlanIntfId_.insert(intfId); }
  void sbdVlanIntfIdDel(Lanx::IntfId intfId) { sbdVlanIntfId_.erase(intfId); }
  void sbdVlanIntfIdDelAll() { sbdVlanIntfId_.clear(); }
  std::size_t sbdVlanIntfIdCount() const noexcept { return sbdVlanIntfId_.size(); }

  Vek::GateId txDemuxerGateId() const noexcept { return txDemuxerGateId_; }
  void txDemuxerGateIdIs(Vek::GateId gate) noexcept { txDemuxerGateId_ = gate; }
  void txDemuxerGateIdDel() noexcept { txDemuxerGateId_ = Vek::GateId(); }

  // While set, addMroute mirrors the gates it chose into intfIdToOutGateIdForTest.
  bool testingEnabled() const noexcept { return testingEnabled_; }
  void testingEnabledIs(bool enabled) noexcept { testingEnabled_ = enabled; }

  Vek::GateId intfIdToOutGateIdForTest(Lanx::IntfId intfId) const;
  bool intfIdToOutGateIdForTestHas(Lanx::IntfId intfId) const {
    return intfIdToOutGateIdForTest_.has(intfId);
  }
  void intfIdToOutGateIdForTestIs(Lanx::IntfId intfId, Vek::GateId gate) {
    intfIdToOutGateIdForTest_.set(intfId, gate);
  }
  void intfIdToOutGateIdForTestDel(Lanx::IntfId intfId) { intfIdToOutGateIdForTest_.erase(intfId); }
  void intfIdToOutGateIdForTestDelAll() { intfIdToOutGateIdForTest_.clear(); }
  std::size_t intfIdToOutGateIdForTestCount() const noexcept {
    return intfIdToOutGateIdForTest_.size();
  }

  // Routes. `rpaId` is accepted and not sent. A source without family is a *,G route.
  void addMroute(const Lanx::IpGenPrefix& source, const Lanx::IpGenPrefix& group,
                 std::uint64_t iif, std::uint64_t frr, std::uint64_t notify, std::uint64_t toCpu,
                 std::uint32_t rpaId, bool fastdrop, bool iifRegister, bool oifRegister,
                 const OifSet& oifset);
  void deleteMroute(const Lanx::IpGenPrefix& source, const Lanx::IpGenPrefix& group);

  void addMulticastIntfs(Lanx::IntfId intfId);
  void deleteMulticastIntfs(Lanx::IntfId intfId);
  void setMaxUnresolvedCacheEntries(std::uint32_t entries);
  void setMaxUnresolvedPktBuffers(std::uint32_t buffers);
  // An all-zero address is not sent.
  void setBridgeMacAddr(const Lanx::EthAddr& ethAddr);
  // The ten ids in the order of addMfibModuleCounters.
  void setCounterIds(const CounterIds& ids);

  // Registration of the module's worker tasks; the replies come back on the response queue.
  void regMfibTasks(const L3::VrfName& vrfName);
  void regCleanupTask(const L3::VrfName& vrfName);
  void regMfibTasksForAllWorkers(const L3::VrfName& vrfName, std::uint32_t widCount);
  void regCleanupTaskForAllWorkers(const L3::VrfName& vrfName, std::uint32_t widCount);

 private:
  // The gate a route's outgoing interface leaves by; invalid when it has none.
  Vek::GateId oifGate(Lanx::IntfId oif) const;
  void send(const Lumo::String& cmdName, google::protobuf::Message* message,
            Lumo::Ptr<Vek::MessageRecycler> recycler = nullptr);
  void regTask(const Lumo::String& cmdName, const L3::VrfName& vrfName);
  void regTaskForAllWorkers(const Lumo::String& cmdName, const L3::VrfName& vrfName,
                            std::uint32_t widCount);

  L3::VrfName vrfName_;
  Lanx::AddressFamily af_;
  Qel::HashMap2018<Lanx::IntfId, Vek::GateId> intfIdToOutGate_;
  // The answers of intfIdToOutGate for the interfaces last asked about, by their hashes: routes mostly leave by the same few interfaces, and every route asks for
  // each of its outgoing ones. Any change of the table forgets them.
  struct RecentGate {
    Lanx::IntfId intfId;
    Vek::GateId gate;
    bool known = false;
  };
  mutable std::array<RecentGate, 8> recentGates_{};
  Qel::HashSet2018<Lanx::IntfId> sbdVlanIntfId_;
  Vek::GateId txDemuxerGateId_;
  bool testingEnabled_ = false;
  Qel::HashMap2018<Lanx::IntfId, Vek::GateId> intfIdToOutGateIdForTest_;
  // Route messages come back here from delivered commands and are built again in place;
  // the pool is shared by every FIB module.
  Lumo::Ptr<Vek::MessagePool<vek::pb::MfibRouteArg>> routeArgPool_;
};

// Allocates the ten packet counters of a new FIB module and sends their ids.
void addMfibModuleCounters(const Lumo::Ptr<MfibAf>& module,
                           const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);

}  // namespace VekL3Mcast
