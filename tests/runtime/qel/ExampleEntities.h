#pragma once

// A small entity family over the attribute templates for the entity-layer tests: an input
// table, an owner with every kind of attribute, a nested machine per input, an owned
// machine, a recording reactor and a backlog drained by a fake task.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/BacklogAttr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/Optional.h"
#include "runtime/qel/ProcessBacklog.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"

namespace Example {

// An input: a table of routes that another agent writes.
class Table : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kRoute = 1 };
  explicit Table(std::string name) : name_(std::move(name)) {}
  std::string_view typeName() const override { return "Example::Table"; }

  const std::string& name() const { return name_; }
  const Qel::HashSet2018<int>& routes() const { return route_.members(); }
  bool routeHas(int key) const { return route_.has(key); }
  void routeIs(int key) { route_.is(*this, key); }
  void routeDel(int key) { route_.del(*this, key); }

 private:
  std::string name_;
  Qel::SetAttr<int, kRoute> route_;
};

// An object an owner instantiates.
class Module : public Qel::Entity {
 public:
  Module(const Table* table, int family) : table_(table), family_(family) {}
  int family() const { return family_; }

 private:
  const Table* table_;
  int family_;
};

// A task as far as a backlog needs one: it keeps real state and says yield after a
// given number of keys of a run.
struct FakeTask {
  bool taskShouldYield() { return ++asked >= yieldAfter; }
  void taskWorkCountInc(std::uint64_t count) { workCount += count; }
  void taskWorkPendingIs(std::uint64_t count) { pending = count; }
  void scheduleTask() { ++scheduled; }

  unsigned yieldAfter = ~0u;
  unsigned asked = 0;
  std::uint64_t workCount = 0;
  std::uint64_t pending = 0;
  int scheduled = 0;
};

class VrfSm;

// One nested machine per table: it mirrors the routes of its table into its owner.
class NestedSm_Table : public Qel::StateMachine, public Qel::NotifieeConstOf<Table> {
 public:
  NestedSm_Table(VrfSm* owner, Lumo::Ptr<Table const> table)
      : Qel::NotifieeConstOf<Table>(this), owner_(owner) {
    notifierIs(std::move(table));
    handleInitialized();
  }
  std::string_view typeName() const override { return "Example::NestedSm_Table"; }

  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override {
    if (id == Table::kRoute) handleRoute(*static_cast<const int*>(key));
  }
  void handleRoute(int key);

  int scans = 0;
  std::vector<int> handled;

 private:
  VrfSm* owner_;
};

// An owned machine, made by its owner's instantiating attribute.
class CounterSm : public Qel::StateMachine {
 public:
  explicit CounterSm(Lumo::Ptr<Table const> table) : table_(std::move(table)) {
    tableReactor_.publisherIs(const_cast<Table*>(table_.get()));
    tableReactor_.isRegisteredIs(true);
  }
  void handleRoute(int key) { heard.push_back(key); }

  std::vector<int> heard;

 private:
  Lumo::Ptr<Table const> table_;
  Qel::SmSubscriber<CounterSm> tableReactor_{
      this, &Qel::reactorDispatch<CounterSm, Table::kRoute, &CounterSm::handleRoute>};
};

