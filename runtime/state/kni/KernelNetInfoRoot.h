#pragma once

#include <string>

#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/kni/KernelInterface.h"

namespace KernelNetInfo {

// The kernel devices of one network namespace, by device name: the table at
// "kni/ns/<namespace>/status", mounted as "KernelNetInfo::Status".
class Root : public Lanx::StateEntity<"KernelNetInfo::Root"> {
 public:
  enum : Qel::AttributeId { kInterfaceByDeviceName = 1 };
  using Interfaces = Qel::HashMap2018<Lumo::String, Interface>;

  static constexpr std::string_view mountTypeName = "KernelNetInfo::Status";
  static std::string mountPath(const Lanx::NamespaceName& ns) {
    return "kni/ns/" + std::string(ns.view()) + "/status";
  }

  // The device of that name; the empty Interface if there is none.
  Interface interfaceByDeviceName(const Lumo::String& name) const {
    return interfaceByDeviceName_.get(name);
  }
  const Interfaces& interfaces() const noexcept { return interfaceByDeviceName_.members(); }

  void interfaceByDeviceNameIs(const Lumo::String& name, Interface device) {
    interfaceByDeviceName_.is(*this, name, device);
  }
  void interfaceByDeviceNameDel(const Lumo::String& name) {
    interfaceByDeviceName_.del(*this, name);
  }

 private:
  Qel::HashCollectionAttr<Lumo::String, Interface, kInterfaceByDeviceName> interfaceByDeviceName_;
};

}  // namespace KernelNetInfo
