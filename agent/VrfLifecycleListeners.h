#pragma once

#include <vector>

#include "pipeline/VrfLifecycleListener.h"

namespace VekL3Mcast {

// The listeners the agent tells of each VRF's life, in the order they registered. The
// agent owns every listener and registers it once made; a listener that goes before the
// agent takes itself out first.
class VrfLifecycleListeners final : public VrfLifecycleListener {
 public:
  void listenerIs(VrfLifecycleListener& listener);
  void listenerDel(VrfLifecycleListener& listener);
  bool empty() const noexcept { return listeners_.empty(); }

  void vrfStarted(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void vrfStopping(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                    Vrf::VrfIdMap::VrfId newId) override;
  void mfibModuleChanged(const L3::VrfName& vrf, Lanx::AddressFamily af,
                         const Lumo::Ptr<MfibAf>& module) override;
  void handleMvpnIntfStatus() override;
  void mfibModuleReady(const L3::VrfName& vrf, Lanx::AddressFamily af,
                       const Lumo::Ptr<MfibAf>& module) override;
  void vrfIdToNameChanged(Vrf::VrfIdMap::VrfId id) override;

 private:
  template <typename Call>
  void forEach(Call call) {
    // A listener may register another while it is told: that one hears the next news.
    const std::vector<VrfLifecycleListener*> listeners = listeners_;
    for (VrfLifecycleListener* listener : listeners) call(*listener);
  }

  std::vector<VrfLifecycleListener*> listeners_;
};

}  // namespace VekL3Mcast
