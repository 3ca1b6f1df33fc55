#pragma once

#include <string_view>

#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace VekMVxlan {

// Runs one reactor's work. Reactors must not throw: a bad value of central state (a VLAN
// interface out of range, an overlong VRF name) is told and that change is dropped.
template <typename Work>
void guarded(std::string_view what, Work&& work) {
  try {
    work();
  } catch (const Lumo::Exception& error) {
    VEK_TRACE(err, "{}: {}", what, error.msg());
  }
}

}  // namespace VekMVxlan
