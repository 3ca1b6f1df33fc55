#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <grpcpp/grpcpp.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>

#include "dataplane/Model.h"
#include "remote/DaemonClient.h"
#include "remote/DaemonService.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace RemoteTest {
namespace {

using namespace std::chrono_literals;
namespace ctl = vek::control;

// A daemon-level command that keeps the codes of its replies.
class KeepingCmd : public Vek::GrpcCmd {
 public:
  explicit KeepingCmd(google::protobuf::Message* message, Vek::GrpcRequestType type)
      : GrpcCmd(message, type) {}
  void processResponse(google::protobuf::Message* response) override {
    codes.push_back(static_cast<bess::pb::CommandResponse*>(response)->error().code());
  }
  std::vector<int> codes;
};

// What the agent holds of one channel, over whichever backend.
struct World {
  explicit World(Vek::ChannelBackend& backend) {
    channel->backendIs(&backend);
    global->cmdConfigGroupIs(group);
  }
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<Vek::GrpcGlobalCmdConfig> global = Lumo::makePtr<Vek::GrpcGlobalCmdConfig>(channel);
  Lumo::Ptr<Vek::CmdConfigGroup> group = Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent");
  std::vector<Lumo::Ptr<Vek::Module>> modules;

  Lumo::Ptr<Vek::Module> module(const char* name, Vek::VekModule::ModuleClass moduleClass,
                                google::protobuf::Message* init = nullptr) {
    modules.push_back(
        Lumo::makePtr<Vek::Module>(name, moduleClass, 64, 64, 0, 4, init, pair));
    return modules.back();
  }
  void send(const char* module, const char* cmd, google::protobuf::Message* arg) {
    pair->config()->cmdBatchEnq(Vek::moduleCmdFactory(module, cmd, arg, true));
  }
  std::vector<std::string> errors() {
    std::vector<std::string> texts;
    while (auto e = pair->status()->errorQueueDeq()) texts.push_back(e->module() + " " + e->msg());
    return texts;
  }
};

vek::pb::MfibRouteArg* route(char groupByte) {
  auto* arg = new vek::pb::MfibRouteArg;
  arg->set_source(std::string("\x0a\x01\x01\x01", 4));
  arg->set_group(std::string("\xef\x01\x01", 3) + groupByte);
  return arg;
}

// A graph with a link, counters, routes, a port through the group, a registration whose
// reply is read, and two commands the daemon refuses.
void program(World& w, int routes, Lumo::Ptr<KeepingCmd>& port) {
  auto meta = w.module("meta", Vek::VekModule::metaData);
  auto* init = new vek::pb::MfibArg;
  init->set_vrfname("red");
  init->set_size(1024);
  auto fib = w.module("fib", Vek::VekModule::mfib, init);
  meta->connectViaReservedGate(fib, 0);
  // Gate lists of every length and a command of another type between routes: the daemon
  // reads each argument into a message it keeps for the type, which must carry nothing of
  // the argument before it.
  for (int i = 0; i < routes; ++i) {
    auto* arg = route(static_cast<char>(i % 200));
    for (int g = 0; g < i % 4; ++g) arg->add_gates()->set_gate(static_cast<std::uint32_t>(g));
    w.send("fib", "addMroute", arg);
    if (i % 50 == 0) {
      auto* size = new vek::pb::SizeArg;
      size->set_size(static_cast<std::uint32_t>(i));
      w.send("fib", "setMaxUnresolvedCacheEntries", size);
    }
  }
  w.send("nowhere", "addMroute", route(1));
  auto* request = new bess::pb::CreatePortRequest;
  request->set_name("rx0");
  request->set_driver("PCAPPort");
  port = Lumo::makePtr<KeepingCmd>(request, Vek::createPortRequest);
  w.group->cmdBatchEnq(port);
  w.group->enqueueVersionInc(1);
  w.group->cmdBatchEnq(Lumo::makePtr<KeepingCmd>(new bess::pb::DestroyPortRequest, Vek::destroyPortRequest));
  w.group->enqueueVersionInc(1);
  w.pair->config()->ignoreResponseIs(false);
  auto* tasks = new vek::pb::MfibTaskIdArg;
  tasks->set_vrf("red");
  w.send("fib", "regMfibTasks", tasks);
  w.pair->config()->ignoreResponseIs(true);
}

class RemoteChannelTest : public ::testing::Test {
 protected:
  RemoteChannelTest() {
    char dir[] = "/tmp/vek-remote-test-XXXXXX";
    dir_ = ::mkdtemp(dir);
    address_ = "unix:" + dir_ + "/d.sock";
  }
  ~RemoteChannelTest() override {
    stopServer();
    std::filesystem::remove_all(dir_);
  }

