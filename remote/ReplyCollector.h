#pragma once

#include <cstdint>
#include <memory>

#include "proto/dataplane_control.pb.h"
#include "runtime/vek/ChannelReplySink.h"

namespace Remote {

// The daemon's side of the reply sink: what the model answers to the command being applied
// goes into the batch sent back, under that command's number.
class ReplyCollector final : public Vek::ChannelReplySink {
 public:
  void commandIs(std::uint64_t seq, vek::control::ReplyBatch* batch) noexcept {
    seq_ = seq;
    batch_ = batch;
  }

  void responseArrived(std::unique_ptr<vek::pb::ModuleResponse> response) override {
    add()->mutable_response()->Swap(response.get());
  }
  void errorArrived(std::unique_ptr<vek::pb::ModuleError> error) override {
    add()->mutable_error()->Swap(error.get());
  }
  void groupReplyArrived(const Vek::GroupCmdRecord&, bess::pb::CommandResponse& reply) override {
    add()->mutable_daemon_reply()->Swap(&reply);
  }
  // The daemon is its own far end.
  void farEndLost() override {}
  void farEndBack(bool) override {}

 private:
  vek::control::QueuedReply* add() {
    auto* reply = batch_->add_replies();
    reply->set_seq(seq_);
    return reply;
  }

  std::uint64_t seq_ = 0;
  vek::control::ReplyBatch* batch_ = nullptr;
};

}  // namespace Remote
