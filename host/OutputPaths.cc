#include "host/OutputPaths.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>

namespace VekHost {

namespace {

namespace fs = std::filesystem;

// The same file under every spelling of its path: ./a, a and dir/../a.
std::string identity(const std::string& path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(fs::absolute(path, error), error);
  return error ? path : canonical.string();
}

// Why the path cannot be written, or nothing.
std::optional<std::string> unwritable(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) == 0) {
    if (S_ISDIR(info.st_mode)) return std::string("it is a folder");
    if (::access(path.c_str(), W_OK) != 0) return std::string(std::strerror(errno));
    return std::nullopt;
  }
  if (errno != ENOENT) return std::string(std::strerror(errno));
  const fs::path parent = fs::path(path).parent_path();
  const std::string folder = parent.empty() ? std::string(".") : parent.string();
  if (::stat(folder.c_str(), &info) != 0) {
    return fmt::format("the folder {} cannot be used: {}", folder, std::strerror(errno));
  }
  if (!S_ISDIR(info.st_mode)) return fmt::format("{} is not a folder", folder);
  if (::access(folder.c_str(), W_OK | X_OK) != 0) {
    return fmt::format("no file can be made in {}: {}", folder, std::strerror(errno));
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> OutputPaths::check(const OutputFiles& files, const std::string& scenario) {
  std::vector<std::string> problems;
  const std::string scenarioFile = scenario == "-" ? std::string() : identity(scenario);
  std::map<std::string, std::string> optionOf;
  for (const auto& [option, path] : files.named()) {
    if (path.empty()) continue;
    const std::string same = identity(path);
    if (same == scenarioFile) {
      problems.push_back(fmt::format("{} {}: that is the scenario file", option, path));
      continue;
    }
    if (auto [first, fresh] = optionOf.try_emplace(same, option); !fresh) {
      problems.push_back(
          fmt::format("{} {}: {} writes that file already", option, path, first->second));
      continue;
    }
    if (auto why = unwritable(path))
      problems.push_back(fmt::format("{} {}: {}", option, path, *why));
  }
  return problems;
}

}  // namespace VekHost
