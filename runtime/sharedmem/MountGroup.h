#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/KrazMountInfo.h"
#include "runtime/sharedmem/Mount.h"
#include "runtime/sharedmem/MountInfo.h"

namespace QelSharedMem {

class EntityManager;

// Several mounts made together. The group publishes kComplete when the last of its
// mounts that was still running finishes; complete() says whether all have.
class MountGroup : public Qel::Entity {
 public:
  static constexpr Qel::AttributeId kComplete = 1;

  explicit MountGroup(Lumo::Ptr<EntityManager> manager);
  ~MountGroup() override;
  std::string_view typeName() const override { return "QelSharedMem::MountGroup"; }

  Lumo::Ptr<QelVash::Mount> doMount(std::string_view path, std::string_view typeName,
                                    const QelVash::MountInfo& info);
  Lumo::Ptr<QelVash::Mount> doMount(std::string_view path, std::string_view typeName,
                                    const QelKraz::MountInfo& info);
  bool complete() const noexcept { return pending_ == 0; }
  std::size_t mountsPending() const noexcept { return pending_; }
  std::size_t mounts() const noexcept { return mounts_.size(); }

 private:
  friend class QelVash::Mount;
  Lumo::Ptr<QelVash::Mount> mountAdd(Lumo::Ptr<QelVash::Mount> mount);
  void handleMountComplete();

  Lumo::Ptr<EntityManager> manager_;
  std::vector<Lumo::Ptr<QelVash::Mount>> mounts_;
  std::size_t pending_ = 0;
};

}  // namespace QelSharedMem
