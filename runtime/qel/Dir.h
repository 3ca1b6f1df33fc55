#pragma once

#include <cstddef>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"

namespace Qel {

// An entity that holds named child entities. A child's changes reach the subscribers of
// its dir too (the dir is the child's enclosing publisher), so one reactor on a dir
// hears everything below it. Adding, replacing and removing a child publishes kChild
// with the child's name (a Lumo::String) as key.
class Dir : public Entity {
 public:
  // Below the ids entity classes number their attributes with (from 1), because the
  // dir's reactors hear its children's attributes as well.
  enum : AttributeId { kChild = -1 };
  using Children = RbTreeMap<Lumo::String, Lumo::Ptr<Entity>>;

  Dir() = default;
  ~Dir() override;
  std::string_view typeName() const override { return "Qel::Dir"; }

  Lumo::Ptr<Entity> child(const Lumo::String& name) const { return children_.get(name); }
  template <typename T>
  Lumo::Ptr<T> childAs(const Lumo::String& name) const {
    return Lumo::ptrCast<T>(child(name));
  }
  bool childHas(const Lumo::String& name) const { return children_.has(name); }
  std::size_t childCount() const noexcept { return children_.size(); }
  const Children& children() const noexcept { return children_.members(); }

  // Adds or replaces a child; a child belongs to one dir at a time.
  void childIs(const Lumo::String& name, Lumo::Ptr<Entity> child);
  void childDel(const Lumo::String& name);
  void childDelAll();

 private:
  void unlink(const Lumo::String& name);

  OrderedCollectionAttr<Lumo::String, Lumo::Ptr<Entity>, kChild> children_;
};

}  // namespace Qel
