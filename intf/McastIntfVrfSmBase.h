#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSm.h"

namespace VekL3Mcast {

class McastIntfModuleSm;

// What the IPv4 and IPv6 followers of a VRF's multicast interfaces share: every interface
// that comes or goes, and every interface at a (re)scan, is queued for the tracker's
// review of the follower's family. Nothing is worked here.
class McastIntfVrfSmBase : public Qel::StateMachine,
                           public Qel::NotifieeConstOf<Routing::Multicast::MulticastIntfsAppRootSm> {
 public:
  using Root = Routing::Multicast::MulticastIntfsAppRootSm;

  std::string_view typeName() const override { return "VekL3Mcast::McastIntfVrfSmBase"; }
  void onAttribute(Qel::AttributeId id, const void* key) override;

  // Queues every interface the VRF has now.
  void doScheduleAll();

 protected:
  McastIntfVrfSmBase(McastIntfModuleSm* owner, Lumo::Ptr<Root const> root);
  void doSchedule(const L3::VrfName& vrfName, Lanx::IntfId intfId);

 private:
  McastIntfModuleSm* owner_;
};

}  // namespace VekL3Mcast
