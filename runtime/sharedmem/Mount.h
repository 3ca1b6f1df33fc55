#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/String.h"
#include "runtime/sharedmem/MountRecord.h"

namespace QelSharedMem {
class EntityManager;
class MountGroup;
}  // namespace QelSharedMem

namespace QelVash {

// The binding of one shared-memory path to its table. It is asked for, then finishes,
// at once or when the writer's side releases it; only a finished mount may be read.
class Mount : public Lumo::Node {
 public:
  Mount(QelSharedMem::EntityManager* manager, std::uint64_t sequence, Lumo::String path,
        Lumo::String typeName, QelSharedMem::MountKind kind, unsigned mode);

  const Lumo::String& path() const noexcept { return path_; }
  const Lumo::String& typeName() const noexcept { return typeName_; }
  QelSharedMem::MountKind kind() const noexcept { return kind_; }
  unsigned mode() const noexcept { return mode_; }
  std::uint64_t sequence() const noexcept { return sequence_; }
  bool mountComplete() const noexcept { return complete_; }

  // The mount's own start: finishes it unless its manager holds mounts of its path.
  // Starting again does nothing.
  void handleInitialized();
  // Gives back the mount of `path`, in whichever shared-memory manager holds it.
  static void doUnmount(std::string_view path);

 private:
  friend class QelSharedMem::EntityManager;
  friend class QelSharedMem::MountGroup;
  void handleComplete();

  QelSharedMem::EntityManager* manager_;
  std::uint64_t sequence_;
  Lumo::String path_;
  Lumo::String typeName_;
  QelSharedMem::MountKind kind_;
  unsigned mode_;
  bool started_ = false;
  bool complete_ = false;
  std::vector<QelSharedMem::MountGroup*> waitingGroups_;
};

}  // namespace QelVash
