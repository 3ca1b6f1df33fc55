#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "proto/vek.pb.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/vek/ChannelBackend.h"

namespace VxlanTest {

// The far end of the channel as far as the encapsulation module's member lists and flood
// sets go: it keeps the tables those commands build, and counts the commands.
class L2MVxlanInTables : public Vek::ChannelBackend {
 public:
  using GroupKey = std::pair<unsigned, std::string>;  // VLAN, MAC text
  using FloodKey = std::pair<unsigned, std::string>;  // VLAN, VTEP text

  std::map<GroupKey, std::vector<std::string>> members;
  std::set<FloodKey> floodSet;
  std::map<std::string, std::size_t> commandCount;
  std::size_t commands = 0;

  void deliver(const Vek::ChannelRecord& record) override {
    const auto* moduleCmd = std::get_if<Vek::ModuleCmdRecord>(&record);
    if (!moduleCmd) return;
    const std::string name(moduleCmd->cmd->cmdName().view());
    ++commands;
    ++commandCount[name];
    const auto& message = *moduleCmd->cmd->message();
    if (name == "addGmpVlanGroupMember" || name == "deleteGmpVlanGroupMember") {
      vek::pb::GmpVlanGroupMemberArg arg;
      arg.CopyFrom(message);
      const GroupKey key{arg.vlanid(), macText(arg.groupmember())};
      if (name == "deleteGmpVlanGroupMember") {
        members.erase(key);
        return;
      }
      std::vector<std::string>& list = members[key];
      list.clear();
      for (const std::string& raw : arg.vtepaddr()) list.push_back(addrText(raw));
    } else if (name == "addVlanFloodSetEntry" || name == "deleteVlanFloodSetEntry") {
      vek::pb::VlanVtepFloodSetArg arg;
      arg.CopyFrom(message);
      const FloodKey key{arg.vlanid(), addrText(arg.vtepaddr())};
      if (name == "addVlanFloodSetEntry") {
        floodSet.insert(key);
      } else {
        floodSet.erase(key);
      }
    }
  }

  // The list of a group, or "absent".
  std::vector<std::string> list(unsigned vlan, const std::string& mac) const {
    const auto found = members.find({vlan, mac});
    return found == members.end() ? std::vector<std::string>{"absent"} : found->second;
  }
  void countsClear() {
    commands = 0;
    commandCount.clear();
  }

 private:
  static std::string macText(const std::string& raw) {
    std::array<std::uint8_t, Lanx::EthAddr::bytes> bytes{};
    for (std::size_t i = 0; i < bytes.size() && i < raw.size(); ++i) bytes[i] = raw[i];
    return Lanx::EthAddr(bytes).toString();
  }
  static std::string addrText(const std::string& raw) {
    const auto addr = Lanx::IpGenAddr::fromRawBytes(
        {reinterpret_cast<const std::uint8_t*>(raw.data()), raw.size()});
    return addr ? addr->toString() : "bad";
  }
};

}  // namespace VxlanTest
