#pragma once

#include <string>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/multicast/MfibTableKey.h"
#include "runtime/state/multicast/RoutingPath.h"

namespace Routing::Multicast::Fib {

// The route tables of one family that the routing applications publish
// ("routing/multicast/fib", "routing6/multicast/fib"). Each listed table is a shared-memory
// table at tablePath, to be mounted by its readers; the writer puts it there before it lists
// it, and unlists it before it takes it away.
class MfibDir : public Lanx::StateEntity<"Routing::Multicast::Fib::MfibDir"> {
 public:
  enum : Qel::AttributeId { kTable = 1 };
  static constexpr std::string_view tableTypeName = "Vash::Multicast::Fib::Status";

  static std::string path(Lanx::AddressFamily af) { return routingPath(af, "multicast/fib"); }
  // "routing/multicast/fib/<vrf>/<app>".
  static std::string tablePath(Lanx::AddressFamily af, const MfibTableKey& table) {
    return path(af) + "/" + std::string(table.vrf.view()) + "/" +
           std::string(mfibAppTypeName(table.app));
  }

  bool tableHas(const MfibTableKey& table) const { return table_.has(table); }
  const Qel::HashSet2018<MfibTableKey>& tables() const noexcept { return table_.members(); }
  void tableIs(const MfibTableKey& table) { table_.is(*this, table); }
  void tableDel(const MfibTableKey& table) { table_.del(*this, table); }

 private:
  Qel::SetAttr<MfibTableKey, kTable> table_;
};

}  // namespace Routing::Multicast::Fib
