#include "pipeline/VekMcastTypes.h"

namespace VekL3Mcast {

std::string_view mcastIntfTypeName(McastIntfType type) noexcept {
  switch (type) {
    case McastIntfType::rxAndTx:
      return "rxAndTx";
    case McastIntfType::txOnly:
      return "txOnly";
  }
  return "unknown";
}

std::string_view mcastRxTypeName(McastRxType type) noexcept {
  switch (type) {
    case McastRxType::mcastHwFwd:
      return "mcastHwFwd";
    case McastRxType::mcastSwFwd:
      return "mcastSwFwd";
    case McastRxType::mcastSwFwdPeerLinkOrCore:
      return "mcastSwFwdPeerLinkOrCore";
  }
  return "unknown";
}

}  // namespace VekL3Mcast
