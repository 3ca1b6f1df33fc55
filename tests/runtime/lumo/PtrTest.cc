#include <gtest/gtest.h>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"

namespace {

struct Tracked : Lumo::Node {
  explicit Tracked(int* destroyed) : destroyed_(destroyed) {}
  ~Tracked() override { ++*destroyed_; }
  int* destroyed_;
};

TEST(PtrTest, LastUserIsFoundWithFlagBitsSet) {
  int destroyed = 0;
  {
    Lumo::Ptr<Tracked> a = Lumo::makePtr<Tracked>(&destroyed);
    a->nodeFlagSet(Lumo::Node::notificationActive, true);
    a->nodeFlagSet(Lumo::Node::zombie, true);
    Lumo::Ptr<Tracked const> b = a;
    EXPECT_EQ(a->references(), 2u);
    a.reset();
    EXPECT_EQ(destroyed, 0);
    EXPECT_TRUE(b->nodeFlag(Lumo::Node::zombie));
  }
  EXPECT_EQ(destroyed, 1);
}

struct Counter {
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* s, short id, const void*, const void*) {
    auto* self = reinterpret_cast<Counter*>(reinterpret_cast<char*>(s) - offsetof(Counter, sub));
    self->seen.push_back(id);
    if (self->removeOther) self->removeOther->publisher()->subscriberRemove(self->removeOther);
  }
  Lumo::Subscriber sub{&Counter::dispatch};
  std::vector<short> seen;
  Lumo::Subscriber* removeOther = nullptr;
};

TEST(PublisherTest, SubscriberRemovedDuringDeliveryIsSkipped) {
  Lumo::Publisher outer;
  Lumo::Publisher inner;
  inner.enclosingPublisherIs(&outer);
  Counter first, second, watcher;
  inner.subscriberAdd(&first.sub);
  inner.subscriberAdd(&second.sub);
  outer.subscriberAdd(&watcher.sub);
  first.removeOther = &second.sub;
  inner.publishChangeRecursive(7, nullptr, nullptr, false);
  EXPECT_EQ(first.seen, std::vector<short>{7});
  EXPECT_TRUE(second.seen.empty());
  EXPECT_EQ(watcher.seen, std::vector<short>{7});
  EXPECT_EQ(inner.subscribers(), 1u);
  inner.publishChangeRecursive(8, nullptr, nullptr, true);
  EXPECT_EQ(first.seen.size(), 1u);
}

}  // namespace
