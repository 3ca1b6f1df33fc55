#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "runtime/qel/Dir.h"
#include "tests/runtime/qel/ExampleEntities.h"

namespace {

using Example::Recorder;
using Example::Table;
using Example::VrfSm;

class NestedSmTest : public ::testing::Test {
 protected:
  NestedSmTest() {
    red->routeIs(1);
    red->routeIs(2);
  }
  Lumo::Ptr<VrfSm> vrf = Lumo::makePtr<VrfSm>();
  Lumo::Ptr<Table> red = Lumo::makePtr<Table>("red");
};

// A nested machine scans what its input holds at birth, then hears changes only while
// its owner's notification is active; one made while the owner is active starts active.
TEST_F(NestedSmTest, ScansAtBirthAndHearsWhileOwnerIsActive) {
  auto sm = vrf->tableSmIs(red);
  EXPECT_EQ(sm->scans, 1);
  EXPECT_EQ(vrf->routeOwner(2), red);

  red->routeIs(3);
  EXPECT_EQ(vrf->routeOwner(3), nullptr);
  vrf->hasNotificationActiveIs(true);
  red->routeIs(4);
  red->routeDel(1);
  EXPECT_EQ(vrf->routeOwner(4), red);
  EXPECT_EQ(vrf->routeOwner(1), nullptr);
  auto blue = Lumo::makePtr<Table>("blue");
  vrf->tableSmIs(blue);  // made while the owner is active: hears at once
  blue->routeIs(7);
  EXPECT_EQ(vrf->routeOwner(7), blue);
  vrf->hasNotificationActiveIs(false);
  red->routeIs(5);
  EXPECT_EQ(vrf->routeOwner(5), nullptr);
  EXPECT_EQ(std::multiset<int>(sm->handled.begin(), sm->handled.end()),
            (std::multiset<int>{1, 1, 2, 4}));
}

// A zombie stays in its owner's map and ignores changes; SmIs revives that very object,
// whose rescan picks up what it missed. SmIs on a live one re-points and rescans it.
TEST_F(NestedSmTest, SmIsRevivesTheZombieInsteadOfMakingANewOne) {
  vrf->hasNotificationActiveIs(true);
  auto sm = vrf->tableSmIs(red);
  vrf->qelDoZombieReactors(true);
  EXPECT_TRUE(sm->isZombie());
  red->routeIs(9);
  EXPECT_EQ(vrf->routeOwner(9), nullptr);

  EXPECT_EQ(vrf->tableSmIs(red), sm);
  EXPECT_FALSE(sm->isZombie());
  EXPECT_EQ(sm->scans, 2);
  EXPECT_EQ(vrf->routeOwner(9), red);

  auto redAgain = Lumo::makePtr<Table>("red");
  redAgain->routeIs(42);
  EXPECT_EQ(vrf->tableSmIs(redAgain), sm);
  EXPECT_EQ(sm->notifier(), redAgain.get());
  EXPECT_EQ(sm->scans, 3);
  redAgain->routeIs(43);
  red->routeIs(44);
  EXPECT_EQ(vrf->routeOwner(43), redAgain);
  EXPECT_EQ(vrf->routeOwner(44), nullptr);
}

// The owner hears the change first and deletes the nested machine; the change that was
// on its way to the machine then does nothing, whether or not something still holds it.
TEST_F(NestedSmTest, NotificationOnItsWayAfterSmDelDoesNothing) {
  for (bool stillHeld : {true, false}) {
    vrf->hasNotificationActiveIs(true);
    Recorder ownerReactor;
    ownerReactor.notifierIs(red);
    ownerReactor.isRegisteredNotifieeIs(true);
    auto sm = vrf->tableSmIs(red);
    const std::size_t handledBefore = sm->handled.size();
    ownerReactor.onHeard = [&](Qel::AttributeId) { vrf->tableSmDel("red"); };
    Lumo::Ptr<Example::NestedSm_Table> held = stillHeld ? sm : nullptr;
    sm = nullptr;
    red->routeIs(50);
    EXPECT_EQ(vrf->tableSm("red"), nullptr);
    EXPECT_EQ(vrf->routeOwner(50), nullptr);
    if (held) {
      EXPECT_TRUE(held->isZombie());
      EXPECT_FALSE(held->hasNotificationActive());
      EXPECT_EQ(held->handled.size(), handledBefore);
    }
    red->routeDel(50);
  }
}

TEST_F(NestedSmTest, OwnedMachineFollowsItsOwner) {
  auto counter = vrf->counterSmIs(red);
  red->routeIs(3);
  vrf->hasNotificationActiveIs(true);
  red->routeIs(4);
  vrf->counterSmDel();
  red->routeIs(5);
  EXPECT_EQ(counter->heard, (std::vector<int>{4}));
  EXPECT_TRUE(counter->isZombie());
}

TEST(ReactorDeathTest, ExceptionReachingDispatchEndsTheProcess) {
  EXPECT_DEATH(
      {
        auto table = Lumo::makePtr<Table>("red");
        Recorder reactor;
        reactor.notifierIs(table);
        reactor.isRegisteredNotifieeIs(true);
        reactor.onHeard = [](Qel::AttributeId) { throw std::runtime_error("reactor threw"); };
        table->routeIs(1);
      },
      "terminate");
}

TEST(DirTest, ChildChangesReachTheDirsReactors) {
  auto dir = Lumo::makePtr<Qel::Dir>();
  auto red = Lumo::makePtr<Table>("red");
  Recorder reactor;
  reactor.notifierIs(dir);
  reactor.isRegisteredNotifieeIs(true);
  dir->childIs("red", red);
  red->routeIs(5);
  EXPECT_EQ(dir->childAs<Table>("red"), red);
  dir->childDel("red");
  red->routeIs(6);
  using Heard = std::vector<std::pair<Qel::AttributeId, int>>;
  EXPECT_EQ(reactor.heard,
            (Heard{{Qel::Dir::kChild, -1}, {Table::kRoute, 5}, {Qel::Dir::kChild, -1}}));
  EXPECT_FALSE(dir->childHas("red"));
}

TEST(SingletonTest, OneObjectPerName) {
  auto make = [] { return Lumo::makePtr<Table>("registry"); };
  EXPECT_FALSE(Qel::Entity::singletonExists("registry"));
  auto first = Qel::Entity::singletonIs(make, "registry");
  EXPECT_EQ(Qel::Entity::singletonIs(make, "registry"), first);
  EXPECT_NE(Qel::Entity::singletonIs<Qel::Dir>("other").get(), nullptr);
  EXPECT_TRUE(Qel::Entity::singletonExists("registry"));
  Qel::Entity::singletonDelAllForTest();
  EXPECT_FALSE(Qel::Entity::singletonExists("registry"));
}

}  // namespace
