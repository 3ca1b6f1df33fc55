#include "runtime/vek/ProtoJson.h"

#include <google/protobuf/any.pb.h>
#include <google/protobuf/util/json_util.h>

#include <string>

namespace Vek {

nlohmann::ordered_json ProtoJson::of(const google::protobuf::Message& message) {
  google::protobuf::util::JsonPrintOptions options;
  options.preserve_proto_field_names = true;
  std::string text;
  auto status = google::protobuf::util::MessageToJsonString(message, &text, options);
  if (!status.ok()) {
    return {{"unprintable", message.GetTypeName()}, {"reason", std::string(status.message())}};
  }
  return nlohmann::ordered_json::parse(text);
}

nlohmann::ordered_json ProtoJson::packed(const google::protobuf::Message& message) {
  google::protobuf::Any any;
  any.PackFrom(message);
  return of(any);
}

}  // namespace Vek
