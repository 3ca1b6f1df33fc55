#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

#include "proto/vek.pb.h"
#include "runtime/qel/Entity.h"

namespace Vek {

// What the channel brings back: replies to commands and error records, each in a queue of
// its own. Every arrival publishes the attribute of its queue, so a reactor runs.
class ModuleStatus : public Qel::Entity {
 public:
  static constexpr Qel::AttributeId responseQueueAttrId = 1;
  static constexpr Qel::AttributeId errorQueueAttrId = 2;
  // The response type of a reply that carries task names and ids.
  static constexpr std::uint32_t taskIdsResponseType = 53;

  std::string_view typeName() const override { return "Vek::ModuleStatus"; }

  // Next response or null.
  std::unique_ptr<vek::pb::ModuleResponse> responseQueueDeq();
  // Next error record or null.
  std::unique_ptr<vek::pb::ModuleError> errorQueueDeq();
  std::size_t responseQueueSize() const noexcept { return responses_.size(); }
  std::size_t errorQueueSize() const noexcept { return errors_.size(); }

  // The channel's side.
  void responseQueueEnq(std::unique_ptr<vek::pb::ModuleResponse> response);
  void errorQueueEnq(std::unique_ptr<vek::pb::ModuleError> error);

 private:
  std::deque<std::unique_ptr<vek::pb::ModuleResponse>> responses_;
  std::deque<std::unique_ptr<vek::pb::ModuleError>> errors_;
};

}  // namespace Vek
