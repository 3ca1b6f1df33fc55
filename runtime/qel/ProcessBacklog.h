#pragma once

#include <cstdint>
#include <utility>

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/BacklogAttr.h"
#include "runtime/qel/DvBacklogProgress.h"
#include "runtime/qel/Optional.h"

namespace QelLumo {

namespace Impl {

// The processing run's access to the backlog it drains.
struct BacklogRun {
  template <typename Key, Qel::AttrName Name>
  static auto& members(Qel::BacklogAttr<Key, Name>& backlog) {
    return backlog.members_;
  }
  template <typename Key, Qel::AttrName Name>
  static void processingIs(Qel::BacklogAttr<Key, Name>& backlog, bool on) {
    QEL_ASSERT(backlog.processing_ != on, "backlog processing run nested in itself");
    backlog.processing_ = on;
  }
};

// One run of a task over a backlog. The run takes all keys out of the backlog into a
// working map and works them in hash order, from the bookmark's position to the end and
// then from the beginning up to that position, asking `shouldYield` between keys (never
// before the first, so every run makes progress). On a yield the bookmark takes the next
// key. Keys worked are dropped; what is left is merged back with the keys added to the
// backlog meanwhile, so a key that changed again during the run is worked again.
//
// An exception from `processOne` gives every key of the run back to the backlog and
// leaves the bookmark as it was, then goes on.
template <typename Key, Qel::AttrName Name, typename ShouldYield, typename ProcessOne>
DvBacklogProgress _processBacklog(Qel::BacklogAttr<Key, Name>& backlog,
                                  Qel::Optional<Key>& bookmark, ShouldYield&& shouldYield,
                                  ProcessOne&& processOne) {
  auto& backlogMembers = BacklogRun::members(backlog);
  typename Qel::BacklogAttr<Key, Name>::Set working;
  working.swap(backlogMembers);
  BacklogRun::processingIs(backlog, true);
  DvBacklogProgress progress;

  try {
    using Iterator = decltype(working.begin());
    // Works [from, to) and returns where it stopped: `to`, or the first key not worked.
    auto sweep = [&](Iterator from, const Iterator& to) {
      for (; from != to; ++from) {
        if (progress.processed > 0 && shouldYield()) return from;
        processOne(from->key);
        ++progress.processed;
      }
      return from;
    };
    // The working map does not change during the sweeps: the keys worked are dropped
    // only once the run knows where it ends.
    if (!working.empty()) {
      const Iterator start = bookmark ? working.lowerBound(*bookmark) : working.begin();
      const Iterator end = working.end();
      Iterator stop = sweep(start, end);
      bool inWrap = false;
      if (stop == end) {
        ++progress.passes;
        if (start != working.begin()) {  // keys before the bookmark: wrap to them
          inWrap = true;
          stop = sweep(working.begin(), start);
          if (stop == start) ++progress.passes;
        }
      }
      progress.yielded = inWrap ? stop != start : stop != end;
      if (progress.yielded) {
        const Key next = stop->key;
        if (inWrap) {
          working.eraseFrom(*bookmark);
          working.eraseBefore(next);
        } else if (bookmark) {
          working.eraseRange(*bookmark, next);
        } else {
          working.eraseBefore(next);
        }
        bookmark.valueIs(next);
      } else {
        working.clear();
        bookmark.reset();
      }
    }
    if (!progress.yielded && backlogMembers.empty()) ++progress.passes;
  } catch (...) {
    backlogMembers.updateG(std::move(working));
    BacklogRun::processingIs(backlog, false);
    throw;
  }

  progress.addedMeanwhile = static_cast<unsigned>(backlogMembers.size());
  progress.remaining = static_cast<unsigned>(working.size());
  backlogMembers.updateG(std::move(working));
  BacklogRun::processingIs(backlog, false);
  progress.pending = static_cast<unsigned>(backlogMembers.size());
  return progress;
}

}  // namespace Impl

// The yield question of a task, for _processBacklog.
template <typename Task>
auto DvBacklogTaskShouldYield(Task& task) {
  return [&task] { return task.taskShouldYield(); };
}
template <typename Task>
auto DvBacklogTaskShouldYield(const Lumo::Ptr<Task>& task) {
  return [raw = task.get()] { return raw->taskShouldYield(); };
}

// The work on one key: a member function of the owner, called with the key.
template <typename Owner, typename MemberFunction>
auto ProcessOneBacklogElemKey(Owner* owner, MemberFunction memberFunction) {
  return [owner, memberFunction](const auto& key) { (owner->*memberFunction)(key); };
}

// The end of a backlog task's run handler: account the work, record what is left and
// come back for it.
template <typename Task>
void DvBacklogTaskRunEnd(Task& task, const DvBacklogProgress& progress) {
  task.taskWorkCountInc(static_cast<std::uint64_t>(progress.processed));
  task.taskWorkPendingIs(static_cast<std::uint64_t>(progress.pending));
  if (progress.pending != 0) task.scheduleTask();
}

// A backlog task's whole run handler: one processing run of `backlog` that works each key
// with the owner's member function, then the end above.
template <typename Task, typename Key, Qel::AttrName Name, typename Owner,
          typename MemberFunction>
DvBacklogProgress DvBacklogTaskRun(Task& task, Qel::BacklogAttr<Key, Name>& backlog,
                                   Qel::Optional<Key>& bookmark, Owner* owner,
                                   MemberFunction memberFunction) {
  const DvBacklogProgress progress =
      Impl::_processBacklog(backlog, bookmark, DvBacklogTaskShouldYield(task),
                            ProcessOneBacklogElemKey(owner, memberFunction));
  DvBacklogTaskRunEnd(task, progress);
  return progress;
}

}  // namespace QelLumo
