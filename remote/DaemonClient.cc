#include "remote/DaemonClient.h"

#include <fmt/format.h>

#include <algorithm>
#include <random>
#include <stdexcept>

#include "remote/RecordCodec.h"
#include "runtime/trace/Trace.h"

namespace Remote {

namespace {

namespace ctl = vek::control;

std::uint64_t newSession() {
  std::random_device seed;
  return (std::uint64_t{seed()} << 32) | seed() | 1;
}

std::uint64_t lastSeqOf(const ctl::CommandBatch& batch) {
  return batch.commands(batch.commands_size() - 1).seq();
}

// How long one hello may take before the daemon counts as not there.
constexpr std::chrono::milliseconds helloLimit{1000};

}  // namespace

DaemonClient::DaemonClient(Options options)
    : options_(std::move(options)), session_(newSession()) {
  grpc::ChannelArguments args;
  // A restarted daemon is found again within the retry bound, not after gRPC's own default
  // of seconds.
  args.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, static_cast<int>(options_.firstRetry.count()));
  args.SetInt(GRPC_ARG_MIN_RECONNECT_BACKOFF_MS, static_cast<int>(options_.firstRetry.count()));
  args.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, static_cast<int>(options_.lastRetry.count()));
  args.SetMaxReceiveMessageSize(-1);
  args.SetMaxSendMessageSize(-1);
  grpcChannel_ =
      grpc::CreateCustomChannel(options_.address, grpc::InsecureChannelCredentials(), args);
  stub_ = ctl::DataplaneControl::NewStub(grpcChannel_);
  link_ = std::thread([this] { linkLoop(); });
}

DaemonClient::~DaemonClient() {
  {
    std::lock_guard guard(lock_);
    stopping_ = true;
    if (streamContext_) streamContext_->TryCancel();
  }
  changed_.notify_all();
  link_.join();
}

// ---- The agent thread ----

void DaemonClient::deliver(const Vek::ChannelRecord& record) {
  if (discard_) return;
  if (!building_) {
    building_ = std::make_shared<ctl::CommandBatch>();
    building_->set_session(session_);
  }
  ctl::QueuedCommand* command = building_->add_commands();
  command->set_seq(nextSeq_);
  RecordCodec::encode(record, command);
  if (const auto* group = std::get_if<Vek::GroupCmdRecord>(&record)) {
    awaitingGroupReply_.emplace_back(nextSeq_, *group);
  }
  ++nextSeq_;
  if (static_cast<std::size_t>(building_->commands_size()) >= options_.batchCommands) handOver();
}

void DaemonClient::flush() { handOver(); }

void DaemonClient::handOver() {
  if (!building_) return;
  const auto commands = static_cast<std::size_t>(building_->commands_size());
  std::size_t waiting = 0;
  {
    std::lock_guard guard(lock_);
    unsent_.push_back(std::move(building_));
    waitingCommands_ += commands;
    handedOverThrough_ = nextSeq_ - 1;
    waiting = waitingCommands_;
  }
  building_.reset();
  changed_.notify_all();
  if (waiting >= options_.queueBound && !boundTraced_) {
    boundTraced_ = true;
    VEK_TRACE(warn, "Daemon queue holds {} commands, past its bound of {}; the daemon is slow or away",
              waiting, options_.queueBound);
  } else if (waiting < options_.queueBound / 2) {
    boundTraced_ = false;
  }
}

void DaemonClient::collectReplies() {
  std::vector<Arrival> arrivals;
  {
    std::lock_guard guard(lock_);
    arrivals.swap(arrivals_);
  }
  for (Arrival& arrival : arrivals) {
    switch (arrival.kind) {
      case Arrival::Kind::replies:
        for (ctl::QueuedReply& reply : *arrival.replies.mutable_replies()) {
          if (reply.has_response()) {
            auto response = std::make_unique<vek::pb::ModuleResponse>();
            response->Swap(reply.mutable_response());
            replies().responseArrived(std::move(response));
          } else if (reply.has_error()) {
            auto error = std::make_unique<vek::pb::ModuleError>();
            error->Swap(reply.mutable_error());
            replies().errorArrived(std::move(error));
          } else if (reply.has_daemon_reply()) {
            giveGroupReply(reply);
          }
        }
        break;
      case Arrival::Kind::lost:
        replies().farEndLost();
        break;
      case Arrival::Kind::back:
        replies().farEndBack(false);
        break;
      case Arrival::Kind::backEmpty:
        // The commands dropped with the old daemon will get no reply.
        while (!awaitingGroupReply_.empty() &&
               awaitingGroupReply_.front().first <= arrival.replies.applied_through()) {
          awaitingGroupReply_.pop_front();
        }
        replies().farEndBack(true);
        break;
      case Arrival::Kind::note:
        VEK_TRACE(warn, "{}", arrival.note);
        break;
    }
  }
}

