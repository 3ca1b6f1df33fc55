#pragma once

#include <string_view>

#include "runtime/state/StateEntity.h"

namespace Routing::Multicast::Evpn {

// The flood sets of optimised inter-subnet multicast; its members come with the flood-set
// state machine that reads them.
class OismFloodSet : public Lanx::StateEntity<"Routing::Multicast::Evpn::OismFloodSet"> {
 public:
  static std::string_view mountPath() { return "routing/multicast/evpn/oismFloodSet"; }
};

}  // namespace Routing::Multicast::Evpn
