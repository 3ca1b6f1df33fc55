#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/Expectation.h"
#include "host/IntfIdEncoder.h"
#include "host/ScenarioDriver.h"

namespace VekHost {

// An expectation that cannot be judged in this build (no interface ids, for one).
class CannotCheck : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Judges one expectation against the data plane and the logs. Commands and traces are
// looked at from the marks of the window on.
class ExpectationChecker {
 public:
  struct Window {
    std::size_t commandMark = 0;
    std::size_t traceMark = 0;
  };

  ExpectationChecker(ScenarioDriver& driver, const IntfIdEncoder& intfId, Window window)
      : driver_(driver), intfId_(intfId), window_(window) {}

  // nullopt when the expectation holds, otherwise what it is about and what differed.
  std::optional<std::string> check(const Expectation& expectation);

  std::optional<std::string> operator()(const RouteExpectation& expectation);
  std::optional<std::string> operator()(const ModuleExpectation& expectation);
  std::optional<std::string> operator()(const EdgeExpectation& expectation);
  std::optional<std::string> operator()(const DumpExpectation& expectation);
  std::optional<std::string> operator()(const CommandsExpectation& expectation);
  std::optional<std::string> operator()(const TraceExpectation& expectation);

 private:
  uint64_t idOf(const std::string& name) const;
  std::optional<std::string> compareRoute(const RouteExpectation& expectation,
                                          const nlohmann::json& route) const;

  ScenarioDriver& driver_;
  const IntfIdEncoder& intfId_;
  Window window_;
};

}  // namespace VekHost
