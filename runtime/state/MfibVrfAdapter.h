#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/VrfName.h"

namespace Routing::Multicast::Fib {

// The view of one VRF and address family over the route tables of all applications: the
// collection mfibVash, application to table, and which application holds the best route
// for a key.
//
// Best route: the applications have a fixed order of preference, the lower MfibAppType
// value first (static, pim, igmp, mld, mvpn). The best route of a key is the route of the
// first application in that order whose table holds the key.
class MfibVrfAdapter : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMfibVash = 1 };
  using MfibVashMap = Qel::HashMap2018<MfibAppType, Lumo::Ptr<Vash::Multicast::Fib::Status const>>;
  // For a loop in which nobody changes the collection; it asserts if somebody does.
  using MfibVashIteratorConst = MfibVashMap::UnsafeIteratorConst;

  MfibVrfAdapter(L3::VrfName vrfName, Lanx::AddressFamily af)
      : vrfName_(std::move(vrfName)), af_(af) {}
  std::string_view typeName() const override {
    return "Routing::Multicast::Fib::MfibVrfAdapter";
  }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }

  // The table of an application, or null.
  Lumo::Ptr<Vash::Multicast::Fib::Status const> mfibVash(MfibAppType app) const {
    return mfibVash_.get(app);
  }
  // The same without touching the use count, for loops over many routes.
  const Vash::Multicast::Fib::Status* mfibVashFind(MfibAppType app) const noexcept {
    const auto index = static_cast<std::size_t>(app);
    return index < byApp_.size() ? byApp_[index] : nullptr;
  }
  bool mfibVashHas(MfibAppType app) const { return mfibVashFind(app) != nullptr; }
  std::size_t mfibVashCount() const noexcept { return mfibVash_.size(); }
  const MfibVashMap& mfibVashMembers() const noexcept { return mfibVash_.members(); }
  MfibVashIteratorConst mfibVashIteratorConst() const { return mfibVash_.members().begin(); }
  // At the application, or at the next one after the position it would have.
  MfibVashIteratorConst mfibVashIteratorConstAt(MfibAppType app) const {
    return mfibVash_.members().lowerBound(app);
  }

  // Whether the table of `app` holds the best route of `key`: it holds the key and no
  // table of a preferred application does.
  bool isBestRoute(MfibAppType app, const IpGenRouteKey& key) const;
  // Whether the table of an application preferred to `app` holds `key`.
  bool heldByPreferred(MfibAppType app, const IpGenRouteKey& key) const {
    const auto index = static_cast<std::size_t>(app);
    for (std::size_t better = 1; better < index && better < byApp_.size(); ++better) {
      if (byApp_[better] && byApp_[better]->routeHas(key)) return true;
    }
    return false;
  }
  // The application whose table holds the best route of `key`; none if no table holds it.
  MfibAppType mfibAppKey(const IpGenRouteKey& key) const;
  // Whether application `a` is preferred to `b`.
  static bool isPreferred(MfibAppType a, MfibAppType b) noexcept { return a < b; }

  // Writer side. The table's own application must be `app`.
  void mfibVashIs(MfibAppType app, Lumo::Ptr<Vash::Multicast::Fib::Status const> status);
  void mfibVashDel(MfibAppType app);
  void mfibVashDelAll();

 private:
  L3::VrfName vrfName_;
  Lanx::AddressFamily af_;
  Qel::HashCollectionAttr<MfibAppType, Lumo::Ptr<Vash::Multicast::Fib::Status const>, kMfibVash>
      mfibVash_;
  // The same tables by application value, in order of preference, for the per-route
  // questions: no hashing, and at most one test per preferred application.
  std::array<const Vash::Multicast::Fib::Status*, allMfibAppTypes.size() + 1> byApp_{};
};

}  // namespace Routing::Multicast::Fib
