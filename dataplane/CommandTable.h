#pragma once

#include <fmt/format.h>
#include <google/protobuf/message.h>

#include <cerrno>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "dataplane/CommandResult.h"

namespace Dataplane {

// The commands a module class understands: name, argument type and a typed handler.
//   {"addMroute", "vek.pb.MfibRouteArg", &Mfib::addMroute}
// dispatch() refuses an unknown command and an argument of another type.
template <typename Table>
class CommandTable {
 public:
  struct Command {
    template <typename Arg>
    Command(std::string_view cmdName, std::string_view cmdArgType,
            CommandResult (Table::*handler)(const Arg&))
        : name(cmdName), argType(cmdArgType) {
      invoke = [handler](Table& table, const google::protobuf::Message& arg) {
        if (auto* typed = dynamic_cast<const Arg*>(&arg)) return (table.*handler)(*typed);
        Arg copy;  // same type by name, built elsewhere: go through the wire form
        copy.ParseFromString(arg.SerializeAsString());
        return (table.*handler)(copy);
      };
    }

    std::string_view name;
    std::string_view argType;
    std::function<CommandResult(Table&, const google::protobuf::Message&)> invoke;
  };

  CommandTable(std::initializer_list<Command> commands) : commands_(commands) {}

  CommandResult dispatch(Table& table, std::string_view cmd,
                         const google::protobuf::Message* arg) const {
    for (const Command& command : commands_) {
      if (command.name != cmd) continue;
      // The descriptor's own name: a copy of it for every command showed in the allocator.
      const std::string_view given = arg ? std::string_view(arg->GetDescriptor()->full_name())
                                         : std::string_view("nothing");
      if (given != command.argType) {
        return CommandResult::error(
            EINVAL, fmt::format("command {} takes {}, not {}", cmd, command.argType, given));
      }
      return command.invoke(table, *arg);
    }
    return CommandResult::error(ENOTSUP, fmt::format("unknown command {}", cmd));
  }

  const std::vector<Command>& commands() const noexcept { return commands_; }

 private:
  std::vector<Command> commands_;
};

}  // namespace Dataplane
