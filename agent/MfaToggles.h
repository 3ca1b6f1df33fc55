#pragma once

#include "pipeline/McastVpnToggles.h"

namespace VekL3Mcast {

// The feature toggles of the multicast agent, all on by default. Each is read once per
// process, at its first use, and kept: a toggle never changes under a running agent.
// toggleToloVekTxEnabled comes with the pipeline, which reads it.
bool toggleOismMplsTunnelEnabled();  // "OismMplsTunnel" in "MvpnLib.json"
bool toggleMvpnVekEnabled();         // "MvpnVek" in "MvpnLib.json"
bool toggleMfaWcFwdEnabled();        // "MfaWcFwd" in "Mroute.json": programming of *,G routes

}  // namespace VekL3Mcast
