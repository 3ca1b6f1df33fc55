#include "pipeline/McastRxPath.h"

#include <cstdint>

#include "pipeline/McastVpnToggles.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/NamespaceDut.h"

namespace VekL3Mcast {

namespace {

constexpr McastRxPath hwFwdPath{"any_McastHwFwd_",     "Rx_McastHwFwd_",
                                "Mdata_McastHwFwd_",   "fabric_McastHwFwd",
                                "VlanMdata_McastHwFwd", true,
                                false};
constexpr McastRxPath swFwdPath{"any_McastSwFwd_",     "Rx_McastSwFwd_",
                                "Mdata_McastSwFwd_",   "fabric_McastSwFwd",
                                "VlanMdata_McastSwFwd", false,
                                false};
constexpr McastRxPath peerLinkOrCorePath{"any_McastSwFwd_PeerLinkOrCore_",
                                         "Rx_McastSwFwd_PeerLinkOrCore_",
                                         "Mdata_McastSwFwd_PeerLinkOrCore_",
                                         "fabric_McastSwFwd_PeerLinkOrCore",
                                         "VlanMdata_McastSwFwd_PeerLinkOrCore",
                                         false,
                                         true};

// Marks that the kernel puts on multicast packets by how they are to be forwarded.
constexpr std::uint32_t fwdMark = 0x576;
constexpr std::uint32_t peerLinkOrCoreMark = 0x7576;
constexpr std::uint32_t hwFwdMask = 0xFFF;
constexpr std::uint32_t fullMask = 0xFFFF;

}  // namespace

const McastRxPath& mcastRxPath(McastRxType rxType) {
  switch (rxType) {
    case McastRxType::mcastHwFwd:
      return hwFwdPath;
    case McastRxType::mcastSwFwd:
      return swFwdPath;
    case McastRxType::mcastSwFwdPeerLinkOrCore:
      return peerLinkOrCorePath;
  }
  QEL_ASSERT(false, "Unsupported rxType");
  return hwFwdPath;
}

bess::pb::PCAPPortFilterMcastMarkArg* mcastMarkFilterArg(McastRxType rxType, bool anyDevice) {
  // On a namespace device the kernel's own marks stand in for the hardware's.
  const bool nsOverride = Vek::isNamespaceDut() && toggleToloVekTxEnabled();
  auto* arg = new bess::pb::PCAPPortFilterMcastMarkArg;
  switch (rxType) {
    case McastRxType::mcastHwFwd:
      arg->set_mark(fwdMark);
      arg->set_mask(hwFwdMask);
      arg->set_hwfwd(true);
      arg->set_marknsoverride(nsOverride);
      break;
    case McastRxType::mcastSwFwd:
      arg->set_mark(fwdMark);
      arg->set_mask(fullMask);
      arg->set_hwfwd(false);
      arg->set_marknsoverride(false);
      break;
    case McastRxType::mcastSwFwdPeerLinkOrCore:
      arg->set_mark(peerLinkOrCoreMark);
      arg->set_mask(nsOverride ? 0 : fullMask);
      arg->set_hwfwd(false);
      arg->set_marknsoverride(nsOverride);
      break;
    default:
      QEL_ASSERT(false, "Unsupported rxType");
  }
  arg->set_anydevice(anyDevice);
  return arg;
}

bool mcastHwFwdInMetadata(bool wanted) {
  if (!Vek::isNamespaceDut()) return wanted;
  VEK_TRACE(err, "Namespace or cORU-lab dut, not setting mcastHwFwd metadata");
  return false;
}

}  // namespace VekL3Mcast
