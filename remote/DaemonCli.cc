#include "remote/DaemonCli.h"

#include <grpcpp/grpcpp.h>
#include <signal.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <thread>

#include "remote/DaemonAddress.h"
#include "remote/DaemonClient.h"
#include "remote/DaemonService.h"

namespace Remote {

namespace {

constexpr int kBadInput = 2;
constexpr std::chrono::seconds readLimit{10};

}  // namespace

int DaemonCli::main(int argc, const char* const* argv) {
  CLI::App app{"vek-dataplaned: the data-plane model as a daemon, programmed over gRPC"};
  std::string listen = DaemonAddress::defaultAddress();
  unsigned workers = 1;
  app.add_option("--listen", listen, "unix:PATH, tcp:PORT or a loopback HOST:PORT")
      ->capture_default_str();
  app.add_option("--workers", workers, "Worker threads the daemon reports")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  auto* dumpVerb = app.add_subcommand("dump", "Print what a running daemon holds, as JSON");
  std::string connect = DaemonAddress::defaultAddress();
  bool dot = false;
  dumpVerb->add_option("--connect", connect, "The daemon's address")->capture_default_str();
  dumpVerb->add_flag("--dot", dot, "Print the module graph as DOT instead");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error, out_, err_);
    return status == 0 ? 0 : kBadInput;
  }
  const std::string& given = dumpVerb->parsed() ? connect : listen;
  const auto address = DaemonAddress::parse(given);
  if (!address) {
    err_ << "vek-dataplaned: " << given << " is not a Unix socket or loopback address\n";
    return kBadInput;
  }
  return dumpVerb->parsed() ? dump(*address, dot) : serve(*address, workers);
}

int DaemonCli::serve(const std::string& address, unsigned workers) {
  // The signals that end the daemon are taken by a thread of their own, which shuts the
  // server down; every other thread has them blocked.
  sigset_t endSignals;
  sigemptyset(&endSignals);
  sigaddset(&endSignals, SIGTERM);
  sigaddset(&endSignals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

  const std::string socket = DaemonAddress::socketPath(address);
  if (!socket.empty()) {
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(socket).parent_path(), ignored);
    std::filesystem::remove(socket, ignored);  // left by a daemon that was killed
  }
  DaemonService service(static_cast<std::uint16_t>(workers));
  grpc::ServerBuilder builder;
  builder.AddListeningPort(address, grpc::InsecureServerCredentials());
  builder.SetMaxReceiveMessageSize(-1);
  builder.SetMaxSendMessageSize(-1);
  builder.RegisterService(&service);
  std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  if (!server) {
    err_ << "vek-dataplaned: cannot listen on " << address << '\n';
    return 1;
  }
  out_ << "vek-dataplaned: listening on " << address << std::endl;
  std::thread ender([&] {
    int signal = 0;
    sigwait(&endSignals, &signal);
    server->Shutdown(std::chrono::system_clock::now() + std::chrono::seconds(1));
  });
  server->Wait();
  ender.join();
  if (!socket.empty()) {
    std::error_code ignored;
    std::filesystem::remove(socket, ignored);
  }
  return 0;
}

int DaemonCli::dump(const std::string& address, bool dot) {
  DaemonClient client(DaemonClient::Options{address});
  try {
    out_ << (dot ? client.dot(readLimit) : client.dump(readLimit)) << '\n';
  } catch (const std::exception& error) {
    err_ << "vek-dataplaned: " << error.what() << '\n';
    return 1;
  }
  return 0;
}

}  // namespace Remote
