#pragma once

#include <map>
#include <set>

#include "kernel/KernelEntries.h"
#include "kernel/RtMessage.h"

namespace Kernel {

// What the kernel of one namespace holds of interest to the agent: its devices and its
// multicast forwarding caches, kept as notifications arrive, with a record of what changed
// since the reader last asked.
class KernelTables {
 public:
  struct Changes {
    bool links = false;  // any device came, went or changed
    std::set<McastRouteKey> routes;
    bool empty() const { return !links && routes.empty(); }
  };

  void apply(const RtMessage& message);
  // Makes these tables equal to `fresh` (a dump read anew), recording each difference.
  void replaceWith(KernelTables fresh);

  const std::map<int, Link>& links() const { return links_; }
  const std::map<McastRouteKey, McastRoute>& routes() const { return routes_; }
  const McastRoute* route(const McastRouteKey& key) const;
  // What changed since the last call, and a fresh record from here on.
  Changes takeChanges();

 private:
  std::map<int, Link> links_;
  std::map<McastRouteKey, McastRoute> routes_;
  Changes changes_;
};

}  // namespace Kernel
