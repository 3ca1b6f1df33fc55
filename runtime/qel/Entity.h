#pragma once

#include <string_view>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"

namespace Qel {

using AttributeId = short;

// A typed counted object with named attributes; changes of its attributes are published
// to its reactors. Each entity class numbers its attributes with small AttributeIds.
class Entity : public Lumo::Node, public Lumo::Publisher {
 public:
  Entity() = default;
  ~Entity() override = default;
  virtual std::string_view typeName() const { return "Qel::Entity"; }

 protected:
  // For the attribute templates: one change of attribute `id` at `key`.
  void notify(AttributeId id, const void* key = nullptr, const void* value = nullptr) {
    publishChangeRecursive(id, key, value, false);
  }
  template <typename>
  friend class AttributeAccess;
};

}  // namespace Qel
