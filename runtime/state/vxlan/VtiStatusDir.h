#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/vxlan/VtiStatus.h"

namespace Vxlan {

// The status of the VXLAN tunnel interfaces ("interface/status/eth/vxlan"), by interface.
class VtiStatusDir : public Lanx::StateEntity<"Vxlan::VtiStatusDir"> {
 public:
  enum : Qel::AttributeId { kVtiStatus = 1 };
  using VtiStatuses = Qel::HashMap2018<Lanx::IntfId, Lumo::Ptr<VtiStatus>>;
  static constexpr std::string_view path = "interface/status/eth/vxlan";

  Lumo::Ptr<VtiStatus const> vtiStatus(Lanx::IntfId intf) const { return vtiStatus_.get(intf); }
  const VtiStatuses& vtiStatuses() const noexcept { return vtiStatus_.members(); }

  // Finds or makes the status of an interface.
  Lumo::Ptr<VtiStatus> vtiStatusIs(Lanx::IntfId intf) {
    if (auto present = vtiStatus_.get(intf)) return present;
    auto made = Lumo::makePtr<VtiStatus>(intf);
    vtiStatus_.is(*this, intf, made);
    return made;
  }
  void vtiStatusDel(Lanx::IntfId intf) { vtiStatus_.del(*this, intf); }

 private:
  Qel::HashCollectionAttr<Lanx::IntfId, Lumo::Ptr<VtiStatus>, kVtiStatus> vtiStatus_;
};

}  // namespace Vxlan
