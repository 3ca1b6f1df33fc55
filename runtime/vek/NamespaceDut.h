#pragma once

namespace Vek {

// True when the agent runs in a network-namespace or container setup rather than on a
// device; hardware-related settings are then left out. The host sets it.
bool isNamespaceDut() noexcept;
void namespaceDutIs(bool namespaceDut) noexcept;

}  // namespace Vek
