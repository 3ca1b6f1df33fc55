// Any text given to the scenario loader loads, or is refused with messages that each name
// the file and a line of it; the loader never throws and never crashes. A refused file
// gives no scenario, so nothing of it can reach the agent.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "host/LoaderOptions.h"
#include "host/ScenarioLoader.h"

namespace {

constexpr const char* kFile = "fuzz.yaml";

[[noreturn]] void broken(const std::string& why, std::string_view text) {
  std::fprintf(stderr, "the loader broke its promise: %s\n--- input ---\n%.*s\n", why.c_str(),
               static_cast<int>(text.size()), text.data());
  std::abort();
}

// "fuzz.yaml:LINE: message", LINE within the text (one past its end for a mistake at the
// end), or the closing "fuzz.yaml: and N more".
bool located(const std::string& message, std::string_view text) {
  const std::string prefix = std::string(kFile) + ":";
  if (message.rfind(prefix, 0) != 0) return false;
  if (message.rfind(prefix + " and ", 0) == 0) return message.find(" more") != std::string::npos;
  std::size_t at = prefix.size();
  unsigned long line = 0;
  while (at < message.size() && message[at] >= '0' && message[at] <= '9' && line < 1u << 30) {
    line = line * 10 + static_cast<unsigned long>(message[at++] - '0');
  }
  std::size_t lines = 1;
  for (char c : text) lines += c == '\n';
  return line >= 1 && line <= lines + 1 && message.compare(at, 2, ": ") == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const VekHost::ScenarioLoader loader(VekHost::runtimeLoaderOptions());
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const VekHost::LoadResult result = loader.loadText(text, kFile);
  if (result.scenario && !result.errors.empty()) broken("a scenario with mistakes", text);
  if (!result.scenario && result.errors.empty()) broken("refused without a message", text);
  for (const std::string& message : result.errors) {
    if (!located(message, text)) broken("a message without file:line: " + message, text);
  }
  for (const std::string& message : result.warnings) {
    if (!located(message, text)) broken("a warning without file:line: " + message, text);
  }
  return 0;
}
