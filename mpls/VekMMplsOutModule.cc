#include "mpls/VekMMplsOutModule.h"

namespace VekMMplsOut {

MMplsOut::MMplsOut(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                   Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair)
    : SharedEntityModule(std::move(name), Vek::VekModule::mMplsOut, maxInGate, maxOutGate,
                         std::move(configStatusPair)) {}

}  // namespace VekMMplsOut
