#pragma once

#include <string_view>

namespace Qel {

// The runtime's failures of bad values; each raises Lumo::Exception with the text given.
[[noreturn]] void throwRangeException(std::string_view message);
[[noreturn]] void throwMutatorArgNullPointerException(std::string_view attribute);
[[noreturn]] void throwBadOptionalAccess();

namespace Impl {
enum class BacklogMethod { backlogDel, backlogDelAll };
[[noreturn]] void throwMutatorReinstantiating(std::string_view type, std::string_view attribute);
[[noreturn]] void throwBacklogProcessingException(std::string_view type, std::string_view attribute,
                                                  BacklogMethod method);
[[noreturn]] void throwBadOptionalAccess();
}  // namespace Impl

}  // namespace Qel