void DaemonClient::giveGroupReply(ctl::QueuedReply& reply) {
  while (!awaitingGroupReply_.empty() && awaitingGroupReply_.front().first < reply.seq()) {
    awaitingGroupReply_.pop_front();
  }
  if (awaitingGroupReply_.empty() || awaitingGroupReply_.front().first != reply.seq()) return;
  Vek::GroupCmdRecord record = std::move(awaitingGroupReply_.front().second);
  awaitingGroupReply_.pop_front();
  replies().groupReplyArrived(record, *reply.mutable_daemon_reply());
}

// ---- For the host ----

bool DaemonClient::waitAnswered(std::chrono::milliseconds limit) {
  std::unique_lock guard(lock_);
  return changed_.wait_for(guard, limit,
                           [&] { return answeredThrough_ >= handedOverThrough_ || stopping_; }) &&
         answeredThrough_ >= handedOverThrough_;
}

bool DaemonClient::repliesWaiting() const {
  std::lock_guard guard(lock_);
  return !arrivals_.empty();
}

std::size_t DaemonClient::commandsWaiting() const {
  std::lock_guard guard(lock_);
  return waitingCommands_;
}

std::string DaemonClient::instance() const {
  std::lock_guard guard(lock_);
  return instance_;
}

bool DaemonClient::waitInstanceOtherThan(const std::string& old, std::chrono::milliseconds limit) {
  std::unique_lock guard(lock_);
  return changed_.wait_for(guard, limit, [&] { return !instance_.empty() && instance_ != old; });
}

template <typename Request, typename Response, typename Method>
Response DaemonClient::ask(Method method, const Request& request, std::chrono::milliseconds limit) {
  grpc::ClientContext context;
  context.set_deadline(std::chrono::system_clock::now() + limit);
  context.set_wait_for_ready(true);
  Response response;
  const grpc::Status status = (stub_.get()->*method)(&context, request, &response);
  if (!status.ok()) {
    throw std::runtime_error(fmt::format("the daemon at {} did not answer: {}", options_.address,
                                         status.error_message()));
  }
  return response;
}

std::string DaemonClient::dump(std::chrono::milliseconds limit) {
  return ask<bess::pb::EmptyRequest, ctl::TextResponse>(&ctl::DataplaneControl::Stub::GetDump,
                                                        bess::pb::EmptyRequest(), limit)
      .text();
}

std::string DaemonClient::dot(std::chrono::milliseconds limit) {
  return ask<bess::pb::EmptyRequest, ctl::TextResponse>(&ctl::DataplaneControl::Stub::GetDot,
                                                        bess::pb::EmptyRequest(), limit)
      .text();
}

void DaemonClient::failNext(const ctl::FailNextRequest& request, std::chrono::milliseconds limit) {
  ask<ctl::FailNextRequest, bess::pb::CommandResponse>(&ctl::DataplaneControl::Stub::FailNext,
                                                       request, limit);
}

void DaemonClient::reset(std::uint32_t workers, std::chrono::milliseconds limit) {
  ctl::ResetRequest request;
  request.set_workers(workers);
  ask<ctl::ResetRequest, bess::pb::CommandResponse>(&ctl::DataplaneControl::Stub::Reset, request,
                                                    limit);
}

// ---- The link thread ----

void DaemonClient::arrive(Arrival arrival) { arrivals_.push_back(std::move(arrival)); }

void DaemonClient::noteLocked(std::string text) {
  arrive(Arrival{Arrival::Kind::note, {}, std::move(text)});
}

void DaemonClient::postLost() {
  up_ = false;
  if (std::exchange(lostPosted_, true)) return;
  arrive(Arrival{Arrival::Kind::lost, {}, {}});
}

