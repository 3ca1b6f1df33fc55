#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <memory>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/GrpcCmd.h"

namespace Vek {

// The proxy of a daemon port. A port is created and destroyed by daemon-level commands;
// how they travel is the subclass's choice (sendCmd).
class BessPort : public Lumo::Node {
 public:
  // Takes `initArgs`, the driver's port argument.
  BessPort(Lumo::String name, Lumo::String driver, google::protobuf::Message* initArgs,
           unsigned char numIncQ, unsigned short incQSize, unsigned char numOutQ,
           unsigned short outQSize);
  ~BessPort() override;

  const Lumo::String& name() const noexcept { return name_; }
  const Lumo::String& driver() const noexcept { return driver_; }
  const google::protobuf::Message* initArgs() const noexcept { return initArgs_.get(); }
  bool portCreated() const noexcept { return created_; }

  // Asks the daemon for the port, with the init message as its argument.
  void handleInit();
  // Asks the daemon to drop the port, if it was asked for.
  void handleDeInit();
  void sendCreatePortRequest(const google::protobuf::Message* arg);

  virtual void sendCmd(const Lumo::Ptr<GrpcCmd>& cmd) = 0;

 private:
  Lumo::String name_;
  Lumo::String driver_;
  std::unique_ptr<google::protobuf::Message> initArgs_;
  unsigned char numIncQ_;
  unsigned short incQSize_;
  unsigned char numOutQ_;
  unsigned short outQSize_;
  bool created_ = false;
};

}  // namespace Vek
