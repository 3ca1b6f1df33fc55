#include "runtime/vek/ModuleStatus.h"

namespace Vek {
namespace {

template <typename T>
std::unique_ptr<T> takeFront(std::deque<std::unique_ptr<T>>& queue) {
  if (queue.empty()) return nullptr;
  std::unique_ptr<T> front = std::move(queue.front());
  queue.pop_front();
  return front;
}

}  // namespace

std::unique_ptr<vek::pb::ModuleResponse> ModuleStatus::responseQueueDeq() {
  return takeFront(responses_);
}

std::unique_ptr<vek::pb::ModuleError> ModuleStatus::errorQueueDeq() { return takeFront(errors_); }

void ModuleStatus::responseQueueEnq(std::unique_ptr<vek::pb::ModuleResponse> response) {
  responses_.push_back(std::move(response));
  notify(responseQueueAttrId);
}

void ModuleStatus::errorQueueEnq(std::unique_ptr<vek::pb::ModuleError> error) {
  errors_.push_back(std::move(error));
  notify(errorQueueAttrId);
}

}  // namespace Vek
