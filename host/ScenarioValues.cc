#include "host/ScenarioValues.h"

namespace VekHost {

std::string_view afName(Af af) { return af == Af::ipv4 ? "ipv4" : "ipv6"; }

bool* routeFlag(RouteFlags& flags, std::string_view name) {
  if (name == "fastdrop") return &flags.fastdrop;
  if (name == "iifRegister") return &flags.iifRegister;
  if (name == "oifRegister") return &flags.oifRegister;
  if (name == "switching") return &flags.switching;
  return nullptr;
}

bool routeFlag(const RouteFlags& flags, std::string_view name) {
  const bool* flag = routeFlag(const_cast<RouteFlags&>(flags), name);
  return flag != nullptr && *flag;
}

std::string routeFlagsText(const RouteFlags& flags) {
  std::string text = "[";
  for (std::string_view name : kRouteFlagNames) {
    if (!routeFlag(flags, name)) continue;
    if (text.size() > 1) text += ", ";
    text += name;
  }
  return text + "]";
}

}  // namespace VekHost
