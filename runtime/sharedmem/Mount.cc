#include "runtime/sharedmem/Mount.h"

#include "runtime/sharedmem/EntityManager.h"
#include "runtime/sharedmem/MountGroup.h"

namespace QelVash {

Mount::Mount(QelSharedMem::EntityManager* manager, std::uint64_t sequence, Lumo::String path,
             Lumo::String typeName, QelSharedMem::MountKind kind, unsigned mode)
    : manager_(manager),
      sequence_(sequence),
      path_(std::move(path)),
      typeName_(std::move(typeName)),
      kind_(kind),
      mode_(mode) {}

void Mount::handleInitialized() {
  if (started_ || !manager_) return;
  started_ = true;
  manager_->handleMountStart(*this);
}

void Mount::handleComplete() {
  complete_ = true;
  // A group's subscribers may drop groups as they hear the news: hold them all first.
  std::vector<Lumo::Ptr<QelSharedMem::MountGroup>> groups(waitingGroups_.begin(),
                                                          waitingGroups_.end());
  waitingGroups_.clear();
  for (const auto& group : groups) group->handleMountComplete();
}

}  // namespace QelVash
