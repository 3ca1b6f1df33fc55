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

}  // namespace L3
