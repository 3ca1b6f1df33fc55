#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "host/DaemonProcess.h"
#include "host/Step.h"
#include "runtime/vek/CommandChannel.h"

namespace Remote {
class DaemonClient;
}

namespace VekHost {

// The host's side of a daemon in another process: the channel's backend, and the daemon
// process itself when the run brings its own. A scenario checks the data plane between
// steps, so after each step the host waits until the daemon has answered everything and its
// answers have reached the agent; the agent itself never waits.
class DaemonLink {
 public:
  // `where` is "spawn" (a daemon of the run's own) or the address of a running daemon,
  // which is emptied first.
  DaemonLink(const std::string& where, unsigned workers);
  ~DaemonLink();

  Vek::ChannelBackend& backend() noexcept;

  // Pumps the channel until the daemon has answered all it was sent and those answers,
  // with the commands they lead to, are worked. Does nothing while the daemon is stopped.
  void settle(Vek::CommandChannel& channel);
  // While set, the channel's records are not sent: they belong to a daemon that is gone.
  void discardIs(bool discard) noexcept;

  nlohmann::json dump();
  std::string dot();
  void failNext(const FailNextStep& failure);

  // Only with a daemon of the run's own.
  bool ownsDaemon() const noexcept { return process_ != nullptr; }
  void stopDaemon();
  void startDaemon();

  // How long the host waits for the daemon before it gives up on a step.
  static constexpr std::chrono::seconds answerLimit{20};

 private:
  void checkAlive();
  // Waits for `ready`, checking that a daemon of the run's own still runs; throws at the limit.
  void waitFor(const std::function<bool()>& ready, const char* what);

  std::unique_ptr<DaemonProcess> process_;
  std::unique_ptr<Remote::DaemonClient> client_;
  // The daemon that was stopped; a start waits until the channel has met its successor.
  std::string stoppedInstance_;
};

}  // namespace VekHost
