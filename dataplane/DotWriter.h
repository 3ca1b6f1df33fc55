#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Dataplane {

class Model;
struct DaemonModule;

// Draws the daemon's modules and ports as nodes and their gate links as edges labelled
// "<output gate>→<input gate>", with one cluster per VRF and one for the fabric paths (the
// ports on the "fabric" and forwarding devices, their port modules, the VLAN metadata and
// L2 VXLAN modules). A port is joined by a dashed edge to the port module that names it.
// The modules shared by all VRFs stay outside.
class DotWriter {
 public:
  explicit DotWriter(const Model& model);
  std::string write() const;

 private:
  struct Edge {
    std::string from;
    std::string to;
    std::string label;  // empty for a port edge
  };

  static std::string moduleLabel(const std::string& name, const DaemonModule& module);
  void collectNodesAndEdges();
  void collectFabric();
  void assignVrfs();
  // The VRF a name ends with ("MfibIpv4red", "Mdata_McastHwFwd_red"), or empty.
  std::string vrfByName(const std::string& name) const;

  const Model& model_;
  std::set<std::string> vrfs_;
  std::map<std::string, std::string> nodeVrf_;  // node -> VRF, empty outside every VRF
  std::set<std::string> shared_;                // nodes never put in a VRF
  std::set<std::string> fabric_;                // nodes of the fabric cluster
  std::vector<Edge> edges_;
};

}  // namespace Dataplane
