#pragma once

namespace VekL3Mcast {

// "ToloVekTx" of "McastVpnLib.json": read at first use and kept for the life of the process.
bool toggleToloVekTxEnabled();
// Lets the next call read the toggle again.
void toggleToloVekTxForgetForTest();

}  // namespace VekL3Mcast
