#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <array>
#include <cstddef>
#include <string_view>

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleCounters.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekMVxlan {

// The VXLAN modules take their counter ids in one message whose fields are the counters in
// the order of allocation; these helpers keep the names, the ids and the fields in that one
// order.

template <std::size_t N>
using CounterIds = std::array<Vek::CounterId, N>;

// Allocates one packet counter of the module per name, in order.
template <std::size_t N>
CounterIds<N> allocateModuleCounters(Vek::Module* module,
                                     const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd,
                                     const std::array<std::string_view, N>& names) {
  CounterIds<N> ids;
  for (std::size_t i = 0; i < N; ++i) {
    ids[i] = Vek::allocateModulePacketCounter(module, vekcsd, Lumo::String(names[i]),
                                              Vek::counterUnitPackets);
  }
  return ids;
}

// A new message of type Arg with its fields, in declaration order, set to the ids.
template <typename Arg, std::size_t N>
Arg* counterIdArg(const CounterIds<N>& ids) {
  auto* arg = new Arg;
  const google::protobuf::Descriptor* descriptor = arg->GetDescriptor();
  QEL_ASSERT(static_cast<std::size_t>(descriptor->field_count()) == N,
             "counter message and counter list differ in length");
  const google::protobuf::Reflection* reflection = arg->GetReflection();
  for (std::size_t i = 0; i < N; ++i) {
    reflection->SetUInt32(arg, descriptor->field(static_cast<int>(i)), ids[i].value());
  }
  return arg;
}

}  // namespace VekMVxlan
