#include "dataplane/AnyUnpacker.h"

#include <google/protobuf/descriptor.h>

namespace Dataplane {

std::unique_ptr<google::protobuf::Message> AnyUnpacker::unpack(const google::protobuf::Any& any) {
  auto known = prototypes_.find(any.type_url());
  if (known == prototypes_.end()) {
    const std::string& url = any.type_url();
    const auto* descriptor = google::protobuf::DescriptorPool::generated_pool()->FindMessageTypeByName(
        url.substr(url.rfind('/') + 1));
    if (!descriptor) return nullptr;
    const auto* prototype =
        google::protobuf::MessageFactory::generated_factory()->GetPrototype(descriptor);
    known = prototypes_.emplace(url, prototype).first;
  }
  std::unique_ptr<google::protobuf::Message> message(known->second->New());
  if (!any.UnpackTo(message.get())) return nullptr;
  return message;
}

}  // namespace Dataplane
