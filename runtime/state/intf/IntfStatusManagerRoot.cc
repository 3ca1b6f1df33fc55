#include "runtime/state/intf/IntfStatusManagerRoot.h"

#include "runtime/lumo/Exceptions.h"

namespace Interface {

Lumo::Ptr<IntfStatusManager> IntfStatusManagerRoot::intfStatusManagerIs(
    const Lanx::NamespaceName& ns, Lumo::Ptr<DeviceIntfStatusDir> deviceDir,
    Lumo::Ptr<KernelNetInfo::Root const> kniRoot) {
  if (!deviceDir || !kniRoot) Qel::throwMutatorArgNullPointerException("intfStatusManager");
  if (auto present = intfStatusManager_.get(ns)) return present;
  auto manager = Lumo::makePtr<IntfStatusManager>(std::move(deviceDir), std::move(kniRoot));
  smMemberAdd(manager.get());
  manager->hasNotificationActiveIs(hasNotificationActive());
  intfStatusManager_.is(*this, ns, manager);
  return manager;
}

void IntfStatusManagerRoot::intfStatusManagerDel(const Lanx::NamespaceName& ns) {
  Lumo::Ptr<IntfStatusManager> manager = intfStatusManager_.get(ns);
  if (!manager) return;
  smMemberDel(manager.get());
  manager->qelDoZombieReactors(true);
  manager->hasNotificationActiveIs(false);
  intfStatusManager_.del(*this, ns);
}

void IntfStatusManagerRoot::intfStatusManagerDelAll() {
  while (!intfStatusManager_.empty()) {
    intfStatusManagerDel(Lanx::NamespaceName(intfStatusManager_.members().begin()->key));
  }
}

}  // namespace Interface
