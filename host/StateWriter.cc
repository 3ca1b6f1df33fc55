#include "host/StateWriter.h"

#include <vector>

#include "host/MvpnStateKeys.h"
#include "runtime/state/IpGenPrefix.h"
#include "runtime/state/MfibRoute.h"

namespace VekHost {

namespace {

using Routing::Multicast::Fib::MfibAppType;

Lanx::AddressFamily family(Af af) {
  return af == Af::ipv6 ? Lanx::AddressFamily::ipv6 : Lanx::AddressFamily::ipv4;
}

MfibAppType app(const std::string& name) {
  return Routing::Multicast::Fib::mfibAppTypeFromName(name).value_or(MfibAppType::none);
}

Routing::Multicast::Fib::IpGenRouteKey routeKey(const RouteKey& key) {
  const Lanx::IpGenPrefix source = key.source == "*" ? Lanx::IpGenPrefix()
                                                      : Lanx::IpGenPrefix(key.source);
  return {source, Lanx::IpGenPrefix(key.group)};
}

Vash::Multicast::Fib::Route route(const Mroute& mroute) {
  using Vash::Multicast::Fib::Route;
  using Vash::Multicast::Fib::RouteIntf;
  const Lanx::IntfId iif = mroute.iif.empty() ? Lanx::IntfId() : Lanx::IntfId(mroute.iif);
  std::uint8_t flags = 0;
  if (mroute.flags.fastdrop) flags |= Route::fastdropFlag;
  if (mroute.flags.iifRegister) flags |= Route::iifRegisterFlag;
  if (mroute.flags.oifRegister) flags |= Route::oifRegisterFlag;
  if (mroute.flags.switching) flags |= Route::switchingFlag;
  Route made(routeKey(mroute.key), iif, flags);
  if (!iif.isEmpty()) made.intfIs(iif, RouteIntf::incomingFlag);
  for (const std::string& oif : mroute.oifs) {
    const Lanx::IntfId id(oif);
    // A member that is both stays the incoming interface, as readers test that flag first.
    made.intfIs(id, id == iif ? RouteIntf::incomingFlag | RouteIntf::outgoingFlag
                              : RouteIntf::outgoingFlag);
  }
  return made;
}

}  // namespace

void StateWriter::apply(const StateChange& change, StateOp op) {
  vrfs(change, op);
  hwVrfs(change, op);
  bridgeMac(change);
  kernel(change, op);
  multicastIntfs(change, op);
  kernelMfibConfig(change, op);
  intfVlans(change, op);
  // A table stands before its routes are written and goes after they are taken out.
  if (op == StateOp::set) tables(change, op);
  mroutes(change, op);
  if (op == StateOp::remove) tables(change, op);
  VxlanStateKeys::write(store_, change.vxlan, op);
  MvpnStateKeys::write(store_, change, op);
  SnoopingStateKeys::write(store_, change.snoop, op);
}

void StateWriter::vrfs(const StateChange& change, StateOp op) {
  for (const auto& [name, id] : change.vrfs) {
    if (op == StateOp::set) {
      store_.vrfNameToId().vrfIdIs(name, Vrf::VrfIdMap::VrfId(id));
    } else {
      store_.vrfNameToId().vrfIdDel(name);
    }
  }
  // The id-to-name table of the software ids follows the names.
  writeIdTable(store_.vrfIdMap(), change.vrfs, op);
}

void StateWriter::hwVrfs(const StateChange& change, StateOp op) {
  writeIdTable(store_.hwVrfIdMap(), change.hwVrfs, op);
}

void StateWriter::writeIdTable(Vrf::VrfIdMap::Status& table,
                               const std::map<std::string, uint32_t>& ids, StateOp op) {
  for (const auto& [name, id] : ids) {
    // A name stands under one id: the entry of its old id goes.
    std::vector<Vrf::VrfIdMap::VrfId> old;
    for (const auto& entry : table.vrfEntries()) {
      if (entry.value.name == name) old.push_back(entry.key);
    }
    for (Vrf::VrfIdMap::VrfId gone : old) {
      if (op == StateOp::remove || gone.value() != id) table.vrfEntryDel(gone);
    }
    if (op == StateOp::set) table.vrfEntryIs(Vrf::VrfIdMap::VrfId(id), {name});
  }
}

void StateWriter::bridgeMac(const StateChange& change) {
  if (!change.bridgeMac) return;
  if (change.bridgeMac->empty()) {
    store_.bridgingConfig().bridgeMacAddrDel();
  } else {
    store_.bridgingConfig().bridgeMacAddrIs(Lanx::EthAddr(*change.bridgeMac));
  }
}

void StateWriter::kernel(const StateChange& change, StateOp op) {
  for (const auto& [vrf, devices] : change.kernel) {
    KernelNetInfo::Root& root = store_.kernelDevices(L3::VrfName(vrf).nsName());
    for (const auto& [name, device] : devices) {
      if (op == StateOp::remove) {
        root.interfaceByDeviceNameDel(name);
        continue;
      }
      root.interfaceByDeviceNameIs(
          name, KernelNetInfo::Interface{
                    static_cast<std::uint32_t>(device.ifIndex),
                    device.up ? KernelNetInfo::Interface::upFlag : 0u,
                    device.intf.empty() ? Lanx::IntfId() : Lanx::IntfId(device.intf)});
    }
  }
}

void StateWriter::multicastIntfs(const StateChange& change, StateOp op) {
  for (const auto& [af, vrfs] : change.multicastIntfs) {
    auto& dir = store_.multicastIntfs(family(af));
    for (const auto& [vrf, intfs] : vrfs) {
      auto members = dir.vrfIs(L3::VrfName(vrf));
      for (const std::string& intf : intfs) {
        if (op == StateOp::set) {
          members->multicastIntfIs(Lanx::IntfId(intf));
        } else {
          members->multicastIntfDel(Lanx::IntfId(intf));
        }
      }
    }
  }
}

void StateWriter::kernelMfibConfig(const StateChange& change, StateOp op) {
  for (const auto& [af, vrfs] : change.kernelMfibConfig) {
    auto& configs = store_.kernelMfibConfig(family(af));
    for (const auto& [vrf, limits] : vrfs) {
      if (op == StateOp::remove) {
        configs.configDel(L3::VrfName(vrf));
        continue;
      }
      auto config = configs.configIs(L3::VrfName(vrf));
      if (limits.maxUnresolvedCacheEntries) {
        config->maxUnresolvedCacheEntriesIs(*limits.maxUnresolvedCacheEntries);
      }
      if (limits.maxUnresolvedPktBuffers) {
        config->maxUnresolvedPktBuffersIs(*limits.maxUnresolvedPktBuffers);
      }
    }
  }
}

void StateWriter::intfVlans(const StateChange& change, StateOp op) {
  for (const auto& [intf, vlan] : change.intfVlans) {
    if (op == StateOp::set) {
      store_.intfVlans().intfIdToVlanIdIs(
          Lanx::IntfId(intf), Bridging::VlanIdOrNone(static_cast<std::uint16_t>(vlan)));
    } else {
      store_.intfVlans().intfIdToVlanIdDel(Lanx::IntfId(intf));
    }
  }
}

void StateWriter::mroutes(const StateChange& change, StateOp op) {
  for (const Mroute& mroute : change.mroutes) {
    const L3::VrfName vrf(mroute.table.vrfAf.vrf);
    const Lanx::AddressFamily af = family(mroute.table.vrfAf.af);
    const MfibAppType application = app(mroute.table.app);
    if (op == StateOp::set) {
      store_.routeTable(vrf, af, application).routeIs(route(mroute));
    } else if (store_.routeTableHas(vrf, af, application)) {
      store_.routeTable(vrf, af, application).routeDel(routeKey(mroute.key));
    }
  }
}

void StateWriter::tables(const StateChange& change, StateOp op) {
  for (const RouteTableName& table : change.tables) {
    const L3::VrfName vrf(table.vrfAf.vrf);
    if (op == StateOp::set) {
      store_.routeTable(vrf, family(table.vrfAf.af), app(table.app));
    } else {
      store_.routeTableDel(vrf, family(table.vrfAf.af), app(table.app));
    }
  }
}

}  // namespace VekHost
