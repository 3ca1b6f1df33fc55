#include "host/IsolatedRun.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace VekHost {

namespace {

// The result crosses the pipe as: status, steps run, expectations passed, then each message,
// every field ended by a NUL.
std::string encode(const RunResult& result) {
  std::string text;
  for (int number : {result.exitCode(), result.stepsRun, result.expectationsPassed}) {
    text += std::to_string(number) + '\0';
  }
  for (const std::string& message : result.messages) text += message + '\0';
  return text;
}

std::optional<RunResult> decode(const std::string& text) {
  std::vector<std::string> fields;
  std::istringstream in(text);
  for (std::string field; std::getline(in, field, '\0');) fields.push_back(field);
  if (fields.size() < 3) return std::nullopt;
  RunResult result;
  const int status = std::atoi(fields[0].c_str());
  if (status < 0 || status > 2) return std::nullopt;
  result.status = static_cast<RunResult::Status>(status);
  result.stepsRun = std::atoi(fields[1].c_str());
  result.expectationsPassed = std::atoi(fields[2].c_str());
  result.messages.assign(fields.begin() + 3, fields.end());
  return result;
}

void writeAll(int fd, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
    if (written <= 0) return;
    done += static_cast<std::size_t>(written);
  }
}

RunResult ended(const std::string& label, const std::string& how) {
  RunResult result;
  result.status = RunResult::Status::failed;
  result.messages.push_back(label + ": the run " + how);
  return result;
}

}  // namespace

RunResult runIsolated(const std::string& label, const std::function<RunResult()>& run) {
  int fds[2];
  if (::pipe(fds) != 0)
    return ended(label, fmt::format("could not start: {}", std::strerror(errno)));
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child < 0) return ended(label, fmt::format("could not start: {}", std::strerror(errno)));
  if (child == 0) {
    ::close(fds[0]);
    RunResult result;
    try {
      result = run();
    } catch (const std::exception& error) {
      result = ended(label, std::string("raised an exception: ") + error.what());
    }
    writeAll(fds[1], encode(result));
    std::cout.flush();
    std::fflush(nullptr);
    ::_exit(0);
  }
  ::close(fds[1]);
  std::string text;
  char buffer[4096];
  for (ssize_t got; (got = ::read(fds[0], buffer, sizeof buffer)) != 0;) {
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) break;
    text.append(buffer, static_cast<std::size_t>(got));
  }
  ::close(fds[0]);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) {
    return ended(label, fmt::format("ended by signal {} ({})", WTERMSIG(status),
                                    strsignal(WTERMSIG(status))));
  }
  if (auto result = decode(text)) return *result;
  return ended(label, fmt::format("ended with exit status {} before it finished",
                                  WIFEXITED(status) ? WEXITSTATUS(status) : -1));
}

}  // namespace VekHost
