#pragma once

#include <optional>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/OismVlanFloodSet.h"
#include "vxlan/ScanBudget.h"

namespace VekMVxlan {

class OismFloodSetSm0;

// The VTEPs of one VLAN's flood set on their way into the VTEP VLAN status. It remembers
// the VTEPs it has put there, so that a VLAN that goes takes exactly those keys with it.
class FloodSetSm1 : public Qel::StateMachine,
                    public Qel::NotifieeConstOf<Routing::Multicast::Evpn::OismVlanFloodSet> {
 public:
  using OismVlanFloodSet = Routing::Multicast::Evpn::OismVlanFloodSet;
  using Vteps = Qel::HashSet2018<Lanx::IpGenAddr>;

  FloodSetSm1(OismFloodSetSm0* parent, Lumo::Ptr<OismVlanFloodSet const> floodSet);
  std::string_view typeName() const override { return "VekMVxlan::FloodSetSm1"; }

  Bridging::VlanId vlan() const noexcept { return notifier()->vlanId(); }
  const Vteps& vtepsPut() const noexcept { return vtepsPut_; }
  bool scanned() const noexcept { return !scanIter_; }

  // Starts the scan of the members over.
  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

  // Goes on with the scan of the members; false if it stopped to yield.
  bool doInputScan0(ScanBudget& budget);
  // A member came or went.
  void handleVtep0(const Lanx::IpGenAddr& vtep);
  // Puts the member's key into the table or takes it out, as the flood set has it now.
  void doVtep(const Lanx::IpGenAddr& vtep);
  // The VLAN went: every key it put goes.
  void doDeleteAll();

 private:
  OismFloodSetSm0* parent_;
  Vteps vtepsPut_;
  std::optional<Vteps::IteratorConst> scanIter_;
};

}  // namespace VekMVxlan
