#pragma once

#include <cstddef>

#include "runtime/qel/AttrName.h"
#include "runtime/qel/Entity.h"
#include "runtime/lumo/Exceptions.h"
#include "runtime/qel/HashMap2018.h"

namespace QelLumo::Impl {
struct BacklogRun;
}  // namespace QelLumo::Impl

namespace Qel {

// A backlog: the set of keys that need work, drained by a task through
// QelLumo::Impl::_processBacklog. Adding is allowed at any time, during a processing run
// too; removing by hand is not allowed during a run (the run owns the keys it took).
// Adding publishes nothing: the reactor that adds a key schedules the task itself.
//
//   void vlanBacklogIs(VlanId v) { vlanBacklog_.is(v); }
//   void vlanBacklogDel(VlanId v) { vlanBacklog_.del(*this, v); }
//   void vlanBacklogDelAll() { vlanBacklog_.delAll(*this); }
//   void vlanBacklogBacklogCheck(Qel::Impl::BacklogMethod m) const {
//     vlanBacklog_.backlogCheck(*this, m);
//   }
//   Qel::BacklogAttr<VlanId, "vlanBacklog"> vlanBacklog_;
//   Qel::Optional<VlanId> vlanBookmark_;
template <typename Key, AttrName Name>
class BacklogAttr {
 public:
  using Set = HashSet2018<Key>;

  const Set& members() const noexcept { return members_; }
  std::size_t size() const noexcept { return members_.size(); }
  bool empty() const noexcept { return members_.empty(); }
  bool has(const Key& key) const { return members_.has(key); }
  bool processing() const noexcept { return processing_; }

  // Adds the key if it is absent.
  void is(const Key& key) { members_.insert(key); }
  void del(const Entity& owner, const Key& key) {
    backlogCheck(owner, Impl::BacklogMethod::backlogDel);
    members_.erase(key);
  }
  void delAll(const Entity& owner) {
    backlogCheck(owner, Impl::BacklogMethod::backlogDelAll);
    members_.clear();
  }
  // Raises while a processing run of this backlog is under way.
  void backlogCheck(const Entity& owner, Impl::BacklogMethod method) const {
    if (processing_) Impl::throwBacklogProcessingException(owner.typeName(), Name.view(), method);
  }

 private:
  friend struct QelLumo::Impl::BacklogRun;

  Set members_;
  bool processing_ = false;
};

}  // namespace Qel
