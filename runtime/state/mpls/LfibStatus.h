#pragma once

#include <string_view>

#include "runtime/state/StateEntity.h"

namespace Mpls {

// A label forwarding table ("mpls/decapLfib", "mpls/transitLfib"); its members come with
// the MPLS modules that read it.
class LfibStatus : public Lanx::StateEntity<"Mpls::LfibStatus"> {
 public:
  static constexpr std::string_view decapPath = "mpls/decapLfib";
  static constexpr std::string_view transitPath = "mpls/transitLfib";
};

}  // namespace Mpls
