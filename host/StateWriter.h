#pragma once

#include "host/CentralStateStore.h"
#include "host/StateChange.h"

namespace VekHost {

// Writes what a scenario says about central state into the entities the agent reads, as
// the rest of the system would. Values were checked when the scenario was loaded.
class StateWriter {
 public:
  explicit StateWriter(CentralStateStore& store) : store_(store) {}

  void apply(const StateChange& change, StateOp op);

 private:
  void vrfs(const StateChange& change, StateOp op);
  void hwVrfs(const StateChange& change, StateOp op);
  void bridgeMac(const StateChange& change);
  void kernel(const StateChange& change, StateOp op);
  void multicastIntfs(const StateChange& change, StateOp op);
  void kernelMfibConfig(const StateChange& change, StateOp op);
  void intfVlans(const StateChange& change, StateOp op);
  void mroutes(const StateChange& change, StateOp op);
  void tables(const StateChange& change, StateOp op);
  static void writeIdTable(Vrf::VrfIdMap::Status& table,
                           const std::map<std::string, uint32_t>& ids, StateOp op);

  CentralStateStore& store_;
};

}  // namespace VekHost
