#pragma once

#include <string_view>
#include <type_traits>

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"

namespace Qel {

using AttributeId = short;

// A typed counted object with named attributes; changes of its attributes are published
// to its reactors. Each entity class numbers its attributes with small AttributeIds.
class Entity : public Lumo::Node, public Lumo::Publisher {
 public:
  Entity() = default;
  ~Entity() override = default;
  virtual std::string_view typeName() const { return "Qel::Entity"; }

  // The process-wide singleton of that name, made by `make` (a function returning a
  // Lumo::Ptr to an entity) if it does not exist yet.
  template <typename Factory>
  static auto singletonIs(Factory&& make, std::string_view name) -> decltype(make()) {
    using Made = std::remove_pointer_t<decltype(make().get())>;
    if (Entity* existing = singletonFind(name)) {
      auto* typed = dynamic_cast<Made*>(existing);
      QEL_ASSERT(typed, "singleton exists with another type");
      return decltype(make())(typed);
    }
    auto made = make();
    singletonAdd(name, made);
    return made;
  }
  // The same, made by T's default constructor.
  template <typename T>
  static Lumo::Ptr<T> singletonIs(std::string_view name) {
    return singletonIs([] { return Lumo::makePtr<T>(); }, name);
  }
  static bool singletonExists(std::string_view name) { return singletonFind(name) != nullptr; }
  static void singletonDelAllForTest();

 protected:
  // For the attribute templates: one change of attribute `id` at `key`.
  void notify(AttributeId id, const void* key = nullptr, const void* value = nullptr) {
    publishChangeRecursive(id, key, value, false);
  }
  template <typename>
  friend class AttributeAccess;

 private:
  static Entity* singletonFind(std::string_view name);
  static void singletonAdd(std::string_view name, Lumo::Ptr<Entity> entity);
};

}  // namespace Qel
