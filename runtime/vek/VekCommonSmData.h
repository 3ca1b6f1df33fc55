#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Entity.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/IdAllocator.h"
#include "runtime/vek/ManagementSm.h"
#include "runtime/vek/TcManager.h"

namespace Vek {

// The agent-wide state that the proxies share: the workers, their traffic classes and the
// data-plane counters handed out to modules.
class VekCommonSmData : public Qel::Entity {
 public:
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
};

}  // namespace Vek
