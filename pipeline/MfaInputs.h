#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/state/ByFamily.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/bridging/Config.h"
#include "runtime/state/bridging/HwCapabilities.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "runtime/state/intf/IntfStatusDir.h"
#include "runtime/state/intf/IntfVlanIdTable.h"
#include "runtime/state/intf/VrfStatusLocalDir.h"
#include "runtime/state/irb/IgmpProxyStatus.h"
#include "runtime/state/irb/McastIrbStatus.h"
#include "runtime/state/kernelmfib/ConfigColl.h"
#include "runtime/state/kernelmfib/StatusColl.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"
#include "runtime/state/multicast/HwRouteStatus.h"
#include "runtime/state/multicast/IpTunnelDecapConfig.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/multicast/MfibDir.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vrf/NameToIdMapWrapper.h"
#include "runtime/state/vrf/VrfIdMapStatus.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"

namespace VekL3Mcast {

// What the agent reads of central state and shared memory, as it mounted it. The agent
// fills it while it comes up, in its fixed order, and hands it to every part that reads an
// input; those parts keep a reference, as the agent outlives them, and never write it. An
// input the agent did not mount (the reduced agent mounts few) stays null.
struct MfaInputs {
  template <typename T>
  using Input = Lumo::Ptr<T const>;
  template <typename T>
  using FamilyInput = Lanx::ByFamily<Input<T>>;

  // Interfaces and VRFs.
  Input<Interface::IntfStatusDir> allIntfStatusDir;
  Input<Interface::IntfStatusDir> allIntfStatusLocalDir;
  Input<Ip::VrfStatusLocalDir> allVrfStatusLocal;
  Input<IntfVlanId::Table> intfVlanIdTable;
  Input<Vrf::VrfIdMap::NameToIdMapWrapper> vrfNameStatus;
  Input<Vrf::VrfIdMap::Status> hwVrfIdToNameStatus;
  Input<Vrf::VrfIdMap::Status> vrfIdToNameStatus;
  // The devices of the default VRF's namespace, while its namespace state stands.
  Input<KernelNetInfo::Root> defaultVrfKniRoot;

  // Multicast routing, per family.
  FamilyInput<Routing::Multicast::MulticastIntfsAppDir> multicastIntfsAppDir;
  FamilyInput<Routing::Multicast::Fib::MfibDir> mfibDir;
  FamilyInput<Routing::KernelMfib::ConfigColl> kernelMfibConfigColl;
  // The agent writes these: which VRFs it programs for the kernel side.
  Lanx::ByFamily<Lumo::Ptr<Routing::KernelMfib::StatusColl>> kernelMfibStatusColl;

  // Bridging, VXLAN and snooping.
  Input<Bridging::Config> bridgingConfig;
  Input<Bridging::HwCapabilities> hwCapabilities;
  Input<Vxlan::VtiStatusDir> vtiStatusDir;
  Input<Vxlan::RemoteVniToVlanStatus> remoteVniToVlanStaticStatus;
  Input<Vxlan::RemoteVniToVlanStatus> remoteVniToVlanIrbStatus;
  FamilyInput<Routing::Multicast::IpTunnelForwardingStatus> tunnelFwdingStatus;
  FamilyInput<Routing::Multicast::IpTunnelDecapConfig> tunDecapConfig;
  FamilyInput<Irb::Multicast::McastIrbStatus> mcastIrbStatus;
  Input<Irb::Multicast::IgmpProxyStatus> igmpProxyStatus;
  Input<Irb::Multicast::IgmpProxyStatus> mldProxyStatus;
  FamilyInput<Bridging::IgmpSnooping::Status> gmpVlanGroupMembershipStatus;
  Input<Routing::Hardware::RouteStatus> routingHwRouteStatus;
  Input<Routing::Multicast::Evpn::OismFloodSet> oismFloodSet;

  // MVPN.
  Input<Routing::Multicast::MvpnIntfStatus> mvpnIntfStatus;
};

}  // namespace VekL3Mcast
