#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/StateChange.h"
#include "kernel/KernelTables.h"

namespace VekHost {

// Turns what the kernel of a namespace holds into central state, as the scenario keys
// would write it: each VRF device is a VRF (its table id is its VRF id) and the default VRF
// stands for the main tables; a device whose name is an interface name (et1, Ethernet1,
// Vlan10 ...) is that interface's kernel device in the VRF it is enslaved to, and a
// multicast interface of that VRF when it can do multicast; each multicast forwarding
// cache entry is a route of one application's table in the VRF of its kernel table.
// A route waits, out of central state, while a device it names is unknown or stands for
// no interface, or while its table belongs to no VRF.
// It remembers what it wrote, so that each update gives only the difference.
class KernelFeed {
 public:
  // What brings central state from what was written before to what the kernel holds now:
  // VRFs to stop (before the changes), the changes in order, VRFs to start (after them).
  struct Update {
    std::vector<VrfAf> stops;
    std::vector<std::pair<StateChange, StateOp>> changes;
    std::vector<VrfAf> starts;
    bool empty() const { return stops.empty() && changes.empty() && starts.empty(); }
  };

  // `app` is the route application whose tables the kernel's routes go into; `families`
  // those the kernel keeps multicast routes of, each started in every VRF.
  KernelFeed(std::string app, std::vector<Kernel::Family> families);

  Update update(const Kernel::KernelTables& tables, const Kernel::KernelTables::Changes& changes);

  std::size_t routesWritten() const { return routes_.size(); }
  std::size_t routesWaiting() const { return waiting_.size(); }

  // The main table of the kernel, whose number is the default VRF's id.
  static constexpr std::uint32_t kMainTable = 254;
  static constexpr const char* kDefaultVrf = "default";

 private:
  // A route of central state: VRF, family, source, group.
  using RouteSlot = std::tuple<std::string, Af, std::string, std::string>;
  struct Devices {
    std::map<std::string, uint32_t> vrfs;  // VRF name to id
    std::map<std::string, std::map<std::string, KernelDevice>> kernel;
    std::set<std::tuple<Af, std::string, std::string>> multicast;  // family, VRF, interface
    std::map<int, std::string> intfByIndex;                        // device index to interface
    std::map<std::uint32_t, std::string> vrfByTable;
  };

  Devices devices(const Kernel::KernelTables& tables) const;
  // The route `route` is in central state, or why it waits (nullopt).
  std::optional<std::pair<RouteSlot, Mroute>> translate(const Kernel::McastRoute& route) const;
  void diffDevices(Devices next, Update& update);
  void diffRoutes(const Kernel::KernelTables& tables, const std::set<Kernel::McastRouteKey>& keys,
                  bool all, StateChange& set, StateChange& remove);

  std::string app_;
  std::vector<Af> families_;
  Devices devices_;
  std::map<RouteSlot, Mroute> routes_;
  // Where each kernel route went, and the kernel routes that wait.
  std::map<Kernel::McastRouteKey, RouteSlot> slotOf_;
  std::set<Kernel::McastRouteKey> waiting_;
};

}  // namespace VekHost