// The owner: every kind of attribute, a nested machine per table and a backlog.
class VrfSm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId {
    kMode = 1,
    kTable,
    kModule,
    kCounterSm,
    kChangedRoute,
    kRouteOwner,
  };
  std::string_view typeName() const override { return "Example::VrfSm"; }

  void modeIs(int mode) { mode_.is(*this, mode); }

  const Lumo::Ptr<Table const>& table() const { return table_.get(); }
  void tableIs(Lumo::Ptr<Table const> table) { table_.is(*this, std::move(table)); }
  void tableDel() { table_.del(*this); }

  Lumo::Ptr<Module> module() const { return module_.get(); }
  Lumo::Ptr<Module> moduleIs(const Table* table, int family) {
    return module_.is(*this, table, family);
  }
  void moduleDel() { module_.del(*this); }

  Lumo::Ptr<CounterSm> counterSmIs(Lumo::Ptr<Table const> table) {
    return counterSm_.is(*this, table);
  }
  void counterSmDel() { counterSm_.del(*this); }

  void changedRouteIs(int key) { changedRoute_.is(*this, key); }
  void changedRouteDel(int key) { changedRoute_.del(*this, key); }
  void changedRouteDelAll() { changedRoute_.delAll(*this); }
  std::size_t changedRoutes() const { return changedRoute_.size(); }

  Lumo::Ptr<Table const> routeOwner(int key) const { return routeOwner_.get(key); }
  void routeOwnerIs(int key, Lumo::Ptr<Table const> table) {
    routeOwner_.is(*this, key, std::move(table));
  }
  void routeOwnerDel(int key) { routeOwner_.del(*this, key); }

  Lumo::Ptr<NestedSm_Table> tableSm(const std::string& name) const {
    return HN_NestedSm_Table_.sm(name);
  }
  Lumo::Ptr<NestedSm_Table> tableSmIs(Lumo::Ptr<Table const> table) {
    return HN_NestedSm_Table_.smIs(std::move(table));
  }
  void tableSmDel(const std::string& name) { HN_NestedSm_Table_.smDel(name); }

  bool vlanBacklogHas(int vlan) const { return vlanBacklog_.has(vlan); }
  std::size_t vlanBacklogSize() const { return vlanBacklog_.size(); }
  void vlanBacklogIs(int vlan) { vlanBacklog_.is(vlan); }
  void vlanBacklogDel(int vlan) { vlanBacklog_.del(*this, vlan); }
  void vlanBacklogDelAll() { vlanBacklog_.delAll(*this); }
  bool vlanBacklogProcessing() const { return vlanBacklog_.processing(); }
  const Qel::Optional<int>& vlanBookmark() const { return vlanBookmark_; }
  void vlanBookmarkIs(Qel::Optional<int> bookmark) { vlanBookmark_ = std::move(bookmark); }

  // What a reactor does: record the key and arm the task.
  void addVlanToBacklog(int vlan) {
    vlanBacklogIs(vlan);
    task.scheduleTask();
  }
  // The task's run handler.
  QelLumo::DvBacklogProgress handleVlanTask() {
    task.asked = 0;
    const QelLumo::DvBacklogProgress progress = QelLumo::Impl::_processBacklog(
        vlanBacklog_, vlanBookmark_, QelLumo::DvBacklogTaskShouldYield(task),
        QelLumo::ProcessOneBacklogElemKey(this, &VrfSm::handleVlan));
    QelLumo::DvBacklogTaskRunEnd(task, progress);
    return progress;
  }
  void handleVlan(int vlan) {
    worked.push_back(vlan);
    if (onVlan) onVlan(vlan);
  }

  FakeTask task;
  std::vector<int> worked;
  std::function<void(int)> onVlan;

 private:
  Qel::ValueAttr<int, kMode> mode_;
  Qel::ValueAttr<Lumo::Ptr<Table const>, kTable> table_;
  Qel::InstantiatingAttr<Module, kModule, "module", const Table*, int> module_;
  Qel::InstantiatingAttr<CounterSm, kCounterSm, "counterSm", Lumo::Ptr<Table const>> counterSm_;
  Qel::SetAttr<int, kChangedRoute> changedRoute_;
  Qel::HashCollectionAttr<int, Lumo::Ptr<Table const>, kRouteOwner> routeOwner_;
  Qel::NestedSmCollection<VrfSm, NestedSm_Table, &Table::name> HN_NestedSm_Table_{this};
  Qel::BacklogAttr<int, "vlanBacklog"> vlanBacklog_;
  Qel::Optional<int> vlanBookmark_;
};

inline void NestedSm_Table::handleInitialized() {
  ++scans;
  for (const auto& route : notifier()->routes()) handleRoute(route.key);
}

// A keyed handler reads the input as it is now: a route that came and one that went
// are served alike.
inline void NestedSm_Table::handleRoute(int key) {
  handled.push_back(key);
  if (notifier()->routeHas(key)) {
    owner_->routeOwnerIs(key, Lumo::Ptr<Table const>(notifier()));
  } else if (owner_->routeOwner(key) == notifier()) {
    owner_->routeOwnerDel(key);
  }
}

// A reactor that records what it hears; the keys of the example's attributes are ints.
class Recorder : public Qel::NotifieeConst {
 public:
  void onAttribute(Qel::AttributeId id, const void* key) override {
    heard.emplace_back(id, key && id > 0 ? *static_cast<const int*>(key) : -1);
    if (onHeard) onHeard(id);
  }
  std::vector<std::pair<Qel::AttributeId, int>> heard;
  std::function<void(Qel::AttributeId)> onHeard;
};

}  // namespace Example
