#pragma once

#include <map>
#include <string>

namespace VekHost {

// What is fixed for the life of the agent; a restart keeps it.
struct AgentSettings {
  bool oru = true;               // full pipeline; false is the reduced agent
  bool namespaceDut = true;      // the answer the agent gets from Vek::isNamespaceDut()
  int workers = 1;               // daemon worker count
  int yieldEvery = 64;           // simulated scheduler: taskShouldYield after this many items
  // 0: the simulated scheduler of scenarios; otherwise the real-time scheduler, with this
  // share of wall time (seconds) per task run, for a host fed from a live system.
  double realTimeQuantum = 0;
  bool bypassTxDemuxer = false;  // as if BYPASS_TXDEMUXER were set
  // Toggle name to state; a toggle not named keeps its default (on).
  std::map<std::string, bool> toggles;
};

}  // namespace VekHost
