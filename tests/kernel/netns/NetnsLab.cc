#include "tests/kernel/netns/NetnsLab.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

namespace KernelLab {

namespace {

// No command of a lab may take longer than this.
constexpr const char* kTimeout = "timeout 10 ";
constexpr auto kDaemonStartLimit = std::chrono::seconds(5);

std::atomic<int> labsMade{0};

// Namespaces of labs whose process is gone (a test stopped by its time limit) go too.
void removeOrphans() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/run/netns", error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with("vekt-")) continue;
    const auto dash = name.find('-', 5);
    const std::string pid = name.substr(5, dash == std::string::npos ? dash : dash - 5);
    if (pid.empty() || pid.find_first_not_of("0123456789") != std::string::npos) continue;
    if (std::filesystem::exists("/proc/" + pid)) continue;
    std::system(("ip netns del " + name + " 2>/dev/null").c_str());
  }
}

}  // namespace

std::string NetnsLab::run(const std::string& command) {
  const std::string bounded = kTimeout + command + " 2>&1";
  FILE* pipe = ::popen(bounded.c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run: " + command);
  std::string output;
  std::array<char, 4096> chunk;
  while (std::size_t got = std::fread(chunk.data(), 1, chunk.size(), pipe)) {
    output.append(chunk.data(), got);
  }
  const int status = ::pclose(pipe);
  if (status != 0) throw std::runtime_error(command + " failed: " + output);
  return output;
}

std::optional<std::string> NetnsLab::whyNot() {
  if (::geteuid() != 0) return "not root: network namespaces cannot be made";
  if (::access("/usr/sbin/smcrouted", X_OK) != 0) {
    return "smcroute is not installed (scripts/setup-deps.sh demo installs it)";
  }
  const std::string probe = "vekt-probe-" + std::to_string(::getpid());
  try {
    run("ip netns add " + probe);
  } catch (const std::exception& error) {
    return std::string("network namespaces cannot be made here: ") + error.what();
  }
  std::system(("ip netns del " + probe + " 2>/dev/null").c_str());
  removeOrphans();
  return std::nullopt;
}

NetnsLab::NetnsLab()
    : name_("vekt-" + std::to_string(::getpid()) + "-" + std::to_string(labsMade++)) {
  dir_ = (std::filesystem::temp_directory_path() / name_).string();
  std::filesystem::create_directories(dir_);
  run("ip netns add " + name_);
  try {
    ip("link add et1 type veth peer name et2");
    ip("link add et3 type veth peer name et4");
    for (const char* device : {"lo", "et1", "et2", "et3", "et4"}) {
      ip(std::string("link set ") + device + " up");
    }
    std::ofstream(dir_ + "/smcroute.conf").flush();
    startDaemon();
  } catch (...) {
    std::system(("ip netns del " + name_ + " 2>/dev/null").c_str());
    std::filesystem::remove_all(dir_);
    throw;
  }
}

NetnsLab::~NetnsLab() {
  stopDaemon();
  std::system(("ip netns del " + name_ + " 2>/dev/null").c_str());
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void NetnsLab::ip(const std::string& args) const { run("ip -n " + name_ + " " + args); }

void NetnsLab::ctl(const std::string& args) const {
  run("ip netns exec " + name_ + " smcroutectl -u " + dir_ + "/smcroute.sock " + args);
}

void NetnsLab::ctlBatch(const std::vector<std::string>& lines) const {
  const std::string file = dir_ + "/batch";
  {
    std::ofstream out(file);
    for (const std::string& line : lines) out << line << '\n';
  }
  run("ip netns exec " + name_ + " smcroutectl -b -u " + dir_ + "/smcroute.sock < " + file);
}

void NetnsLab::startDaemon() {
  const std::string socket = dir_ + "/smcroute.sock";
  std::filesystem::remove(socket);
  daemon_ = ::fork();
  if (daemon_ < 0) throw std::runtime_error("cannot start the routing daemon");
  if (daemon_ == 0) {
    const std::string conf = dir_ + "/smcroute.conf";
    const std::string pid = dir_ + "/smcroute.pid";
    // The daemon never outlives a minute, whatever becomes of the test.
    ::execlp("ip", "ip", "netns", "exec", name_.c_str(), "timeout", "60", "smcrouted", "-n",
             "-f", conf.c_str(), "-u", socket.c_str(), "-P", pid.c_str(), "-l", "err",
             static_cast<char*>(nullptr));
    ::_exit(127);
  }
  const auto limit = std::chrono::steady_clock::now() + kDaemonStartLimit;
  while (!std::filesystem::exists(socket)) {
    if (std::chrono::steady_clock::now() > limit) {
      stopDaemon();
      throw std::runtime_error("the routing daemon did not start in " + name_);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

void NetnsLab::stopDaemon() {
  if (daemon_ <= 0) return;
  // `timeout` passes the signal on to the daemon, which takes its routes out as it goes.
  ::kill(daemon_, SIGTERM);
  int status = 0;
  ::waitpid(daemon_, &status, 0);
  daemon_ = -1;
}

std::set<NetnsLab::Route> NetnsLab::kernelRoutes() const {
  std::set<Route> routes;
  for (const char* family : {"ipv4", "ipv6"}) {
    const std::string flag = std::string(family) == "ipv6" ? "-6 " : "-4 ";
    const auto listed =
        nlohmann::json::parse(run("ip -j " + flag + "-n " + name_ + " mroute show table all"));
    for (const auto& entry : listed) {
      std::vector<std::string> oifs;
      for (const auto& hop : entry.value("multipath", nlohmann::json::array())) {
        oifs.push_back(hop.at("oif").get<std::string>());
      }
      std::sort(oifs.begin(), oifs.end());
      std::string source = entry.value("src", "");
      if (source.empty() || source == "0.0.0.0" || source == "::") source = "*";
      routes.emplace(family, source, entry.at("dst").get<std::string>(),
                     entry.at("iif").get<std::string>(), std::move(oifs));
    }
  }
  return routes;
}

}  // namespace KernelLab
