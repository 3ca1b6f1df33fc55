#include "agent/NestedSm_MfibVrfAdapter.h"

#include "agent/VrfPipelineControl.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

using Routing::Multicast::Fib::MfibAppType;
using Routing::Multicast::Fib::MfibVrfAdapter;

NestedSm_MfibVrfAdapter::NestedSm_MfibVrfAdapter(VrfPipelineControl* owner,
                                                 Lumo::Ptr<MfibVrfAdapter const> adapter)
    : Qel::NotifieeConstOf<MfibVrfAdapter>(this), owner_(owner) {
  notifierIs(std::move(adapter));
  handleInitialized();
}

void NestedSm_MfibVrfAdapter::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == MfibVrfAdapter::kMfibVash) handleVashMount(*static_cast<const MfibAppType*>(key));
}

void NestedSm_MfibVrfAdapter::handleVashMount() {
  for (const auto& table : notifier()->mfibVashMembers()) handleVashMount(table.key);
}

void NestedSm_MfibVrfAdapter::handleVashMount(MfibAppType app) {
  const MfibVrfAdapter* adapter = notifier();
  const Lumo::Ptr<VekL3MfibSm> sm = owner_->mfibSm(adapter->vrfName(), adapter->af());
  if (!sm) return;
  // The route machine keeps the adapter also when a table goes: it follows the adapter's
  // tables by itself and so takes the routes of a table that went out of the module.
  if (adapter->mfibVashHas(app)) {
    VEK_TRACE(info, "Updating Mfib Sm vash dir for vrf {} ({} table)", adapter->vrfName(), app);
  } else {
    VEK_TRACE(info, "Removing Mfib Sm vash dir for vrf {} ({} table)", adapter->vrfName(), app);
  }
  sm->mfibVrfAdapterIs(Lumo::Ptr<MfibVrfAdapter const>(adapter));
}

}  // namespace VekL3Mcast
