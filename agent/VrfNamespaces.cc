#include "agent/VrfNamespaces.h"

#include "agent/VekMfaAgent.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/sharedmem/MountInfo.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

VrfNamespaces::VrfNamespaces(MfaAgent* agent) : agent_(agent) {}

void VrfNamespaces::createKniSm(const L3::VrfName& vrf) {
  const Lanx::NamespaceName ns = vrf.nsName();
  if (vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirHas(ns)) return;
  const auto sharedMem = QelSharedMem::EntityManager::getEntityManager(Lanx::sharedMemManagerName);
  const std::string path = KernelNetInfo::Root::mountPath(ns);
  MfaAgent::doMountTable(*sharedMem, path, KernelNetInfo::Root::mountTypeName,
                         QelVash::MountInfo());
  auto deviceDir = vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirIs(ns)->deviceIntfStatusDirIs(
      Lumo::String(Interface::DeviceVrfIntfStatusDir::kernelIntfs));
  auto root = Lumo::ptrCast<KernelNetInfo::Root const>(sharedMem->getEntity(path));
  intfStatusManagerRoot()->intfStatusManagerIs(ns, deviceDir, root);
  if (agent_->oru() && vrf.isDefault()) {
    agent_->fabricDeviceControl()->defaultVrfKniRootIs(root);
    agent_->fabricDeviceControl()->handleFwdDevStateSm();
  }
}

void VrfNamespaces::deleteKniSm(const L3::VrfName& vrf) {
  const Lanx::NamespaceName ns = vrf.nsName();
  if (!vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirHas(ns)) return;
  VEK_TRACE(info, "Handle vrf {} has ns: {}", vrf, ns);
  vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirDel(ns);
  intfStatusManagerRoot()->intfStatusManagerDel(ns);
  if (agent_->oru() && vrf.isDefault()) {
    agent_->fabricDeviceControl()->defaultVrfKniRootDel();
    agent_->fabricDeviceControl()->handleFwdDevStateSm();
  }
  QelVash::Mount::doUnmount(KernelNetInfo::Root::mountPath(ns));
}

}  // namespace VekL3Mcast
