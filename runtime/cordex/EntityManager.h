#pragma once

#include <cstddef>
#include <string_view>

#include "runtime/cordex/PathEntityMap.h"
#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"

namespace Cordex {

// The client of the central database: the entity at a path. In this process the host
// is the writer and puts the entities in with entityIs before the agent starts.
class EntityManager : public Lumo::Node {
 public:
  // Null for a path nobody wrote. What a component gets is read-only input.
  Lumo::Ptr<Qel::Entity> getEntity(std::string_view path) const { return store_.entity(path); }

  void entityIs(std::string_view path, Lumo::Ptr<Qel::Entity> entity) {
    store_.entityIs(path, std::move(entity));
  }
  void entityDel(std::string_view path) { store_.entityDel(path); }
  std::size_t entities() const noexcept { return store_.entities(); }

 private:
  PathEntityMap store_;
};

}  // namespace Cordex
