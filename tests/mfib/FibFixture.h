#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "dataplane/Model.h"
#include "mfib/VekL3MfibModule.h"
#include "proto/vek.pb.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace MfibTest {

using Json = nlohmann::ordered_json;

// The host's set-up around one FIB module: a channel whose far end is the daemon model.
class FibFixture : public ::testing::Test {
 protected:
  FibFixture() { channel->backendIs(&model); }

  Lumo::Ptr<VekL3Mcast::MfibAf> makeFib(const char* vrf) {
    auto* init = new vek::pb::MfibArg;
    init->set_vrfname(vrf);
    init->set_af(1);
    init->set_size(1024);
    init->set_mode(true);
    return Lumo::makePtr<VekL3Mcast::MfibAf>(std::string("MfibIpv4") + vrf,
                                             Vek::VekModule::mfib, 8192, 8192, init, pair,
                                             L3::VrfName(vrf), Lanx::AddressFamily::ipv4);
  }

  // What the daemon's module holds, after the channel has carried everything queued.
  Json fibTable() {
    channel->pump();
    return model.dump()["modules"][fib->name().str()]["table"];
  }
  Json routes() { return fibTable()["routes"]; }
  // The gates of one route in the daemon, as "intf:gate" with the short interface name.
  std::vector<std::string> gatesOf(const std::string& route) {
    std::vector<std::string> gates;
    const Json all = routes();
    for (const auto& g : all[route]["gates"]) {
      Lanx::IntfId id(std::stoull(g["intfId"].get<std::string>()));
      gates.push_back(id.shortName() + ":" + std::to_string(g["gate"].get<unsigned>()));
    }
    return gates;
  }
  // The names of the commands that reached the daemon since the last call.
  std::vector<std::string> commandsSinceLast() {
    channel->pump();
    std::vector<std::string> cmds;
    for (const auto& e : channel->commandLog().entriesSince(seenSeq_)) {
      if (e["kind"] == "moduleCmd") cmds.push_back(e["cmd"].get<std::string>());
    }
    seenSeq_ = channel->commandLog().lastSeq();
    return cmds;
  }

  static Lanx::IntfId intf(const char* name) { return Lanx::IntfId(name); }

  Dataplane::Model model{2};
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd = Lumo::makePtr<Vek::VekCommonSmData>(2);
  Lumo::Ptr<VekL3Mcast::MfibAf> fib = makeFib("red");

  std::uint64_t seenSeq_ = 0;
};

}  // namespace MfibTest
