#include "tests/host/ConvergenceCase.h"

#include <algorithm>
#include <map>

namespace VekHost {

namespace {

const std::vector<std::string> vrfNames = {"default", "red", "blue"};
const std::vector<std::string> appNames = {"pim", "static", "igmp"};

std::string vrfAfText(const VrfAf& vrfAf) {
  return vrfAf.vrf + "/" + std::string(afName(vrfAf.af));
}

Event startEvent(const VrfAf& vrfAf) {
  return {Event::Kind::start, {}, vrfAf, "start " + vrfAfText(vrfAf)};
}
Event stopEvent(const VrfAf& vrfAf) {
  return {Event::Kind::stop, {}, vrfAf, "stop " + vrfAfText(vrfAf)};
}

}  // namespace

Event setEvent(StateChange change, std::string text) {
  return {Event::Kind::set, std::move(change), {}, "set " + std::move(text)};
}
Event removeEvent(StateChange change, std::string text) {
  return {Event::Kind::remove, std::move(change), {}, "remove " + std::move(text)};
}

Case::Case(unsigned seed)
    : rng_(seed), intfNames_{"Ethernet1", "Ethernet2", "Ethernet3", "Ethernet4"} {
  draw();
}

std::vector<Event> Case::order(unsigned seed) const {
  std::mt19937 rng(seed);
  std::vector<std::size_t> next(chains.size(), 0);
  std::vector<Event> events;
  for (;;) {
    std::vector<std::size_t> open;
    for (std::size_t c = 0; c < chains.size(); ++c) {
      if (next[c] < chains[c].size()) open.push_back(c);
    }
    if (open.empty()) break;
    const std::size_t c = open[rng() % open.size()];
    events.push_back(chains[c][next[c]++]);
    if (rng() % 4 == 0) events.push_back({Event::Kind::settle, {}, {}, "settle"});
  }
  return events;
}

Mroute Case::drawRoute(const VrfAf& vrfAf) {
  const bool v6 = vrfAf.af == Af::ipv6;
  const unsigned group = rng_() % 6;
  Mroute route;
  route.table = {vrfAf, pick(appNames)};
  route.key.group = v6 ? "ff0e::" + std::to_string(group + 1) : "239.1.1." + std::to_string(group);
  route.key.source = chance(30) ? "*" : v6 ? "2001:db8::1" : "10.0.0.1";
  route.iif = pick(intfNames_);
  for (const std::string& intf : intfNames_) {
    if (intf != route.iif && chance(40)) route.oifs.push_back(intf);
  }
  route.flags.fastdrop = chance(20);
  return route;
}

void Case::draw() {
  initial.vrfs = {{"default", 1}};
  initial.bridgeMac = "00:1c:73:aa:bb:cc";
  drawVrfId("red", 2, 12);
  drawVrfId("blue", 3, 13);
  if (chance(50)) drawRoutedVxlan();
  for (const std::string& vrf : vrfNames) {
    for (Af af : {Af::ipv4, Af::ipv6}) {
      const VrfAf vrfAf{vrf, af};
      if (chance(60)) {
        started.push_back(vrfAf);
        chains.push_back({startEvent(vrfAf)});
      }
      drawInterfaces(vrfAf);
      if (chance(30)) drawKernelLimits(vrfAf);
      for (unsigned n = rng_() % 5; n > 0; --n) drawFinalRoute(vrfAf);
      if (chance(25)) drawStrayRoute(vrfAf);
      if (chance(15)) drawStrayStart(vrfAf);
    }
  }
  if (chance(30)) chains.push_back({{Event::Kind::restart, {}, {}, "restart"}});
}

// A tenant VRF's id: known before the agent comes, or arriving later (after another id
// first); it may change and change back, or go and come back.
void Case::drawVrfId(const std::string& vrf, std::uint32_t id, std::uint32_t otherId) {
  StateChange named;
  named.vrfs[vrf] = id;
  StateChange other;
  other.vrfs[vrf] = otherId;
  Chain chain;
  if (chance(60)) {
    initial.vrfs[vrf] = id;
  } else {
    if (chance(30)) chain.push_back(setEvent(other, "id " + vrf + " " + std::to_string(otherId)));
    chain.push_back(setEvent(named, "id " + vrf + " " + std::to_string(id)));
  }
  if (chance(25)) {
    chain.push_back(setEvent(other, "id " + vrf + " " + std::to_string(otherId)));
    chain.push_back(setEvent(named, "id " + vrf + " " + std::to_string(id) + " again"));
  } else if (chance(15)) {
    chain.push_back(removeEvent(named, "id " + vrf));
    chain.push_back(setEvent(named, "id " + vrf + " " + std::to_string(id) + " again"));
  }
  if (chain.empty()) return;
  finalState.vrfs[vrf] = id;
  idMoved.insert(vrf);
  chains.push_back(chain);
}

// An interface that comes and goes again, of each VRF its own.
std::string Case::strayIntf(const std::string& vrf) {
  return vrf == "default" ? "Ethernet9" : vrf == "red" ? "Ethernet8" : "Ethernet7";
}

// With the routed pipeline an interface is a multicast interface of one VRF alone, as the
// encapsulation module's VNI of a source interface is the VNI of the interface's VRF.
bool Case::intfOfVrf(const std::string& intf, const std::string& vrf) const {
  if (!routed_) return true;
  static const std::map<std::string, std::string> owner = {
      {"Ethernet1", "default"}, {"Ethernet4", "default"}, {"Ethernet2", "red"}, {"Vlan3001", "red"},
      {"Vlan10", "red"},        {"Ethernet3", "blue"},    {"Vlan3002", "blue"}};
  return owner.at(intf) == vrf;
}

void Case::drawInterfaces(const VrfAf& vrfAf) {
  for (const std::string& intf : intfNames_) {
    if (!intfOfVrf(intf, vrfAf.vrf) || !chance(50)) continue;
    StateChange change;
    change.multicastIntfs[vrfAf.af][vrfAf.vrf] = {intf};
    finalState.multicastIntfs[vrfAf.af][vrfAf.vrf].push_back(intf);
    chains.push_back({setEvent(change, "intf " + intf + " " + vrfAfText(vrfAf))});
  }
  if (chance(20)) {
    const std::string stray = strayIntf(vrfAf.vrf);
    StateChange change;
    change.multicastIntfs[vrfAf.af][vrfAf.vrf] = {stray};
    chains.push_back({setEvent(change, "intf " + stray + " " + vrfAfText(vrfAf)),
                      removeEvent(change, "intf " + stray + " " + vrfAfText(vrfAf))});
  }
}

void Case::drawKernelLimits(const VrfAf& vrfAf) {
  StateChange change;
  change.kernelMfibConfig[vrfAf.af][vrfAf.vrf] = {static_cast<uint32_t>(rng_() % 500 + 1),
                                                  static_cast<uint32_t>(rng_() % 9 + 1)};
  finalState.kernelMfibConfig[vrfAf.af][vrfAf.vrf] = change.kernelMfibConfig[vrfAf.af][vrfAf.vrf];
  Chain chain;
  if (chance(30)) {
    StateChange earlier;
    earlier.kernelMfibConfig[vrfAf.af][vrfAf.vrf] = {7, 7};
    chain.push_back(setEvent(earlier, "limits " + vrfAf.vrf));
  }
  chain.push_back(setEvent(change, "limits " + vrfAf.vrf));
  chains.push_back(chain);
}

// Each route key has one final route per VRF and family; another application may have
// held it first (the route moves), or the same table held another form of it.
void Case::drawFinalRoute(const VrfAf& vrfAf) {
  const Mroute route = drawRoute(vrfAf);
  for (const Mroute& present : finalState.mroutes) {
    if (present.table.vrfAf == vrfAf && present.key == route.key) return;
  }
  finalState.mroutes.push_back(route);
  const std::string text = "route " + route.key.text() + " " + vrfAfText(vrfAf) + " ";
  StateChange change;
  change.mroutes.push_back(route);
  Chain chain;
  if (chance(30)) {
    StateChange earlier;
    earlier.mroutes.push_back(drawRoute(vrfAf));
    earlier.mroutes.back().key = route.key;
    earlier.mroutes.back().table.app = route.table.app;
    chain.push_back(setEvent(earlier, text + route.table.app + " first form"));
  }
  chain.push_back(setEvent(change, text + route.table.app));
  if (chance(30)) {
    StateChange moved;
    moved.mroutes.push_back(drawRoute(vrfAf));
    moved.mroutes.back().key = route.key;
    if (moved.mroutes.back().table.app != route.table.app) {
      const std::string from = moved.mroutes.back().table.app;
      chain.insert(chain.begin(), setEvent(moved, text + from));
      chain.push_back(removeEvent(moved, text + from));
    }
  }
  chains.push_back(chain);
}

// A route that comes and goes; if it shares a final route's key and app it is skipped.
void Case::drawStrayRoute(const VrfAf& vrfAf) {
  Mroute route = drawRoute(vrfAf);
  route.key.group = vrfAf.af == Af::ipv6 ? "ff0e::99" : "239.9.9.9";
  StateChange change;
  change.mroutes.push_back(route);
  const std::string text = "stray route " + vrfAfText(vrfAf);
  chains.push_back({setEvent(change, text), removeEvent(change, text)});
}

// The hosting agent starts a VRF and family and stops it again, or stops and restarts
// one that ends started.
void Case::drawStrayStart(const VrfAf& vrfAf) {
  const bool ends = std::find(started.begin(), started.end(), vrfAf) != started.end();
  if (ends) {
    chains.push_back({stopEvent(vrfAf), startEvent(vrfAf)});
  } else {
    chains.push_back({startEvent(vrfAf), stopEvent(vrfAf)});
  }
}

}  // namespace VekHost
