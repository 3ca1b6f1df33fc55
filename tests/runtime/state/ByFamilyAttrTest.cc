#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "runtime/state/ByFamilyAttr.h"
#include "tests/runtime/qel/ExampleEntities.h"

namespace {

using Example::Recorder;
using Example::Table;
using Lanx::AddressFamily;
using Heard = std::vector<std::pair<Qel::AttributeId, int>>;

// A machine with an attribute of each family and a reactor on a table of each family.
class FamilySm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kMode = 1, kMode6, kRoute, kRoute6 };

  explicit FamilySm(const Table* ipv4Table, const Table* ipv6Table) {
    tableReactor_.publisherIs(AddressFamily::ipv4, ipv4Table);
    tableReactor_.publisherIs(AddressFamily::ipv6, ipv6Table);
  }
  void handleTableRoute(AddressFamily af, int key) {
    heard.emplace_back(af, key);
    route_[af].is(*this, key, key * 10);
  }
  void tableReactorsOff() { tableReactor_.isRegisteredIs(false); }

  Lanx::ByFamilyAttr<Qel::ValueAttr<int, kMode>, kMode6> mode_;
  Lanx::ByFamilyAttr<Qel::HashCollectionAttr<int, int, kRoute>, kRoute6> route_;
  std::vector<std::pair<AddressFamily, int>> heard;

 private:
  Lanx::ByFamilyReactor<FamilySm, Table::kRoute, &FamilySm::handleTableRoute> tableReactor_{this};
};

// Each family's attribute keeps its own members and its own id, and each family's reactor
// hands its own family to the one handler; so a family written or heard once cannot reach
// the other one's state.
TEST(ByFamilyAttrTest, EachFamilyKeepsItsMembersItsIdAndItsReactor) {
  const auto ipv4Table = Lumo::makePtr<Table>("ipv4");
  const auto ipv6Table = Lumo::makePtr<Table>("ipv6");
  const auto sm = Lumo::makePtr<FamilySm>(ipv4Table.get(), ipv6Table.get());
  sm->hasNotificationActiveIs(true);
  Recorder recorder;
  recorder.notifierIs(sm);
  recorder.isRegisteredNotifieeIs(true);

  ipv6Table->routeIs(7);
  ipv4Table->routeIs(8);
  sm->mode_[AddressFamily::ipv6].is(*sm, 3);
  sm->route_[AddressFamily::ipv4].del(*sm, 8);

  const std::vector<std::pair<AddressFamily, int>> reactions = {{AddressFamily::ipv6, 7},
                                                                {AddressFamily::ipv4, 8}};
  EXPECT_EQ(sm->heard, reactions);
  const Heard published = {{FamilySm::kRoute6, 7},
                           {FamilySm::kRoute, 8},
                           {FamilySm::kMode6, -1},
                           {FamilySm::kRoute, 8}};
  EXPECT_EQ(recorder.heard, published);
  EXPECT_EQ(sm->route_[AddressFamily::ipv6].get(7), 70);
  EXPECT_FALSE(sm->route_[AddressFamily::ipv4].has(7));
  EXPECT_TRUE(sm->route_[AddressFamily::ipv4].empty());
  EXPECT_EQ(sm->route_[AddressFamily::ipv6].members().size(), 1u);
  EXPECT_EQ(sm->mode_[AddressFamily::ipv6].get(), 3);
  EXPECT_EQ(sm->mode_[AddressFamily::ipv4].get(), 0);
  EXPECT_EQ(decltype(sm->route_)::id(AddressFamily::ipv6), FamilySm::kRoute6);

  sm->tableReactorsOff();
  ipv6Table->routeIs(9);
  EXPECT_EQ(sm->heard.size(), 2u);
}

}  // namespace
