#include "runtime/vek/VekCommonSmData.h"

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Exception.h"

namespace Vek {

VekCommonSmData::VekCommonSmData(std::uint16_t workerCount)
    : workerCount_(workerCount),
      managementSm_(Lumo::makePtr<ManagementSm>(workerCount)),
      tcManager_(Lumo::makePtr<TcManager>()) {
  for (std::uint32_t wid = 0; wid < workerCount; ++wid) {
    widToWeightedClass_[wid] = TcManager::workerClassName(wid);
  }
}

Lumo::String VekCommonSmData::widToWeightedClass(std::uint32_t wid) const {
  auto it = widToWeightedClass_.find(wid);
  return it == widToWeightedClass_.end() ? Lumo::String() : it->second;
}

void VekCommonSmData::widToWeightedClassIs(std::uint32_t wid, Lumo::String className) {
  widToWeightedClass_[wid] = std::move(className);
}

void VekCommonSmData::widToWeightedClassDel(std::uint32_t wid) { widToWeightedClass_.erase(wid); }

void VekCommonSmData::mcastIntfIs(const Lumo::Ptr<McastIntfBase>& intf) {
  QEL_ASSERT(intf, "mcastIntfIs needs an interface");
  mcastIntf_.is(*this, intf->intfId(), intf);
}

void VekCommonSmData::l3IntfIs(const Lumo::Ptr<L3Intf>& intf) {
  QEL_ASSERT(intf, "l3IntfIs needs an interface");
  l3Intf_.is(*this, intf->intfId(), intf);
}

CounterId VekCommonSmData::counterAlloc(const Lumo::String& moduleName) {
  auto id = counterIds_.allocate();
  if (!id) throw Lumo::Exception("no free data-plane counter");
  moduleCounters_[moduleName].push_back(CounterId(*id));
  return CounterId(*id);
}

std::vector<CounterId> VekCommonSmData::countersFree(const Lumo::String& moduleName) {
  auto it = moduleCounters_.find(moduleName);
  if (it == moduleCounters_.end()) return {};
  std::vector<CounterId> freed = std::move(it->second);
  moduleCounters_.erase(it);
  for (CounterId id : freed) counterIds_.release(id.value());
  return freed;
}

std::vector<CounterId> VekCommonSmData::moduleCounters(const Lumo::String& moduleName) const {
  auto it = moduleCounters_.find(moduleName);
  return it == moduleCounters_.end() ? std::vector<CounterId>() : it->second;
}

}  // namespace Vek
