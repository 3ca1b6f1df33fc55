#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"

namespace Cordex {

// Entities by path, as the writers of central state left them.
class PathEntityMap {
 public:
  // Null for a path that holds nothing.
  Lumo::Ptr<Qel::Entity> entity(std::string_view path) const {
    const auto found = entities_.find(path);
    return found == entities_.end() ? nullptr : found->second;
  }
  bool entityHas(std::string_view path) const { return entities_.contains(path); }
  // A null entity empties the path.
  void entityIs(std::string_view path, Lumo::Ptr<Qel::Entity> entity) {
    if (!entity) return entityDel(path);
    entities_.insert_or_assign(std::string(path), std::move(entity));
  }
  void entityDel(std::string_view path) {
    if (auto found = entities_.find(path); found != entities_.end()) entities_.erase(found);
  }
  std::size_t entities() const noexcept { return entities_.size(); }

 private:
  std::map<std::string, Lumo::Ptr<Qel::Entity>, std::less<>> entities_;
};

}  // namespace Cordex
