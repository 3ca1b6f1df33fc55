#pragma once

#include <iosfwd>
#include <string>

namespace Remote {

// vek-dataplaned: serves the data-plane model to one command channel at a time, or, with
// `dump`, asks a running daemon for what it holds.
//   vek-dataplaned [--listen ADDRESS] [--workers N]
//   vek-dataplaned dump [--connect ADDRESS] [--dot]
class DaemonCli {
 public:
  DaemonCli(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}
  int main(int argc, const char* const* argv);

 private:
  int serve(const std::string& address, unsigned workers);
  int dump(const std::string& address, bool dot);

  std::ostream& out_;
  std::ostream& err_;
};

}  // namespace Remote
