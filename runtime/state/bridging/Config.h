#pragma once

#include <string_view>

#include "runtime/qel/ValueAttr.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/StateEntity.h"

namespace Bridging {

// The bridging configuration ("bridging/config"), as far as multicast reads it: the MAC
// address of the switch's own bridge, all zero while none is configured.
class Config : public Lanx::StateEntity<"Bridging::Config"> {
 public:
  enum : Qel::AttributeId { kBridgeMacAddr = 1 };
  static constexpr std::string_view path = "bridging/config";

  const Lanx::EthAddr& bridgeMacAddr() const noexcept { return bridgeMacAddr_.get(); }
  void bridgeMacAddrIs(Lanx::EthAddr mac) { bridgeMacAddr_.is(*this, mac); }
  void bridgeMacAddrDel() { bridgeMacAddr_.del(*this); }

 private:
  Qel::ValueAttr<Lanx::EthAddr, kBridgeMacAddr> bridgeMacAddr_;
};

}  // namespace Bridging
