#include "pipeline/RegistrationReplyTable.h"

namespace VekL3Mcast {

void RegistrationReplyTable::actionIs(std::string_view name, Action action) {
  actions_.insert_or_assign(std::string(name), std::move(action));
}

void RegistrationReplyTable::actionDel(std::string_view name) {
  if (auto found = actions_.find(name); found != actions_.end()) actions_.erase(found);
}

bool RegistrationReplyTable::run(std::string_view name,
                                 const google::protobuf::Any& payload) const {
  const auto found = actions_.find(name);
  if (found == actions_.end()) return false;
  found->second(payload);
  return true;
}

}  // namespace VekL3Mcast
