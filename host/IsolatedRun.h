#pragma once

#include <functional>
#include <string>

#include "host/RunResult.h"

namespace VekHost {

// Runs `run` in a child process and returns its result. The agent keeps process-wide state
// (toggles are read once, the environment is read at construction), so each scenario of a
// check gets a fresh process; a child that dies on an assertion fails only its scenario.
// A child that ends without a result fails with a message that begins with `label`, and so
// does one still running after `timeLimit` seconds (0 for no limit), which is then killed.
RunResult runIsolated(const std::string& label, const std::function<RunResult()>& run,
                      double timeLimit = 0);

}  // namespace VekHost
