#include "host/KernelFeed.h"

#include "runtime/state/IntfId.h"

namespace VekHost {

namespace {

// The kernel's own tables that stand for the default VRF: unicast main and the default
// table, where a multicast routing daemon's routes go unless it names another.
constexpr std::uint32_t kDefaultTables[] = {0, 253, KernelFeed::kMainTable};

Af af(Kernel::Family family) { return family == Kernel::Family::ipv6 ? Af::ipv6 : Af::ipv4; }

bool sameDevice(const KernelDevice& a, const KernelDevice& b) {
  return a.ifIndex == b.ifIndex && a.up == b.up && a.intf == b.intf;
}

bool sameRoute(const Mroute& a, const Mroute& b) {
  return a.iif == b.iif && a.oifs == b.oifs && a.flags == b.flags && a.table.app == b.table.app;
}

// The interface a device's name stands for, in its one canonical spelling; empty for none.
std::string intfName(const std::string& device) {
  auto id = Lanx::IntfId::fromName(device);
  return id ? id->name() : std::string();
}

}  // namespace

KernelFeed::KernelFeed(std::string app, std::vector<Kernel::Family> families)
    : app_(std::move(app)) {
  for (Kernel::Family family : families) families_.push_back(af(family));
}

KernelFeed::Devices KernelFeed::devices(const Kernel::KernelTables& tables) const {
  Devices made;
  made.vrfs[kDefaultVrf] = kMainTable;
  for (std::uint32_t table : kDefaultTables) made.vrfByTable[table] = kDefaultVrf;
  std::map<int, std::string> vrfByDevice;
  for (const auto& [index, link] : tables.links()) {
    // A table id past the VRF id range cannot be an id; such a VRF is left out.
    if (!link.vrfTable || *link.vrfTable >= 0xffffff || link.name == kDefaultVrf) continue;
    made.vrfs[link.name] = *link.vrfTable;
    made.vrfByTable[*link.vrfTable] = link.name;
    vrfByDevice[index] = link.name;
  }
  for (const auto& [index, link] : tables.links()) {
    if (link.vrfTable) continue;
    const std::string intf = intfName(link.name);
    if (intf.empty()) continue;
    auto master = vrfByDevice.find(link.master);
    const std::string vrf = master == vrfByDevice.end() ? kDefaultVrf : master->second;
    made.kernel[vrf][link.name] = KernelDevice{index, link.up, intf};
    made.intfByIndex[index] = intf;
    if (!link.multicast) continue;
    for (Af family : families_) made.multicast.emplace(family, vrf, intf);
  }
  return made;
}

std::optional<std::pair<KernelFeed::RouteSlot, Mroute>> KernelFeed::translate(
    const Kernel::McastRoute& route) const {
  auto vrf = devices_.vrfByTable.find(route.key.table);
  if (vrf == devices_.vrfByTable.end()) return std::nullopt;
  const auto intf = [this](int index) -> const std::string* {
    auto it = devices_.intfByIndex.find(index);
    return it == devices_.intfByIndex.end() ? nullptr : &it->second;
  };
  const std::string* iif = intf(route.iif);
  if (!iif) return std::nullopt;
  Mroute made;
  made.table = RouteTableName{VrfAf{vrf->second, af(route.key.family)}, app_, 0};
  made.key = RouteKey{route.key.source, route.key.group};
  made.iif = *iif;
  for (int index : route.oifs) {
    const std::string* oif = intf(index);
    if (!oif) return std::nullopt;
    made.oifs.push_back(*oif);
  }
  RouteSlot slot{vrf->second, made.table.vrfAf.af, made.key.source, made.key.group};
  return std::pair{std::move(slot), std::move(made)};
}

KernelFeed::Update KernelFeed::update(const Kernel::KernelTables& tables,
                                      const Kernel::KernelTables::Changes& changes) {
  Update update;
  const bool firstTime = devices_.vrfs.empty();
  const bool devicesChanged = firstTime || changes.links;
  StateChange setRoutes;
  StateChange removeRoutes;
  if (devicesChanged) {
    // Routes that leave with their VRF or interfaces go before the devices do.
    Devices next = devices(tables);
    std::swap(devices_, next);
    diffRoutes(tables, {}, true, setRoutes, removeRoutes);
    std::swap(devices_, next);
    if (!removeRoutes.mroutes.empty()) update.changes.emplace_back(removeRoutes, StateOp::remove);
    diffDevices(std::move(next), update);
  } else {
    diffRoutes(tables, changes.routes, false, setRoutes, removeRoutes);
    if (!removeRoutes.mroutes.empty()) update.changes.emplace_back(removeRoutes, StateOp::remove);
  }
  if (!setRoutes.mroutes.empty()) update.changes.emplace_back(std::move(setRoutes), StateOp::set);
  return update;
}

void KernelFeed::diffDevices(Devices next, Update& update) {
  StateChange set;
  StateChange remove;
  bool setAny = false;
  bool removeAny = false;
  for (const auto& [vrf, id] : devices_.vrfs) {
    if (next.vrfs.contains(vrf)) continue;
    remove.vrfs[vrf] = id;
    remove.hwVrfs[vrf] = id;
    removeAny = true;
    for (Af family : families_) {
      update.stops.push_back(VrfAf{vrf, family});
      remove.tables.push_back(RouteTableName{VrfAf{vrf, family}, app_, 0});
    }
  }
  for (const auto& [vrf, id] : next.vrfs) {
    auto old = devices_.vrfs.find(vrf);
    if (old != devices_.vrfs.end() && old->second == id) continue;
    set.vrfs[vrf] = id;
    set.hwVrfs[vrf] = id;
    setAny = true;
    if (old != devices_.vrfs.end()) continue;
    // The route tables stand from the start, empty if need be: a table that comes later
    // makes the agent review every route of it, and its first routes would go out twice.
    for (Af family : families_) {
      update.starts.push_back(VrfAf{vrf, family});
      set.tables.push_back(RouteTableName{VrfAf{vrf, family}, app_, 0});
    }
  }
  for (const auto& [vrf, devices] : devices_.kernel) {
    for (const auto& [name, device] : devices) {
      auto vrfNow = next.kernel.find(vrf);
      if (vrfNow != next.kernel.end() && vrfNow->second.contains(name)) continue;
      remove.kernel[vrf][name] = device;
      removeAny = true;
    }
  }
  for (const auto& [vrf, devices] : next.kernel) {
    for (const auto& [name, device] : devices) {
      auto vrfBefore = devices_.kernel.find(vrf);
      if (vrfBefore != devices_.kernel.end()) {
        auto before = vrfBefore->second.find(name);
        if (before != vrfBefore->second.end() && sameDevice(before->second, device)) continue;
      }
      set.kernel[vrf][name] = device;
      setAny = true;
    }
  }
  for (const auto& [family, vrf, intf] : devices_.multicast) {
    if (next.multicast.contains({family, vrf, intf})) continue;
    remove.multicastIntfs[family][vrf].push_back(intf);
    removeAny = true;
  }
  for (const auto& [family, vrf, intf] : next.multicast) {
    if (devices_.multicast.contains({family, vrf, intf})) continue;
    set.multicastIntfs[family][vrf].push_back(intf);
    setAny = true;
  }
  devices_ = std::move(next);
  if (removeAny) update.changes.emplace_back(std::move(remove), StateOp::remove);
  if (setAny) update.changes.emplace_back(std::move(set), StateOp::set);
}

void KernelFeed::diffRoutes(const Kernel::KernelTables& tables,
                            const std::set<Kernel::McastRouteKey>& keys, bool all,
                            StateChange& set, StateChange& remove) {
  std::set<Kernel::McastRouteKey> looked = keys;
  if (all) {
    for (const auto& [key, route] : tables.routes()) looked.insert(key);
    for (const auto& [key, slot] : slotOf_) looked.insert(key);
    looked.insert(waiting_.begin(), waiting_.end());
  }
  for (const Kernel::McastRouteKey& key : looked) {
    const Kernel::McastRoute* route = tables.route(key);
    auto made = route ? translate(*route) : std::nullopt;
    auto old = slotOf_.find(key);
    if (old != slotOf_.end() && (!made || made->first != old->second)) {
      auto written = routes_.find(old->second);
      if (written != routes_.end()) {
        remove.mroutes.push_back(written->second);
        routes_.erase(written);
      }
      slotOf_.erase(old);
    }
    if (!made) {
      if (route) {
        waiting_.insert(key);
      } else {
        waiting_.erase(key);
      }
      continue;
    }
    waiting_.erase(key);
    slotOf_[key] = made->first;
    auto [written, added] = routes_.try_emplace(made->first, made->second);
    if (!added && sameRoute(written->second, made->second)) continue;
    written->second = made->second;
    set.mroutes.push_back(std::move(made->second));
  }
}

}  // namespace VekHost
