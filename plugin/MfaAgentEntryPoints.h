#pragma once

#include <cstdint>

#include "runtime/cordex/EntityManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/state/vrf/VrfNameToIdCollection.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/ManagementSm.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

// The entry points that the hosting agent finds in libVekL3Mcast.so by name. They have C
// linkage so that their names are plain; the agent and the FIB module stay opaque to the
// host, which needs nothing of them but the pointer.

namespace VekL3Mcast {
class MfaAgent;
class MfibAf;
}  // namespace VekL3Mcast

// What the hosting agent hands to a new agent, in the order the agent takes them.
struct VekMfaAgentArgs {
  Lumo::Ptr<Cordex::EntityManager> entityManager;
  Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair;
  Lumo::Ptr<Vek::GrpcGlobalCmdConfig> globalCmdConfig;
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd;
  Lumo::Ptr<Vek::ManagementSm> managementSm;
  Lumo::Ptr<VrfNameToIdCollection> vrfNameToIdColl;
  bool oru = true;
};

extern "C" {

// Makes the agent and switches its notification on. The caller holds the one reference and
// gives it back with mfaAgentRelease. Null, with the reason traced, when the agent cannot
// stand (central state it needs is missing).
VekL3Mcast::MfaAgent* mfaAgentFactory(const VekMfaAgentArgs* args);
// Takes the agent down: every VRF is stopped and every module goes.
void mfaAgentRelease(VekL3Mcast::MfaAgent* agent);

// `vrfName` is NUL-terminated; `af` is the family byte (1 IPv4, 2 IPv6). Each gives false,
// with the reason traced, for a VRF name the agent refuses; the call is then not made.
bool startMfibSm(VekL3Mcast::MfaAgent* agent, const char* vrfName, std::uint8_t af);
bool stopMfibSm(VekL3Mcast::MfaAgent* agent, const char* vrfName, std::uint8_t af);

// The FIB module of a VRF and family, borrowed: no reference is taken. Null while the agent
// is not initialized, and for a VRF or family without one.
VekL3Mcast::MfibAf* getMfibModule(const VekL3Mcast::MfaAgent* agent, const char* vrfName,
                                  std::uint8_t af);

}  // extern "C"

using MfaAgentFactoryFn = decltype(&mfaAgentFactory);
using MfaAgentReleaseFn = decltype(&mfaAgentRelease);
using StartMfibSmFn = decltype(&startMfibSm);
using StopMfibSmFn = decltype(&stopMfibSm);
using GetMfibModuleFn = decltype(&getMfibModule);
