#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/cordex/PathEntityMap.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/KrazMountInfo.h"
#include "runtime/sharedmem/Mount.h"
#include "runtime/sharedmem/MountGroup.h"
#include "runtime/sharedmem/MountInfo.h"
#include "runtime/sharedmem/MountRecord.h"

namespace QelSharedMem {

// The shared-memory side of central state: tables by path, reached through mounts. In
// this process the host is the writer: it puts tables in (entityIs, or a factory by type
// that makes an empty table when a path is first mounted) and decides when a mount
// finishes — at once by default, or held until it releases the path. Every finished mount
// is published as kMountComplete, keyed by a `const Lumo::String*` path.
class EntityManager : public Qel::Entity {
 public:
  static constexpr Qel::AttributeId kMountComplete = 1;
  using EntityFactory = std::function<Lumo::Ptr<Qel::Entity>()>;

  // The manager of that name; made on first use unless createIfMissing is false.
  static Lumo::Ptr<EntityManager> getEntityManager(std::string_view name,
                                                   bool createIfMissing = true);
  static void managersDelAllForTest();

  explicit EntityManager(std::string_view name);
  ~EntityManager() override;
  std::string_view typeName() const override { return "QelSharedMem::EntityManager"; }
  const Lumo::String& name() const noexcept { return name_; }

  Lumo::Ptr<MountGroup> getMountGroup();
  // Mounting a path that is mounted gives the mount that is there.
  Lumo::Ptr<QelVash::Mount> doMount(std::string_view path, std::string_view typeName,
                                    const QelVash::MountInfo& info);
  Lumo::Ptr<QelVash::Mount> doMount(std::string_view path, std::string_view typeName,
                                    const QelKraz::MountInfo& info);
  // Gives a mount back; a path that is not mounted is left alone.
  void doUnmount(std::string_view path);
  Lumo::Ptr<QelVash::Mount> mount(std::string_view path) const;
  // The table at `path`, mounted or not; null if there is none. Reading it before its
  // mount has finished is what assertSafeToAccess guards against.
  Lumo::Ptr<Qel::Entity> getEntity(std::string_view path) const { return tables_.entity(path); }
  // Ends the process if `path` has a mount that has not finished.
  void assertSafeToAccess(const Qel::Entity* entity, std::string_view path) const;
  template <typename T>
  void assertSafeToAccess(const Lumo::Ptr<T>& entity, std::string_view path) const {
    assertSafeToAccess(static_cast<const Qel::Entity*>(entity.get()), path);
  }

  // The writer's side.
  void entityIs(std::string_view path, Lumo::Ptr<Qel::Entity> entity) {
    tables_.entityIs(path, std::move(entity));
  }
  void entityDel(std::string_view path) { tables_.entityDel(path); }
  void entityFactoryIs(std::string_view typeName, EntityFactory factory);
  // Mounts of a held path stay unfinished until mountRelease.
  void mountHoldIs(std::string_view path, bool hold);
  void holdAllMountsIs(bool hold) noexcept { holdAll_ = hold; }
  // Lifts the hold of `path` and finishes its mount if it is waiting.
  void mountRelease(std::string_view path);
  // Lifts every hold and finishes the waiting mounts in the order they were asked for.
  void mountReleaseAll();
  const std::vector<MountRecord>& mountLogForTest() const noexcept { return mountLog_; }

 private:
  friend class QelVash::Mount;
  Lumo::Ptr<QelVash::Mount> doMount(std::string_view path, std::string_view typeName,
                                    MountKind kind, unsigned mode);
  void handleMountStart(QelVash::Mount& mount);
  void doCompleteMount(QelVash::Mount& mount);

  Lumo::String name_;
  Cordex::PathEntityMap tables_;
  std::map<std::string, EntityFactory, std::less<>> factories_;
  std::map<std::string, Lumo::Ptr<QelVash::Mount>, std::less<>> mounts_;
  std::set<std::string, std::less<>> holds_;
  bool holdAll_ = false;
  std::uint64_t mountSequence_ = 0;
  std::vector<MountRecord> mountLog_;
};

}  // namespace QelSharedMem
