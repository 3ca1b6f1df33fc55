#pragma once

#include <grpcpp/grpcpp.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "proto/dataplane_control.grpc.pb.h"
#include "runtime/vek/ChannelBackend.h"

namespace Remote {

// The command channel's backend for a daemon in another process. The agent thread encodes
// each record into the batch being built and hands the batch over at the end of the pump;
// a link thread connects (again and again, with backoff), sends the batches in order on one
// stream and reads what comes back; collectReplies() gives the answers to the channel on
// the agent thread. Nothing on the agent thread waits for the daemon.
//
// Every command keeps its number until the daemon says it applied it. After a broken
// connection to the same daemon the unanswered commands are sent again and the daemon skips
// those it has; a daemon that comes back as a new instance (restarted, empty) gets none of
// them, and the channel hears farEndBack(true).
class DaemonClient final : public Vek::ChannelBackend {
 public:
  struct Options {
    std::string address;
    // Commands in one batch on the wire, at most.
    std::size_t batchCommands = 4096;
    // Commands waiting in memory (unsent or unanswered) past which a trace warns; the
    // queue goes on growing, as dropping would lose commands and blocking would stop the
    // agent.
    std::size_t queueBound = 4u << 20;
    std::chrono::milliseconds firstRetry{20};
    std::chrono::milliseconds lastRetry{1000};
  };

  explicit DaemonClient(Options options);
  ~DaemonClient() override;
  DaemonClient(const DaemonClient&) = delete;
  DaemonClient& operator=(const DaemonClient&) = delete;

  void deliver(const Vek::ChannelRecord& record) override;
  void flush() override;
  void collectReplies() override;

  // For a host that runs the agent step by step: waits, up to `limit`, until the daemon has
  // answered every command handed over. False if it has not, for example while it is away.
  bool waitAnswered(std::chrono::milliseconds limit);
  // Answers or news of the daemon that collectReplies() would give.
  bool repliesWaiting() const;
  // While set, records are taken and not sent: they belong to a daemon that is gone.
  void discardIs(bool discard) noexcept { discard_ = discard; }
  std::size_t commandsWaiting() const;
  // The daemon last greeted, by its instance name; empty before the first.
  std::string instance() const;
  // Waits, up to `limit`, until the daemon greeted is another than `old`.
  bool waitInstanceOtherThan(const std::string& old, std::chrono::milliseconds limit);

  // Requests outside the stream. Each waits up to `limit` for the daemon and throws
  // std::runtime_error if it gets no answer.
  std::string dump(std::chrono::milliseconds limit);
  std::string dot(std::chrono::milliseconds limit);
  void failNext(const vek::control::FailNextRequest& request, std::chrono::milliseconds limit);
  void reset(std::uint32_t workers, std::chrono::milliseconds limit);

 private:
  using BatchPtr = std::shared_ptr<vek::control::CommandBatch>;
  // What the link thread hands to the agent thread.
  struct Arrival {
    enum class Kind { replies, lost, back, backEmpty, note } kind;
    vek::control::ReplyBatch replies;
    std::string note;
  };

  void handOver();
  void linkLoop();
  // Says hello and lines up what must be sent; false if the daemon did not answer.
  bool greet(std::chrono::milliseconds limit);
  void runStream();
  void readReplies(grpc::ClientReaderWriter<vek::control::CommandBatch, vek::control::ReplyBatch>&
                       stream,
                   bool& broken);
  void arrive(Arrival arrival);  // lock held
  void noteLocked(std::string text);
  void postLost();  // lock held
  // One request outside the stream.
  template <typename Request, typename Response, typename Method>
  Response ask(Method method, const Request& request, std::chrono::milliseconds limit);
  void giveGroupReply(vek::control::QueuedReply& reply);

  const Options options_;
  const std::uint64_t session_;
  std::shared_ptr<grpc::Channel> grpcChannel_;
  std::unique_ptr<vek::control::DataplaneControl::Stub> stub_;

  // The agent thread's own.
  BatchPtr building_;
  std::uint64_t nextSeq_ = 1;
  std::deque<std::pair<std::uint64_t, Vek::GroupCmdRecord>> awaitingGroupReply_;
  std::atomic<bool> discard_ = false;
  bool boundTraced_ = false;

  // Shared with the link thread.
  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::deque<BatchPtr> unsent_;
  std::deque<BatchPtr> unanswered_;
  std::vector<Arrival> arrivals_;
  std::size_t waitingCommands_ = 0;
  std::uint64_t handedOverThrough_ = 0;
  std::uint64_t answeredThrough_ = 0;
  std::string instance_;
  bool up_ = false;
  bool lostPosted_ = false;
  bool stopping_ = false;
  grpc::ClientContext* streamContext_ = nullptr;

  std::thread link_;
};

}  // namespace Remote
