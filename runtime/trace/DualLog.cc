#include "runtime/trace/DualLog.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"
#include "runtime/trace/TraceRecord.h"

namespace Trace {

DualLog::~DualLog() { closeFile(); }

void DualLog::closeFile() {
  if (out_ != stderr) std::fclose(out_);
  out_ = stderr;
  path_.clear();
}

void DualLog::fileIs(const std::string& path) {
  std::lock_guard lock(mutex_);
  if (path.empty()) {
    closeFile();
    return;
  }
  std::FILE* file = std::fopen(path.c_str(), "a");
  if (!file) {
    throw Lumo::Exception(fmt::format("cannot open trace file {}: {}", path, std::strerror(errno)));
  }
  closeFile();
  out_ = file;
  path_ = path;
}

std::string DualLog::file() {
  std::lock_guard lock(mutex_);
  return path_;
}

void DualLog::sink_it_(const spdlog::details::log_msg& msg) {
  line_.clear();
  formatTraceLine(line_, msg.level, msg.time, Impl::recordTimeSimulated(), msg.source.filename,
                  msg.source.line, msg.source.funcname,
                  std::string_view(msg.payload.data(), msg.payload.size()));
  std::fwrite(line_.data(), 1, line_.size(), out_);
}

}  // namespace Trace
