#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/ScenarioValues.h"

namespace VekHost {

// Where things stand in the model dump. The expectations and the run summary read the dump
// only through here, so its shape is written down in one place:
//   modules.<name>: {class, out: {"<ogate>": {to, igate}}, table: {...}}
//   modules.<Mfib{Ipv4|Ipv6}<vrf>>.table.routes."<source>,<group>":
//       {iif: "<intf id>", gates: [{intfId: "<intf id>", gate: N}], fastdrop, iifRegister,
//        oifRegister}   (a flag that is missing is false; the data plane keeps no
//        switching flag, so `switching` always reads false)
// Interface ids are decimal strings, as the data plane writes 64-bit integers; numbers are
// taken as well.
class DumpLayout {
 public:
  struct Link {
    std::string from;
    int ogate = 0;
    std::string to;
    int igate = 0;
  };

  static std::string fibModuleName(const VrfAf& vrfAf);
  static const nlohmann::json* module(const nlohmann::json& dump, const std::string& name);
  static const nlohmann::json* route(const nlohmann::json& fibModule, const RouteKey& key);
  static std::size_t routeCount(const nlohmann::json& fibModule);
  static std::optional<uint64_t> routeIif(const nlohmann::json& route);
  static std::vector<uint64_t> routeOifs(const nlohmann::json& route);
  static RouteFlags routeFlags(const nlohmann::json& route);
  // Every gate link of every module, in dump order.
  static std::vector<Link> links(const nlohmann::json& dump);
  // The number of members of a top-level object ("modules", "ports", "errors" ...).
  static std::size_t count(const nlohmann::json& dump, const std::string& key);
};

}  // namespace VekHost
