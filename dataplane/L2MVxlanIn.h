#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// The L2 VXLAN encapsulation module (class 84): what it needs to put a VLAN's multicast into
// the underlay. VLAN to VNI and to SBD VLAN, flood sets of VTEPs, overlay groups with their
// underlay routes, snooped group members with their VTEP lists, the local VTEP addresses,
// source interface, bridge MAC and the switching capability.
class L2MVxlanIn final : public TableWithCommands<L2MVxlanIn> {
 public:
  static const CommandTable<L2MVxlanIn>& commands();

  nlohmann::ordered_json dump() const override;

  CommandResult addVlan(const vek::pb::VlanVniArg& arg);
  CommandResult deleteVlan(const vek::pb::VlanVniArg& arg);
  CommandResult addVlanToSBDVlan(const vek::pb::VlanToSBDVlanArg& arg);
  CommandResult delVlanToSBDVlan(const vek::pb::VlanToSBDVlanArg& arg);
  CommandResult addVlanFloodSetEntry(const vek::pb::VlanVtepFloodSetArg& arg);
  CommandResult deleteVlanFloodSetEntry(const vek::pb::VlanVtepFloodSetArg& arg);
  CommandResult setSrcIpIntf(const vek::pb::IntfIdArg& arg);
  CommandResult addOverlayVlanGroup(const vek::pb::L2MVxlanOverlayVlanGroupArg& arg);
  CommandResult deleteOverlayVlanGroup(const vek::pb::L2MVxlanOverlayVlanGroupArg& arg);
  CommandResult setVtepAddr(const vek::pb::IpGenAddrArg& arg);
  CommandResult setVtepAddr6(const vek::pb::IpGenAddrArg& arg);
  CommandResult addGmpVlanGroupMember(const vek::pb::GmpVlanGroupMemberArg& arg);
  CommandResult deleteGmpVlanGroupMember(const vek::pb::GmpVlanGroupMemberArg& arg);
  CommandResult setLocalBridgeMacAddr(const vek::pb::EthernetConfigArg& arg);
  CommandResult setVxlanSwitchPktToMcastTunnelInSw(
      const vek::pb::VxlanSwitchPktToMcastTunnelInSwArg& arg);
  CommandResult setCounterIds(const vek::pb::L2MVxlanInCounterIdArg& arg);

 private:
  struct Underlay {
    std::string source;  // "*" for any
    std::string group;
  };
  // VLAN and group text; VLAN first so that a VLAN's entries stand together.
  using VlanKey = std::pair<std::uint32_t, std::string>;

  CommandResult setVtep(std::string& vtep, std::size_t size, const vek::pb::IpGenAddrArg& arg);

  std::map<std::uint32_t, std::uint32_t> vlanToVni_;
  std::map<std::uint32_t, std::uint32_t> vlanToSbdVlan_;
  std::map<std::uint32_t, std::set<std::string>> floodSets_;
  std::map<VlanKey, Underlay> overlayGroups_;
  std::map<VlanKey, std::vector<std::string>> groupMembers_;
  std::string vtepAddr_;
  std::string vtepAddr6_;
  std::uint64_t srcIpIntf_ = 0;
  std::string bridgeMacAddr_;
  bool switching_ = false;
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
