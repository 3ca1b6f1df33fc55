#include <gtest/gtest.h>

#include "remote/RecordCodec.h"

namespace RemoteTest {
namespace {

namespace ctl = vek::control;

// That every kind of record reads back as it was sent, the daemon's end state equal to the
// model's in process, is what the remote channel test and the daemon scenarios show; here
// the commands that cannot be read.
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
