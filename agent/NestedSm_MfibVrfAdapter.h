#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibVrfAdapter.h"

namespace VekL3Mcast {

class VrfPipelineControl;

// Follows the route tables of one VRF and family for the agent: a table whose mount came
// or went reaches the VRF's route machine, if the VRF is started.
class NestedSm_MfibVrfAdapter
    : public Qel::StateMachine,
      public Qel::NotifieeConstOf<Routing::Multicast::Fib::MfibVrfAdapter> {
 public:
  NestedSm_MfibVrfAdapter(VrfPipelineControl* owner,
                          Lumo::Ptr<Routing::Multicast::Fib::MfibVrfAdapter const> adapter);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_MfibVrfAdapter"; }

  void handleInitialized() override { handleVashMount(); }
  void onAttribute(Qel::AttributeId id, const void* key) override;
  // Every table of the adapter.
  void handleVashMount();
  void handleVashMount(Routing::Multicast::Fib::MfibAppType app);

 private:
  VrfPipelineControl* owner_;
};

}  // namespace VekL3Mcast
