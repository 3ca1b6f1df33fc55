#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Dir.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/intf/DeviceVrfIntfStatusDir.h"

namespace Interface {

// The kernel device status of every namespace that multicast follows, by namespace name.
// A change anywhere below reaches this dir's reactors too.
class VrfDeviceIntfStatusDir
    : public Lanx::StateEntity<"Interface::VrfDeviceIntfStatusDir", Qel::Dir> {
 public:
  explicit VrfDeviceIntfStatusDir(Lumo::String name) : name_(std::move(name)) {}

  const Lumo::String& name() const noexcept { return name_; }

  Lumo::Ptr<DeviceVrfIntfStatusDir> deviceVrfIntfStatusDir(const Lanx::NamespaceName& ns) const {
    return childAs<DeviceVrfIntfStatusDir>(ns.str());
  }
  bool deviceVrfIntfStatusDirHas(const Lanx::NamespaceName& ns) const {
    return childHas(ns.str());
  }
  // Finds or makes the directory of the namespace.
  Lumo::Ptr<DeviceVrfIntfStatusDir> deviceVrfIntfStatusDirIs(const Lanx::NamespaceName& ns) {
    if (auto present = deviceVrfIntfStatusDir(ns)) return present;
    auto made = Lumo::makePtr<DeviceVrfIntfStatusDir>(ns.str());
    childIs(ns.str(), made);
    return made;
  }
  void deviceVrfIntfStatusDirDel(const Lanx::NamespaceName& ns) { childDel(ns.str()); }

 private:
  Lumo::String name_;
};

}  // namespace Interface
