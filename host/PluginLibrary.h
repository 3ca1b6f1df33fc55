#pragma once

#include <string>

#include "plugin/MfaAgentEntryPoints.h"

namespace VekHost {

// libVekL3Mcast.so, loaded once per process, and its entry points. The path comes from the
// environment variable VEK_PLUGIN, else from the build that made this program.
class PluginLibrary {
 public:
  // The library of this process; loaded on first use. Throws std::runtime_error with the
  // loader's reason when it cannot be loaded or lacks an entry point.
  static const PluginLibrary& instance();
  static std::string path();

  MfaAgentFactoryFn mfaAgentFactory = nullptr;
  MfaAgentReleaseFn mfaAgentRelease = nullptr;
  StartMfibSmFn startMfibSm = nullptr;
  StopMfibSmFn stopMfibSm = nullptr;
  GetMfibModuleFn getMfibModule = nullptr;

 private:
  explicit PluginLibrary(const std::string& path);
};

}  // namespace VekHost
