#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/IpGenAddr.h"

namespace VekMVxlan {

// The VTEPs behind one snooped group of a VLAN, in address order: the order in which the
// encapsulation module gets them, so that the same set always reads the same on the wire.
// The value is the snooping side's own mark; the module gets every address whatever it is.
class VtepList : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kAddr = 1 };
  using Addrs = Qel::RbTreeMap<Lanx::IpGenAddr, bool>;

  std::string_view typeName() const override { return "VekMVxlan::VtepList"; }

  const Addrs& addr() const noexcept { return addr_.members(); }
  bool addr(const Lanx::IpGenAddr& vtep) const { return addr_.get(vtep); }
  bool addrHas(const Lanx::IpGenAddr& vtep) const { return addr_.has(vtep); }
  std::size_t addrs() const noexcept { return addr_.size(); }
  // Inserts the address, or sets the value of one that is there.
  void addrIs(const Lanx::IpGenAddr& vtep, bool value) { addr_.is(*this, vtep, value); }
  void addrDel(const Lanx::IpGenAddr& vtep) { addr_.del(*this, vtep); }
  void addrDelAll() { addr_.delAll(*this); }

 private:
  Qel::OrderedCollectionAttr<Lanx::IpGenAddr, bool, kAddr> addr_;
};

}  // namespace VekMVxlan
