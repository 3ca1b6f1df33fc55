#include "runtime/qel/Entity.h"

#include <map>
#include <string>

namespace Qel {

namespace {

using Singletons = std::map<std::string, Lumo::Ptr<Entity>, std::less<>>;

// Singletons live as long as the process; the registry is never destroyed, so no
// singleton outlives what it was built on at exit.
Singletons& singletons() {
  static auto* registry = new Singletons;
  return *registry;
}

}  // namespace

Entity* Entity::singletonFind(std::string_view name) {
  auto it = singletons().find(name);
  return it == singletons().end() ? nullptr : it->second.get();
}

void Entity::singletonAdd(std::string_view name, Lumo::Ptr<Entity> entity) {
  QEL_ASSERT(entity, "singleton factory gave null");
  singletons().emplace(std::string(name), std::move(entity));
}

void Entity::singletonDelAllForTest() { singletons().clear(); }

}  // namespace Qel
