#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleContext.h"
#include "dataplane/ModuleTable.h"
#include "dataplane/MfibRouteKey.h"
#include "proto/vek.pb.h"
#include "runtime/qel/HashMap2018.h"

namespace Dataplane {

// The multicast FIB module (classes 26 and 27): routes by source and group, the
// multicast-enabled interfaces, the limits of unresolved traffic, the bridge MAC address,
// its counters and the worker tasks it registered.
class Mfib final : public TableWithCommands<Mfib> {
 public:
  static const CommandTable<Mfib>& commands();

  explicit Mfib(ModuleContext context) : context_(std::move(context)) {}

  nlohmann::ordered_json dump() const override;
  std::vector<std::string> taskNames() const override;
  // One route as the dump shows it, by its key "<source>,<group>", and the number of
  // routes: what a look at one route needs, without the whole table.
  std::optional<nlohmann::ordered_json> routeDump(const std::string& key) const;
  std::size_t routeCount() const noexcept { return routes_.size(); }

  CommandResult addMroute(const vek::pb::MfibRouteArg& arg);
  CommandResult deleteMroute(const vek::pb::MfibRouteArg& arg);
  CommandResult addMulticastIntfs(const vek::pb::MulticastIntfArg& arg);
  CommandResult deleteMulticastIntfs(const vek::pb::MulticastIntfArg& arg);
  CommandResult setMaxUnresolvedCacheEntries(const vek::pb::SizeArg& arg);
  CommandResult setMaxUnresolvedPktBuffers(const vek::pb::SizeArg& arg);
  CommandResult setBridgeMacAddr(const vek::pb::EthernetConfigArg& arg);
  CommandResult setCounterIds(const vek::pb::MfibCounterIdArg& arg);

 private:
  // The two kinds of worker task a FIB module registers; each command names one.
  enum class TaskKind { noCache, cleanup };

  struct Route {
    std::uint64_t iif = 0;
    std::vector<std::pair<std::uint64_t, std::uint32_t>> gates;  // interface id, gate
    bool fastdrop = false;
    bool iifRegister = false;
    bool oifRegister = false;
  };
  struct Task {
    bool cleanup = false;
    std::uint32_t wid = 0;
    std::uint32_t tid = 0;
    std::uint32_t fusetid = 0;
  };

  static nlohmann::ordered_json routeJson(const Route& route);
  // The task of that name, registered now if it is new; a module asking again keeps its ids.
  const Task& task(const std::string& name, bool cleanup, std::uint32_t wid);
  template <TaskKind kind>
  CommandResult registerTask(const vek::pb::MfibTaskIdArg& arg);
  template <TaskKind kind>
  CommandResult registerTaskPerWorker(const vek::pb::MfibTaskIdsArg& arg);

  ModuleContext context_;
  // Hashed, with raw keys and routes in the table's own slots: a daemon takes a million
  // routes, and a node and a text key for each cost an allocation and a cache miss more
  // per command. A replaced route keeps its gate list's storage. The dump sorts the texts.
  Qel::HashMap2018<MfibRouteKey, Route> routes_;
  std::set<std::uint64_t> multicastIntfs_;
  std::optional<std::uint32_t> maxUnresolvedCacheEntries_;
  std::optional<std::uint32_t> maxUnresolvedPktBuffers_;
  std::optional<std::string> bridgeMacAddr_;
  nlohmann::ordered_json counterIds_;
  std::map<std::string, Task> tasks_;
};

}  // namespace Dataplane
