#pragma once

#include <string_view>

#include "runtime/qel/Entity.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VrfName.h"

namespace Vek {

// What the shared data knows of a multicast interface of the plug-in's pipeline: the VRF
// it belongs to and its interface. The plug-in derives its interface objects from it, so
// that the agent-wide collection can hold them without knowing the pipeline.
class McastIntfBase : public Qel::Entity {
 public:
  McastIntfBase(L3::VrfName vrfName, Lanx::IntfId intfId)
      : vrfName_(std::move(vrfName)), intfId_(intfId) {}
  std::string_view typeName() const override { return "Vek::McastIntfBase"; }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::IntfId intfId() const noexcept { return intfId_; }

 private:
  L3::VrfName vrfName_;
  Lanx::IntfId intfId_;
};

}  // namespace Vek
