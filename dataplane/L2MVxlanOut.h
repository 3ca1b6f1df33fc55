#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// The L2 VXLAN decapsulation module (class 85): which VNI belongs to which VLAN, and the
// underlay routes whose packets it takes apart.
class L2MVxlanOut final : public TableWithCommands<L2MVxlanOut> {
 public:
  static const CommandTable<L2MVxlanOut>& commands();

  nlohmann::ordered_json dump() const override;

  CommandResult addVni(const vek::pb::VlanVniArg& arg);
  CommandResult deleteVni(const vek::pb::VlanVniArg& arg);
  CommandResult addDecapRoute(const vek::pb::L2MVxlanDecapRouteArg& arg);
  CommandResult deleteDecapRoute(const vek::pb::L2MVxlanDecapRouteArg& arg);
  CommandResult setCounterIds(const vek::pb::L2MVxlanOutCounterIdArg& arg);

 private:
  // "<source>,<group>" with "*" for any, or the refusal.
  static CommandResult routeKey(const vek::pb::L2MVxlanDecapRouteArg& arg, std::string& key);

  std::map<std::uint32_t, std::uint32_t> vniToVlan_;
  std::set<std::string> decapRoutes_;
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
