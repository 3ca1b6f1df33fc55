// The data plane of a PluginDriver run: the in-process model, or a daemon process.
#include "host/DaemonChoice.h"
#include "host/PluginDriver.h"

namespace VekHost {

void PluginDriver::attachDataPlane(std::uint16_t workers) {
  if (DaemonChoice::inProcess()) {
    model_ = std::make_unique<Dataplane::Model>(workers);
    channel_->backendIs(model_.get());
    return;
  }
  daemon_ = std::make_unique<DaemonLink>(DaemonChoice::value(), workers);
  channel_->backendIs(&daemon_->backend());
}

void PluginDriver::settleDaemon() {
  daemon_->settle(*channel_);
  if (channel_->farEndRestarts() == daemonRestartsSeen_) return;
  daemonRestartsSeen_ = channel_->farEndRestarts();
  if (!agent_) return;
  // The daemon came back empty: the agent is made again and programs it from the start.
  // What the old agent sends on its way out is for the daemon that is gone.
  daemon_->discardIs(true);
  releaseAgent();
  daemon_->discardIs(false);
  restart();
}

void PluginDriver::daemon(DaemonStep::Kind kind) {
  if (!daemon_ || !daemon_->ownsDaemon()) ScenarioDriver::daemon(kind);
  if (kind != DaemonStep::Kind::start) daemon_->stopDaemon();
  if (kind != DaemonStep::Kind::stop) daemon_->startDaemon();
  // A daemon that is back is empty: the next pump sees it and the agent programs it again.
  pump();
}

}  // namespace VekHost