void DaemonClient::linkLoop() {
  std::chrono::milliseconds retry = options_.firstRetry;
  bool outageNoted = false;
  for (;;) {
    {
      std::lock_guard guard(lock_);
      if (stopping_) return;
    }
    if (!greet(helloLimit)) {
      std::unique_lock guard(lock_);
      if (!outageNoted) {
        outageNoted = true;
        noteLocked(fmt::format("Daemon at {} not reachable; retrying, at most {} ms apart",
                               options_.address, options_.lastRetry.count()));
        postLost();
      }
      changed_.wait_for(guard, retry, [&] { return stopping_; });
      retry = std::min(retry * 2, options_.lastRetry);
      continue;
    }
    retry = options_.firstRetry;
    outageNoted = false;
    runStream();
    std::lock_guard guard(lock_);
    if (!stopping_) postLost();
  }
}

bool DaemonClient::greet(std::chrono::milliseconds limit) {
  ctl::HelloRequest request;
  request.set_session(session_);
  ctl::HelloResponse hello;
  grpc::ClientContext context;
  context.set_deadline(std::chrono::system_clock::now() + limit);
  if (!stub_->Hello(&context, request, &hello).ok()) return false;

  std::lock_guard guard(lock_);
  const bool known = !instance_.empty();
  const bool emptied = known && hello.instance() != instance_;
  instance_ = hello.instance();
  up_ = true;
  if (emptied) {
    // What was meant for the old daemon is dropped; the agent is started again and
    // programs the new one from the beginning.
    unsent_.clear();
    unanswered_.clear();
    waitingCommands_ = 0;
    answeredThrough_ = handedOverThrough_;
    lostPosted_ = false;
    Arrival back{Arrival::Kind::backEmpty, {}, {}};
    back.replies.set_applied_through(handedOverThrough_);
    arrive(std::move(back));
    changed_.notify_all();
    return true;
  }
  answeredThrough_ = std::max(answeredThrough_, hello.applied_through());
  // What the daemon has not applied goes again, in its order, before what was never sent.
  while (!unanswered_.empty()) {
    if (lastSeqOf(*unanswered_.back()) > answeredThrough_) {
      unsent_.push_front(std::move(unanswered_.back()));
    } else {
      waitingCommands_ -= static_cast<std::size_t>(unanswered_.back()->commands_size());
    }
    unanswered_.pop_back();
  }
  if (std::exchange(lostPosted_, false)) arrive(Arrival{Arrival::Kind::back, {}, {}});
  changed_.notify_all();
  return true;
}

void DaemonClient::runStream() {
  grpc::ClientContext context;
  {
    std::lock_guard guard(lock_);
    if (stopping_) return;
    streamContext_ = &context;
  }
  auto stream = stub_->RunCommands(&context);
  bool broken = false;
  std::thread reader([&] { readReplies(*stream, broken); });
  for (;;) {
    BatchPtr batch;
    {
      std::unique_lock guard(lock_);
      changed_.wait(guard, [&] { return stopping_ || broken || !unsent_.empty(); });
      if (stopping_ || broken) break;
      batch = unsent_.front();
      unsent_.pop_front();
      unanswered_.push_back(batch);
    }
    if (!stream->Write(*batch)) break;
  }
  context.TryCancel();
  reader.join();
  (void)stream->Finish();
  std::lock_guard guard(lock_);
  streamContext_ = nullptr;
}

void DaemonClient::readReplies(
    grpc::ClientReaderWriter<ctl::CommandBatch, ctl::ReplyBatch>& stream, bool& broken) {
  ctl::ReplyBatch batch;
  while (stream.Read(&batch)) {
    std::lock_guard guard(lock_);
    answeredThrough_ = std::max(answeredThrough_, batch.applied_through());
    while (!unanswered_.empty() && lastSeqOf(*unanswered_.front()) <= answeredThrough_) {
      waitingCommands_ -= static_cast<std::size_t>(unanswered_.front()->commands_size());
      unanswered_.pop_front();
    }
    if (batch.replies_size() > 0) arrive(Arrival{Arrival::Kind::replies, std::move(batch), {}});
    changed_.notify_all();
  }
  std::lock_guard guard(lock_);
  broken = true;
  changed_.notify_all();
}

}  // namespace Remote
