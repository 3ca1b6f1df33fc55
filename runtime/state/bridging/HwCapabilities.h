#pragma once

#include <string_view>

#include "runtime/qel/ValueAttr.h"
#include "runtime/state/StateEntity.h"

namespace Bridging {

// What the switching hardware can do ("bridging/hwcapabilities"), as far as multicast reads
// it: whether VXLAN packets that the hardware switches towards a multicast tunnel have to
// be encapsulated in software instead.
class HwCapabilities : public Lanx::StateEntity<"Bridging::HwCapabilities"> {
 public:
  enum : Qel::AttributeId { kVxlanSwitchPktToMcastTunnelInSw = 1 };
  static constexpr std::string_view path = "bridging/hwcapabilities";

  bool vxlanSwitchPktToMcastTunnelInSw() const noexcept {
    return vxlanSwitchPktToMcastTunnelInSw_.get();
  }
  void vxlanSwitchPktToMcastTunnelInSwIs(bool on) { vxlanSwitchPktToMcastTunnelInSw_.is(*this, on); }

 private:
  Qel::ValueAttr<bool, kVxlanSwitchPktToMcastTunnelInSw> vxlanSwitchPktToMcastTunnelInSw_;
};

}  // namespace Bridging
