#include "pipeline/McastVpnToggles.h"

#include <optional>

#include "runtime/toggle/ToggleState.h"

namespace VekL3Mcast {

namespace {
std::optional<bool>& toloVekTx() {
  static std::optional<bool> value;
  return value;
}
}  // namespace

bool toggleToloVekTxEnabled() {
  std::optional<bool>& value = toloVekTx();
  if (!value) value = getToggleState("ToloVekTx", "McastVpnLib.json", true);
  return *value;
}

void toggleToloVekTxForgetForTest() { toloVekTx().reset(); }

}  // namespace VekL3Mcast
