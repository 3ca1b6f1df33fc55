#include "host/PluginLibrary.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>

namespace VekHost {

namespace {

std::string loaderError(const std::string& what) {
  const char* reason = ::dlerror();
  return what + ": " + (reason ? reason : "unknown reason");
}

template <typename Fn>
Fn entryPoint(void* handle, const char* name, const std::string& path) {
  void* symbol = ::dlsym(handle, name);
  if (!symbol) throw std::runtime_error(loaderError(path + " has no entry point " + name));
  return reinterpret_cast<Fn>(symbol);
}

}  // namespace

std::string PluginLibrary::path() {
  if (const char* fromEnv = std::getenv("VEK_PLUGIN"); fromEnv && *fromEnv) return fromEnv;
#ifdef VEK_PLUGIN_PATH
  return VEK_PLUGIN_PATH;
#else
  return "libVekL3Mcast.so";
#endif
}

const PluginLibrary& PluginLibrary::instance() {
  static const PluginLibrary library(path());
  return library;
}

PluginLibrary::PluginLibrary(const std::string& path) {
  // The agent keeps process-wide state (toggles, singletons): the library stays loaded.
  void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL | RTLD_NODELETE);
  if (!handle) throw std::runtime_error(loaderError("cannot load the agent " + path));
  mfaAgentFactory = entryPoint<MfaAgentFactoryFn>(handle, "mfaAgentFactory", path);
  mfaAgentRelease = entryPoint<MfaAgentReleaseFn>(handle, "mfaAgentRelease", path);
  startMfibSm = entryPoint<StartMfibSmFn>(handle, "startMfibSm", path);
  stopMfibSm = entryPoint<StopMfibSmFn>(handle, "stopMfibSm", path);
  getMfibModule = entryPoint<GetMfibModuleFn>(handle, "getMfibModule", path);
}

}  // namespace VekHost
