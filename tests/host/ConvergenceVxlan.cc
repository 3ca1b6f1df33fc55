// The routed VXLAN world of a convergence case: the VTI "Vxlan1" with its values, VLAN and
// VRF VNIs and SBD VLANs, the remote VNI tables and the tunnel mappings of the SBD VLANs.
// Together with the VRF ids, starts and routes of the rest of the case, the routed pipeline
// comes before and after the FIBs, goes with the last SBD VLAN and comes back.

#include "tests/host/ConvergenceCase.h"

namespace VekHost {

namespace {

const std::string vti = "Vxlan1";

// Each tenant's SBD VLAN, and the one it may hold before or for a while; no two VRFs ever
// share one, as the VTI's configuration would not let them.
struct Tenant {
  std::string vrf;
  int sbd;
  int otherSbd;
  std::uint32_t vni;
};
const Tenant tenants[] = {{"red", 3001, 3003, 50001}, {"blue", 3002, 3004, 50002}};
const int sbdVlans[] = {3001, 3002, 3003, 3004};

StateChange vtiChange(const VtiChange& change) {
  StateChange state;
  state.vxlan.vtis[vti] = change;
  return state;
}

template <typename T>
std::string valueText(const T& value) {
  if constexpr (std::is_same_v<T, std::string>) {
    return value;
  } else {
    return std::to_string(value);
  }
}

// A tunnel mapping of an SBD VLAN: one source per overlay group, as two routes of one group
// share the encapsulation module's entry (the last one sent wins).
TunnelMappingChange mapping(Af af, unsigned overlay, unsigned underlay) {
  if (af == Af::ipv6) {
    return {{"*", "ff0e::" + std::to_string(overlay + 1)},
            {"*", "ff0e::1" + std::to_string(underlay)}};
  }
  return {{overlay == 0 ? "*" : "10.1.1.1", "239.1.1." + std::to_string(overlay + 1)},
          {"10.0.0.1", "239.0.0." + std::to_string(underlay + 1)}};
}

StateChange mappingChange(Af af, int vlan, const TunnelMappingChange& one) {
  StateChange state;
  state.vxlan.tunnelMappings[af][vlan] = {one};
  return state;
}

}  // namespace

// One value of the VTI: its final value, maybe after another; or, when it ends unset, set
// for a while and cleared.
template <typename T>
void Case::drawVtiValue(std::optional<T> VtiChange::*field, const std::string& name, T value,
                        T earlier, bool clearable) {
  VtiChange change;
  Chain chain;
  if (chance(70)) {
    if (chance(30)) {
      change.*field = earlier;
      chain.push_back(setEvent(vtiChange(change), "vti " + name + " " + valueText(earlier)));
    }
    change.*field = value;
    (finalState.vxlan.vtis[vti].*field) = value;
    chain.push_back(setEvent(vtiChange(change), "vti " + name + " " + valueText(value)));
  } else if (clearable && chance(30)) {
    change.*field = earlier;
    chain.push_back(setEvent(vtiChange(change), "vti " + name + " " + valueText(earlier)));
    chain.push_back(removeEvent(vtiChange(change), "vti " + name));
  }
  if (!chain.empty()) chains.push_back(chain);
}

// One entry of a VTI map: its final value (maybe after another, maybe gone for a while and
// back), or an entry that comes and goes.
template <typename K, typename V>
void Case::drawVtiEntry(std::map<K, V> VtiChange::*map, const std::string& name, const K& key,
                        V value, V earlier) {
  const std::string text = "vti " + name + " " + valueText(key) + " ";
  VtiChange change;
  Chain chain;
  if (chance(65)) {
    if (chance(25)) {
      (change.*map)[key] = earlier;
      chain.push_back(setEvent(vtiChange(change), text + valueText(earlier)));
    }
    (change.*map)[key] = value;
    (finalState.vxlan.vtis[vti].*map)[key] = value;
    chain.push_back(setEvent(vtiChange(change), text + valueText(value)));
    if (chance(20)) {
      chain.push_back(removeEvent(vtiChange(change), text + valueText(value)));
      chain.push_back(setEvent(vtiChange(change), text + valueText(value) + " again"));
    }
  } else if (chance(35)) {
    (change.*map)[key] = earlier;
    chain.push_back(setEvent(vtiChange(change), text + valueText(earlier)));
    chain.push_back(removeEvent(vtiChange(change), text + valueText(earlier)));
  }
  if (!chain.empty()) chains.push_back(chain);
}

void Case::drawRoutedVxlan() {
  // Routes may leave by the SBD VLANs, and the VLAN interfaces may be multicast interfaces
  // of a VRF (one with an L2 VNI is not routed into the VRF's VNI).
  routed_ = true;
  for (const char* vlan : {"Vlan3001", "Vlan3002", "Vlan10"}) intfNames_.push_back(vlan);

  drawVtiValue<std::string>(&VtiChange::srcIpIntf, "srcIpIntf", "Loopback1", "Loopback2", true);
  // A UDP port once set is never cleared here: port 0 does not reach the decapsulation
  // module, which keeps the last port it had.
  drawVtiValue<std::uint32_t>(&VtiChange::udpPort, "udpPort", 4789, 4790, false);
  drawVtiValue<std::uint32_t>(&VtiChange::srcPort, "srcPort", 49152, 50000, true);
  drawVtiValue<std::uint32_t>(&VtiChange::ttl, "ttl", 64, 8, true);
  drawVtiValue<std::string>(&VtiChange::vtep, "vtep", "10.0.0.1", "10.0.0.2", true);
  drawVtiValue<std::string>(&VtiChange::vtep6, "vtep6", "2001:db8::1", "2001:db8::2", true);
  drawVtiEntry<int, std::uint32_t>(&VtiChange::vlanToVni, "vlanToVni", 10, 10010, 10011);
  drawVtiEntry<int, std::uint32_t>(&VtiChange::vlanToVni, "vlanToVni", 20, 10020, 60002);
  for (const Tenant& tenant : tenants) {
    drawVtiEntry<std::string, std::uint32_t>(&VtiChange::vrfToVni, "vrfToVni", tenant.vrf,
                                             tenant.vni, tenant.vni + 10);
    drawVtiEntry<std::string, int>(&VtiChange::vrfToSbdVlan, "vrfToSbdVlan", tenant.vrf, tenant.sbd,
                                   tenant.otherSbd);
  }
  // The VTI goes whole for a while and comes back with its final values.
  if (finalState.vxlan.vtis.count(vti) && chance(20)) {
    VtiChange whole;
    whole.whole = true;
    chains.push_back({removeEvent(vtiChange(whole), "vti whole"),
                      setEvent(vtiChange(finalState.vxlan.vtis[vti]), "vti back")});
  }
  drawRemoteVnis();
  drawTunnelMappings(Af::ipv4);
  drawTunnelMappings(Af::ipv6);
  if (chance(50)) drawBridgedVxlan();
}

// Remote VNIs of both tables, some also local (as a VLAN's or a VRF's VNI), mapped to SBD
// VLANs and to a VNI VLAN.
void Case::drawRemoteVnis() {
  const std::uint32_t vnis[] = {60001, 60002, 10010, 50001};
  const std::vector<int> vlans = {3001, 3002, 3003, 10};
  for (const std::string table : {"static", "irb"}) {
    for (std::uint32_t vni : vnis) {
      const std::string text = "remote " + table + " " + std::to_string(vni) + " ";
      StateChange change;
      Chain chain;
      if (chance(30)) {
        if (chance(20)) {
          change.vxlan.remoteVnis[table][vni] = pick(vlans);
          chain.push_back(
              setEvent(change, text + std::to_string(change.vxlan.remoteVnis[table][vni])));
        }
        const int vlan = pick(vlans);
        change.vxlan.remoteVnis[table][vni] = vlan;
        finalState.vxlan.remoteVnis[table][vni] = vlan;
        chain.push_back(setEvent(change, text + std::to_string(vlan)));
      } else if (chance(15)) {
        change.vxlan.remoteVnis[table][vni] = pick(vlans);
        chain.push_back(
            setEvent(change, text + std::to_string(change.vxlan.remoteVnis[table][vni])));
        chain.push_back(removeEvent(change, text));
      }
      if (!chain.empty()) chains.push_back(chain);
    }
  }
}

// Overlay groups of the SBD VLANs that ride underlay groups: a mapping may carry another
// underlay group first, one may come and go, and a VLAN without final mappings may have its
// whole status come and go.
void Case::drawTunnelMappings(Af af) {
  const std::string family(afName(af));
  for (int vlan : sbdVlans) {
    bool anyFinal = false;
    for (unsigned overlay = 0; overlay < 2; ++overlay) {
      const std::string text =
          "mapping " + family + " " + std::to_string(vlan) + " " + std::to_string(overlay) + " ";
      const TunnelMappingChange final = mapping(af, overlay, rng_() % 3);
      const TunnelMappingChange earlier = mapping(af, overlay, 3 + rng_() % 3);
      Chain chain;
      if (chance(35)) {
        anyFinal = true;
        if (chance(20)) {
          chain.push_back(setEvent(mappingChange(af, vlan, earlier), text + "earlier"));
        }
        chain.push_back(setEvent(mappingChange(af, vlan, final), text + final.underlay.group));
        finalState.vxlan.tunnelMappings[af][vlan].push_back(final);
      } else if (chance(15)) {
        chain.push_back(setEvent(mappingChange(af, vlan, earlier), text + "stray"));
        chain.push_back(removeEvent(mappingChange(af, vlan, earlier), text + "stray"));
      }
      if (!chain.empty()) chains.push_back(chain);
    }
    if (!anyFinal && chance(15)) {
      StateChange whole;
      whole.vxlan.tunnelMappings[af][vlan] = {};
      chains.push_back({setEvent(mappingChange(af, vlan, mapping(af, 0, 4)),
                                 "mapping " + family + " " + std::to_string(vlan) + " for a while"),
                        removeEvent(whole, "vlan status " + family + " " + std::to_string(vlan))});
    }
  }
}

// The bridged side, which the routed encapsulation modules meet at the L2 module: the
// "fabric" device (up, maybe down for a while, or down at the end), proxy VLANs, decap
// routes, a VLAN's SBD VLAN and overlay groups of a VNI VLAN.
void Case::drawBridgedVxlan() {
  const bool up = chance(70);
  auto fabric = [](bool upNow) {
    StateChange state;
    state.kernel["default"]["fabric"] = {3, upNow, ""};
    return state;
  };
  finalState.kernel["default"]["fabric"] = {3, up, ""};
  Chain device;
  if (chance(30)) device.push_back(setEvent(fabric(!up), up ? "fabric down" : "fabric up"));
  device.push_back(setEvent(fabric(up), up ? "fabric up" : "fabric down"));
  if (chance(30)) {
    device.push_back(setEvent(fabric(!up), up ? "fabric down" : "fabric up"));
    device.push_back(setEvent(fabric(up), up ? "fabric up again" : "fabric down again"));
  }
  chains.push_back(device);

  // With the fabric up at the end a proxy VLAN stands at the end: whether the pipeline
  // stands for tunnel VLANs alone depends, by design, on what was there when the fabric
  // came up, and a proxy VLAN's removal takes it down whatever tunnel VLANs remain.
  StateChange proxy;
  proxy.vxlan.proxyVlans["igmp"] = {10};
  finalOrStray(proxy, "proxy igmp 10", up);
  StateChange proxy6;
  proxy6.vxlan.proxyVlans["mld"] = {20};
  finalOrStray(proxy6, "proxy mld 20", false);
  StateChange decap;
  decap.vxlan.decapRoutes[Af::ipv4] = {{"10.0.0.9", "239.0.0.1"}};
  finalOrStray(decap, "decap route", false);
  StateChange irb;
  irb.vxlan.mcastIrb[Af::ipv4][10] = 3001;
  finalOrStray(irb, "irb 10 3001", false);
  for (Af af : {Af::ipv4, Af::ipv6}) {
    finalOrStray(mappingChange(af, 10, mapping(af, 0, rng_() % 3)),
                 "mapping " + std::string(afName(af)) + " 10", false);
  }
}

// A piece of state that stands at the end (always when `final`), or comes and goes.
void Case::finalOrStray(const StateChange& change, const std::string& text, bool final) {
  if (final || chance(50)) {
    finalPieces.push_back(change);
    chains.push_back({setEvent(change, text)});
  } else if (chance(40)) {
    chains.push_back({setEvent(change, text), removeEvent(change, text)});
  }
}

}  // namespace VekHost
