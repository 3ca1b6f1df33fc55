#pragma once

#include <gtest/gtest.h>

#include <string>

#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/McastTunnelIntfId.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "tests/vxlan/L2MVxlanInTables.h"
#include "vxlan/VekL2MVxlanInModule.h"

namespace VxlanTest {

inline Lanx::IntfId tunnel(std::uint8_t type, const char* vtep) {
  return Multicast::Tunnel::McastTunnelIntfId::intfId(type, Lanx::IpGenAddr(vtep));
}
inline Bridging::VlanId vlan(std::uint16_t id) { return Bridging::VlanId(id); }

// An encapsulation module whose commands land in tables, on simulated time.
class VxlanFixture : public ::testing::Test {
 protected:
  VxlanFixture() { channel->backendIs(&tables); }

  // Runs every task until nothing is left, then carries the commands.
  void settle() {
    scheduler->runUntilIdle();
    channel->pump();
  }
  void yieldEveryIs(unsigned items) { scheduler->simulation()->yieldEveryIs(items); }

  L2MVxlanInTables tables;
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<VekMVxlan::L2MVxlanIn> module =
      Lumo::makePtr<VekMVxlan::L2MVxlanIn>("L2MVxlanIn", 4, 3, pair);
  Lumo::Ptr<Dov::TaskScheduler> scheduler = Dov::TaskScheduler::makeSimulation();
};

}  // namespace VxlanTest
