#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/lumo/Publisher.h"
#include "runtime/sharedmem/EntityManager.h"

namespace {

using QelSharedMem::MountEvent;

struct Table : Qel::Entity {
  std::string_view typeName() const override { return "Test::Table"; }
};

// Counts the group's completion news.
struct GroupWatch {
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* s, short id, const void*, const void*) {
    if (id == QelSharedMem::MountGroup::kComplete)
      ++Lumo::OwnedSubscriber<GroupWatch>::ownerOf(s)->heard;
  }
  int heard = 0;
  Lumo::OwnedSubscriber<GroupWatch> subscriber{this, &dispatch};
};

class SharedMemTest : public ::testing::Test {
 protected:
  void TearDown() override { QelSharedMem::EntityManager::managersDelAllForTest(); }
  std::vector<std::string> loggedPaths() const {
    std::vector<std::string> paths;
    for (const auto& record : manager_->mountLogForTest()) {
      paths.push_back((record.event == MountEvent::unmount ? "-" : "") + record.path);
    }
    return paths;
  }

  Lumo::Ptr<QelSharedMem::EntityManager> manager_ =
      QelSharedMem::EntityManager::getEntityManager("ar");
};

TEST_F(SharedMemTest, MountsFinishAtOnceByDefaultAndAreLoggedInOrder) {
  auto table = Lumo::makePtr<Table>();
  manager_->entityIs("mpls/decapLfib", table);
  auto group = manager_->getMountGroup();
  group->doMount("routing/tunnel/ipv4", "Routing::Multicast::IpTunnelForwardingStatus",
                 QelKraz::MountInfo());
  auto mount = manager_->doMount("mpls/decapLfib", "Mpls::LfibStatus",
                                 QelVash::MountInfo(QelVash::QelVashType(3)));
  EXPECT_TRUE(mount->mountComplete());
  EXPECT_TRUE(group->complete());
  EXPECT_EQ(manager_->getEntity("mpls/decapLfib"), table);
  EXPECT_EQ(manager_->getEntity("routing/tunnel/ipv4"), nullptr) << "nothing written there";

  EXPECT_EQ(loggedPaths(), (std::vector<std::string>{"routing/tunnel/ipv4", "mpls/decapLfib"}));
}

TEST_F(SharedMemTest, HeldMountsFinishWhenReleasedAndTheGroupTellsOnceIfItIsStillThere) {
  manager_->mountHoldIs("kni/ns/red/status", true);
  manager_->holdAllMountsIs(true);
  auto group = manager_->getMountGroup();
  GroupWatch watch;
  group->subscriberAdd(&watch.subscriber);
  auto red = group->doMount("kni/ns/red/status", "KernelNetInfo::Status", QelVash::MountInfo());
  auto blue = group->doMount("kni/ns/blue/status", "KernelNetInfo::Status", QelVash::MountInfo());
  EXPECT_EQ(group->mountsPending(), 2u);

  manager_->mountRelease("kni/ns/blue/status");
  EXPECT_TRUE(blue->mountComplete());
  EXPECT_FALSE(red->mountComplete());
  EXPECT_FALSE(group->complete());
  EXPECT_EQ(watch.heard, 0);

  manager_->mountReleaseAll();
  EXPECT_TRUE(red->mountComplete());
  EXPECT_TRUE(group->complete());
  EXPECT_EQ(watch.heard, 1);

  auto again =
      manager_->doMount("kni/ns/green/status", "KernelNetInfo::Status", QelVash::MountInfo());
  EXPECT_TRUE(again->mountComplete()) << "release lifts the holds";

  manager_->holdAllMountsIs(true);
  auto orphan = manager_->getMountGroup()->doMount("a/b", "T", QelVash::MountInfo());
  manager_->mountReleaseAll();  // its group is gone: nothing may reach it
  EXPECT_TRUE(orphan->mountComplete());
}

TEST_F(SharedMemTest, MountOfAMountedPathGivesTheSameMountAndUnmountGivesItBack) {
  auto first =
      manager_->doMount("kni/ns/default/status", "KernelNetInfo::Status", QelVash::MountInfo());
  auto second =
      manager_->doMount("kni/ns/default/status", "KernelNetInfo::Status", QelVash::MountInfo());
  EXPECT_EQ(first, second);
  QelVash::Mount::doUnmount("kni/ns/default/status");
  QelVash::Mount::doUnmount("kni/ns/never/status");
  EXPECT_EQ(manager_->mount("kni/ns/default/status"), nullptr);
  EXPECT_EQ(loggedPaths(),
            (std::vector<std::string>{"kni/ns/default/status", "kni/ns/default/status",
                                      "-kni/ns/default/status"}));
}

TEST_F(SharedMemTest, FactoryMakesAnEmptyTableForAPathNobodyWrote) {
  int made = 0;
  manager_->entityFactoryIs("KernelNetInfo::Status", [&made] {
    ++made;
    return Lumo::makePtr<Table>();
  });
  auto written = Lumo::makePtr<Table>();
  manager_->entityIs("kni/ns/red/status", written);
  manager_->doMount("kni/ns/red/status", "KernelNetInfo::Status", QelVash::MountInfo());
  manager_->doMount("kni/ns/blue/status", "KernelNetInfo::Status", QelVash::MountInfo());
  EXPECT_EQ(manager_->getEntity("kni/ns/red/status"), written);
  EXPECT_NE(manager_->getEntity("kni/ns/blue/status"), nullptr);
  EXPECT_EQ(made, 1);
}

using SharedMemDeathTest = SharedMemTest;

TEST_F(SharedMemDeathTest, ReadingBeforeTheMountFinishedEndsTheProcess) {
  manager_->mountHoldIs("vrf/vrfIdMapStatus", true);
  manager_->entityIs("vrf/vrfIdMapStatus", Lumo::makePtr<Table>());
  manager_->doMount("vrf/vrfIdMapStatus", "Vrf::VrfIdMap::Status", QelVash::MountInfo());
  auto entity = manager_->getEntity("vrf/vrfIdMapStatus");
  EXPECT_DEATH(manager_->assertSafeToAccess(entity, "vrf/vrfIdMapStatus"), "assertSafeToAccess");
  manager_->mountRelease("vrf/vrfIdMapStatus");
  manager_->assertSafeToAccess(entity, "vrf/vrfIdMapStatus");
  manager_->assertSafeToAccess(entity, "vrf/hardware/vrfIdMapStatus");  // no mount: fine
}

}  // namespace
