#include "runtime/sharedmem/MountGroup.h"

#include <algorithm>

#include "runtime/sharedmem/EntityManager.h"

namespace QelSharedMem {

MountGroup::MountGroup(Lumo::Ptr<EntityManager> manager) : manager_(std::move(manager)) {}

MountGroup::~MountGroup() {
  for (const auto& mount : mounts_) std::erase(mount->waitingGroups_, this);
}

Lumo::Ptr<QelVash::Mount> MountGroup::doMount(std::string_view path, std::string_view typeName,
                                              const QelVash::MountInfo& info) {
  return mountAdd(manager_->doMount(path, typeName, info));
}

Lumo::Ptr<QelVash::Mount> MountGroup::doMount(std::string_view path, std::string_view typeName,
                                              const QelKraz::MountInfo& info) {
  return mountAdd(manager_->doMount(path, typeName, info));
}

Lumo::Ptr<QelVash::Mount> MountGroup::mountAdd(Lumo::Ptr<QelVash::Mount> mount) {
  if (std::find(mounts_.begin(), mounts_.end(), mount) != mounts_.end()) return mount;
  mounts_.push_back(mount);
  if (!mount->mountComplete()) {
    ++pending_;
    mount->waitingGroups_.push_back(this);
  }
  return mount;
}

void MountGroup::handleMountComplete() {
  if (--pending_ == 0) notify(kComplete);
}

}  // namespace QelSharedMem
