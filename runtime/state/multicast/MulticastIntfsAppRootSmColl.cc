#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"

#include "runtime/lumo/Exceptions.h"

namespace Routing::Multicast {

Lumo::Ptr<MulticastIntfsAppRootSm> MulticastIntfsAppRootSmColl::vrfSmIs(
    const L3::VrfName& vrf, Lanx::AddressFamily af, Lumo::Ptr<MulticastIntfsAppDir const> appDir) {
  if (!appDir) Qel::throwMutatorArgNullPointerException("vrfSm");
  if (auto present = vrfSm_.get(vrf)) return present;
  auto sm = Lumo::makePtr<MulticastIntfsAppRootSm>(vrf, af, std::move(appDir));
  sm->hasNotificationActiveIs(true);
  vrfSm_.is(*this, vrf, sm);
  return sm;
}

void MulticastIntfsAppRootSmColl::vrfSmDel(const L3::VrfName& vrf) {
  Lumo::Ptr<MulticastIntfsAppRootSm> sm = vrfSm_.get(vrf);
  if (!sm) return;
  sm->qelDoZombieReactors(true);
  sm->hasNotificationActiveIs(false);
  vrfSm_.del(*this, vrf);
}

void MulticastIntfsAppRootSmColl::vrfSmDelAll() {
  while (!vrfSm_.empty()) vrfSmDel(L3::VrfName(vrfSm_.members().begin()->key));
}

}  // namespace Routing::Multicast
