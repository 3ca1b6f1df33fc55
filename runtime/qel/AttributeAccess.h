#pragma once

#include "runtime/qel/Entity.h"

namespace Qel {

// The attribute templates' way to the owner's notification. Only they call it; the
// owner keeps notify protected from everyone else.
template <typename Tag = void>
class AttributeAccess {
 public:
  static void notify(Entity& owner, AttributeId id, const void* key, const void* value) {
    owner.notify(id, key, value);
  }
};

}  // namespace Qel
