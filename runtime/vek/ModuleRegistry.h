#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Dir.h"
#include "runtime/qel/Entity.h"

namespace VekModules {

// Where the daemon's side of a module and its proxy meet when the module keeps its tables
// in a shared entity: a process-wide directory with one entity per module instance, by
// instance name. Whichever side comes first makes the entity; the other finds it.
class ModuleRegistry {
 public:
  static constexpr std::string_view singletonName = "VekModules";

  static bool exists() { return Qel::Entity::singletonExists(singletonName); }
  // The directory, made if there is none.
  static Lumo::Ptr<Qel::Dir> registryIs() { return Qel::Entity::singletonIs<Qel::Dir>(singletonName); }

  // The entity of a module instance, null if none stands or if the one that stands is of
  // another type.
  template <typename T>
  static Lumo::Ptr<T> entity(std::string_view moduleName) {
    if (!exists()) return nullptr;
    return registryIs()->childAs<T>(Lumo::String(moduleName));
  }
  // The entity of a module instance, made if the name has none. Null if the name holds an
  // entity of another type, which is left as it is.
  template <typename T>
  static Lumo::Ptr<T> entityIs(std::string_view moduleName) {
    const Lumo::Ptr<Qel::Dir> registry = registryIs();
    const Lumo::String name(moduleName);
    if (registry->childHas(name)) return registry->childAs<T>(name);
    auto made = Lumo::makePtr<T>();
    registry->childIs(name, made);
    return made;
  }
};

}  // namespace VekModules
