#pragma once

#include <type_traits>
#include <utility>

#include "runtime/lumo/Publisher.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/AddressFamily.h"

namespace Lanx {

namespace Impl {

// The same kind of attribute under another id.
template <typename Attr, Qel::AttributeId Id>
struct WithAttributeId;
template <typename Container, typename Key, typename Value, Qel::AttributeId Old,
          Qel::AttributeId Id>
struct WithAttributeId<Qel::CollectionAttr<Container, Key, Value, Old>, Id> {
  using type = Qel::CollectionAttr<Container, Key, Value, Id>;
};
template <typename T, Qel::AttributeId Old, Qel::AttributeId Id>
struct WithAttributeId<Qel::ValueAttr<T, Old>, Id> {
  using type = Qel::ValueAttr<T, Id>;
};
// Under the same name: the texts of its exceptions then name the kind, not the family.
template <typename T, Qel::AttributeId Old, Qel::AttrName Name, typename... Args,
          Qel::AttributeId Id>
struct WithAttributeId<Qel::InstantiatingAttr<T, Old, Name, Args...>, Id> {
  using type = Qel::InstantiatingAttr<T, Id, Name, Args...>;
};

template <typename Object, typename Class>
void callFamilyHandler(Object* object, void (Class::*handler)(AddressFamily), AddressFamily af,
                       const void*) {
  (object->*handler)(af);
}
template <typename Object, typename Class, typename Key>
void callFamilyHandler(Object* object, void (Class::*handler)(AddressFamily, Key),
                       AddressFamily af, const void* key) {
  (object->*handler)(af, *static_cast<const std::remove_cvref_t<Key>*>(key));
}

}  // namespace Impl

// An attribute of each family under one name. The IPv4 attribute is Ipv4Attr and the IPv6
// one the same kind under Ipv6Id, so that each family's changes keep an id of their own for
// the reactors that tell them apart, while code reaches a family's attribute by the family
// (`mfibModule_[af].get(vrf)`) and is written once for both. As with ByFamily, anything but
// ipv6 reaches the IPv4 attribute.
//
//   Lanx::ByFamilyAttr<Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<MfibAf>, kMfibModule>,
//                      kMfib6Module> mfibModule_;
//   mfibModule_[af].is(*this, vrf, module);
template <typename Ipv4Attr, Qel::AttributeId Ipv6Id>
class ByFamilyAttr {
 public:
  using Ipv6Attr = typename Impl::WithAttributeId<Ipv4Attr, Ipv6Id>::type;

  // One family's attribute: the calls of the attribute itself, sent to that family's.
  template <typename Owner>
  class Of {
   public:
    Of(Owner& attrs, AddressFamily af) noexcept : attrs_(attrs), af_(af) {}

    template <typename... Args>
    decltype(auto) get(Args&&... args) const {
      return apply([&](auto& attr) -> decltype(auto) { return attr.get(args...); });
    }
    template <typename... Args>
    decltype(auto) find(Args&&... args) const {
      return apply([&](auto& attr) { return attr.find(args...); });
    }
    template <typename... Args>
    bool has(Args&&... args) const {
      return apply([&](auto& attr) { return attr.has(args...); });
    }
    decltype(auto) members() const {
      return apply([](auto& attr) -> decltype(auto) { return attr.members(); });
    }
    bool empty() const {
      return apply([](auto& attr) { return attr.empty(); });
    }
    template <typename... Args>
    decltype(auto) is(Args&&... args) const {
      return apply([&](auto& attr) -> decltype(auto) { return attr.is(args...); });
    }
    template <typename... Args>
    void del(Args&&... args) const {
      apply([&](auto& attr) { attr.del(std::forward<Args>(args)...); });
    }
    void delAll(Qel::Entity& owner) const {
      apply([&](auto& attr) { attr.delAll(owner); });
    }

   private:
    template <typename F>
    decltype(auto) apply(F&& f) const {
      return af_ == AddressFamily::ipv6 ? f(attrs_.ipv6) : f(attrs_.ipv4);
    }

    Owner& attrs_;
    AddressFamily af_;
  };

  Of<ByFamilyAttr> operator[](AddressFamily af) noexcept { return {*this, af}; }
  Of<const ByFamilyAttr> operator[](AddressFamily af) const noexcept { return {*this, af}; }

  static constexpr Qel::AttributeId id(AddressFamily af) noexcept {
    return af == AddressFamily::ipv6 ? Ipv6Id : Ipv4Attr::kId;
  }

  Ipv4Attr ipv4;
  Ipv6Attr ipv6;
};

// The dispatch function of a reactor bound to one family: as Qel::reactorDispatch, with the
// family handed to the handler ahead of the key (`handleMfibVrfAdapter(af, vrf)`).
template <typename Owner, Qel::AttributeId Id, auto Handler, AddressFamily Af>
void familyReactorDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short attributeId,
                           const void* key, const void*) noexcept {
  if (attributeId != Id) return;
  auto* self = static_cast<Qel::SmSubscriber<Owner>*>(subscriber);
  if (self->machineIsZombie()) return;
  Impl::callFamilyHandler(self->owner(), Handler, Af, key);
}

// The reactors of an input that comes once per family: one light reactor a family on that
// family's publisher, each calling the one Handler with its family.
template <typename Owner, Qel::AttributeId Id, auto Handler>
class ByFamilyReactor {
 public:
  explicit ByFamilyReactor(Owner* owner)
      : ipv4(owner, &familyReactorDispatch<Owner, Id, Handler, AddressFamily::ipv4>),
        ipv6(owner, &familyReactorDispatch<Owner, Id, Handler, AddressFamily::ipv6>) {}

  Qel::SmSubscriber<Owner>& operator[](AddressFamily af) noexcept {
    return af == AddressFamily::ipv6 ? ipv6 : ipv4;
  }
  // Follows the family's publisher from now on.
  template <typename Publisher>
  void publisherIs(AddressFamily af, const Publisher* publisher) {
    Qel::SmSubscriber<Owner>& reactor = (*this)[af];
    reactor.publisherIs(const_cast<Publisher*>(publisher));
    reactor.isRegisteredIs(true);
  }
  void isRegisteredIs(bool on) {
    ipv4.isRegisteredIs(on);
    ipv6.isRegisteredIs(on);
  }

  Qel::SmSubscriber<Owner> ipv4;
  Qel::SmSubscriber<Owner> ipv6;
};

}  // namespace Lanx
