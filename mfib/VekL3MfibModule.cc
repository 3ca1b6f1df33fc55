#include "mfib/VekL3MfibModule.h"

#include <string>

#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleCmdBase.h"
#include "runtime/vek/ModuleCounters.h"

namespace VekL3Mcast {

namespace {

// Command names are made once: a route command must not build its name again.
struct CmdName {
  const Lumo::String addMroute{"addMroute"};
  const Lumo::String deleteMroute{"deleteMroute"};
  const Lumo::String addMulticastIntfs{"addMulticastIntfs"};
  const Lumo::String deleteMulticastIntfs{"deleteMulticastIntfs"};
  const Lumo::String setMaxUnresolvedCacheEntries{"setMaxUnresolvedCacheEntries"};
  const Lumo::String setMaxUnresolvedPktBuffers{"setMaxUnresolvedPktBuffers"};
  const Lumo::String setBridgeMacAddr{"setBridgeMacAddr"};
  const Lumo::String setCounterIds{"setCounterIds"};
  const Lumo::String regMfibTasks{"regMfibTasks"};
  const Lumo::String regCleanupTask{"regCleanupTask"};
  const Lumo::String regMfibTasksForAllWorkers{"regMfibTasksForAllWorkers"};
  const Lumo::String regCleanupTaskForAllWorkers{"regCleanupTaskForAllWorkers"};
};

const CmdName& cmdName() {
  static const CmdName names;
  return names;
}

// One pool of route messages for every FIB module of the agent: routes come from one task
// run at a time, and what is kept does not grow with the number of VRFs. It holds more
// than a run's worth of routes between two deliveries of the channel (a 1 ms run makes
// four to five thousand on a slow machine), about 5 MB when full.
const Lumo::Ptr<Vek::MessagePool<vek::pb::MfibRouteArg>>& sharedRouteArgPool() {
  static const auto pool = Lumo::makePtr<Vek::MessagePool<vek::pb::MfibRouteArg>>(16384);
  return pool;
}

void setAddress(std::string* field, const Lanx::IpGenPrefix& prefix) {
  const auto bytes = prefix.addr().rawBytes();
  field->assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

vek::pb::MulticastIntfArg* intfArg(Lanx::IntfId intfId) {
  auto* arg = new vek::pb::MulticastIntfArg;
  arg->add_intfids(intfId.value());
  return arg;
}

vek::pb::SizeArg* sizeArg(std::uint32_t size) {
  auto* arg = new vek::pb::SizeArg;
  arg->set_size(size);
  return arg;
}

}  // namespace

MfibAf::MfibAf(Lumo::String name, Vek::VekModule::ModuleClass moduleClass,
               std::uint32_t maxInGate, std::uint32_t maxOutGate,
               google::protobuf::Message* initArgs,
               Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair, L3::VrfName vrfName,
               Lanx::AddressFamily af)
    : Vek::Module(std::move(name), moduleClass, maxInGate, maxOutGate, reservedInGates,
                  reservedOutGates, initArgs, std::move(configStatusPair)),
      vrfName_(std::move(vrfName)),
      af_(af),
      routeArgPool_(sharedRouteArgPool()) {}

MfibAf::~MfibAf() = default;

Vek::GateId MfibAf::intfIdToOutGate(Lanx::IntfId intfId) const {
  RecentGate& recent = recentGates_[intfId.hash() % recentGates_.size()];
  if (recent.known && recent.intfId == intfId) return recent.gate;
  const Vek::GateId* gate = intfIdToOutGate_.find(intfId);
  recent = RecentGate{intfId, gate ? *gate : Vek::GateId(), true};
  return recent.gate;
}

Vek::GateId MfibAf::intfIdToOutGateIdForTest(Lanx::IntfId intfId) const {
  const Vek::GateId* gate = intfIdToOutGateIdForTest_.find(intfId);
  return gate ? *gate : Vek::GateId();
}

Vek::GateId MfibAf::oifGate(Lanx::IntfId oif) const {
  // The SBD interfaces leave by two fixed, reserved gates and never use the table.
  if (sbdVlanIntfId_.has(oif)) return vrfName_.isDefault() ? sbdGateDefaultVrf : sbdGate;
  const Vek::GateId gate = intfIdToOutGate(oif);
  if (gate.isValid()) return gate;
  // An interface without a gate of its own still leaves through the demultiplexer.
  VEK_TRACE(debug, "Leaked OIF intfId: {}, TxDemuxer gate: {}", oif.shortName(),
            txDemuxerGateId_);
  return txDemuxerGateId_;
}

void MfibAf::addMroute(const Lanx::IpGenPrefix& source, const Lanx::IpGenPrefix& group,
                       std::uint64_t iif, std::uint64_t frr, std::uint64_t notify,
                       std::uint64_t toCpu, [[maybe_unused]] std::uint32_t rpaId, bool fastdrop,
                       bool iifRegister, bool oifRegister, const OifSet& oifset) {
  auto* arg = routeArgPool_->take();
  setAddress(arg->mutable_source(), source);
  setAddress(arg->mutable_group(), group);
  arg->set_iif(iif);
  arg->set_frr(frr);
  arg->set_notify(notify);
  arg->set_tocpu(toCpu);
  arg->set_fastdrop(fastdrop);
  arg->set_iifregister(iifRegister);
  arg->set_oifregister(oifRegister);
  if (!oifset.empty()) arg->mutable_gates()->Reserve(static_cast<int>(oifset.oifCount()));
  for (const auto& [oif, flag] : oifset) {
    const Vek::GateId gate = oifGate(oif);
    if (gate.isValid()) {
      auto* info = arg->add_gates();
      info->set_intfid(oif.value());
      info->set_gate(gate.value());
      VEK_TRACE(debug, "Add oif intfId: {}, gate: {}", oif.shortName(), gate);
    } else {
      VEK_TRACE(debug, "Skipping oif {} because oGate ID {} is invalid", oif.shortName(), gate);
    }
    if (testingEnabled_) intfIdToOutGateIdForTestIs(oif, gate);
  }
  send(cmdName().addMroute, arg, routeArgPool_);
}

void MfibAf::deleteMroute(const Lanx::IpGenPrefix& source, const Lanx::IpGenPrefix& group) {
  auto* arg = routeArgPool_->take();
  setAddress(arg->mutable_source(), source);
  setAddress(arg->mutable_group(), group);
  send(cmdName().deleteMroute, arg, routeArgPool_);
  // The mirror holds the gates of the last route sent only.
  if (testingEnabled_) intfIdToOutGateIdForTestDelAll();
}

void MfibAf::addMulticastIntfs(Lanx::IntfId intfId) {
  VEK_TRACE(info, "{}, intfId: {}", name(), intfId.shortName());
  send(cmdName().addMulticastIntfs, intfArg(intfId));
}

void MfibAf::deleteMulticastIntfs(Lanx::IntfId intfId) {
  send(cmdName().deleteMulticastIntfs, intfArg(intfId));
}

void MfibAf::setMaxUnresolvedCacheEntries(std::uint32_t entries) {
  send(cmdName().setMaxUnresolvedCacheEntries, sizeArg(entries));
}

void MfibAf::setMaxUnresolvedPktBuffers(std::uint32_t buffers) {
  send(cmdName().setMaxUnresolvedPktBuffers, sizeArg(buffers));
}

void MfibAf::setBridgeMacAddr(const Lanx::EthAddr& ethAddr) {
  if (ethAddr.isZero()) return;
  auto* arg = new vek::pb::EthernetConfigArg;
  const auto bytes = ethAddr.rawBytes();
  arg->set_bridgemacaddr(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  send(cmdName().setBridgeMacAddr, arg);
}

void MfibAf::setCounterIds(const CounterIds& ids) {
  auto* arg = new vek::pb::MfibCounterIdArg;
  arg->set_nonmcastiifcounter(ids[0].value());
  arg->set_wrongvifcounter(ids[1].value());
  arg->set_wholepktcounter(ids[2].value());
  arg->set_nocachecounter(ids[3].value());
  arg->set_nocacheresolvedcounter(ids[4].value());
  arg->set_nocacheexpiredcounter(ids[5].value());
  arg->set_registerpktcounter(ids[6].value());
  arg->set_nonmcastpktcounter(ids[7].value());
  arg->set_invalidttlpktcounter(ids[8].value());
  arg->set_noroutepktcounter(ids[9].value());
  send(cmdName().setCounterIds, arg);
}

void MfibAf::regMfibTasks(const L3::VrfName& vrfName) { regTask(cmdName().regMfibTasks, vrfName); }

void MfibAf::regCleanupTask(const L3::VrfName& vrfName) {
  regTask(cmdName().regCleanupTask, vrfName);
}

void MfibAf::regMfibTasksForAllWorkers(const L3::VrfName& vrfName, std::uint32_t widCount) {
  regTaskForAllWorkers(cmdName().regMfibTasksForAllWorkers, vrfName, widCount);
}

void MfibAf::regCleanupTaskForAllWorkers(const L3::VrfName& vrfName, std::uint32_t widCount) {
  regTaskForAllWorkers(cmdName().regCleanupTaskForAllWorkers, vrfName, widCount);
}

void MfibAf::regTask(const Lumo::String& cmd, const L3::VrfName& vrfName) {
  configStatusPair()->config()->ignoreResponseIs(false);
  VEK_TRACE(info, "{}, vrfName: {}", cmd, vrfName);
  auto* arg = new vek::pb::MfibTaskIdArg;
  arg->set_vrf(std::string(vrfName.view()));
  arg->set_wid(0);
  send(cmd, arg);
}

void MfibAf::regTaskForAllWorkers(const Lumo::String& cmd, const L3::VrfName& vrfName,
                                  std::uint32_t widCount) {
  configStatusPair()->config()->ignoreResponseIs(false);
  auto* arg = new vek::pb::MfibTaskIdsArg;
  arg->set_vrf(std::string(vrfName.view()));
  arg->set_wid_count(widCount);
  for (std::uint32_t wid = 0; wid < widCount; ++wid) {
    VEK_TRACE(info, "{} vrfName: {}, wid: {}", cmd, vrfName, wid);
    arg->add_wid(wid);
  }
  send(cmd, arg);
}

void MfibAf::send(const Lumo::String& cmd, google::protobuf::Message* message,
                  Lumo::Ptr<Vek::MessageRecycler> recycler) {
  configStatusPair()->config()->cmdBatchEnq(
      Vek::moduleCmdFactory(name(), cmd, message, true, std::move(recycler)));
}

void addMfibModuleCounters(const Lumo::Ptr<MfibAf>& module,
                           const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  static constexpr std::array<const char*, MfibAf::counterCount> names = {
      "Non_Mcast_Iif", "Wrong_Vif",        "Whole_Pkt",     "No_Cache",
      "No_Cache_Resolved", "No_Cache_Expired", "Register_Pkt", "Non_Mcast_Pkt",
      "Invalid_Ttl_Pkt",   "No_Route_Pkt"};
  MfibAf::CounterIds ids;
  for (std::size_t i = 0; i < names.size(); ++i) {
    ids[i] = Vek::allocateModulePacketCounter(module, vekcsd, names[i], Vek::counterUnitPackets);
  }
  module->setCounterIds(ids);
}

}  // namespace VekL3Mcast
