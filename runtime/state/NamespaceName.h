#pragma once

#include <functional>
#include <string_view>

#include "runtime/qel/BoundedString.h"
#include "runtime/state/HashMix.h"
#include "runtime/state/ToStringFormatter.h"

namespace Lanx {

// The name of a Linux network namespace, at most 150 bytes.
class NamespaceName : public Qel::BoundedString<NamespaceName, 150> {
 public:
  static constexpr std::string_view tooLongText = "Qel::String::bytes > 150 not allowed";
  using BoundedString::BoundedString;
};

}  // namespace Lanx

template <>
struct std::hash<Lanx::NamespaceName> : Lanx::MemberHash<Lanx::NamespaceName> {};
template <>
struct fmt::formatter<Lanx::NamespaceName> : Lanx::ToStringFormatter<Lanx::NamespaceName> {};
