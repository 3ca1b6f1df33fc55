#include <gtest/gtest.h>

#include <string>

#include "runtime/lumo/Exception.h"
#include "tests/runtime/qel/ExampleEntities.h"

namespace {

using Example::Recorder;
using Example::Table;
using Example::VrfSm;
using Heard = std::vector<std::pair<Qel::AttributeId, int>>;

class AttributeTest : public ::testing::Test {
 protected:
  AttributeTest() {
    recorder.notifierIs(vrf);
    recorder.isRegisteredNotifieeIs(true);
  }
  Lumo::Ptr<VrfSm> vrf = Lumo::makePtr<VrfSm>();
  Lumo::Ptr<Table> red = Lumo::makePtr<Table>("red");
  Recorder recorder;
};

// Value, pointer and collection attributes publish real changes only; a collection names
// the key that changed.
TEST_F(AttributeTest, OnlyRealChangesPublishAndCollectionsNameTheKey) {
  vrf->modeIs(3);
  vrf->modeIs(3);
  vrf->tableIs(red);
  vrf->tableIs(red);
  vrf->tableDel();
  vrf->tableDel();
  vrf->changedRouteIs(7);
  vrf->changedRouteIs(7);
  vrf->changedRouteIs(8);
  vrf->changedRouteDel(9);  // absent: nothing
  vrf->changedRouteDel(7);
  vrf->routeOwnerIs(1, red);
  vrf->routeOwnerIs(1, red);
  const Heard expected = {{VrfSm::kMode, -1},        {VrfSm::kTable, -1},
                          {VrfSm::kTable, -1},       {VrfSm::kChangedRoute, 7},
                          {VrfSm::kChangedRoute, 8}, {VrfSm::kChangedRoute, 7},
                          {VrfSm::kRouteOwner, 1}};
  EXPECT_EQ(recorder.heard, expected);
  EXPECT_EQ(vrf->table(), nullptr);
  EXPECT_EQ(vrf->routeOwner(1), red);
  EXPECT_EQ(vrf->routeOwner(2), nullptr);
}

TEST_F(AttributeTest, InstantiatingAttributeMakesOnceAndRefusesOtherArguments) {
  const Lumo::Ptr<Example::Module> module = vrf->moduleIs(red.get(), 4);
  EXPECT_EQ(module->family(), 4);
  EXPECT_EQ(vrf->moduleIs(red.get(), 4), module);
  EXPECT_EQ(recorder.heard.size(), 1u);

  try {
    vrf->moduleIs(red.get(), 6);
    FAIL() << "other arguments must raise";
  } catch (const Lumo::Exception& e) {
    EXPECT_NE(std::string(e.msg().view()).find("Example::VrfSm::module"), std::string::npos)
        << e.msg();
  }
  EXPECT_EQ(vrf->module(), module);

  EXPECT_THROW(vrf->moduleIs(nullptr, 4), Lumo::Exception);
  vrf->moduleDel();
  EXPECT_EQ(vrf->module(), nullptr);
  EXPECT_EQ(vrf->moduleIs(red.get(), 6)->family(), 6);
}

// Reactors of a DelAll see the collection already empty, and hear every key once.
TEST_F(AttributeTest, DelAllPublishesEachKeyAfterEmptying) {
  for (int k = 0; k < 20; ++k) vrf->changedRouteIs(k);
  recorder.heard.clear();
  std::size_t sizeSeen = 99;
  recorder.onHeard = [&](Qel::AttributeId) { sizeSeen = std::min(sizeSeen, vrf->changedRoutes()); };
  vrf->changedRouteDelAll();
  EXPECT_EQ(recorder.heard.size(), 20u);
  EXPECT_EQ(sizeSeen, 0u);
}

TEST(OptionalTest, ReadingNothingRaises) {
  Qel::Optional<int> bookmark;
  EXPECT_THROW((void)bookmark.value(), Lumo::Exception);
  bookmark.valueIs(5);
  EXPECT_EQ(*bookmark, 5);
}

TEST(RbTreeMapDeathTest, DuplicateInsertionEndsTheProcess) {
  Qel::RbTreeMap<int, int> map;
  map.insert(1, 1);
  EXPECT_DEATH(map.insert(1, 2), "assertDupKey");
}

}  // namespace
