#pragma once

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/intf/DeviceIntfStatus.h"

namespace Interface {

// The kernel devices of one namespace by the interface they stand for.
class DeviceIntfStatusDir : public Lanx::StateEntity<"Interface::DeviceIntfStatusDir"> {
 public:
  enum : Qel::AttributeId { kDeviceIntfStatus = 1 };
  using Devices = Qel::HashMap2018<Lanx::IntfId, DeviceIntfStatus>;

  // The empty status for an interface without a device.
  DeviceIntfStatus deviceIntfStatus(Lanx::IntfId intf) const {
    return deviceIntfStatus_.get(intf);
  }
  bool deviceIntfStatusHas(Lanx::IntfId intf) const { return deviceIntfStatus_.has(intf); }
  const Devices& devices() const noexcept { return deviceIntfStatus_.members(); }

  void deviceIntfStatusIs(Lanx::IntfId intf, DeviceIntfStatus status) {
    deviceIntfStatus_.is(*this, intf, std::move(status));
  }
  void deviceIntfStatusDel(Lanx::IntfId intf) { deviceIntfStatus_.del(*this, intf); }

 private:
  Qel::HashCollectionAttr<Lanx::IntfId, DeviceIntfStatus, kDeviceIntfStatus> deviceIntfStatus_;
};

}  // namespace Interface
