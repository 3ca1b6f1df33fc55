#pragma once

#include <spdlog/sinks/base_sink.h>

#include <cstdio>
#include <mutex>
#include <string>

namespace Trace {

// The text layer: one line a record, to stderr or to a file the host names.
class DualLog final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  DualLog() = default;
  ~DualLog() override;

  // An empty path goes back to stderr. A file that cannot be opened raises
  // Lumo::Exception and leaves the layer as it was.
  void fileIs(const std::string& path);
  std::string file();

 protected:
  void sink_it_(const spdlog::details::log_msg& msg) override;
  void flush_() override { std::fflush(out_); }

 private:
  void closeFile();

  std::FILE* out_ = stderr;
  std::string path_;
  std::string line_;
};

}  // namespace Trace
