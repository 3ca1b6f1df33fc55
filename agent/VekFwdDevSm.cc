#include "agent/VekFwdDevSm.h"

#include <string>
#include <vector>

#include "runtime/state/ByFamily.h"
#include "runtime/state/kni/KernelInterface.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

using Routing::Fwd0RoutingEthType;

namespace {

// The kernel's limit on a device name; a longer name names no device.
constexpr std::size_t maxDeviceNameLength = 16;
constexpr std::string_view fwdDevicePrefix = "fwd";

}  // namespace

FwdDevStateSm::FwdDevStateSm(Lumo::Ptr<KernelNetInfo::Root const> defaultVrfKniRoot,
                             Lumo::Ptr<Routing::Hardware::RouteStatus const> routingHwRouteStatus,
                             Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanIn,
                             Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                             Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                             Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup)
    : defaultVrfKniRoot_(std::move(defaultVrfKniRoot)),
      routingHwRouteStatus_(std::move(routingHwRouteStatus)),
      l2VxlanIn_(std::move(l2VxlanIn)),
      vekcsd_(std::move(vekcsd)),
      configStatusPair_(std::move(configStatusPair)),
      cmdConfigGroup_(std::move(cmdConfigGroup)) {
  handleInitialized();
}

FwdDevStateSm::~FwdDevStateSm() { handleCleanup(); }

void FwdDevStateSm::handleInitialized() {
  fwdDevState_.is(*this);
  kniRootDispatch_.publisherIs(const_cast<KernelNetInfo::Root*>(defaultVrfKniRoot_.get()));
  kniRootDispatch_.isRegisteredIs(true);
  routeStatusDispatch_.publisherIs(
      const_cast<Routing::Hardware::RouteStatus*>(routingHwRouteStatus_.get()));
  routeStatusDispatch_.isRegisteredIs(true);
  handleRoutingHwVrfStatus(L3::VrfName::defaultVrf());
}

void FwdDevStateSm::handleRoutingHwVrfStatus(const L3::VrfName& vrf) {
  if (!vrf.isDefault()) return;
  auto status = routingHwRouteStatus_->vrfStatus(vrf);
  defaultVrfRouteStatus_.is(*this, status);
  vrfStatusDispatch_.publisherIs(const_cast<Routing::Hardware::VrfStatus*>(status.get()));
  vrfStatusDispatch_.isRegisteredIs(status != nullptr);
  for (Fwd0RoutingEthType ethType : Routing::fwd0RoutingEthTypes) handleEthTypeMapping(ethType);
}

void FwdDevStateSm::handleKniRootIntf(const Lumo::String& name) {
  if (name.view().starts_with(fwdDevicePrefix)) handleFwdIntfKernelState(name);
}

void FwdDevStateSm::handleFwdIntfKernelState(const Lumo::String& name) {
  VEK_TRACE(info, "Fwd device name: {}", name);
  for (Fwd0RoutingEthType ethType : Routing::fwd0RoutingEthTypes) {
    const Lumo::String* device =
        defaultVrfRouteStatus() ? defaultVrfRouteStatus()->fwd0EthTypeEntry(ethType) : nullptr;
    const Lumo::String* recorded = fwdDevState()->fwdDeviceByAf(Routing::fwd0EthTypeFamily(ethType));
    // A device that went is still recorded for its family, whatever the mapping says now.
    if ((device && *device == name) || (recorded && *recorded == name)) {
      handleEthTypeMapping(ethType);
    }
  }
}

