#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/PathAttrs.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The receive path of the PIM register packets of one VRF and family: the kernel's
// register device, a receive module, and a metadata module that stamps "Register0" as the
// source interface.
class PimRegRx : public WithMetaDataModule<WithRxModule<WithBessPort<Qel::Entity>>> {
 public:

  PimRegRx(L3::VrfName vrfName, Lanx::AddressFamily af)
      : vrfName_(std::move(vrfName)), af_(af) {}
  std::string_view typeName() const override { return "VekL3Mcast::PimRegRx"; }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }
  // "pimregIpv4_<vrf>" or "pimregIpv6_<vrf>".
  Lumo::String portName() const;

  void createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void createMetaDataModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

 private:
  std::string_view afWord() const noexcept;

  L3::VrfName vrfName_;
  Lanx::AddressFamily af_;
};

}  // namespace VekL3Mcast
