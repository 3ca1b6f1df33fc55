#pragma once

#include <google/protobuf/message.h>

#include <cstddef>
#include <memory>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/MessageRecycler.h"

namespace Vek {

// One command for one module of the daemon, addressed by the module's name. A command made
// with a recycler gives its message back to it when the command goes.
class ModuleCmdBase : public Lumo::Node {
 public:
  ModuleCmdBase(Lumo::String moduleName, Lumo::String cmdName,
                std::unique_ptr<google::protobuf::Message> message,
                Lumo::Ptr<MessageRecycler> recycler = nullptr)
      : moduleName_(std::move(moduleName)),
        cmdName_(std::move(cmdName)),
        message_(std::move(message)),
        recycler_(std::move(recycler)) {}
  ~ModuleCmdBase() override {
    if (recycler_ && message_) recycler_->recycle(std::move(message_));
  }
  ModuleCmdBase(const ModuleCmdBase&) = delete;
  ModuleCmdBase& operator=(const ModuleCmdBase&) = delete;

  // Commands come and go by the thousands between two pumps of the channel, far more than
  // the allocator's per-thread cache holds: the blocks of those that went are kept for the
  // next ones.
  static void* operator new(std::size_t size);
  static void operator delete(void* block, std::size_t size) noexcept;

  const Lumo::String& moduleName() const noexcept { return moduleName_; }
  const Lumo::String& cmdName() const noexcept { return cmdName_; }
  const google::protobuf::Message* message() const noexcept { return message_.get(); }

 private:
  Lumo::String moduleName_;
  Lumo::String cmdName_;
  std::unique_ptr<google::protobuf::Message> message_;
  Lumo::Ptr<MessageRecycler> recycler_;
};

// Makes the command and takes the message. `batched` is true at every call of the multicast
// logic: its commands are queued and never waited for.
// A `recycler` takes the message back when the command goes.
inline Lumo::Ptr<ModuleCmdBase> moduleCmdFactory(Lumo::String moduleName, Lumo::String cmdName,
                                                 google::protobuf::Message* message,
                                                 [[maybe_unused]] bool batched,
                                                 Lumo::Ptr<MessageRecycler> recycler = nullptr) {
  return Lumo::makePtr<ModuleCmdBase>(std::move(moduleName), std::move(cmdName),
                                      std::unique_ptr<google::protobuf::Message>(message),
                                      std::move(recycler));
}

}  // namespace Vek
