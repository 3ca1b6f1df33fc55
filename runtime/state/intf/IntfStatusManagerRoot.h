#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/intf/IntfStatusDir.h"
#include "runtime/state/intf/IntfStatusManager.h"

namespace Interface {

// The interface status managers of the namespaces that multicast follows, one per
// namespace. The managers hang below the root: its notification and zombie state reach
// them.
class IntfStatusManagerRoot : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kIntfStatusManager = 1 };
  using Managers = Qel::HashMap2018<Lanx::NamespaceName, Lumo::Ptr<IntfStatusManager>>;

  // `filterByNetNs`: each manager sees the devices of its own namespace only.
  IntfStatusManagerRoot(Lumo::Ptr<IntfStatusDir const> allIntfStatus,
                        Lumo::Ptr<IntfStatusDir const> localIntfStatus, bool filterByNetNs)
      : allIntfStatus_(std::move(allIntfStatus)),
        localIntfStatus_(std::move(localIntfStatus)),
        filterByNetNs_(filterByNetNs) {}
  ~IntfStatusManagerRoot() override { intfStatusManagerDelAll(); }
  std::string_view typeName() const override { return "Interface::IntfStatusManagerRoot"; }

  bool filterByNetNs() const noexcept { return filterByNetNs_; }
  const Lumo::Ptr<IntfStatusDir const>& allIntfStatus() const noexcept { return allIntfStatus_; }
  const Lumo::Ptr<IntfStatusDir const>& localIntfStatus() const noexcept {
    return localIntfStatus_;
  }

  Lumo::Ptr<IntfStatusManager> intfStatusManager(const Lanx::NamespaceName& ns) const {
    return intfStatusManager_.get(ns);
  }
  const Managers& intfStatusManagers() const noexcept { return intfStatusManager_.members(); }
  // Makes the manager of a namespace; one that stands for it is kept.
  Lumo::Ptr<IntfStatusManager> intfStatusManagerIs(const Lanx::NamespaceName& ns,
                                                   Lumo::Ptr<DeviceIntfStatusDir> deviceDir,
                                                   Lumo::Ptr<KernelNetInfo::Root const> kniRoot);
  void intfStatusManagerDel(const Lanx::NamespaceName& ns);
  void intfStatusManagerDelAll();

 private:
  Lumo::Ptr<IntfStatusDir const> allIntfStatus_;
  Lumo::Ptr<IntfStatusDir const> localIntfStatus_;
  bool filterByNetNs_;
  Qel::HashCollectionAttr<Lanx::NamespaceName, Lumo::Ptr<IntfStatusManager>, kIntfStatusManager>
      intfStatusManager_;
};

}  // namespace Interface
