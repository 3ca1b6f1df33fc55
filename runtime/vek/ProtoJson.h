#pragma once

#include <google/protobuf/message.h>

#include <nlohmann/json.hpp>

namespace Vek {

// Protobuf's own JSON mapping of a message, with the field names of the .proto file,
// 64-bit integers as decimal strings and bytes in base64.
class ProtoJson {
 public:
  static nlohmann::ordered_json of(const google::protobuf::Message& message);
  // The message packed into a google.protobuf.Any, so that "@type" names it.
  static nlohmann::ordered_json packed(const google::protobuf::Message& message);
  static nlohmann::ordered_json packedOrNull(const google::protobuf::Message* message) {
    return message ? packed(*message) : nlohmann::ordered_json();
  }
};

}  // namespace Vek
