#pragma once

#include <google/protobuf/any.pb.h>

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace VekL3Mcast {

// What the agent does with the daemon's reply to a registration, by the action the reply
// names ("regMfibTasks", ...). Whoever sends a registration puts the reply's action here
// beforehand; a reply whose action has no entry here is dropped.
class RegistrationReplyTable {
 public:
  using Action = std::function<void(const google::protobuf::Any& payload)>;

  // Replaces an action of the same name.
  void actionIs(std::string_view name, Action action);
  void actionDel(std::string_view name);
  // Runs the action of that name with the reply's payload; false if there is none.
  bool run(std::string_view name, const google::protobuf::Any& payload) const;

 private:
  struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const noexcept {
      return std::hash<std::string_view>()(name);
    }
  };
  std::unordered_map<std::string, Action, NameHash, std::equal_to<>> actions_;
};

}  // namespace VekL3Mcast
