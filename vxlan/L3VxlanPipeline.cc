#include "vxlan/L3VxlanPipeline.h"

#include "runtime/state/VlanIntfId.h"
#include "runtime/vek/ModuleCounters.h"

namespace VekMVxlan {

L3VxlanPipeline::L3VxlanPipeline(Inputs inputs, Fibs fibs, ReviewRoutes reviewRoutes)
    : inputs_(std::move(inputs)), fibs_(std::move(fibs)), reviewRoutes_(std::move(reviewRoutes)) {
  QEL_ASSERT(inputs_.vrfNameStatus && inputs_.vtiStatusDir && inputs_.tunnelFwdingStatus4 &&
                 inputs_.tunnelFwdingStatus6 && inputs_.mcastIntfRoot && inputs_.mcastIntfRoot6,
             "L3VxlanPipeline needs its inputs");
  auto watch = [](auto& reactor, const auto& input) {
    using Input = std::remove_cvref_t<decltype(*input)>;
    reactor.publisherIs(const_cast<Input*>(input.get()));
    reactor.isRegisteredIs(true);
  };
  watch(vtiStatusDirReactor_, inputs_.vtiStatusDir);
  watch(vrfNameStatusReactor_, inputs_.vrfNameStatus);
  nameToIdMapReactor_.isRegisteredIs(true);
  if (inputs_.remoteVniToVlanStaticStatus) {
    watch(remoteStaticReactor_, inputs_.remoteVniToVlanStaticStatus);
  }
  if (inputs_.remoteVniToVlanIrbStatus) watch(remoteIrbReactor_, inputs_.remoteVniToVlanIrbStatus);
  handleInitialized();
}

L3VxlanPipeline::~L3VxlanPipeline() { doDeleteL3MVxlanPipeline(); }

void L3VxlanPipeline::handleInitialized() {
  guarded("scan", [&] {
    std::vector<Lanx::IntfId> vtis;
    for (const auto& entry : inputs_.vtiStatusDir->vtiStatuses()) vtis.push_back(entry.key);
    for (Lanx::IntfId vti : vtis) handleVtiStatus(vti);
    handleNameToIdMap();
  });
}

// ---- Helpers ----

Lumo::Ptr<VekL3Mcast::MfibAf> L3VxlanPipeline::fib(Af af, const L3::VrfName& vrf) const {
  for (auto& mfib : fibs_(af)) {
    if (mfib->vrfName() == vrf) return mfib;
  }
  return nullptr;
}

std::vector<Lumo::Ptr<VekL3Mcast::MfibAf>> L3VxlanPipeline::allFibs() const {
  auto all = fibs_(Af::ipv4);
  for (auto& mfib : fibs_(Af::ipv6)) all.push_back(std::move(mfib));
  return all;
}

Lumo::Ptr<L3MVxlanIn> L3VxlanPipeline::l3VxlanInModule() const {
  return l3VxlanInModuleSm_.get() ? l3VxlanInModuleSm_.get()->module() : nullptr;
}

Lumo::Ptr<L3MVxlanIn> L3VxlanPipeline::l3VxlanIn6Module() const {
  return l3VxlanIn6ModuleSm_.get() ? l3VxlanIn6ModuleSm_.get()->module() : nullptr;
}

Lumo::Ptr<L3MVxlanIn> L3VxlanPipeline::inModuleFor(Af af) const {
  return af == Af::ipv4 ? l3VxlanInModule() : l3VxlanIn6Module();
}

L3VxlanPipeline::VrfId L3VxlanPipeline::curVrfNameToId(const L3::VrfName& vrf) const {
  return inputs_.vrfNameStatus->vrfId(vrf.str());
}

L3VxlanPipeline::VrfId L3VxlanPipeline::lastVrfId(const L3::VrfName& vrf) const {
  const VrfId* id = lastVrfId_.find(vrf);
  return id ? *id : VrfId();
}

// ---- Create and delete ----

void L3VxlanPipeline::doCreateInSms(const Lumo::Ptr<Vxlan::VtiStatus const>& vti) {
  l3VxlanInModuleSm_.is(*this, Af::ipv4, inputs_.vrfNameStatus, vti, inputs_.tunnelFwdingStatus4,
                        inputs_.mcastIntfRoot, inputs_.modulePair, inputs_.vekcsd);
  l3VxlanIn6ModuleSm_.is(*this, Af::ipv6, inputs_.vrfNameStatus, vti,
                         inputs_.tunnelFwdingStatus6, inputs_.mcastIntfRoot6, inputs_.modulePair,
                         inputs_.vekcsd);
}

void L3VxlanPipeline::doCreateL3MVxlanPipeline() {
  // One VTI feeds both encapsulation machines, whichever VTI's change led here.
  auto vti = inputs_.vtiStatusDir->vtiStatus(Lanx::IntfId(vtiName));
  if (!vti) {
    VEK_TRACE(warn, "no VTI {}: the L3 pipeline waits for it", vtiName);
    return;
  }
  VEK_TRACE(info, "Creating the L3 VXLAN pipeline");
  doCreateInSms(vti);
  if (!l3VxlanOutModule_) {
    l3VxlanOutModule_ = Vek::makeModule<L3MVxlanOut>(Lumo::String("L3MVxlanOut"), outInGates,
                                                     outOutGates, inputs_.modulePair);
    addL3MVxlanOutCounters(l3VxlanOutModule_, inputs_.vekcsd);
  }
  for (Af af : {Af::ipv4, Af::ipv6}) {
    for (const auto& mfib : fibs_(af)) doConnectMfibToL3MVxlan(af, mfib->vrfName());
  }
  // The module keeps nothing the proxy remembers: every table is sent again.
  for (const auto& entry : vtiStatus_.members()) entry.value->handleInitialized();
  for (const auto* remote :
       {inputs_.remoteVniToVlanIrbStatus.get(), inputs_.remoteVniToVlanStaticStatus.get()}) {
    if (!remote) continue;
    std::vector<Vxlan::VniExtOrNone> vnis;
    for (const auto& entry : remote->vniToVlans()) vnis.push_back(entry.key);
    for (Vxlan::VniExtOrNone vni : vnis) handleRemoteVni(vni);
  }
  doConnectL3MVxlanInToL2MVxlanIn();
}

void L3VxlanPipeline::doDeleteL3MVxlanPipeline() {
  if (!l3VxlanOutModule_ && !l3VxlanInModuleSm_.get() && !l3VxlanIn6ModuleSm_.get()) return;
  VEK_TRACE(info, "Deleting the L3 VXLAN pipeline");
  for (const auto& mfib : allFibs()) doDisconnectMfib(mfib);
  if (l3VxlanOutModule_) Vek::freeModuleCounters(l3VxlanOutModule_, inputs_.vekcsd);
  l3VxlanOutModule_ = nullptr;
  doDisconnectL3MVxlanInToL2MVxlanIn();
  l3VxlanInModuleSm_.del(*this);
  l3VxlanIn6ModuleSm_.del(*this);
}

// The default VRF's FIB keeps its link to the other family's encapsulation module here;
// the module's going takes that link with it.
void L3VxlanPipeline::doDisconnectMfib(const Lumo::Ptr<VekL3Mcast::MfibAf>& mfib) {
  const Lumo::Ptr<L3MVxlanIn> in = inModuleFor(mfib->af());
  if (mfib->vrfName().isDefault()) {
    if (in) in->disconnectModule(mfib);
    if (l3VxlanOutModule_) mfib->disconnectModule(l3VxlanOutModule_);
  } else {
    if (l3VxlanOutModule_) l3VxlanOutModule_->disconnectModule(mfib);
    if (in) mfib->disconnectModule(in);
  }
}

void L3VxlanPipeline::doConnectMfibToL3MVxlan(Af af, const L3::VrfName& vrf) {
  const auto mfib = fib(af, vrf);
  const Lumo::Ptr<L3MVxlanIn> in = inModuleFor(af);
  if (!mfib || !in || !l3VxlanOutModule_) return;
  // The gate of an encapsulation module towards the default VRF is its family's.
  const std::uint32_t gate = af == Af::ipv4 ? 0 : 1;
  guarded("connect FIB", [&] {
    if (vrf.isDefault()) {
      mfib->connectViaReservedGate(l3VxlanOutModule_, fibToOutGate);
      if (auto in4 = l3VxlanInModule()) in4->connectViaReservedGate(mfib, gate);
      if (auto in6 = l3VxlanIn6Module()) in6->connectViaReservedGate(mfib, gate);
    } else {
      mfib->connectViaReservedGates(in, fibToInGate, L3MVxlanIn::tenantFibInGate);
      l3VxlanOutModule_->connectModule(mfib);
      const VrfId id = lastVrfId(vrf);
      if (!id.isNone()) {
        l3VxlanOutModule_->addOGateEntry(
            af, id, l3VxlanOutModule_->findGateByName(mfib->name().view(), false).value());
      }
    }
  });
  doSbdVlanIntfs(mfib);
}

void L3VxlanPipeline::doConnectL3MVxlanInToL2MVxlanIn() {
  if (!l2VxlanInModule_) return;
  for (const auto& in : {l3VxlanInModule(), l3VxlanIn6Module()}) {
    // Both families' routed traffic meets at the one routed input gate.
    if (in) in->connectViaReservedGates(l2VxlanInModule_, L3MVxlanIn::l2MVxlanInGate, 0);
  }
}

void L3VxlanPipeline::doDisconnectL3MVxlanInToL2MVxlanIn() {
  if (!l2VxlanInModule_) return;
  for (const auto& in : {l3VxlanInModule(), l3VxlanIn6Module()}) {
    if (in) in->disconnectModule(l2VxlanInModule_);
  }
}

void L3VxlanPipeline::l2VxlanInModuleIs(Lumo::Ptr<Vek::Module> module) {
  if (module == l2VxlanInModule_) return;
  doDisconnectL3MVxlanInToL2MVxlanIn();
  l2VxlanInModule_ = std::move(module);
  doConnectL3MVxlanInToL2MVxlanIn();
}

// ---- VRF life ----

void L3VxlanPipeline::vrfStarted(const L3::VrfName& vrf, Af af) {
  guarded("VRF start", [&] {
    if (exists()) {
      doConnectMfibToL3MVxlan(af, vrf);
    } else if (auto mfib = fib(af, vrf)) {
      doSbdVlanIntfs(mfib);
    }
  });
}

void L3VxlanPipeline::vrfStopping(const L3::VrfName& vrf, Af af) {
  guarded("VRF stop", [&] {
    auto mfib = fib(af, vrf);
    if (!mfib || !exists()) return;
    const VrfId id = lastVrfId(vrf);
    if (!vrf.isDefault() && !id.isNone()) l3VxlanOutModule_->deleteOGateEntry(af, id);
    doDisconnectMfib(mfib);
  });
}

void L3VxlanPipeline::vrfIdChanged(const L3::VrfName& vrf, VrfId, VrfId) {
  guarded("VRF id", [&] { handleVrfNameToId(vrf); });
}

void L3VxlanPipeline::handleNameToIdMap() {
  const auto map = inputs_.vrfNameStatus->nameToIdMap();
  nameToIdMapReactor_.publisherIs(const_cast<Vrf::VrfIdMap::NameToIdMap*>(map.get()));
  std::vector<L3::VrfName> vrfs;
  for (const auto& entry : lastVrfId_) vrfs.push_back(entry.key);
  if (map) {
    for (const auto& entry : map->vrfIds()) vrfs.emplace_back(entry.key);
  }
  for (const auto& vrf : vrfs) handleVrfNameToId(vrf);
}

void L3VxlanPipeline::handleVrfName(const Lumo::String& name) {
  guarded("VRF name", [&] { handleVrfNameToId(L3::VrfName(name)); });
}

void L3VxlanPipeline::handleVrfNameToId(const L3::VrfName& vrf) {
  const VrfId oldId = lastVrfId(vrf);
  const VrfId newId = curVrfNameToId(vrf);
  if (oldId == newId) return;
  for (const auto& entry : vtiStatus_.members()) handleVrfToVniMap(*entry.value, vrf);
  handleVrfToSBDVlan(vrf);
  doOGateEntries(vrf, oldId, newId);
  if (newId.isNone()) {
    lastVrfId_.erase(vrf);
  } else {
    lastVrfId_.set(vrf, newId);
  }
}

void L3VxlanPipeline::doOGateEntries(const L3::VrfName& vrf, VrfId oldId, VrfId newId) {
  if (!exists() || vrf.isDefault()) return;
  for (Af af : {Af::ipv4, Af::ipv6}) {
    const auto mfib = fib(af, vrf);
    if (!mfib) continue;
    if (!oldId.isNone() && oldId != newId) l3VxlanOutModule_->deleteOGateEntry(af, oldId);
    const Vek::GateId gate = l3VxlanOutModule_->findGateByName(mfib->name().view(), false);
    if (!newId.isNone() && gate.isValid()) l3VxlanOutModule_->addOGateEntry(af, newId, gate.value());
  }
}

}  // namespace VekMVxlan
