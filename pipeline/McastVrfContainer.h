#pragma once

#include <string_view>

#include "runtime/qel/Entity.h"
#include "runtime/state/VrfName.h"

namespace VekL3Mcast {

class McastModuleManager;

// The modules of one VRF and how they are wired.
class McastVrfContainer : public Qel::Entity {
 public:
  McastVrfContainer(McastModuleManager* manager, L3::VrfName vrfName);
  ~McastVrfContainer() override;
  std::string_view typeName() const override { return "VekL3Mcast::McastVrfContainer"; }

  McastModuleManager* manager() const noexcept { return manager_; }
  const L3::VrfName& vrfName() const noexcept { return vrfName_; }

  // A datagram socket in the VRF's network namespace, for interface flags; -1 until open.
  int ioctlFd() const noexcept { return ioctlFd_; }
  void ioctlFdIs(int fd) noexcept { ioctlFd_ = fd; }

 private:
  McastModuleManager* manager_;
  L3::VrfName vrfName_;
  int ioctlFd_ = -1;
};

}  // namespace VekL3Mcast
