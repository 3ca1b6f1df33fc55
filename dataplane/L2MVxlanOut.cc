#include "dataplane/L2MVxlanOut.h"

#include "dataplane/TableJson.h"
#include "dataplane/VxlanArgCheck.h"
#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<L2MVxlanOut>& L2MVxlanOut::commands() {
  static const CommandTable<L2MVxlanOut> table{
      {"addVni", "vek.pb.VlanVniArg", &L2MVxlanOut::addVni},
      {"deleteVni", "vek.pb.VlanVniArg", &L2MVxlanOut::deleteVni},
      {"addDecapRoute", "vek.pb.L2MVxlanDecapRouteArg", &L2MVxlanOut::addDecapRoute},
      {"deleteDecapRoute", "vek.pb.L2MVxlanDecapRouteArg", &L2MVxlanOut::deleteDecapRoute},
      {"setCounterIds", "vek.pb.L2MVxlanOutCounterIdArg", &L2MVxlanOut::setCounterIds},
  };
  return table;
}

using Check = VxlanArgCheck;

CommandResult L2MVxlanOut::addVni(const vek::pb::VlanVniArg& arg) {
  if (auto refused = Check::vni(arg.vni())) return std::move(*refused);
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  vniToVlan_[arg.vni()] = arg.vlanid();
  return CommandResult::ok();
}

CommandResult L2MVxlanOut::deleteVni(const vek::pb::VlanVniArg& arg) {
  if (auto refused = Check::vni(arg.vni())) return std::move(*refused);
  vniToVlan_.erase(arg.vni());
  return CommandResult::ok();
}

CommandResult L2MVxlanOut::routeKey(const vek::pb::L2MVxlanDecapRouteArg& arg, std::string& key) {
  if (auto refused = Check::addrOrAny("underlay source", arg.underlaysource())) {
    return std::move(*refused);
  }
  if (auto refused = Check::addrOrAny("underlay group", arg.underlaygroup())) {
    return std::move(*refused);
  }
  key = Check::addrTextOrAny(arg.underlaysource()) + "," +
        Check::addrTextOrAny(arg.underlaygroup());
  return CommandResult::ok();
}

CommandResult L2MVxlanOut::addDecapRoute(const vek::pb::L2MVxlanDecapRouteArg& arg) {
  std::string key;
  CommandResult result = routeKey(arg, key);
  if (!result.failed()) decapRoutes_.insert(key);
  return result;
}

CommandResult L2MVxlanOut::deleteDecapRoute(const vek::pb::L2MVxlanDecapRouteArg& arg) {
  std::string key;
  CommandResult result = routeKey(arg, key);
  if (!result.failed()) decapRoutes_.erase(key);
  return result;
}

CommandResult L2MVxlanOut::setCounterIds(const vek::pb::L2MVxlanOutCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

nlohmann::ordered_json L2MVxlanOut::dump() const {
  return {{"vniToVlan", numberKeyed(vniToVlan_)},
          {"decapRoutes", decapRoutes_},
          {"counterIds", counterIds_}};
}

}  // namespace Dataplane
