#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "runtime/qel/BoundedString.h"
#include "runtime/state/HashMix.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/ToStringFormatter.h"

namespace L3 {

// The name of a VRF, at most 100 bytes.
class VrfName : public Qel::BoundedString<VrfName, 100> {
 public:
  static constexpr std::string_view tooLongText = "Qel::String::bytes > maxLength() not allowed";
  static constexpr std::string_view defaultVrfText = "default";
  using BoundedString::BoundedString;

  static const VrfName& defaultVrf();
  bool isDefault() const noexcept { return view() == defaultVrfText; }
  // The network namespace of the VRF: "default" for the default VRF, "ns-<name>" for any other.
  Lanx::NamespaceName nsName() const;
  // The VRF whose namespace that is; none for a namespace no VRF has, or whose VRF name
  // would be longer than a VRF name may be.
  static std::optional<VrfName> fromNsName(std::string_view ns);
};

}  // namespace L3

template <>
struct std::hash<L3::VrfName> : Lanx::MemberHash<L3::VrfName> {};
template <>
struct fmt::formatter<L3::VrfName> : Lanx::ToStringFormatter<L3::VrfName> {};
