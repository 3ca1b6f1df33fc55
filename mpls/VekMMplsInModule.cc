#include "mpls/VekMMplsInModule.h"

namespace VekMMpls {

MMplsIn::MMplsIn(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                 Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair)
    : SharedEntityModule(std::move(name), Vek::VekModule::mMplsIn, maxInGate, maxOutGate,
                         std::move(configStatusPair)) {}

}  // namespace VekMMpls
