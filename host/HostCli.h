#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/HostServices.h"
#include "host/LiveOptions.h"
#include "host/RunOutputs.h"
#include "host/RunResult.h"
#include "host/Scenario.h"

namespace VekHost {

// The verbs of mfa-host: run, check, live and intf-id. Exit status 0 success, 1 an expectation
// failed or a run could not end as it must, 2 bad input (or nothing to run the scenario
// with), 3 the agent failed one of its assertions.
class HostCli {
 public:
  HostCli(HostServices services, std::ostream& out, std::ostream& err)
      : services_(std::move(services)), out_(out), err_(err) {}

  int main(int argc, const char* const* argv);

 private:
  int run(const std::string& file, const OutputFiles& files);
  int check(const std::vector<std::string>& files, double timeLimit);
  // HostCliLive.cc
  int live(const LiveOptions& options);
  int intfIds(const std::vector<std::string>& names);
  bool haveDriver();
  std::optional<Scenario> load(const std::string& file, std::vector<std::string>* errors) const;
  RunResult runScenario(const Scenario& scenario) const;

  HostServices services_;
  std::ostream& out_;
  std::ostream& err_;
};

}  // namespace VekHost
