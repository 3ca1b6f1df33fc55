#pragma once

#include <string>

namespace VekHost {

// Where the runs of this mfa-host process find their data plane: empty for the in-process
// model, "spawn" for a daemon of each run's own, or a daemon's address. Set once from the
// command line, before the first run; child processes of isolated runs inherit it.
class DaemonChoice {
 public:
  static void is(std::string where) { where_() = std::move(where); }
  static const std::string& value() { return where_(); }
  static bool inProcess() { return where_().empty(); }

 private:
  static std::string& where_() {
    static std::string where;
    return where;
  }
};

}  // namespace VekHost
