#include <gtest/gtest.h>

#include <vector>

#include "proto/bess.pb.h"
#include "runtime/lumo/Publisher.h"
#include "runtime/vek/ModuleStatus.h"
#include "tests/runtime/vek/ChannelFixture.h"

namespace VekTest {
namespace {

using ::testing::ElementsAre;

// Counts the arrivals a ModuleStatus publishes and, like the agent, drains the queue.
class StatusReactor {
 public:
  explicit StatusReactor(Vek::ModuleStatus& status) : status_(status) {
    status.subscriberAdd(&subscriber_);
  }
  std::function<void()> onResponse;
  std::vector<std::string> responses;
  std::vector<std::string> errors;

 private:
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* s, short id, const void*, const void*) {
    StatusReactor* self = Lumo::OwnedSubscriber<StatusReactor>::ownerOf(s);
    if (id == Vek::ModuleStatus::responseQueueAttrId) {
      while (auto response = self->status_.responseQueueDeq()) {
        self->responses.push_back(response->action());
        if (self->onResponse) self->onResponse();
      }
    } else if (id == Vek::ModuleStatus::errorQueueAttrId) {
      while (auto error = self->status_.errorQueueDeq()) self->errors.push_back(error->msg());
    }
  }
  Vek::ModuleStatus& status_;
  Lumo::OwnedSubscriber<StatusReactor> subscriber_{this, &dispatch};
};

// A daemon-level command that keeps the reply it was given.
class KeepingCmd : public Vek::GrpcCmd {
 public:
  KeepingCmd() : GrpcCmd(new bess::pb::EmptyRequest, Vek::resumeAllRequest) {}
  void processResponse(google::protobuf::Message* response) override {
    GrpcCmd::processResponse(response);
    replies.push_back(static_cast<bess::pb::CommandResponse*>(response)->error().code());
  }
  std::vector<int> replies;
};

class ChannelTest : public ChannelFixture {
 protected:
  void enqueueGroupCmd() {
    group->cmdBatchEnq(
        Lumo::makePtr<Vek::GrpcCmd>(new bess::pb::EmptyRequest, Vek::resumeAllRequest));
  }
  // Answers every module command, and refuses those named "bad".
  void answerEveryCommand() {
    backend.answer = [](const Vek::ChannelRecord& record, Vek::ChannelReplySink& replies) {
      auto* cmd = std::get_if<Vek::ModuleCmdRecord>(&record);
      if (!cmd) return;
      if (cmd->cmd->cmdName() == "bad") {
        auto error = std::make_unique<vek::pb::ModuleError>();
        error->set_module(cmd->cmd->moduleName().str());
        error->set_type(1);
        error->set_code(5);
        error->set_msg("no room");
        replies.errorArrived(std::move(error));
      } else if (cmd->wantResponse) {
        auto response = std::make_unique<vek::pb::ModuleResponse>();
        response->set_action(cmd->cmd->cmdName().str());
        replies.responseArrived(std::move(response));
      }
    };
  }
};

TEST_F(ChannelTest, ModuleAndGroupCommandsKeepOneOrder) {
  auto m = module("m");
  pair->config()->cmdBatchEnq(command("m", "first"));
  enqueueGroupCmd();  // waits in the group until its version is raised
  pair->config()->cmdBatchEnq(command("m", "second"));
  group->enqueueVersionInc(1);
  pair->config()->cmdBatchEnq(command("m", "third"));
  channel->pump();
  EXPECT_THAT(backend.summary(),
              ElementsAre("createModule m", "moduleCmd m first", "moduleCmd m second",
                          "groupCmd agent", "moduleCmd m third"));
  EXPECT_EQ(group->enqueueVersion(), 1u);
}

// Commands wait for a backend to carry them, and a group's for the group to be registered.
TEST_F(ChannelTest, HeldCommandsGoOnceTheBackendAndTheirGroupAreThere) {
  channel->backendIs(nullptr);
  auto m = module("m");
  pair->config()->cmdBatchEnq(command("m", "held"));
  channel->pump();
  EXPECT_EQ(channel->pendingRecords(), 2u);

  auto late = Lumo::makePtr<Vek::CmdConfigGroup>("late");
  late->cmdBatchEnq(Lumo::makePtr<Vek::GrpcCmd>(new bess::pb::EmptyRequest, Vek::resumeAllRequest));
  late->enqueueVersionInc(1);
  channel->backendIs(&backend);
  channel->pump();
  EXPECT_THAT(backend.summary(), ElementsAre("createModule m", "moduleCmd m held"));
  global->cmdConfigGroupIs(late);
  EXPECT_EQ(global->cmdConfigGroup("late"), late);
  channel->pump();
  EXPECT_THAT(backend.summary(),
              ElementsAre("createModule m", "moduleCmd m held", "groupCmd late"));
}

TEST_F(ChannelTest, RepliesComeBackOnlyForCommandsQueuedWhileResponsesAreRead) {
  answerEveryCommand();
  StatusReactor reactor(*pair->status());
  auto m = module("m");
  EXPECT_TRUE(pair->config()->ignoreResponse());
  pair->config()->cmdBatchEnq(command("m", "ignored"));
  pair->config()->ignoreResponseIs(false);
  pair->config()->cmdBatchEnq(command("m", "read"));
  channel->pump();
  EXPECT_THAT(reactor.responses, ElementsAre("read"));
  EXPECT_EQ(pair->status()->responseQueueSize(), 0u);
}

TEST_F(ChannelTest, ErrorsReachTheErrorQueueAndTheLog) {
  answerEveryCommand();
  StatusReactor reactor(*pair->status());
  auto m = module("m");
  pair->config()->cmdBatchEnq(command("m", "bad"));
  channel->pump();
  EXPECT_THAT(reactor.errors, ElementsAre("no room"));
  const auto& log = channel->commandLog().entries();
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(log[2].dump(),
            R"({"seq":3,"kind":"error","module":"m","type":1,"code":5,"msg":"no room"})");
  EXPECT_EQ(channel->commandLog().entriesSince(2).front(), log[2]);
  EXPECT_TRUE(channel->commandLog().entriesSince(3).empty());
}

TEST_F(ChannelTest, CommandsQueuedByAReactorTravelInTheSamePump) {
  answerEveryCommand();
  StatusReactor reactor(*pair->status());
  auto m = module("m");
  Lumo::Ptr<Vek::Module> late;
  reactor.onResponse = [&] {
    if (late) return;
    late = module("late");
    channel->pump();  // from inside a delivery: does nothing
    pair->config()->cmdBatchEnq(command("m", "follow-up"));
  };
  pair->config()->ignoreResponseIs(false);
  pair->config()->cmdBatchEnq(command("m", "ask"));
  channel->pump();
  // A module made before a record reaches the daemon before it.
  EXPECT_THAT(backend.summary(), ElementsAre("createModule m", "moduleCmd m ask",
                                             "createModule late", "moduleCmd m follow-up"));
  EXPECT_EQ(channel->pendingRecords(), 0u);
}

TEST_F(ChannelTest, GroupRepliesGoToTheCommandAndFailuresToTheLog) {
  backend.answer = [](const Vek::ChannelRecord& record, Vek::ChannelReplySink& replies) {
    bess::pb::CommandResponse reply;
    reply.mutable_error()->set_code(22);
    reply.mutable_error()->set_errmsg("bad port");
    replies.groupReplyArrived(std::get<Vek::GroupCmdRecord>(record), reply);
  };
  auto cmd = Lumo::makePtr<KeepingCmd>();
  group->cmdBatchEnq(cmd);
  group->enqueueVersionInc(1);
  channel->pump();
  EXPECT_THAT(cmd->replies, ElementsAre(22));
  EXPECT_EQ(channel->commandLog().entries().back().dump(),
            R"({"seq":2,"kind":"error","group":"agent","type":10,"code":22,"msg":"bad port"})");
}

TEST_F(ChannelTest, LateAnswersReachTheQueuesBeforeTheNextDeliveriesAndEachPumpEndsInAFlush) {
  StatusReactor reactor(*pair->status());
  std::vector<std::string> seenAtAnswer;
  backend.answer = [&](const Vek::ChannelRecord& record, Vek::ChannelReplySink&) {
    const auto* cmd = std::get_if<Vek::ModuleCmdRecord>(&record);
    if (!cmd) return;
    std::string action = cmd->cmd->cmdName().str();
    backend.later.push_back([action](Vek::ChannelReplySink& replies) {
      auto response = std::make_unique<vek::pb::ModuleResponse>();
      response->set_action(action);
      replies.responseArrived(std::move(response));
    });
  };
  auto m = module("m");
  pair->config()->ignoreResponseIs(false);
  pair->config()->cmdBatchEnq(command("m", "first"));
  channel->pump();
  EXPECT_TRUE(reactor.responses.empty());
  reactor.onResponse = [&] { seenAtAnswer.push_back(backend.summary().back()); };
  pair->config()->cmdBatchEnq(command("m", "second"));
  channel->pump();
  // The answer to the first pump came before the second pump delivered anything.
  EXPECT_THAT(reactor.responses, ElementsAre("first"));
  EXPECT_THAT(seenAtAnswer, ElementsAre("moduleCmd m first"));
  EXPECT_THAT(backend.flushedAt, ElementsAre(2u, 3u));
  channel->pump();
  EXPECT_THAT(reactor.responses, ElementsAre("first", "second"));
}

TEST_F(ChannelTest, TheFarEndComingBackEmptyIsCountedOnceEach) {
  auto m = module("m");
  channel->pump();
  backend.later.push_back([](Vek::ChannelReplySink& replies) {
    replies.farEndLost();
    replies.farEndLost();
  });
  channel->pump();
  EXPECT_FALSE(channel->farEndUp());
  backend.later.push_back([](Vek::ChannelReplySink& replies) { replies.farEndBack(false); });
  channel->pump();
  EXPECT_TRUE(channel->farEndUp());
  EXPECT_EQ(channel->farEndRestarts(), 0u);
  backend.later.push_back([](Vek::ChannelReplySink& replies) {
    replies.farEndLost();
    replies.farEndBack(true);
  });
  channel->pump();
  EXPECT_TRUE(channel->farEndUp());
  EXPECT_EQ(channel->farEndRestarts(), 1u);
}

}  // namespace
}  // namespace VekTest
