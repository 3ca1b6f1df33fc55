#include "host/DaemonProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace VekHost {

DaemonProcess::DaemonProcess(unsigned workers) : workers_(workers) {
  char dir[] = "/tmp/vek-dataplaned-XXXXXX";
  if (!::mkdtemp(dir)) throw std::runtime_error("cannot make a directory for the daemon's socket");
  dir_ = dir;
  address_ = "unix:" + dir_ + "/dataplane.sock";
  start();
}

DaemonProcess::~DaemonProcess() {
  kill();
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

std::string DaemonProcess::program() {
  if (const char* given = std::getenv("VEK_DATAPLANED"); given && *given) return given;
#ifdef VEK_DATAPLANED_PATH
  if (std::filesystem::exists(VEK_DATAPLANED_PATH)) return VEK_DATAPLANED_PATH;
#endif
  std::error_code ignored;
  return (std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path() /
          "vek-dataplaned")
      .string();
}

void DaemonProcess::start() {
  if (running()) return;
  const std::string path = program();
  const std::string workers = std::to_string(workers_);
  std::vector<const char*> argv{path.c_str(), "--listen", address_.c_str(), "--workers",
                                workers.c_str(), nullptr};
  const pid_t parent = ::getpid();
  const pid_t pid = ::fork();
  if (pid < 0) throw std::runtime_error("cannot start " + path);
  if (pid == 0) {
    // A daemon of the run's own goes with the host, also when the host is killed or crashes
    // and no destructor runs; a host that died before this line leaves it nothing to wait for.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(127);
    // The daemon's own words stay out of the host's output.
    const int devNull = ::open("/dev/null", O_WRONLY);
    if (devNull >= 0) ::dup2(devNull, STDOUT_FILENO);
    ::execv(path.c_str(), const_cast<char* const*>(argv.data()));
    ::_exit(127);
  }
  pid_ = pid;
}

bool DaemonProcess::alive() {
  if (!running()) return false;
  int status = 0;
  if (::waitpid(pid_, &status, WNOHANG) == 0) return true;
  pid_ = -1;
  return false;
}

void DaemonProcess::kill() {
  if (!running()) return;
  ::kill(pid_, SIGKILL);
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = -1;
}

}  // namespace VekHost
