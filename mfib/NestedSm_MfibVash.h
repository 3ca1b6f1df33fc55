#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibStatus.h"

namespace VekL3Mcast {

class VekL3MfibSm;

// The reactor of one application's route table: each change of a route records the key
// as changed in the owner and arms its task. A table that comes or goes records every
// key it holds, and the owner's decision per key finds out what the module must hold.
class NestedSm_MfibVash : public Qel::StateMachine,
                          public Qel::NotifieeConstOf<Vash::Multicast::Fib::Status> {
 public:
  NestedSm_MfibVash(VekL3MfibSm* owner, Lumo::Ptr<Vash::Multicast::Fib::Status const> status);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_MfibVash"; }

  Routing::Multicast::Fib::MfibAppType app() const noexcept { return notifier()->app(); }

  void handleInitialized() override { handleMfibVash(false); }
  void onAttribute(Qel::AttributeId id, const void* key) override;

  void handleMfibRouteChange(const Routing::Multicast::Fib::IpGenRouteKey& key);
  // Records every key of the table; `vashDeleted` tells a table that goes from one that
  // comes.
  void handleMfibVash(bool vashDeleted);

 private:
  VekL3MfibSm* owner_;
};

}  // namespace VekL3Mcast
