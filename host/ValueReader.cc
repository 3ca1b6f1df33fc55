#include "host/ValueReader.h"

#include <algorithm>

#include "host/ValueText.h"
#include "host/YamlReader.h"

namespace VekHost {

namespace {

// Ids at and above this mean "no VRF" in the tables the agent reads.
constexpr int64_t kNoVrfId = 0xffffff;

std::string address(const YAML::Node& node, std::string_view what, Af af) {
  std::string text = YamlReader::text(node, what);
  auto canonical = ValueText::address(text, af);
  if (!canonical) {
    YamlReader::fail(node, std::string(what) + " '" + text + "' is not an " +
                               std::string(afName(af)) + " address");
  }
  return *canonical;
}

}  // namespace

std::string ValueReader::vrf(const YAML::Node& node) const {
  std::string name = YamlReader::text(node, "vrf");
  if (!ValueText::isName(name) || name.size() > ValueText::kMaxVrfNameLength) {
    const bool ascii = std::all_of(name.begin(), name.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    YamlReader::fail(node, "'" + name + "' is not a VRF name (" +
                               (ascii ? "" : "it is ASCII only: ") +
                               "a letter, then letters, digits and /.:_-, at most " +
                               std::to_string(ValueText::kMaxVrfNameLength) + " characters)");
  }
  return name;
}

Af ValueReader::af(const YAML::Node& node) const {
  return YamlReader::choice(node, "af", {"ipv4", "ipv6"}) == 0 ? Af::ipv4 : Af::ipv6;
}

std::string ValueReader::intf(const YAML::Node& node, std::string_view what) const {
  std::string text = node.IsMap() ? tunnel(node, what) : YamlReader::text(node, what);
  const bool known = options_.intfId ? options_.intfId(text).has_value() : ValueText::isName(text);
  if (!known)
    YamlReader::fail(node, std::string(what) + " '" + text + "' is not an interface name");
  return text;
}

// The multicast tunnel towards a VTEP, {tunnel: 1, vtep: 10.0.0.9}, stands for its name,
// McastTunnel1-10.0.0.9, so that everything after the reader deals in names alone.
std::string ValueReader::tunnel(const YAML::Node& map, std::string_view what) const {
  YamlReader::requireMapWithKeys(map, std::string(what) + " (a tunnel)", {"tunnel", "vtep"});
  const int64_t type = YamlReader::integer(YamlReader::required(map, "tunnel"), "tunnel", 1, 15);
  const YAML::Node vtepNode = YamlReader::required(map, "vtep");
  const std::string vtepText = YamlReader::text(vtepNode, "vtep");
  auto vtep = ValueText::address(vtepText, Af::ipv4);
  if (!vtep) vtep = ValueText::address(vtepText, Af::ipv6);
  if (!vtep) YamlReader::fail(vtepNode, "vtep '" + vtepText + "' is not an IPv4 or IPv6 address");
  return "McastTunnel" + std::to_string(type) + "-" + *vtep;
}

std::vector<std::string> ValueReader::intfList(const YAML::Node& node,
                                               std::string_view what) const {
  YamlReader::requireList(node, what);
  std::vector<std::string> names;
  for (const YAML::Node& element : node) names.push_back(intf(element, what));
  return names;
}

std::string ValueReader::app(const YAML::Node& node) const {
  std::string text = YamlReader::text(node, "app");
  const bool known = options_.isRouteApp ? options_.isRouteApp(text) : ValueText::isName(text);
  if (!known) YamlReader::fail(node, "'" + text + "' is not a route application");
  return text;
}

std::string ValueReader::name(const YAML::Node& node, std::string_view what) const {
  std::string text = YamlReader::text(node, what);
  if (!ValueText::isName(text)) {
    YamlReader::fail(node, std::string(what) + " '" + text + "' is not a name");
  }
  return text;
}

VrfAf ValueReader::vrfAf(const YAML::Node& map) const {
  return VrfAf{vrf(YamlReader::required(map, "vrf")), af(YamlReader::required(map, "af"))};
}

RouteKey ValueReader::routeKey(const YAML::Node& map, Af family) const {
  RouteKey key;
  YAML::Node source = YamlReader::required(map, "source");
  key.source =
      source.IsScalar() && source.Scalar() == "*" ? "*" : address(source, "source", family);
  YAML::Node group = YamlReader::required(map, "group");
  key.group = address(group, "group", family);
  if (!ValueText::isMulticast(key.group, family)) {
    YamlReader::fail(group, "group " + key.group + " is not a multicast address");
  }
  if (key.source != "*" && ValueText::isMulticast(key.source, family)) {
    YamlReader::fail(source, "source " + key.source + " is a multicast address");
  }
  return key;
}

RouteFlags ValueReader::flags(const YAML::Node& list) const {
  YamlReader::requireList(list, "flags");
  RouteFlags flags;
  const std::vector<std::string_view> names(std::begin(kRouteFlagNames), std::end(kRouteFlagNames));
  for (const YAML::Node& element : list) {
    *routeFlag(flags, names[YamlReader::choice(element, "a flag", names)]) = true;
  }
  return flags;
}

uint32_t ValueReader::vrfId(const YAML::Node& node) const {
  return static_cast<uint32_t>(YamlReader::integer(node, "a VRF id", 0, kNoVrfId - 1));
}

}  // namespace VekHost
