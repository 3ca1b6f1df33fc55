#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/IntfId.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/IdAllocator.h"
#include "runtime/vek/L3Intf.h"
#include "runtime/vek/ManagementSm.h"
#include "runtime/vek/McastIntfBase.h"
#include "runtime/vek/TcManager.h"

namespace Vek {

// The agent-wide state that the proxies share: the workers, their traffic classes, the
// data-plane counters handed out to modules, the routed interfaces and the multicast
// interfaces of the plug-in's pipeline.
class VekCommonSmData : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMcastIntf = 1, kL3Intf };
  using McastIntfs = Qel::HashMap2018<Lanx::IntfId, Lumo::Ptr<McastIntfBase>>;
  using L3Intfs = Qel::HashMap2018<Lanx::IntfId, Lumo::Ptr<L3Intf>>;

  // Each worker starts out mapped to the daemon's weighted class of that worker.
  explicit VekCommonSmData(std::uint16_t workerCount);

  std::string_view typeName() const override { return "Vek::VekCommonSmData"; }

  std::uint16_t workerCount() const noexcept { return workerCount_; }
  const Lumo::Ptr<ManagementSm>& managementSm() const noexcept { return managementSm_; }
  const Lumo::Ptr<TcManager>& tcManager() const noexcept { return tcManager_; }

  // Worker id to the name of its weighted traffic class; empty when there is none.
  Lumo::String widToWeightedClass(std::uint32_t wid) const;
  bool widToWeightedClassHas(std::uint32_t wid) const { return widToWeightedClass_.contains(wid); }
  void widToWeightedClassIs(std::uint32_t wid, Lumo::String className);
  void widToWeightedClassDel(std::uint32_t wid);

  // The multicast interfaces, by interface; publishes kMcastIntf with the interface id.
  const McastIntfs& mcastIntfs() const noexcept { return mcastIntf_.members(); }
  Lumo::Ptr<McastIntfBase> mcastIntf(Lanx::IntfId intfId) const { return mcastIntf_.get(intfId); }
  bool mcastIntfHas(Lanx::IntfId intfId) const { return mcastIntf_.has(intfId); }
  void mcastIntfIs(const Lumo::Ptr<McastIntfBase>& intf);
  void mcastIntfDel(Lanx::IntfId intfId) { mcastIntf_.del(*this, intfId); }

  // The routed interfaces, by interface; publishes kL3Intf with the interface id.
  const L3Intfs& l3Intfs() const noexcept { return l3Intf_.members(); }
  Lumo::Ptr<L3Intf> l3Intf(Lanx::IntfId intfId) const { return l3Intf_.get(intfId); }
  bool l3IntfHas(Lanx::IntfId intfId) const { return l3Intf_.has(intfId); }
  void l3IntfIs(const Lumo::Ptr<L3Intf>& intf);
  void l3IntfDel(Lanx::IntfId intfId) { l3Intf_.del(*this, intfId); }

  // Counter ids, by the module that holds them.
  CounterId counterAlloc(const Lumo::String& moduleName);
  std::vector<CounterId> countersFree(const Lumo::String& moduleName);
  std::vector<CounterId> moduleCounters(const Lumo::String& moduleName) const;

 private:
  std::uint16_t workerCount_;
  Lumo::Ptr<ManagementSm> managementSm_;
  Lumo::Ptr<TcManager> tcManager_;
  std::map<std::uint32_t, Lumo::String> widToWeightedClass_;
  IdAllocator counterIds_{1, std::numeric_limits<std::uint32_t>::max()};
  std::map<Lumo::String, std::vector<CounterId>> moduleCounters_;
  Qel::HashCollectionAttr<Lanx::IntfId, Lumo::Ptr<McastIntfBase>, kMcastIntf> mcastIntf_;
  Qel::HashCollectionAttr<Lanx::IntfId, Lumo::Ptr<L3Intf>, kL3Intf> l3Intf_;
};

}  // namespace Vek
