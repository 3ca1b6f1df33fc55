#include "pipeline/PimRegRx.h"

#include "proto/vek.pb.h"
#include "runtime/state/IntfId.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {
constexpr std::uint32_t rxModuleOutGates = 1;
constexpr Lanx::IntfId register0 = Lanx::IntfId::register0();
}  // namespace

std::string_view PimRegRx::afWord() const noexcept {
  return af_ == Lanx::AddressFamily::ipv4 ? "Ipv4" : "Ipv6";
}

Lumo::String PimRegRx::portName() const {
  return joinedName({"pimreg", afWord(), "_", vrfName_.view()});
}

void PimRegRx::createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (bessPort()) return;
  const Lumo::String name = portName();
  VEK_TRACE(info, "port: {}, vrfName: {}", name, vrfName_);
  auto* arg = new vek::pb::PimRegPortArg;
  arg->set_netns(std::string(vrfName_.nsName().view()));
  arg->set_af(static_cast<std::uint32_t>(af_));
  arg->set_enabled(true);
  bessPortIs(name, "PimRegPort", arg, configGroup);
}

void PimRegRx::createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (rxModule()) return;
  const Lumo::String name = joinedName({"Rx_PimReg", afWord(), "_", vrfName_.view()});
  VEK_TRACE(info, "module: {}, vrfName: {}", name, vrfName_);
  rxModuleIs(name, rxModuleOutGates, portName(), modulePair);
}

void PimRegRx::createMetaDataModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (metaDataModule()) return;
  const Lumo::String name = joinedName({"Mdata_PimReg", afWord(), "_", vrfName_.view()});
  VEK_TRACE(info, "module: {}, vrfName: {}", name, vrfName_);
  auto* arg = new vek::pb::MetaDataModuleArg;
  arg->set_portdeviceany(false);
  arg->set_mcasthwfwd(false);
  arg->set_staticsrcintf(true);
  arg->set_rxpeerlinkorcore(false);
  arg->set_staticsrcintfid(register0.value());
  // The proxy counts the register device as an any-device port; the daemon must not.
  metaDataModuleIs(name, arg, modulePair, vrfName_, true, false, true, register0.value(), false);
}

}  // namespace VekL3Mcast
