#include "host/Step.h"

#include "host/DaemonSteps.h"

namespace VekHost {

std::string_view stepVerb(const StepAction& action) {
  struct Verb {
    std::string_view operator()(const StartStep&) const { return "start"; }
    std::string_view operator()(const StopStep&) const { return "stop"; }
    std::string_view operator()(const SettleStep&) const { return "settle"; }
    std::string_view operator()(const StateStep& step) const {
      return step.op == StateOp::set ? "set" : "delete";
    }
    std::string_view operator()(const AdvanceStep&) const { return "advance"; }
    std::string_view operator()(const FailNextStep&) const { return "failNext"; }
    std::string_view operator()(const RestartStep&) const { return "restart"; }
    std::string_view operator()(const DaemonStep& step) const { return DaemonSteps::verb(step.kind); }
    std::string_view operator()(const ExpectStep&) const { return "expect"; }
  };
  return std::visit(Verb{}, action);
}

}  // namespace VekHost