  void startServer(Remote::DaemonService& service) {
    grpc::ServerBuilder builder;
    builder.AddListeningPort(address_, grpc::InsecureServerCredentials());
    builder.RegisterService(&service);
    server_ = builder.BuildAndStart();
    ASSERT_TRUE(server_);
  }
  void stopServer() {
    if (!server_) return;
    server_->Shutdown(std::chrono::system_clock::now());
    server_->Wait();
    server_.reset();
  }
  std::unique_ptr<Remote::DaemonClient> client(std::size_t batch = 64) {
    Remote::DaemonClient::Options options{address_};
    options.batchCommands = batch;
    options.lastRetry = 50ms;
    return std::make_unique<Remote::DaemonClient>(options);
  }
  // What a step of the host waits for: every command answered, every answer worked.
  static void settle(World& w, Remote::DaemonClient& c) {
    w.channel->pump();
    do {
      ASSERT_TRUE(c.waitAnswered(10s));
      w.channel->pump();
    } while (c.repliesWaiting());
  }
  static void pumpUntil(World& w, const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!done() && std::chrono::steady_clock::now() < deadline) {
      w.channel->pump();
      std::this_thread::yield();
    }
    ASSERT_TRUE(done());
  }

  std::string dir_;
  std::string address_;
  std::unique_ptr<grpc::Server> server_;
};

TEST_F(RemoteChannelTest, TheDaemonEndsWhereTheModelInProcessEnds) {
  Dataplane::Model model(2);
  World local(model);
  Lumo::Ptr<KeepingCmd> localPort;
  program(local, 300, localPort);
  local.channel->pump();

  Remote::DaemonService service(2);
  startServer(service);
  auto c = client();
  World remote(*c);
  Lumo::Ptr<KeepingCmd> remotePort;
  program(remote, 300, remotePort);
  EXPECT_THAT(remotePort->codes, ::testing::IsEmpty()) << "a proxy never waits for a reply";
  settle(remote, *c);

  EXPECT_EQ(nlohmann::json::parse(c->dump(5s)), nlohmann::json::parse(model.dump().dump()));
  EXPECT_EQ(c->dot(5s), model.dot());
  EXPECT_EQ(remote.errors(), local.errors());
  EXPECT_EQ(remote.pair->status()->responseQueueSize(), 1u);
  EXPECT_EQ(remote.pair->status()->responseQueueDeq()->action(), "regMfibTasks");
  EXPECT_EQ(remotePort->codes, localPort->codes);
}

TEST_F(RemoteChannelTest, CommandsWaitForALostConnectionAndGoOnceEachInOrder) {
  Remote::DaemonService service(2);
  startServer(service);
  auto c = client(8);
  World w(*c);
  Dataplane::Model model(2);
  World expected(model);
  Lumo::Ptr<KeepingCmd> port;
  program(w, 20, port);
  program(expected, 20, port);
  settle(w, *c);

  stopServer();
  pumpUntil(w, [&] { return !w.channel->farEndUp(); });
  for (int i = 20; i < 120; ++i) {
    w.send("fib", "addMroute", route(static_cast<char>(i)));
    expected.send("fib", "addMroute", route(static_cast<char>(i)));
  }
  w.channel->pump();
  expected.channel->pump();
  EXPECT_EQ(c->commandsWaiting(), 100u);
  EXPECT_FALSE(c->waitAnswered(0ms));

  startServer(service);  // the same daemon, with all it held
  settle(w, *c);
  EXPECT_TRUE(w.channel->farEndUp());
  EXPECT_EQ(w.channel->farEndRestarts(), 0u);
  EXPECT_EQ(nlohmann::json::parse(c->dump(5s)), nlohmann::json::parse(model.dump().dump()));
  EXPECT_EQ(w.errors(), expected.errors());
}

