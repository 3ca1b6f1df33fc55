#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleContext.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// The L3 VXLAN decapsulation module (class 87): the UDP port it takes, VNI to VLAN, VNI to
// VRF id, VRF id to SBD VLAN, and per family and VRF id the output gate to the VRF's FIB.
class L3MVxlanOut final : public TableWithCommands<L3MVxlanOut> {
 public:
  static const CommandTable<L3MVxlanOut>& commands();

  explicit L3MVxlanOut(ModuleContext context) : context_(std::move(context)) {}

  nlohmann::ordered_json dump() const override;

  CommandResult setUdpPort(const vek::pb::UdpPortArg& arg);
  CommandResult addVrfSBDVlan(const vek::pb::VrfVlanArg& arg);
  CommandResult deleteVrfSBDVlan(const vek::pb::VrfVlanArg& arg);
  CommandResult addOGateEntry(const vek::pb::AfVrfOGateArg& arg);
  CommandResult deleteOGateEntry(const vek::pb::AfVrfOGateArg& arg);
  CommandResult addVniVlan(const vek::pb::VlanVniArg& arg);
  CommandResult deleteVniVlan(const vek::pb::VlanVniArg& arg);
  CommandResult addVniVrf(const vek::pb::VniVrfArg& arg);
  CommandResult deleteVniVrf(const vek::pb::VniVrfArg& arg);
  CommandResult setCounterIds(const vek::pb::L3MVxlanOutCounterIdArg& arg);

 private:
  ModuleContext context_;
  std::uint32_t udpPort_ = 0;
  std::map<std::uint32_t, std::uint32_t> vrfSbdVlan_;
  // "ipv4:<vrfId>" or "ipv6:<vrfId>" -> gate.
  std::map<std::string, std::uint32_t> oGates_;
  std::map<std::uint32_t, std::uint32_t> vniVlan_;
  std::map<std::uint32_t, std::uint32_t> vniVrf_;
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
