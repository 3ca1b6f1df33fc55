#include "runtime/lumo/Exceptions.h"

#include <fmt/format.h>

#include "runtime/lumo/Exception.h"

namespace Qel {

void throwRangeException(std::string_view message) { throw Lumo::Exception(message); }

void throwMutatorArgNullPointerException(std::string_view attribute) {
  throw Lumo::Exception(fmt::format("null pointer argument for attribute {}", attribute));
}

void throwBadOptionalAccess() { Impl::throwBadOptionalAccess(); }

namespace Impl {

void throwMutatorReinstantiating(std::string_view type, std::string_view attribute) {
  throw Lumo::Exception(
      fmt::format("{}::{}: instantiating attribute called again with other arguments", type,
                  attribute));
}

void throwBacklogProcessingException(std::string_view type, std::string_view attribute,
                                     BacklogMethod method) {
  throw Lumo::Exception(fmt::format("{}::{}: {} not allowed while the backlog is being processed",
                                    type, attribute,
                                    method == BacklogMethod::backlogDel ? "BacklogDel"
                                                                        : "BacklogDelAll"));
}

void throwBadOptionalAccess() { throw Lumo::Exception("bad optional access: the value is empty"); }

}  // namespace Impl
}  // namespace Qel
