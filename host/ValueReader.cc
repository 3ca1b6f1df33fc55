#include "host/ValueReader.h"

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
    YamlReader::fail(node, "'" + name + "' is not a VRF name (a name of at most " +
                               std::to_string(ValueText::kMaxVrfNameLength) + " characters)");
  }
  return name;
}

Af ValueReader::af(const YAML::Node& node) const {
  return YamlReader::choice(node, "af", {"ipv4", "ipv6"}) == 0 ? Af::ipv4 : Af::ipv6;
}

std::string ValueReader::intf(const YAML::Node& node, std::string_view what) const {
  std::string text = YamlReader::text(node, what);
  const bool known = options_.intfId ? options_.intfId(text).has_value() : ValueText::isName(text);
  if (!known)
    YamlReader::fail(node, std::string(what) + " '" + text + "' is not an interface name");
  return text;
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
