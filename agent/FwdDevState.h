#pragma once

#include <string_view>

#include "pipeline/McastIntf.h"
#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingCollectionAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VrfName.h"

namespace VekL3Mcast {

// What stands of the forwarding devices: one port path per device, and the device that
// serves each family's routed packets now. Two families may share one device.
class FwdDevState : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kFwdIntf = 1, kFwdDeviceByAf };
  using FwdIntfs = Qel::HashMap2018<Lanx::IntfId, Lumo::Ptr<McastIntf>>;

  std::string_view typeName() const override { return "VekL3Mcast::FwdDevState"; }

  const FwdIntfs& fwdIntfs() const noexcept { return fwdIntf_.members(); }
  Lumo::Ptr<McastIntf> fwdIntf(Lanx::IntfId intf) const { return fwdIntf_.get(intf); }
  Lumo::Ptr<McastIntf> fwdIntfIs(const L3::VrfName& vrf, Lanx::IntfId intf, McastIntfType type) {
    return fwdIntf_.is(*this, intf, vrf, intf, type);
  }
  void fwdIntfDel(Lanx::IntfId intf) { fwdIntf_.del(*this, intf); }

  // The device of a family, or null.
  const Lumo::String* fwdDeviceByAf(Lanx::AddressFamily af) const {
    return fwdDeviceByAf_.find(af);
  }
  void fwdDeviceByAfIs(Lanx::AddressFamily af, const Lumo::String& device) {
    fwdDeviceByAf_.is(*this, af, device);
  }
  void fwdDeviceByAfDel(Lanx::AddressFamily af) { fwdDeviceByAf_.del(*this, af); }

 private:
  Qel::InstantiatingCollectionAttr<Lanx::IntfId, McastIntf, kFwdIntf, "fwdIntf", L3::VrfName,
                                   Lanx::IntfId, McastIntfType>
      fwdIntf_;
  Qel::HashCollectionAttr<Lanx::AddressFamily, Lumo::String, kFwdDeviceByAf> fwdDeviceByAf_;
};

}  // namespace VekL3Mcast
