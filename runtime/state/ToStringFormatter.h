#pragma once

#include <fmt/format.h>

#include <string_view>

namespace Lanx {

// fmt::formatter of a value type that knows its own toString(); width and alignment work as
// for any string.
template <class T>
struct ToStringFormatter : fmt::formatter<std::string_view> {
  auto format(const T& value, fmt::format_context& ctx) const {
    return fmt::formatter<std::string_view>::format(value.toString(), ctx);
  }
};

}  // namespace Lanx
