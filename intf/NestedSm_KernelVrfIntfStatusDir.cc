#include "intf/NestedSm_KernelVrfIntfStatusDir.h"

#include <optional>
#include <vector>

#include "intf/VekL3McastIntfSm.h"
#include "runtime/lumo/Assert.h"

namespace VekL3Mcast {

namespace {
L3::VrfName vrfOfNamespace(const Interface::DeviceVrfIntfStatusDir& dir) {
  const std::optional<L3::VrfName> vrf = L3::VrfName::fromNsName(dir.name().view());
  QEL_ASSERT(vrf, "kernel devices of a namespace without a VRF");
  return *vrf;
}
}  // namespace

NestedSm_KernelVrfIntfStatusDir::NestedSm_KernelVrfIntfStatusDir(
    McastIntfModuleSm* owner, Lumo::Ptr<Interface::DeviceVrfIntfStatusDir const> dir)
    : Qel::NotifieeConstOf<Interface::DeviceVrfIntfStatusDir>(this),
      owner_(owner),
      vrfName_(vrfOfNamespace(*dir)) {
  notifierIs(std::move(dir));
  handleInitialized();
}

void NestedSm_KernelVrfIntfStatusDir::handleInitialized() {
  const Lumo::Ptr<Interface::DeviceIntfStatusDir> devices = kernelIntfs();
  if (!devices) return;
  std::vector<Lanx::IntfId> intfs;
  intfs.reserve(devices->devices().size());
  for (const auto& device : devices->devices()) intfs.push_back(device.key);
  for (Lanx::IntfId intf : intfs) handleDeviceIntfStatusDir(intf);
}

void NestedSm_KernelVrfIntfStatusDir::onAttribute(Qel::AttributeId id, const void* key) {
  // The namespace's directories hold kernel devices only, so every change below is keyed
  // by an interface; a directory that comes or goes is scanned whole.
  if (id == Qel::Dir::kChild) {
    handleInitialized();
  } else if (id == Interface::DeviceIntfStatusDir::kDeviceIntfStatus) {
    handleDeviceIntfStatusDir(*static_cast<const Lanx::IntfId*>(key));
  }
}

void NestedSm_KernelVrfIntfStatusDir::handleDeviceIntfStatusDir(Lanx::IntfId intfId) {
  if (!owner_->initialized()) return;
  owner_->checkMcastIntf(vrfName_, intfId);
}

}  // namespace VekL3Mcast
