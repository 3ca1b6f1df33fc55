#pragma once

#include <cstdint>
#include <string>

namespace QelSharedMem {

enum class MountKind : std::uint8_t { vash, kraz };
enum class MountEvent : std::uint8_t { mount, unmount };

// One line of a manager's mount log, in the order the mounts were asked for.
struct MountRecord {
  MountEvent event = MountEvent::mount;
  std::string path;
  std::string typeName;
  MountKind kind = MountKind::vash;
  unsigned mode = 0;  // the QelVashType of a Vash mount, 0 for Kraz
};

}  // namespace QelSharedMem
