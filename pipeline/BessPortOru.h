#pragma once

#include <google/protobuf/message.h>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/BessPort.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/GrpcCmd.h"

namespace VekL3Mcast {

// A daemon port of the multicast pipeline. It is created at construction and destroyed
// with the proxy, both through the agent's command group, so that a port and the commands
// sent to it after reach the daemon in order; no reply is waited for.
class BessPortOru : public Vek::BessPort {
 public:
  // Takes `initArgs`, the driver's port argument.
  BessPortOru(Lumo::String name, Lumo::String driver, google::protobuf::Message* initArgs,
              Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup);
  ~BessPortOru() override;

  const Lumo::Ptr<Vek::CmdConfigGroup>& cmdConfigGroup() const noexcept { return cmdConfigGroup_; }
  bool initialized() const noexcept { return initialized_; }

  void sendCmd(const Lumo::Ptr<Vek::GrpcCmd>& cmd) override;
  // Sets the port administratively up.
  void setPortConf();

 private:
  void handleInitialized();
  void handleDelete();

  Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup_;
  bool initialized_ = false;
};

}  // namespace VekL3Mcast
