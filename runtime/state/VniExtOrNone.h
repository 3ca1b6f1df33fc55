#pragma once

#include <cstdint>
#include <functional>

#include "runtime/state/NumberOrNone.h"
#include "runtime/state/ToStringFormatter.h"

namespace Vxlan {

// A VXLAN network identifier, or none (0xffffffff). The "Ext" form is 32 bits wide, so a VNI of
// the 24-bit header field and the marker for none both fit.
class VniExtOrNone : public Lanx::NumberOrNone<VniExtOrNone, std::uint32_t, 0xffffffff> {
 public:
  using NumberOrNone::NumberOrNone;
};

}  // namespace Vxlan

template <>
struct std::hash<Vxlan::VniExtOrNone> : Lanx::MemberHash<Vxlan::VniExtOrNone> {};
template <>
struct fmt::formatter<Vxlan::VniExtOrNone> : Lanx::ToStringFormatter<Vxlan::VniExtOrNone> {};
