#include "host/IsolatedRun.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "host/AgentAssertion.h"

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
  if (status < 0 || status > static_cast<int>(RunResult::Status::agentAssertion)) {
    return std::nullopt;
  }
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

using Clock = std::chrono::steady_clock;

std::optional<Clock::time_point> deadlineAfter(double seconds) {
  if (seconds <= 0) return std::nullopt;
  return Clock::now() +
         std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

// Reads `fd` to its end into `text`; false if the deadline came first.
bool readUntilClosed(int fd, std::optional<Clock::time_point> deadline, std::string& text) {
  char buffer[4096];
  for (;;) {
    int wait = -1;
    if (deadline) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now());
      if (left.count() <= 0) return false;
      wait = static_cast<int>(std::min<std::int64_t>(left.count(), INT32_MAX));
    }
    pollfd ready{fd, POLLIN, 0};
    const int polled = ::poll(&ready, 1, wait);
    if (polled < 0 && errno == EINTR) continue;
    if (polled == 0) return false;
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return true;
    text.append(buffer, static_cast<std::size_t>(got));
  }
}

RunResult ended(const std::string& label, const std::string& how) {
  RunResult result;
  result.status = RunResult::Status::failed;
  result.messages.push_back(label + ": the run " + how);
  return result;
}

}  // namespace

RunResult runIsolated(const std::string& label, const std::function<RunResult()>& run,
                      double timeLimit) {
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
    // An assertion of the agent ends the child with its line as the result.
    AgentAssertion assertion([fd = fds[1]](const std::string& line) {
      RunResult failed;
      failed.status = RunResult::Status::agentAssertion;
      failed.messages.push_back(line);
      writeAll(fd, encode(failed));
      ::_exit(0);
    });
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
  const bool inTime = readUntilClosed(fds[0], deadlineAfter(timeLimit), text);
  ::close(fds[0]);
  if (!inTime) ::kill(child, SIGKILL);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!inTime) {
    return ended(label,
                 fmt::format("took longer than its time limit of {} s and was stopped", timeLimit));
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
