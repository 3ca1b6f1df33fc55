#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "runtime/qel/Entity.h"
#include "runtime/vek/CounterId.h"

namespace VekModules {

// The counter slots of a module whose daemon side and proxy meet in a shared entity: the
// id of each named counter of the module, in the module's own order. The proxy fills the
// slots once it has the counters; the daemon's module reads them to know where to count.
// An empty slot holds the invalid id.
class DvModuleCounters : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kCounterId = 1 };

  // `names` must outlive the entity: the classes below pass arrays of their own.
  explicit DvModuleCounters(std::span<const std::string_view> names)
      : names_(names), ids_(names.size()) {}

  std::span<const std::string_view> counterNames() const noexcept { return names_; }
  // The id in the slot of that name; invalid for an empty slot or a name it has not.
  Vek::CounterId counterId(std::string_view name) const;
  // Fills the slot of that name; a name the module has not is a programming error.
  void counterIdIs(std::string_view name, Vek::CounterId id);
  // Empties every slot, as when the module's counters are freed.
  void counterIdDelAll();

 private:
  std::span<const std::string_view> names_;
  std::vector<Vek::CounterId> ids_;
};

}  // namespace VekModules
