#include "runtime/qel/Dir.h"

#include "runtime/lumo/Assert.h"

namespace Qel {

Dir::~Dir() {
  for (const auto& [name, child] : children_.members()) child->enclosingPublisherIs(nullptr);
}

void Dir::childIs(const Lumo::String& name, Lumo::Ptr<Entity> child) {
  QEL_ASSERT(child, "null child");
  QEL_ASSERT(child->enclosingPublisher() == nullptr || child->enclosingPublisher() == this,
             "child already belongs to another dir");
  if (children_.get(name) == child) return;
  unlink(name);
  child->enclosingPublisherIs(this);
  children_.is(*this, name, std::move(child));
}

void Dir::childDel(const Lumo::String& name) {
  unlink(name);
  children_.del(*this, name);
}

void Dir::childDelAll() {
  for (const auto& [name, child] : children_.members()) child->enclosingPublisherIs(nullptr);
  children_.delAll(*this);
}

void Dir::unlink(const Lumo::String& name) {
  if (Lumo::Ptr<Entity> old = children_.get(name)) old->enclosingPublisherIs(nullptr);
}

}  // namespace Qel
