#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/ScenarioDriver.h"

namespace VekHost {

// The files `run` writes when asked; an empty name writes nothing.
struct OutputFiles {
  std::string log;    // command log, JSON Lines
  std::string dump;   // model dump, JSON
  std::string dot;    // data plane as DOT
  std::string trace;  // trace records, one a line
  // The least level of a record the trace file keeps; it keeps every step mark.
  Trace::Level traceLevel = Trace::Level::debug;

  // Each file with the option that names it ("--log", ...), in that order.
  std::vector<std::pair<std::string, std::string>> named() const {
    return {{"--log", log}, {"--dump", dump}, {"--dot", dot}, {"--trace", trace}};
  }
};

// What a run leaves behind: the output files and a short summary.
class RunOutputs {
 public:
  // Writes each file asked for; returns one message per file that could not be written,
  // with the reason the system gave.
  static std::vector<std::string> write(ScenarioDriver& driver, const OutputFiles& files);
  // A few lines: modules, ports, links, commands by kind, and where each output went; an
  // output among `problems` (as write gave them) is marked as not written.
  static std::string summary(ScenarioDriver& driver, const OutputFiles& files,
                             const std::vector<std::string>& problems);
};

}  // namespace VekHost
