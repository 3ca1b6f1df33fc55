#include "pipeline/McastVrfContainer.h"

#include <unistd.h>

namespace VekL3Mcast {

McastVrfContainer::McastVrfContainer(McastModuleManager* manager, L3::VrfName vrfName)
    : manager_(manager), vrfName_(std::move(vrfName)) {}

McastVrfContainer::~McastVrfContainer() {
  if (ioctlFd_ >= 0) ::close(ioctlFd_);
}

}  // namespace VekL3Mcast
