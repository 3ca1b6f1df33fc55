#include "runtime/state/multicast/MulticastIntfsAppRootSm.h"

#include <vector>

namespace Routing::Multicast {

MulticastIntfsAppRootSm::MulticastIntfsAppRootSm(L3::VrfName vrfName, Lanx::AddressFamily af,
                                                 Lumo::Ptr<MulticastIntfsAppDir const> appDir)
    : vrfName_(std::move(vrfName)), af_(af), appDir_(std::move(appDir)) {
  appDirReactor_.publisherIs(const_cast<MulticastIntfsAppDir*>(appDir_.get()));
  appDirReactor_.isRegisteredIs(true);
  vrfIntfsReactor_.isRegisteredIs(true);
  handleInitialized();
}

void MulticastIntfsAppRootSm::handleInitialized() { doFollowVrfEntry(); }

void MulticastIntfsAppRootSm::handleVrfEntry(const Lumo::String& vrfName) {
  if (vrfName == vrfName_.str()) doFollowVrfEntry();
}

void MulticastIntfsAppRootSm::handleMulticastIntf(const Lanx::IntfId& intf) {
  if (vrfIntfs_ && vrfIntfs_->multicastIntfHas(intf)) {
    multicastIntf_.is(*this, intf);
  } else {
    multicastIntf_.del(*this, intf);
  }
}

void MulticastIntfsAppRootSm::doFollowVrfEntry() {
  vrfIntfs_ = appDir_->vrf(vrfName_);
  vrfIntfsReactor_.publisherIs(const_cast<MulticastIntfs*>(vrfIntfs_.get()));
  std::vector<Lanx::IntfId> changed;
  for (const auto& member : multicastIntf_.members()) changed.push_back(member.key);
  if (vrfIntfs_) {
    for (const auto& member : vrfIntfs_->multicastIntfs()) changed.push_back(member.key);
  }
  for (Lanx::IntfId intf : changed) handleMulticastIntf(intf);
}

}  // namespace Routing::Multicast
