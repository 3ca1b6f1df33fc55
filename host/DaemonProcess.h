#pragma once

#include <sys/types.h>

#include <string>

namespace VekHost {

// A vek-dataplaned child process on a socket of its own, for a run that brings its daemon.
// The process goes with the object.
class DaemonProcess {
 public:
  explicit DaemonProcess(unsigned workers);
  ~DaemonProcess();
  DaemonProcess(const DaemonProcess&) = delete;
  DaemonProcess& operator=(const DaemonProcess&) = delete;

  const std::string& address() const noexcept { return address_; }
  bool running() const noexcept { return pid_ > 0; }

  // Starts the daemon if it is not running; it comes up empty.
  void start();
  // False once a started daemon has ended by itself (it could not listen, or crashed).
  bool alive();
  // Kills the daemon at once, as a crash would, and waits for it to go.
  void kill();

  // The program: $VEK_DATAPLANED, else the one built with this host, else the one next to
  // this program.
  static std::string program();

 private:
  std::string dir_;
  std::string address_;
  unsigned workers_;
  pid_t pid_ = -1;
};

}  // namespace VekHost
