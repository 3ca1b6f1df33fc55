#pragma once

#include <sys/types.h>

#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace KernelLab {

// A network namespace of its own with veth pairs and a static multicast routing daemon
// (smcrouted) in it, for the tests and the benchmark that watch a live kernel. Every
// command it runs is bounded by a timeout; the daemon and the namespace go with the object,
// also when a test fails.
class NetnsLab {
 public:
  // Why a lab cannot be made on this machine (not root, no namespaces, no smcroute), or
  // nullopt when it can.
  static std::optional<std::string> whyNot();

  // Makes namespace "vekt-<pid>-<n>" with the veth pairs et1-et2 and et3-et4, all up,
  // and starts the daemon in it. Throws std::runtime_error when something fails.
  NetnsLab();
  ~NetnsLab();
  NetnsLab(const NetnsLab&) = delete;
  NetnsLab& operator=(const NetnsLab&) = delete;

  const std::string& name() const { return name_; }
  // Runs `ip ARGS` inside the namespace ("link add ..."); throws when it fails.
  void ip(const std::string& args) const;
  // Runs the daemon's control command ("add et1 10.1.0.5 239.1.1.1 et3"); throws on failure.
  void ctl(const std::string& args) const;
  // Feeds many control commands at once, one a line, through the command's batch mode.
  void ctlBatch(const std::vector<std::string>& lines) const;
  void startDaemon();
  void stopDaemon();

  // A route as the kernel lists it: family ("ipv4"), source ("*" for any), group, incoming
  // device and outgoing devices (sorted).
  using Route = std::tuple<std::string, std::string, std::string, std::string,
                           std::vector<std::string>>;
  // Every multicast route the namespace's kernel holds, as `ip mroute` lists them.
  std::set<Route> kernelRoutes() const;

  // Runs `command` under a timeout; gives its standard output, throws when it fails.
  static std::string run(const std::string& command);

 private:
  std::string name_;
  std::string dir_;  // the daemon's files
  pid_t daemon_ = -1;
};

}  // namespace KernelLab
