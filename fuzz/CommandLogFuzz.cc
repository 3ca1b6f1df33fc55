// Lines of the command log, as a daemon process receives them: each is read back into the
// record that wrote it, sent as the wire command the daemon receives, decoded as the daemon
// decodes it and applied to the data-plane model. A line is read or refused with a reason, a
// command the model cannot read or apply ends in an error record; nothing crashes, and the
// model can still be dumped and drawn after any sequence of commands.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "dataplane/CommandLogReader.h"
#include "dataplane/Model.h"
#include "remote/RecordCodec.h"
#include "runtime/vek/ChannelReplySink.h"

namespace {

// Counts what the model sends back; nothing waits for it.
class Replies final : public Vek::ChannelReplySink {
 public:
  void responseArrived(std::unique_ptr<vek::pb::ModuleResponse>) override {}
  void errorArrived(std::unique_ptr<vek::pb::ModuleError>) override { ++errors; }
  void groupReplyArrived(const Vek::GroupCmdRecord&, bess::pb::CommandResponse&) override {}
  void farEndLost() override {}
  void farEndBack(bool) override {}

  std::size_t errors = 0;
};

// The longest log a single input may hold; past it a run measures the JSON reader.
constexpr std::size_t kMostLines = 4096;

[[noreturn]] void fault(const char* what, std::string_view line) {
  std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(line.size()), line.data());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  Dataplane::Model model(2);
  Replies replies;
  model.replySinkIs(&replies);
  Dataplane::CommandLogReader reader;
  Remote::RecordCodec codec;
  for (std::size_t lines = 0; !rest.empty() && lines < kMostLines; ++lines) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    const Dataplane::CommandLogReader::Read read = reader.read(line);
    if (!read.record) {
      if (read.problem.empty()) fault("a line neither read nor refused", line);
      continue;
    }
    vek::control::QueuedCommand command;
    Remote::RecordCodec::encode(*read.record, &command);
    const Remote::RecordCodec::Decoded decoded = codec.decode(command);
    if (decoded.record) {
      model.deliver(*decoded.record);
    } else if (decoded.problem.empty()) {
      fault("a command neither decoded nor refused", line);
    }
  }
  // Whatever the commands were, what the model holds can be shown.
  (void)model.dump().dump();
  (void)model.dot();
  return 0;
}
