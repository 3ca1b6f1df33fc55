#pragma once

#include <google/protobuf/message.h>

#include <memory>

#include "runtime/lumo/Node.h"

namespace Vek {

// Where a command gives its message back when it is done with it, instead of freeing it.
// Held by the commands as well as by their sender, so that a command delivered after its
// sender has gone still has somewhere to give the message.
class MessageRecycler : public Lumo::Node {
 public:
  virtual void recycle(std::unique_ptr<google::protobuf::Message> message) = 0;
};

}  // namespace Vek
