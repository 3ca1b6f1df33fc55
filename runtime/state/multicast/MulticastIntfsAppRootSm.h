#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"

namespace Routing::Multicast {

// The multicast interfaces of one VRF and family, followed from the application directory
// into a set of its own: a reader of this machine sees each interface come and go, also
// when the VRF's entry in the directory is made, replaced or removed as a whole.
class MulticastIntfsAppRootSm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kMulticastIntf = 1 };
  using Intfs = Qel::HashSet2018<Lanx::IntfId>;

  MulticastIntfsAppRootSm(L3::VrfName vrfName, Lanx::AddressFamily af,
                          Lumo::Ptr<MulticastIntfsAppDir const> appDir);
  std::string_view typeName() const override {
    return "Routing::Multicast::MulticastIntfsAppRootSm";
  }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }
  bool multicastIntfHas(Lanx::IntfId intf) const { return multicastIntf_.has(intf); }
  const Intfs& multicastIntfs() const noexcept { return multicastIntf_.members(); }
  // Forgets every interface; the next change of the directory brings them back.
  void multicastIntfDelAll() { multicastIntf_.delAll(*this); }

  void handleInitialized() override;
  void handleVrfEntry(const Lumo::String& vrfName);
  void handleMulticastIntf(const Lanx::IntfId& intf);

 private:
  void doFollowVrfEntry();

  L3::VrfName vrfName_;
  Lanx::AddressFamily af_;
  Lumo::Ptr<MulticastIntfsAppDir const> appDir_;
  Lumo::Ptr<MulticastIntfs const> vrfIntfs_;
  Qel::SetAttr<Lanx::IntfId, kMulticastIntf> multicastIntf_;
  Qel::SmSubscriber<MulticastIntfsAppRootSm> appDirReactor_{
      this, &Qel::reactorDispatch<MulticastIntfsAppRootSm, Qel::Dir::kChild,
                                  &MulticastIntfsAppRootSm::handleVrfEntry>};
  Qel::SmSubscriber<MulticastIntfsAppRootSm> vrfIntfsReactor_{
      this, &Qel::reactorDispatch<MulticastIntfsAppRootSm, MulticastIntfs::kMulticastIntf,
                                  &MulticastIntfsAppRootSm::handleMulticastIntf>};
};

}  // namespace Routing::Multicast
