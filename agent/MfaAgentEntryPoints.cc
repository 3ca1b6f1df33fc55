#include "plugin/MfaAgentEntryPoints.h"

#include <exception>
#include <optional>

#include "agent/VekMfaAgent.h"
#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace {

using VekL3Mcast::MfaAgent;

std::optional<L3::VrfName> vrfNameOf(const char* name) {
  try {
    return L3::VrfName(name);
  } catch (const Lumo::Exception& error) {
    VEK_TRACE(err, "VRF name refused: {}", error.msg());
    return std::nullopt;
  }
}

}  // namespace

extern "C" {

MfaAgent* mfaAgentFactory(const VekMfaAgentArgs* args) {
  try {
    Lumo::Ptr<MfaAgent> agent = Lumo::makePtr<MfaAgent>(
        args->entityManager, args->configStatusPair, args->globalCmdConfig, args->vekcsd,
        args->managementSm, args->vrfNameToIdColl, args->oru);
    agent->hasNotificationActiveIs(true);
    return agent.release();
  } catch (const std::exception& error) {
    VEK_TRACE(critical, "The multicast agent cannot start: {}", error.what());
    return nullptr;
  }
}

void mfaAgentRelease(MfaAgent* agent) {
  if (agent) agent->deleteRef();
}

bool startMfibSm(MfaAgent* agent, const char* vrfName, std::uint8_t af) {
  const auto vrf = vrfNameOf(vrfName);
  if (vrf) agent->startMfibSm(*vrf, static_cast<Lanx::AddressFamily>(af));
  return vrf.has_value();
}

bool stopMfibSm(MfaAgent* agent, const char* vrfName, std::uint8_t af) {
  const auto vrf = vrfNameOf(vrfName);
  if (vrf) agent->stopMfibSm(*vrf, static_cast<Lanx::AddressFamily>(af));
  return vrf.has_value();
}

VekL3Mcast::MfibAf* getMfibModule(const MfaAgent* agent, const char* vrfName, std::uint8_t af) {
  const auto vrf = vrfNameOf(vrfName);
  return vrf ? agent->getMfibModule(*vrf, static_cast<Lanx::AddressFamily>(af)).get() : nullptr;
}

}  // extern "C"
