#include "dataplane/AnyUnpacker.h"

#include <google/protobuf/descriptor.h>

namespace Dataplane {

const google::protobuf::Message* AnyUnpacker::prototype(const std::string& url) {
  auto known = prototypes_.find(url);
  if (known == prototypes_.end()) {
    const auto* descriptor = google::protobuf::DescriptorPool::generated_pool()->FindMessageTypeByName(
        url.substr(url.rfind('/') + 1));
    if (!descriptor) return nullptr;
    const auto* made =
        google::protobuf::MessageFactory::generated_factory()->GetPrototype(descriptor);
    known = prototypes_.emplace(url, made).first;
  }
  return known->second;
}

std::unique_ptr<google::protobuf::Message> AnyUnpacker::unpack(const google::protobuf::Any& any) {
  const google::protobuf::Message* type = prototype(any.type_url());
  if (!type) return nullptr;
  std::unique_ptr<google::protobuf::Message> message(type->New());
  if (!any.UnpackTo(message.get())) return nullptr;
  return message;
}

const google::protobuf::Message* AnyUnpacker::unpackReused(const google::protobuf::Any& any) {
  if (!last_ || any.type_url() != lastUrl_) {
    auto kept = reused_.find(any.type_url());
    if (kept == reused_.end()) {
      const google::protobuf::Message* type = prototype(any.type_url());
      if (!type) return nullptr;
      kept = reused_.emplace(any.type_url(), type->New()).first;
    }
    lastUrl_ = any.type_url();
    last_ = kept->second.get();
  }
  if (!any.UnpackTo(last_)) return nullptr;
  return last_;
}

}  // namespace Dataplane
