#include "pipeline/McastAnyRxSet.h"

namespace VekL3Mcast {

void McastAnyRxSet::setIfIndexIntfId(std::uint32_t ifIndex, std::uint64_t intfId) {
  for (const auto& member : mcastAnyRx()) member.value->setIfIndexIntfId(ifIndex, intfId);
}

}  // namespace VekL3Mcast
