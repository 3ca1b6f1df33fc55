#include "host/PluginLibrary.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace VekHost {

namespace {

const char* const kPluginEnv = "VEK_PLUGIN";

// Where the path came from, for messages: a user who set the variable sees it named.
std::string origin() {
  const char* fromEnv = std::getenv(kPluginEnv);
  return fromEnv && *fromEnv ? std::string(" (from ") + kPluginEnv + ")" : std::string();
}

[[noreturn]] void cannotLoad(const std::string& path, const std::string& why) {
  throw std::runtime_error("cannot load the agent " + path + origin() + ": " + why);
}

template <typename Fn>
Fn entryPoint(void* handle, const char* name, const std::string& path) {
  void* symbol = ::dlsym(handle, name);
  if (!symbol) cannotLoad(path, std::string("it has no entry point ") + name);
  return reinterpret_cast<Fn>(symbol);
}

}  // namespace

std::string PluginLibrary::path() {
  if (const char* fromEnv = std::getenv(kPluginEnv); fromEnv && *fromEnv) return fromEnv;
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
  // A name with a slash is a file: say plainly when it is not there or not a file, before
  // the loader answers with a text about shared objects.
  if (path.find('/') != std::string::npos) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) cannotLoad(path, std::strerror(errno));
    if (!S_ISREG(info.st_mode)) cannotLoad(path, "it is not a file");
  }
  // The agent keeps process-wide state (toggles, singletons): the library stays loaded.
  void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL | RTLD_NODELETE);
  if (!handle) {
    const char* reason = ::dlerror();
    cannotLoad(path, std::string("it is not a shared library the loader can use (") +
                         (reason ? reason : "no reason given") + ")");
  }
  mfaAgentFactory = entryPoint<MfaAgentFactoryFn>(handle, "mfaAgentFactory", path);
  mfaAgentRelease = entryPoint<MfaAgentReleaseFn>(handle, "mfaAgentRelease", path);
  startMfibSm = entryPoint<StartMfibSmFn>(handle, "startMfibSm", path);
  stopMfibSm = entryPoint<StopMfibSmFn>(handle, "stopMfibSm", path);
  getMfibModule = entryPoint<GetMfibModuleFn>(handle, "getMfibModule", path);
}

}  // namespace VekHost
