#pragma once

#include "runtime/cordex/EntityManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/multicast/MfibDir.h"
#include "runtime/state/multicast/MfibVrfDir.h"

namespace VekL3Mcast {

// Mounts the route tables that the route directory of one family lists and puts each
// into the adapter of its VRF once its mount has finished; a table that is no longer
// listed leaves its adapter, an adapter without tables leaves the VRF directory, and the
// table is unmounted.
class MfibDirSm : public Qel::StateMachine {
 public:
  MfibDirSm(Lumo::Ptr<Routing::Multicast::Fib::MfibDir const> mfibDir,
            Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir> mfibVrfDir,
            Lumo::Ptr<Cordex::EntityManager> entityManager);
  std::string_view typeName() const override { return "VekL3Mcast::MfibDirSm"; }

  void handleInitialized() override;
  void handleTable(const Routing::Multicast::Fib::MfibTableKey& table);
  void handleMountComplete(const Lumo::String& path);

 private:
  void doAddTable(const Routing::Multicast::Fib::MfibTableKey& table);
  void doRemoveTable(const Routing::Multicast::Fib::MfibTableKey& table);
  std::string tablePath(const Routing::Multicast::Fib::MfibTableKey& table) const;

  Lumo::Ptr<Routing::Multicast::Fib::MfibDir const> mfibDir_;
  Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir> mfibVrfDir_;
  Lumo::Ptr<Cordex::EntityManager> entityManager_;
  Lumo::Ptr<QelSharedMem::EntityManager> sharedMem_;
  // The tables mounted or on their way, and the same by path for the mount's news.
  Qel::HashMap2018<Routing::Multicast::Fib::MfibTableKey, Lumo::Ptr<QelVash::Mount>> mount_;
  Qel::HashMap2018<Lumo::String, Routing::Multicast::Fib::MfibTableKey> tableByPath_;
  Qel::SmSubscriber<MfibDirSm> mfibDirReactor_{
      this, &Qel::reactorDispatch<MfibDirSm, Routing::Multicast::Fib::MfibDir::kTable,
                                  &MfibDirSm::handleTable>};
  Qel::SmSubscriber<MfibDirSm> mountReactor_{
      this, &Qel::reactorDispatch<MfibDirSm, QelSharedMem::EntityManager::kMountComplete,
                                  &MfibDirSm::handleMountComplete>};
};

}  // namespace VekL3Mcast
