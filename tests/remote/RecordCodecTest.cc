#include <gtest/gtest.h>

#include "proto/bess.pb.h"
#include "proto/vek.pb.h"
#include "remote/RecordCodec.h"
#include "runtime/vek/CommandLog.h"
#include "runtime/vek/GrpcCmd.h"
#include "runtime/vek/ModuleCmdBase.h"

namespace RemoteTest {
namespace {

namespace ctl = vek::control;

// Every kind of record reads back as the record that was sent: the daemon applies what the
// agent queued, field for field.
TEST(RecordCodecTest, EveryKindOfRecordReadsBackAsItWasSent) {
  auto init = std::make_shared<vek::pb::MfibArg>();
  init->set_vrfname("red");
  init->set_size(1024);
  auto* route = new vek::pb::MfibRouteArg;
  route->set_group(std::string("\xef\x01\x01\x01", 4));
  auto* port = new bess::pb::CreatePortRequest;
  port->set_name("rx0");
  port->set_driver("PCAPPort");
  const std::vector<Vek::ChannelRecord> records{
      Vek::CreateModuleRecord{"fib", 26, 8, 16, 0, 4, init},
      Vek::CreateModuleRecord{"bare", 28, 1, 4, 0, 4, nullptr},
      Vek::ConnectRecord{{"meta", 1, "fib", 0}},
      Vek::DisconnectRecord{{"meta", 1, "fib", 0}},
      Vek::ModuleCmdRecord{Vek::moduleCmdFactory("fib", "addMroute", route, true), true},
      Vek::GroupCmdRecord{"mfaAgent", Lumo::makePtr<Vek::GrpcCmd>(port, Vek::createPortRequest)},
      Vek::AllocateCounterRecord{"fib", "Rx_Pkt", Vek::counterUnitPackets, Vek::CounterId(7)},
      Vek::FreeCountersRecord{"fib"},
      Vek::DestroyModuleRecord{"fib"},
  };
  Remote::RecordCodec codec;
  for (const Vek::ChannelRecord& record : records) {
    ctl::QueuedCommand wire;
    Remote::RecordCodec::encode(record, &wire);
    ctl::QueuedCommand parsed;
    ASSERT_TRUE(parsed.ParseFromString(wire.SerializeAsString()));
    Remote::RecordCodec::Decoded decoded = codec.decode(parsed);
    ASSERT_TRUE(decoded.record) << decoded.problem;
    EXPECT_EQ(Vek::CommandLog::entryOf(*decoded.record), Vek::CommandLog::entryOf(record));
    if (const auto* cmd = std::get_if<Vek::ModuleCmdRecord>(decoded.record.get())) {
      EXPECT_TRUE(cmd->wantResponse);
    }
  }
}

TEST(RecordCodecTest, ACommandThatCannotBeReadSaysWhy) {
  Remote::RecordCodec codec;
  ctl::QueuedCommand unknownType;
  unknownType.mutable_module_command()->set_name("fib");
  unknownType.mutable_module_command()->mutable_arg()->set_type_url("type.googleapis.com/no.Such");
  EXPECT_FALSE(codec.decode(unknownType).record);
  EXPECT_NE(codec.decode(unknownType).problem.find("no.Such"), std::string::npos);

  ctl::QueuedCommand badBytes;
  badBytes.mutable_daemon_request()->mutable_request()->set_type_url(
      "type.googleapis.com/bess.pb.CreatePortRequest");
  badBytes.mutable_daemon_request()->mutable_request()->set_value("\xff\xff\xff");
  EXPECT_FALSE(codec.decode(badBytes).record);

  EXPECT_FALSE(codec.decode(ctl::QueuedCommand()).record);
}

}  // namespace
}  // namespace RemoteTest
