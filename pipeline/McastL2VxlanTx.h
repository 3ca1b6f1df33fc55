#pragma once

#include <string_view>

#include "pipeline/PathAttrs.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Entity.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The transmit module towards the fabric for decapsulated L2 multicast. It writes to a
// port that another path made, so it has no port of its own.
class McastL2VxlanTx : public WithTxModule<Qel::Entity> {
 public:
  static constexpr std::string_view txModuleName = "Tx_fabric";

  explicit McastL2VxlanTx(Lumo::String portName) : portName_(std::move(portName)) {}
  std::string_view typeName() const override { return "VekL3Mcast::McastL2VxlanTx"; }

  const Lumo::String& portName() const noexcept { return portName_; }

  void createTxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

 private:
  Lumo::String portName_;
};

}  // namespace VekL3Mcast
