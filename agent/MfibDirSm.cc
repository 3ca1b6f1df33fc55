#include "agent/MfibDirSm.h"

#include <vector>

#include "runtime/sharedmem/MountInfo.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

using Routing::Multicast::Fib::MfibDir;
using Routing::Multicast::Fib::MfibTableKey;
using Routing::Multicast::Fib::MfibVrfDir;

MfibDirSm::MfibDirSm(Lumo::Ptr<MfibDir const> mfibDir, Lumo::Ptr<MfibVrfDir> mfibVrfDir,
                     Lumo::Ptr<Cordex::EntityManager> entityManager)
    : mfibDir_(std::move(mfibDir)),
      mfibVrfDir_(std::move(mfibVrfDir)),
      entityManager_(std::move(entityManager)),
      sharedMem_(QelSharedMem::EntityManager::getEntityManager(Lanx::sharedMemManagerName)) {
  mfibDirReactor_.publisherIs(const_cast<MfibDir*>(mfibDir_.get()));
  mfibDirReactor_.isRegisteredIs(true);
  mountReactor_.publisherIs(sharedMem_.get());
  mountReactor_.isRegisteredIs(true);
  handleInitialized();
}

std::string MfibDirSm::tablePath(const MfibTableKey& table) const {
  return MfibDir::tablePath(mfibVrfDir_->af(), table);
}

void MfibDirSm::handleInitialized() {
  std::vector<MfibTableKey> tables;
  for (const auto& listed : mfibDir_->tables()) tables.push_back(listed.key);
  for (const auto& mounted : mount_) {
    if (!mfibDir_->tableHas(mounted.key)) tables.push_back(mounted.key);
  }
  for (const MfibTableKey& table : tables) handleTable(table);
}

void MfibDirSm::handleTable(const MfibTableKey& table) {
  const Lumo::Ptr<QelVash::Mount>* mount = mount_.find(table);
  if (!mfibDir_->tableHas(table)) {
    if (mount) doRemoveTable(table);
    return;
  }
  if (!mount) {
    const std::string path = tablePath(table);
    auto made = sharedMem_->doMount(path, MfibDir::tableTypeName, QelVash::MountInfo());
    mount_.set(table, made);
    tableByPath_.set(Lumo::String(path), table);
    mount = mount_.find(table);
  }
  if ((*mount)->mountComplete()) doAddTable(table);
}

void MfibDirSm::handleMountComplete(const Lumo::String& path) {
  const MfibTableKey* table = tableByPath_.find(path);
  if (table) doAddTable(MfibTableKey(*table));
}

void MfibDirSm::doAddTable(const MfibTableKey& table) {
  const std::string path = tablePath(table);
  auto status = Lumo::ptrCast<Vash::Multicast::Fib::Status>(sharedMem_->getEntity(path));
  if (!status || status->app() != table.app) {
    VEK_TRACE(warn, "No route table of {} at {}", table.app, path);
    return;
  }
  mfibVrfDir_->vrfAdapterIs(table.vrf)->mfibVashIs(table.app, status);
}

void MfibDirSm::doRemoveTable(const MfibTableKey& table) {
  const std::string path = tablePath(table);
  if (auto adapter = mfibVrfDir_->vrfAdapter(table.vrf)) {
    adapter->mfibVashDel(table.app);
    if (adapter->mfibVashCount() == 0) mfibVrfDir_->vrfAdapterDel(table.vrf);
  }
  tableByPath_.erase(Lumo::String(path));
  mount_.erase(MfibTableKey(table));
  sharedMem_->doUnmount(path);
}

}  // namespace VekL3Mcast
