#pragma once

#include <google/protobuf/message.h>

#include <memory>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"

namespace Vek {

// One command for one module of the daemon, addressed by the module's name.
class ModuleCmdBase : public Lumo::Node {
 public:
  ModuleCmdBase(Lumo::String moduleName, Lumo::String cmdName,
                std::unique_ptr<google::protobuf::Message> message)
      : moduleName_(std::move(moduleName)),
        cmdName_(std::move(cmdName)),
        message_(std::move(message)) {}

  const Lumo::String& moduleName() const noexcept { return moduleName_; }
  const Lumo::String& cmdName() const noexcept { return cmdName_; }
  const google::protobuf::Message* message() const noexcept { return message_.get(); }

 private:
  Lumo::String moduleName_;
  Lumo::String cmdName_;
  std::unique_ptr<google::protobuf::Message> message_;
};

// Makes the command and takes the message. `batched` is true at every call of the multicast
// logic: its commands are queued and never waited for.
inline Lumo::Ptr<ModuleCmdBase> moduleCmdFactory(Lumo::String moduleName, Lumo::String cmdName,
                                                 google::protobuf::Message* message,
                                                 [[maybe_unused]] bool batched) {
  return Lumo::makePtr<ModuleCmdBase>(std::move(moduleName), std::move(cmdName),
                                      std::unique_ptr<google::protobuf::Message>(message));
}

}  // namespace Vek