void FwdDevStateSm::handleEthTypeMapping(Fwd0RoutingEthType ethType) {
  VEK_TRACE(info, "Checking ethType {:#06x}", static_cast<std::uint16_t>(ethType));
  const Lanx::AddressFamily af = Routing::fwd0EthTypeFamily(ethType);
  const Lumo::String* entry =
      defaultVrfRouteStatus() ? defaultVrfRouteStatus()->fwd0EthTypeEntry(ethType) : nullptr;
  const Lumo::String device = entry ? *entry : Lumo::String();
  FwdDevState& state = *fwdDevState();
  if (const Lumo::String* recorded = state.fwdDeviceByAf(af)) {
    const Lumo::String old = *recorded;
    if (!entry || device != old || !kernelHasDevice(old)) {
      VEK_TRACE(info, "Delete old fwd device {}", old);
      state.fwdDeviceByAfDel(af);
      const Lanx::AddressFamily other =
          af == Lanx::AddressFamily::ipv4 ? Lanx::AddressFamily::ipv6 : Lanx::AddressFamily::ipv4;
      const Lumo::String* otherDevice = state.fwdDeviceByAf(other);
      if (!otherDevice || *otherDevice != old) deleteFwdIntfModule(old);
    }
  }
  if (!entry || !kernelHasDevice(device)) return;
  VEK_TRACE(info, "Add fwd device {}", device);
  const std::optional<Lanx::IntfId> intf = Lanx::IntfId::fromName(device);
  if (!intf) {
    VEK_TRACE(warn, "Fwd device {} has no interface id; no port is made for it", device);
    return;
  }
  if (!state.fwdIntf(*intf)) createFwdIntfModule(device);
  state.fwdDeviceByAfIs(af, device);
}

bool FwdDevStateSm::kernelHasDevice(const Lumo::String& name) const {
  if (name.empty() || name.size() > maxDeviceNameLength) return false;
  return defaultVrfKniRoot_->interfaceByDeviceName(name) != KernelNetInfo::Interface{};
}

void FwdDevStateSm::createFwdIntfModule(const Lumo::String& name) {
  const Lanx::IntfId intfId = Lanx::IntfId::fromNameOrThrow(name);
  // The device only sends: the pipeline never receives on it.
  const Lumo::Ptr<McastIntf> intf =
      fwdDevState()->fwdIntfIs(L3::VrfName::defaultVrf(), intfId, McastIntfType::txOnly);
  intf->createBessPort(name, cmdConfigGroup_);
  intf->createTxModule(name, configStatusPair_);
  vekcsd_->mcastIntfIs(intf);
  doConnectFwdIntf(intf);
}

void FwdDevStateSm::doConnectFwdIntf(const Lumo::Ptr<McastIntf>& intf) {
  if (l2VxlanIn_->outGateInUse(VekMVxlan::L2MVxlanIn::fwdDeviceGate)) {
    VEK_TRACE(info, "Fwd device {} stays unwired: {} has its one forwarding device",
              intf->intfId().name(), l2VxlanIn_->name());
    return;
  }
  l2VxlanIn_->connectViaReservedGate(intf->txModule(), VekMVxlan::L2MVxlanIn::fwdDeviceGate);
}

void FwdDevStateSm::deleteFwdIntfModule(const Lumo::String& name) {
  const std::optional<Lanx::IntfId> intfId = Lanx::IntfId::fromName(name);
  if (!intfId) return;
  const Lumo::Ptr<McastIntf> intf = fwdDevState()->fwdIntf(*intfId);
  if (!intf) return;
  l2VxlanIn_->disconnectModule(intf->txModule());
  vekcsd_->mcastIntfDel(*intfId);
  fwdDevState()->fwdIntfDel(*intfId);
  // A device that waited for the gate takes it now.
  for (const auto& member : fwdDevState()->fwdIntfs()) doConnectFwdIntf(member.value);
}

void FwdDevStateSm::handleCleanup() {
  kniRootDispatch_.isRegisteredIs(false);
  routeStatusDispatch_.isRegisteredIs(false);
  vrfStatusDispatch_.isRegisteredIs(false);
  const Lumo::Ptr<FwdDevState>& state = fwdDevState();
  if (!state) return;
  std::vector<Lanx::IntfId> intfs;
  for (const auto& member : state->fwdIntfs()) intfs.push_back(member.key);
  for (Lanx::IntfId intfId : intfs) {
    l2VxlanIn_->disconnectModule(state->fwdIntf(intfId)->txModule());
    vekcsd_->mcastIntfDel(intfId);
    state->fwdIntfDel(intfId);
  }
  for (Lanx::AddressFamily af : Lanx::bothFamilies) state->fwdDeviceByAfDel(af);
}

}  // namespace VekL3Mcast
