#pragma once

#include <functional>
#include <utility>

#include "runtime/dov/Task.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"

namespace DovTest {

// Subscribes to a task as an owner would and does `body` on each run.
class RunProbe {
 public:
  RunProbe(Lumo::Ptr<Dov::Task> task, std::function<void()> body = {})
      : task_(std::move(task)), body_(std::move(body)) {
    task_->subscriberAdd(&subscriber_, false);
  }
  int runs() const { return runs_; }
  Dov::Task& task() const { return *task_; }

 private:
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* s, short id, const void*, const void*) {
    RunProbe* self = Lumo::OwnedSubscriber<RunProbe>::ownerOf(s);
    if (id != Dov::Task::kRun) return;
    ++self->runs_;
    if (self->body_) self->body_();
  }

  Lumo::Ptr<Dov::Task> task_;
  std::function<void()> body_;
  int runs_ = 0;
  Lumo::OwnedSubscriber<RunProbe> subscriber_{this, &dispatch};
};

}  // namespace DovTest
