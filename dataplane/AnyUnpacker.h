#pragma once

#include <google/protobuf/any.pb.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace Dataplane {

// Opens an Any into a message of its generated type. The daemon meets the same few types
// over and over, so each type is looked up once.
class AnyUnpacker {
 public:
  // Null for a type this daemon does not know, or bytes that do not parse as it.
  std::unique_ptr<google::protobuf::Message> unpack(const google::protobuf::Any& any);

 private:
  std::unordered_map<std::string, const google::protobuf::Message*> prototypes_;
};

}  // namespace Dataplane