TEST_F(RemoteChannelTest, ADaemonBackEmptyIsCountedAndGetsNothingMeantForTheOldOne) {
  auto first = std::make_unique<Remote::DaemonService>(2);
  startServer(*first);
  auto c = client();
  World w(*c);
  Lumo::Ptr<KeepingCmd> port;
  program(w, 5, port);
  settle(w, *c);
  EXPECT_EQ(w.errors().size(), 1u);  // the command for "nowhere"
  stopServer();
  pumpUntil(w, [&] { return !w.channel->farEndUp(); });
  w.send("fib", "addMroute", route(9));
  w.channel->pump();

  Remote::DaemonService second(2);
  startServer(second);
  pumpUntil(w, [&] { return w.channel->farEndRestarts() == 1; });
  EXPECT_TRUE(w.channel->farEndUp());
  EXPECT_TRUE(c->waitAnswered(0ms));
  EXPECT_EQ(nlohmann::json::parse(c->dump(5s))["modules"], nlohmann::json::object());
  EXPECT_TRUE(w.errors().empty()) << "nothing of the old daemon's reached the new one";
  // What is queued from now on is the new daemon's.
  auto again = w.module("again", Vek::VekModule::metaData);
  settle(w, *c);
  EXPECT_TRUE(nlohmann::json::parse(c->dump(5s))["modules"].contains("again"));
}

TEST_F(RemoteChannelTest, ACommandTheDaemonCannotReadIsRefusedWithAnErrorRecord) {
  Remote::DaemonService service(1);
  startServer(service);
  auto stub = ctl::DataplaneControl::NewStub(
      grpc::CreateChannel(address_, grpc::InsecureChannelCredentials()));
  grpc::ClientContext hello;
  ctl::HelloRequest greeting;
  greeting.set_session(7);
  ctl::HelloResponse answer;
  ASSERT_TRUE(stub->Hello(&hello, greeting, &answer).ok());

  grpc::ClientContext context;
  auto stream = stub->RunCommands(&context);
  ctl::CommandBatch batch;
  batch.set_session(7);
  auto* unreadable = batch.add_commands();
  unreadable->set_seq(1);
  unreadable->mutable_module_command()->set_name("fib");
  unreadable->mutable_module_command()->mutable_arg()->set_type_url("x/no.Such");
  auto* request = batch.add_commands();
  request->set_seq(2);
  request->mutable_daemon_request()->mutable_request()->set_type_url("x/no.Such");
  ASSERT_TRUE(stream->Write(batch));
  ctl::ReplyBatch replies;
  ASSERT_TRUE(stream->Read(&replies));
  EXPECT_EQ(replies.applied_through(), 2u);
  ASSERT_EQ(replies.replies_size(), 2);
  EXPECT_EQ(replies.replies(0).error().module(), "fib");
  EXPECT_EQ(replies.replies(0).error().type(), Vek::moduleCmdError);
  EXPECT_NE(replies.replies(1).daemon_reply().error().code(), 0);
  // Sent again, as after a broken connection: answered as done and not applied twice.
  ASSERT_TRUE(stream->Write(batch));
  ASSERT_TRUE(stream->Read(&replies));
  EXPECT_EQ(replies.replies_size(), 0);
  stream->WritesDone();
  EXPECT_TRUE(stream->Finish().ok());

  // The daemon's own requests, one by one, answer as the stream does.
  grpc::ClientContext one;
  bess::pb::CommandRequest command;
  command.set_name("nowhere");
  command.set_cmd("addMroute");
  bess::pb::CommandResponse response;
  ASSERT_TRUE(stub->ModuleCommand(&one, command, &response).ok());
  EXPECT_NE(response.error().code(), 0);
}

TEST_F(RemoteChannelTest, AQueuePastItsBoundIsTracedOnceAndKeepsEveryCommand) {
  Remote::DaemonClient::Options options{address_};  // nobody listens
  options.queueBound = 10;
  options.batchCommands = 4;
  Remote::DaemonClient c(options);
  World w(c);
  const std::uint64_t mark = Trace::mark();
  auto meta = w.module("meta", Vek::VekModule::metaData);
  for (int i = 0; i < 30; ++i) w.send("meta", "setSize", new vek::pb::SizeArg);
  w.channel->pump();
  EXPECT_EQ(c.commandsWaiting(), 31u);
  int traced = 0;
  for (const auto& record : Trace::recordsSince(mark)) {
    traced += record.format().find("past its bound of 10") != std::string::npos;
  }
  EXPECT_EQ(traced, 1);
}

}  // namespace
}  // namespace RemoteTest
