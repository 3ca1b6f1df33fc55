#include "runtime/vek/DvModuleCounters.h"

#include <algorithm>

#include "runtime/lumo/Assert.h"

namespace VekModules {

Vek::CounterId DvModuleCounters::counterId(std::string_view name) const {
  const auto found = std::find(names_.begin(), names_.end(), name);
  return found == names_.end() ? Vek::CounterId() : ids_[found - names_.begin()];
}

void DvModuleCounters::counterIdIs(std::string_view name, Vek::CounterId id) {
  const auto found = std::find(names_.begin(), names_.end(), name);
  QEL_ASSERT(found != names_.end(), "no counter slot of that name");
  const std::size_t index = found - names_.begin();
  if (ids_[index] == id) return;
  ids_[index] = id;
  notify(kCounterId, &names_[index], &ids_[index]);
}

void DvModuleCounters::counterIdDelAll() {
  for (std::size_t index = 0; index < ids_.size(); ++index) {
    if (!ids_[index].isValid()) continue;
    ids_[index] = Vek::CounterId();
    notify(kCounterId, &names_[index], &ids_[index]);
  }
}

}  // namespace VekModules
