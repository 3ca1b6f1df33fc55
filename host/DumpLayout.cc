#include "host/DumpLayout.h"

#include <charconv>

namespace VekHost {

namespace {

std::optional<uint64_t> intfId(const nlohmann::json& value) {
  if (value.is_number_unsigned()) return value.get<uint64_t>();
  if (!value.is_string()) return std::nullopt;
  const std::string& text = value.get_ref<const std::string&>();
  uint64_t id = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (ec != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return id;
}

int gateNumber(const nlohmann::json& value) {
  if (value.is_number_integer()) return value.get<int>();
  if (value.is_string()) return std::atoi(value.get_ref<const std::string&>().c_str());
  return -1;
}

const nlohmann::json* member(const nlohmann::json& object, const std::string& key) {
  if (!object.is_object()) return nullptr;
  auto it = object.find(key);
  return it == object.end() ? nullptr : &*it;
}

}  // namespace

std::string DumpLayout::fibModuleName(const VrfAf& vrfAf) {
  return std::string(vrfAf.af == Af::ipv4 ? "MfibIpv4" : "MfibIpv6") + vrfAf.vrf;
}

const nlohmann::json* DumpLayout::module(const nlohmann::json& dump, const std::string& name) {
  const nlohmann::json* modules = member(dump, "modules");
  return modules ? member(*modules, name) : nullptr;
}

const nlohmann::json* DumpLayout::route(const nlohmann::json& fibModule, const RouteKey& key) {
  const nlohmann::json* table = member(fibModule, "table");
  const nlohmann::json* routes = table ? member(*table, "routes") : nullptr;
  return routes ? member(*routes, key.text()) : nullptr;
}

std::size_t DumpLayout::routeCount(const nlohmann::json& fibModule) {
  const nlohmann::json* table = member(fibModule, "table");
  const nlohmann::json* routes = table ? member(*table, "routes") : nullptr;
  return routes ? routes->size() : 0;
}

std::optional<uint64_t> DumpLayout::routeIif(const nlohmann::json& route) {
  const nlohmann::json* iif = member(route, "iif");
  return iif ? intfId(*iif) : std::nullopt;
}

std::vector<uint64_t> DumpLayout::routeOifs(const nlohmann::json& route) {
  std::vector<uint64_t> ids;
  const nlohmann::json* gates = member(route, "gates");
  if (!gates || !gates->is_array()) return ids;
  for (const nlohmann::json& gate : *gates) {
    const nlohmann::json* intf = member(gate, "intfId");
    if (auto id = intf ? intfId(*intf) : std::nullopt) ids.push_back(*id);
  }
  return ids;
}

RouteFlags DumpLayout::routeFlags(const nlohmann::json& route) {
  RouteFlags flags;
  for (std::string_view name : kRouteFlagNames) {
    const nlohmann::json* value = member(route, std::string(name));
    *routeFlag(flags, name) = value && value->is_boolean() && value->get<bool>();
  }
  return flags;
}

std::vector<DumpLayout::Link> DumpLayout::links(const nlohmann::json& dump) {
  std::vector<Link> links;
  const nlohmann::json* modules = member(dump, "modules");
  if (!modules || !modules->is_object()) return links;
  for (const auto& [name, module] : modules->items()) {
    const nlohmann::json* out = member(module, "out");
    if (!out || !out->is_object()) continue;
    for (const auto& [ogate, peer] : out->items()) {
      const nlohmann::json* to = member(peer, "to");
      const nlohmann::json* igate = member(peer, "igate");
      if (!to || !to->is_string()) continue;
      links.push_back(Link{name, std::atoi(ogate.c_str()), to->get<std::string>(),
                           igate ? gateNumber(*igate) : 0});
    }
  }
  return links;
}

std::size_t DumpLayout::count(const nlohmann::json& dump, const std::string& key) {
  const nlohmann::json* value = member(dump, key);
  return value && (value->is_object() || value->is_array()) ? value->size() : 0;
}

}  // namespace VekHost
