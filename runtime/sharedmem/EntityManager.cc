#include "runtime/sharedmem/EntityManager.h"

#include <algorithm>

#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"

namespace QelSharedMem {

namespace {
std::map<std::string, Lumo::Ptr<EntityManager>, std::less<>>& managers() {
  static std::map<std::string, Lumo::Ptr<EntityManager>, std::less<>> all;
  return all;
}
}  // namespace

Lumo::Ptr<EntityManager> EntityManager::getEntityManager(std::string_view name,
                                                         bool createIfMissing) {
  auto& all = managers();
  if (auto found = all.find(name); found != all.end()) return found->second;
  if (!createIfMissing) return nullptr;
  auto manager = Lumo::makePtr<EntityManager>(name);
  all.emplace(std::string(name), manager);
  return manager;
}

void EntityManager::managersDelAllForTest() { managers().clear(); }

EntityManager::EntityManager(std::string_view name) : name_(name) {}

EntityManager::~EntityManager() {
  for (auto& [path, mount] : mounts_) mount->manager_ = nullptr;
}

Lumo::Ptr<MountGroup> EntityManager::getMountGroup() { return Lumo::makePtr<MountGroup>(this); }

Lumo::Ptr<QelVash::Mount> EntityManager::doMount(std::string_view path, std::string_view typeName,
                                                 const QelVash::MountInfo& info) {
  return doMount(path, typeName, MountKind::vash, static_cast<unsigned>(info.mode()));
}

Lumo::Ptr<QelVash::Mount> EntityManager::doMount(std::string_view path, std::string_view typeName,
                                                 const QelKraz::MountInfo&) {
  return doMount(path, typeName, MountKind::kraz, 0);
}

Lumo::Ptr<QelVash::Mount> EntityManager::doMount(std::string_view path, std::string_view typeName,
                                                 MountKind kind, unsigned mode) {
  mountLog_.push_back(
      MountRecord{MountEvent::mount, std::string(path), std::string(typeName), kind, mode});
  if (auto found = mounts_.find(path); found != mounts_.end()) return found->second;
  if (!tables_.entityHas(path)) {
    if (auto factory = factories_.find(typeName); factory != factories_.end()) {
      tables_.entityIs(path, factory->second());
    }
  }
  auto mount = Lumo::makePtr<QelVash::Mount>(this, ++mountSequence_, Lumo::String(path),
                                             Lumo::String(typeName), kind, mode);
  mounts_.emplace(std::string(path), mount);
  mount->handleInitialized();
  return mount;
}

void EntityManager::handleMountStart(QelVash::Mount& mount) {
  if (holdAll_ || holds_.contains(mount.path().view())) return;
  doCompleteMount(mount);
}

void EntityManager::doCompleteMount(QelVash::Mount& mount) {
  if (mount.mountComplete()) return;
  Lumo::Ptr<QelVash::Mount> keep(&mount);
  mount.handleComplete();
  notify(kMountComplete, &mount.path());
}

void EntityManager::doUnmount(std::string_view path) {
  auto found = mounts_.find(path);
  if (found == mounts_.end()) return;
  const QelVash::Mount& mount = *found->second;
  mountLog_.push_back(MountRecord{MountEvent::unmount, std::string(path),
                                  std::string(mount.typeName().view()), mount.kind(),
                                  mount.mode()});
  found->second->manager_ = nullptr;
  mounts_.erase(found);
}

Lumo::Ptr<QelVash::Mount> EntityManager::mount(std::string_view path) const {
  auto found = mounts_.find(path);
  return found == mounts_.end() ? nullptr : found->second;
}

void EntityManager::assertSafeToAccess(const Qel::Entity*, std::string_view path) const {
  auto found = mounts_.find(path);
  if (found == mounts_.end() || found->second->mountComplete()) return;
  VEK_TRACE(critical, "Access to {} before its mount has finished", path);
  QEL_ASSERT(false, "assertSafeToAccess: the mount has not finished");
}

void EntityManager::entityFactoryIs(std::string_view typeName, EntityFactory factory) {
  if (!factory) {
    if (auto found = factories_.find(typeName); found != factories_.end()) factories_.erase(found);
    return;
  }
  factories_.insert_or_assign(std::string(typeName), std::move(factory));
}

void EntityManager::mountHoldIs(std::string_view path, bool hold) {
  if (hold) {
    holds_.emplace(path);
  } else if (auto found = holds_.find(path); found != holds_.end()) {
    holds_.erase(found);
  }
}

void EntityManager::mountRelease(std::string_view path) {
  mountHoldIs(path, false);
  if (auto found = mounts_.find(path); found != mounts_.end()) doCompleteMount(*found->second);
}

void EntityManager::mountReleaseAll() {
  holdAll_ = false;
  holds_.clear();
  std::vector<Lumo::Ptr<QelVash::Mount>> waiting;
  for (auto& [path, mount] : mounts_) {
    if (!mount->mountComplete()) waiting.push_back(mount);
  }
  std::sort(waiting.begin(), waiting.end(),
            [](const auto& a, const auto& b) { return a->sequence() < b->sequence(); });
  for (auto& mount : waiting) doCompleteMount(*mount);
}

}  // namespace QelSharedMem

namespace QelVash {

void Mount::doUnmount(std::string_view path) {
  // Take the managers first: an unmount may drop the last pointer to one.
  std::vector<Lumo::Ptr<QelSharedMem::EntityManager>> all;
  for (auto& [name, manager] : QelSharedMem::managers()) all.push_back(manager);
  for (auto& manager : all) manager->doUnmount(path);
}
}  // namespace QelVash
