#include "agent/MfaToggles.h"

#include "runtime/toggle/ToggleState.h"

namespace VekL3Mcast {

bool toggleOismMplsTunnelEnabled() {
  static const bool enabled = getToggleState("OismMplsTunnel", "MvpnLib.json", true);
  return enabled;
}

bool toggleMvpnVekEnabled() {
  static const bool enabled = getToggleState("MvpnVek", "MvpnLib.json", true);
  return enabled;
}

bool toggleMfaWcFwdEnabled() {
  static const bool enabled = getToggleState("MfaWcFwd", "Mroute.json", true);
  return enabled;
}

}  // namespace VekL3Mcast
