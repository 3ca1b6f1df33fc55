#pragma once

#include <string_view>

#include "runtime/qel/AttrName.h"
#include "runtime/qel/Entity.h"

namespace Lanx {

// An entity of central state whose type name is fixed by its class: the name a mount is
// asked for with, the name the writer's factories are registered under, and what
// typeName() says.
template <Qel::AttrName Name, class Base = Qel::Entity>
class StateEntity : public Base {
 public:
  static constexpr std::string_view kTypeName = Name.view();
  std::string_view typeName() const override { return kTypeName; }
};

}  // namespace Lanx
