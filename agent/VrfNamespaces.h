#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/intf/IntfStatusDir.h"
#include "runtime/state/intf/IntfStatusManagerRoot.h"
#include "runtime/state/intf/VrfDeviceIntfStatusDir.h"

namespace VekL3Mcast {

class MfaAgent;

// The namespace state of the VRFs: per VRF namespace the mount of its kernel devices and the
// interface manager that follows them. A VRF gets it with its first start (or its first
// multicast interface); the default VRF keeps it for the life of the agent, as the fabric
// lives in its namespace.
class VrfNamespaces : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kIntfStatusManagerRoot = 1, kVrfDeviceIntfStatusDir };
  static constexpr std::string_view vrfDeviceIntfStatusDirName = "vdisd";

  explicit VrfNamespaces(MfaAgent* agent);
  std::string_view typeName() const override { return "VekL3Mcast::VrfNamespaces"; }

  // Safe to repeat: a VRF whose namespace state stands is left as it is.
  void createKniSm(const L3::VrfName& vrf);
  // Does nothing for a VRF without namespace state.
  void deleteKniSm(const L3::VrfName& vrf);

  const Lumo::Ptr<Interface::IntfStatusManagerRoot>& intfStatusManagerRoot() const noexcept {
    return intfStatusManagerRoot_.get();
  }
  Lumo::Ptr<Interface::IntfStatusManagerRoot> intfStatusManagerRootIs(
      const Lumo::Ptr<Interface::IntfStatusDir const>& all,
      const Lumo::Ptr<Interface::IntfStatusDir const>& local, bool filterByNetNs) {
    return intfStatusManagerRoot_.is(*this, all, local, filterByNetNs);
  }
  void intfStatusManagerRootDel() { intfStatusManagerRoot_.del(*this); }
  const Lumo::Ptr<Interface::VrfDeviceIntfStatusDir>& vrfDeviceIntfStatusDir() const noexcept {
    return vrfDeviceIntfStatusDir_.get();
  }
  Lumo::Ptr<Interface::VrfDeviceIntfStatusDir> vrfDeviceIntfStatusDirIs(const Lumo::String& name) {
    return vrfDeviceIntfStatusDir_.is(*this, name);
  }

 private:
  MfaAgent* agent_;
  Qel::InstantiatingAttr<Interface::IntfStatusManagerRoot, kIntfStatusManagerRoot,
                         "intfStatusManagerRoot", Lumo::Ptr<Interface::IntfStatusDir const>,
                         Lumo::Ptr<Interface::IntfStatusDir const>, bool>
      intfStatusManagerRoot_;
  Qel::InstantiatingAttr<Interface::VrfDeviceIntfStatusDir, kVrfDeviceIntfStatusDir,
                         "vrfDeviceIntfStatusDir", Lumo::String>
      vrfDeviceIntfStatusDir_;
};

}  // namespace VekL3Mcast
