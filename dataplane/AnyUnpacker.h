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
  // The same, read into a message of that type which the unpacker keeps and reads the next
  // Any of the type into again, keeping its storage: for a reader that is done with one
  // argument before it opens the next. Valid until then.
  const google::protobuf::Message* unpackReused(const google::protobuf::Any& any);

 private:
  const google::protobuf::Message* prototype(const std::string& url);

  std::unordered_map<std::string, const google::protobuf::Message*> prototypes_;
  std::unordered_map<std::string, std::unique_ptr<google::protobuf::Message>> reused_;
  // The type of the last reused message: a stream sends runs of one type.
  std::string lastUrl_;
  google::protobuf::Message* last_ = nullptr;
};

}  // namespace Dataplane
