#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Qel {

// An attribute's name as a template argument: Qel::BacklogAttr<VlanId, "vlanBacklog">.
// The name appears in the texts of the exceptions that the mutators raise.
template <std::size_t N>
struct AttrName {
  constexpr AttrName(const char (&text)[N]) {  // NOLINT(google-explicit-constructor)
    std::copy_n(text, N, chars);
  }
  constexpr std::string_view view() const { return {chars, N - 1}; }
  char chars[N];
};

}  // namespace Qel
