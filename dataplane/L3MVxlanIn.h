#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// The L3 VXLAN encapsulation module (class 86): the tunnel's ports, TTL, source interface
// and addresses, the VNI of each routed source interface, and per VRF id the underlay group
// of each overlay group.
class L3MVxlanIn final : public TableWithCommands<L3MVxlanIn> {
 public:
  static const CommandTable<L3MVxlanIn>& commands();

  nlohmann::ordered_json dump() const override;

  CommandResult setVxlanDestPort(const vek::pb::UdpPortArg& arg);
  CommandResult setVxlanSrcPort(const vek::pb::UdpPortArg& arg);
  CommandResult setVxlanTTL(const vek::pb::TtlArg& arg);
  CommandResult setVtepIntfId(const vek::pb::IntfIdArg& arg);
  CommandResult addSrcIntfIdToVni(const vek::pb::IntfIdVniArg& arg);
  CommandResult deleteSrcIntfIdToVni(const vek::pb::IntfIdArg& arg);
  CommandResult setVtepAddr(const vek::pb::IpGenAddrArg& arg);
  CommandResult setVtepAddr6(const vek::pb::IpGenAddrArg& arg);
  CommandResult addVrfOverlayToUnderlayGroup(const vek::pb::VrfOverlayToUnderlayGroupArg& arg);
  // One group of a VRF, or with allGroups all of them.
  CommandResult deleteVrfOverlayToUnderlayGroup(const vek::pb::VrfOverlayToUnderlayGroupArg& arg);
  CommandResult setCounterIds(const vek::pb::L3MVxlanInCounterIdArg& arg);

 private:
  std::uint32_t destPort_ = 0;
  std::uint32_t srcPort_ = 0;
  std::uint32_t ttl_ = 0;
  std::uint64_t vtepIntfId_ = 0;
  std::string vtepAddr_;
  std::string vtepAddr6_;
  std::map<std::uint64_t, std::uint32_t> srcIntfIdToVni_;
  // VRF id -> overlay group text -> underlay group text.
  std::map<std::uint32_t, std::map<std::string, std::string>> groups_;
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
