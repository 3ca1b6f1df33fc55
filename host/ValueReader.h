#pragma once

#include <yaml-cpp/yaml.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/LoaderOptions.h"
#include "host/ScenarioValues.h"

namespace VekHost {

// Reads the values a scenario names (VRFs, families, interfaces, routes) and checks each
// one; throws LoadError at the line of a bad one.
class ValueReader {
 public:
  explicit ValueReader(LoaderOptions options) : options_(std::move(options)) {}

  std::string vrf(const YAML::Node& node) const;
  Af af(const YAML::Node& node) const;
  // An interface name, or a multicast tunnel written {tunnel: <type>, vtep: <address>}, which
  // comes back as its name McastTunnel<type>-<address>.
  std::string intf(const YAML::Node& node, std::string_view what) const;
  std::vector<std::string> intfList(const YAML::Node& node, std::string_view what) const;
  std::string app(const YAML::Node& node) const;
  // A module, device or other name given by the data plane or the kernel.
  std::string name(const YAML::Node& node, std::string_view what) const;
  // The `vrf` and `af` keys of a map.
  VrfAf vrfAf(const YAML::Node& map) const;
  // The `source` and `group` keys of a map, for routes of family `af`.
  RouteKey routeKey(const YAML::Node& map, Af af) const;
  RouteFlags flags(const YAML::Node& list) const;
  uint32_t vrfId(const YAML::Node& node) const;

 private:
  std::string tunnel(const YAML::Node& map, std::string_view what) const;

  LoaderOptions options_;
};

}  // namespace VekHost
