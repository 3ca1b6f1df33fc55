#include "mpls/MMplsOutSm.h"

#include <string>

namespace VekMMplsOut {

MMplsOutSm::MMplsOutSm(L3::VrfName vrfName,
                       Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                       Lumo::Ptr<Vek::VekCommonSmData> vekcsd)
    : SharedEntityModuleSm(std::move(configStatusPair), std::move(vekcsd)),
      vrfName_(std::move(vrfName)) {
  handleInitialized();
}

Lumo::String MMplsOutSm::moduleName(const L3::VrfName& vrfName) {
  return Lumo::String("MMplsOut_" + std::string(vrfName.view()));
}

void MMplsOutSm::handleInitialized() {
  doCreateModule(vrfName_.view(), moduleName(vrfName_), maxOutGate);
}

}  // namespace VekMMplsOut
