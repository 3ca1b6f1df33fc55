#include "host/DaemonLink.h"

#include <stdexcept>

#include "remote/DaemonAddress.h"
#include "remote/DaemonClient.h"

namespace VekHost {

namespace {

constexpr const char* spawnWord = "spawn";
// How often a wait looks whether the daemon of the run's own has died.
constexpr std::chrono::milliseconds pollSlice{100};

std::string addressOf(const std::string& where) {
  auto address = Remote::DaemonAddress::parse(where);
  if (!address) throw std::runtime_error(where + " is not a daemon address (unix:PATH, tcp:PORT)");
  return *address;
}

}  // namespace

DaemonLink::DaemonLink(const std::string& where, unsigned workers) {
  std::string address;
  if (where == spawnWord) {
    process_ = std::make_unique<DaemonProcess>(workers);
    address = process_->address();
  } else {
    address = addressOf(where);
    // A daemon that ran before holds what an earlier run left; this run starts from empty.
    Remote::DaemonClient(Remote::DaemonClient::Options{address}).reset(workers, answerLimit);
  }
  client_ = std::make_unique<Remote::DaemonClient>(Remote::DaemonClient::Options{address});
}

DaemonLink::~DaemonLink() = default;

Vek::ChannelBackend& DaemonLink::backend() noexcept { return *client_; }

void DaemonLink::discardIs(bool discard) noexcept { client_->discardIs(discard); }

void DaemonLink::checkAlive() {
  if (process_ && process_->running() && !process_->alive()) {
    throw std::runtime_error("the daemon ended by itself (see its standard error)");
  }
}

void DaemonLink::waitFor(const std::function<bool()>& ready, const char* what) {
  const auto deadline = std::chrono::steady_clock::now() + answerLimit;
  while (!ready()) {
    checkAlive();
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error(std::string("the daemon did not ") + what + " within " +
                               std::to_string(answerLimit.count()) + " s");
    }
  }
}

void DaemonLink::settle(Vek::CommandChannel& channel) {
  if (process_ && !process_->running()) return;
  for (;;) {
    waitFor([&] { return client_->waitAnswered(pollSlice); }, "answer");
    if (!client_->repliesWaiting()) return;
    channel.pump();
  }
}

nlohmann::json DaemonLink::dump() { return nlohmann::json::parse(client_->dump(answerLimit)); }

std::string DaemonLink::dot() { return client_->dot(answerLimit); }

void DaemonLink::failNext(const FailNextStep& failure) {
  vek::control::FailNextRequest request;
  request.set_module(failure.module);
  request.set_cmd(failure.cmd);
  request.set_code(failure.code);
  request.set_msg(failure.msg);
  client_->failNext(request, answerLimit);
}

void DaemonLink::stopDaemon() {
  if (!process_ || !process_->running()) return;
  stoppedInstance_ = client_->instance();
  process_->kill();
}

void DaemonLink::startDaemon() {
  if (!process_ || process_->running()) return;
  process_->start();
  waitFor([&] { return client_->waitInstanceOtherThan(stoppedInstance_, pollSlice); },
          "come back");
}

}  // namespace VekHost
