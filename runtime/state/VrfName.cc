#include "runtime/state/VrfName.h"

#include <string>

namespace L3 {

namespace {
constexpr std::string_view nonDefaultNamespacePrefix = "ns-";
}  // namespace

const VrfName& VrfName::defaultVrf() {
  static const VrfName name(defaultVrfText);
  return name;
}

Lanx::NamespaceName VrfName::nsName() const {
  if (isDefault() || empty()) return Lanx::NamespaceName(view());
  std::string name(nonDefaultNamespacePrefix);
  name += view();
  return Lanx::NamespaceName(name);
}

std::optional<VrfName> VrfName::fromNsName(std::string_view ns) {
  if (ns == defaultVrfText) return defaultVrf();
  if (!ns.starts_with(nonDefaultNamespacePrefix)) return std::nullopt;
  ns.remove_prefix(nonDefaultNamespacePrefix.size());
  if (ns.empty() || ns.size() > maxLength() || ns == defaultVrfText) return std::nullopt;
  return VrfName(ns);
}

}  // namespace L3
