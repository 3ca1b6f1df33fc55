#include "agent/VrfLifecycleListeners.h"

#include <algorithm>

namespace VekL3Mcast {

void VrfLifecycleListeners::listenerIs(VrfLifecycleListener& listener) {
  if (std::find(listeners_.begin(), listeners_.end(), &listener) != listeners_.end()) return;
  listeners_.push_back(&listener);
}

void VrfLifecycleListeners::listenerDel(VrfLifecycleListener& listener) {
  std::erase(listeners_, &listener);
}

void VrfLifecycleListeners::vrfStarted(const L3::VrfName& vrf, Lanx::AddressFamily af) {
  forEach([&](VrfLifecycleListener& listener) { listener.vrfStarted(vrf, af); });
}

void VrfLifecycleListeners::vrfStopping(const L3::VrfName& vrf, Lanx::AddressFamily af) {
  forEach([&](VrfLifecycleListener& listener) { listener.vrfStopping(vrf, af); });
}

void VrfLifecycleListeners::vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                                         Vrf::VrfIdMap::VrfId newId) {
  forEach([&](VrfLifecycleListener& listener) { listener.vrfIdChanged(vrf, oldId, newId); });
}

void VrfLifecycleListeners::mfibModuleChanged(const L3::VrfName& vrf, Lanx::AddressFamily af,
                                              const Lumo::Ptr<MfibAf>& module) {
  forEach([&](VrfLifecycleListener& listener) { listener.mfibModuleChanged(vrf, af, module); });
}

void VrfLifecycleListeners::handleMvpnIntfStatus() {
  forEach([](VrfLifecycleListener& listener) { listener.handleMvpnIntfStatus(); });
}

void VrfLifecycleListeners::mfibModuleReady(const L3::VrfName& vrf, Lanx::AddressFamily af,
                                            const Lumo::Ptr<MfibAf>& module) {
  forEach([&](VrfLifecycleListener& listener) { listener.mfibModuleReady(vrf, af, module); });
}

void VrfLifecycleListeners::vrfIdToNameChanged(Vrf::VrfIdMap::VrfId id) {
  forEach([&](VrfLifecycleListener& listener) { listener.vrfIdToNameChanged(id); });
}

}  // namespace VekL3Mcast
