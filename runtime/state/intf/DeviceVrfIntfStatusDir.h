#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Dir.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/intf/DeviceIntfStatusDir.h"

namespace Interface {

// The device directories of one namespace, by name ("KernelIntfs" holds the kernel's).
// A change in any of them reaches this dir's reactors too.
class DeviceVrfIntfStatusDir
    : public Lanx::StateEntity<"Interface::DeviceVrfIntfStatusDir", Qel::Dir> {
 public:
  static constexpr std::string_view kernelIntfs = "KernelIntfs";

  // `name`: the namespace the directory is filed under, so that a reader holding only the
  // directory knows whose devices it sees.
  explicit DeviceVrfIntfStatusDir(Lumo::String name = Lumo::String()) : name_(std::move(name)) {}

  const Lumo::String& name() const noexcept { return name_; }

  Lumo::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir(const Lumo::String& name) const {
    return childAs<DeviceIntfStatusDir>(name);
  }
  // Finds or makes the directory of that name.
  Lumo::Ptr<DeviceIntfStatusDir> deviceIntfStatusDirIs(const Lumo::String& name) {
    if (auto present = deviceIntfStatusDir(name)) return present;
    auto made = Lumo::makePtr<DeviceIntfStatusDir>();
    childIs(name, made);
    return made;
  }
  void deviceIntfStatusDirDel(const Lumo::String& name) { childDel(name); }
  // The kernel's devices of the namespace; null until the namespace has them.
  Lumo::Ptr<DeviceIntfStatusDir> kernelIntfStatusDir() const {
    static const Lumo::String kernelIntfsName(kernelIntfs);
    return deviceIntfStatusDir(kernelIntfsName);
  }

 private:
  Lumo::String name_;
};

}  // namespace Interface
