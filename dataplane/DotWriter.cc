#include "dataplane/DotWriter.h"

#include <fmt/format.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include "dataplane/Mfib.h"
#include "dataplane/Model.h"
#include "proto/bess.pb.h"
#include "runtime/vek/ModuleClass.h"

namespace Dataplane {
namespace {

// A singular string field of that name in a message, or empty.
std::string stringField(const google::protobuf::Message* message, const char* field) {
  if (!message) return {};
  const auto* descriptor = message->GetDescriptor()->FindFieldByName(field);
  if (!descriptor || descriptor->is_repeated() ||
      descriptor->type() != google::protobuf::FieldDescriptor::TYPE_STRING) {
    return {};
  }
  return message->GetReflection()->GetString(*message, descriptor);
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '\n') {
      out += "\\n";  // a line break inside a label
      continue;
    }
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + '"';
}

// The device a capture port opens, or empty.
std::string portDevice(const DaemonPort& port) {
  bess::pb::PCAPPortArg arg;
  if (!port.arg.UnpackTo(&arg)) return {};
  return arg.dev();
}

bool isFabricDevice(const std::string& device) {
  return device == "fabric" || device.starts_with("fwd");
}

bool isFabricModuleClass(std::uint32_t moduleClass) {
  return moduleClass == Vek::VekModule::vlanMetadata ||
         moduleClass == Vek::VekModule::l2MVxlanIn || moduleClass == Vek::VekModule::l2MVxlanOut;
}

}  // namespace

DotWriter::DotWriter(const Model& model) : model_(model) {
  collectNodesAndEdges();
  collectFabric();
  assignVrfs();
}

void DotWriter::collectFabric() {
  for (const auto& [name, port] : model_.ports()) {
    if (isFabricDevice(portDevice(port))) fabric_.insert(name);
  }
  for (const auto& [name, m] : model_.modules()) {
    if (isFabricModuleClass(m.moduleClass) || fabric_.contains(stringField(m.init.get(), "port"))) {
      fabric_.insert(name);
    }
  }
}

void DotWriter::collectNodesAndEdges() {
  for (const auto& [name, m] : model_.modules()) {
    nodeVrf_[name];
    if (m.moduleClass == Vek::VekModule::txDemuxer || m.moduleClass == Vek::VekModule::igmpV2) {
      shared_.insert(name);
    }
    if (std::string vrf = stringField(m.init.get(), "vrfName"); !vrf.empty()) {
      vrfs_.insert(vrf);
      nodeVrf_[name] = vrf;
    }
    for (const auto& [gate, to] : m.out) {
      edges_.push_back(Edge{name, to.module, fmt::format("{}→{}", gate, to.gate)});
    }
    const std::string port = stringField(m.init.get(), "port");
    if (!port.empty() && model_.ports().contains(port)) {
      if (m.moduleClass == Vek::VekModule::portOut) {
        edges_.push_back(Edge{name, port, {}});
      } else {
        edges_.push_back(Edge{port, name, {}});
      }
    }
  }
  for (const auto& [name, port] : model_.ports()) nodeVrf_[name];
}

std::string DotWriter::vrfByName(const std::string& name) const {
  std::string best;
  for (const std::string& vrf : vrfs_) {
    if (vrf.size() >= name.size() || vrf.size() <= best.size()) continue;
    if (name.compare(name.size() - vrf.size(), vrf.size(), vrf) != 0) continue;
    const char before = name[name.size() - vrf.size() - 1];
    if (before == '_' || before == '4' || before == '6') best = vrf;
  }
  return best;
}

void DotWriter::assignVrfs() {
  for (const std::string& node : fabric_) nodeVrf_[node].clear();
  for (auto& [node, vrf] : nodeVrf_) {
    if (vrf.empty() && !shared_.contains(node) && !fabric_.contains(node)) vrf = vrfByName(node);
  }
  // A node of no VRF by name joins the VRF of its neighbours when they agree, so that the
  // receive and transmit paths of an interface sit with their FIB.
  for (bool changed = true; changed;) {
    changed = false;
    for (auto& [node, vrf] : nodeVrf_) {
      if (!vrf.empty() || shared_.contains(node) || fabric_.contains(node)) continue;
      std::set<std::string> around;
      for (const Edge& edge : edges_) {
        const std::string* other = edge.from == node ? &edge.to
                                   : edge.to == node ? &edge.from
                                                     : nullptr;
        if (other && !nodeVrf_[*other].empty()) around.insert(nodeVrf_[*other]);
      }
      if (around.size() == 1) {
        vrf = *around.begin();
        changed = true;
      }
    }
  }
}

// A module is drawn with its name, its class by name and number (a reader takes in "FIB"
// faster than 26) and, for a FIB, how many routes it holds.
std::string DotWriter::moduleLabel(const std::string& name, const DaemonModule& module) {
  namespace Class = Vek::VekModule;
  static const std::map<std::uint32_t, std::string_view> classNames = {
      {Class::portInc, "port in"},
      {Class::portOut, "port out"},
      {Class::mfib, "FIB"},
      {Class::mfibVek, "FIB"},
      {Class::metaData, "metadata"},
      {Class::vlanMetadata, "VLAN metadata"},
      {Class::txDemuxer, "demultiplexer"},
      {Class::igmpV2, "IGMPv2"}};
  auto className = classNames.find(module.moduleClass);
  std::string label = className == classNames.end()
                          ? fmt::format("{}\nclass {}", name, module.moduleClass)
                          : fmt::format("{}\n{} ({})", name, className->second, module.moduleClass);
  if (const auto* fib = dynamic_cast<const Mfib*>(module.table.get())) {
    label += fmt::format("\n{} route{}", fib->routeCount(), fib->routeCount() == 1 ? "" : "s");
  }
  return label;
}

std::string DotWriter::write() const {
  // The fabric's cluster is keyed so that no VRF name can meet it.
  const std::string fabricKey = "\n";
  std::map<std::string, std::vector<std::string>> byVrf;
  for (const auto& [node, vrf] : nodeVrf_) {
    byVrf[fabric_.contains(node) ? fabricKey : vrf].push_back(node);
  }

  auto nodeLine = [this](const std::string& node) {
    if (const DaemonModule* m = model_.module(node)) {
      return fmt::format("{} [label={}];", quoted(node), quoted(moduleLabel(node, *m)));
    }
    return fmt::format("{} [shape=ellipse, label={}];", quoted(node),
                       quoted(fmt::format("{}\n{}", node, model_.ports().at(node).driver)));
  };

  std::string out = "digraph dataplane {\n  rankdir=LR;\n  node [shape=box, fontsize=10];\n";
  for (const auto& [vrf, nodes] : byVrf) {
    const bool cluster = !vrf.empty();
    const std::string indent = cluster ? "    " : "  ";
    if (vrf == fabricKey) {
      out += "  subgraph \"cluster_fabric\" {\n    label=\"fabric\";\n";
    } else if (cluster) {
      out += fmt::format("  subgraph {} {{\n    label={};\n", quoted("cluster_" + vrf),
                         quoted("VRF " + vrf));
    }
    for (const std::string& node : nodes) out += indent + nodeLine(node) + "\n";
    if (cluster) out += "  }\n";
  }
  for (const Edge& edge : edges_) {
    out += fmt::format("  {} -> {} [{}];\n", quoted(edge.from), quoted(edge.to),
                       edge.label.empty() ? "style=dashed" : "label=" + quoted(edge.label));
  }
  return out + "}\n";
}

}  // namespace Dataplane
