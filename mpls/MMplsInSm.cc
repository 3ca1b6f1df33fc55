#include "mpls/MMplsInSm.h"

namespace VekMMpls {

MMplsInSm::MMplsInSm(Lanx::AddressFamily af,
                     Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                     Lumo::Ptr<Vek::VekCommonSmData> vekcsd)
    : SharedEntityModuleSm(std::move(configStatusPair), std::move(vekcsd)), af_(af) {
  handleInitialized();
}

Lumo::String MMplsInSm::moduleName(Lanx::AddressFamily af) {
  return af == Lanx::AddressFamily::ipv4 ? "MMplsIn" : "MMplsIn6";
}

void MMplsInSm::handleInitialized() { doCreateModule(Lanx::addressFamilyName(af_), moduleName(af_), maxOutGate); }

}  // namespace VekMMpls
