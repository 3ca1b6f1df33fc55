#include "host/AgentAssertion.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "runtime/lumo/Assert.h"

namespace VekHost {

namespace {

std::string& position() {
  static std::string where;
  return where;
}

AgentAssertion::Report& report() {
  static AgentAssertion::Report installed;
  return installed;
}

void handle(const char* text, const char* file, int line, const char*) {
  if (report()) report()(AgentAssertion::line(text, file, line));
}

}  // namespace

AgentAssertion::AgentAssertion(Report newReport) {
  report() = std::move(newReport);
  Lumo::assertionHandlerIs(&handle);
}

AgentAssertion::~AgentAssertion() {
  Lumo::assertionHandlerIs(nullptr);
  report() = nullptr;
}

void AgentAssertion::positionIs(std::string where) { position() = std::move(where); }

std::string AgentAssertion::line(const char* text, const char* file, int line) {
  // The source file by its name: the folders of the build machine say nothing to a reader.
  std::string_view source(file);
  source = source.substr(source.find_last_of('/') + 1);
  return fmt::format("{}: the agent failed its assertion \"{}\" ({}:{})",
                     position().empty() ? std::string("mfa-host") : position(), text, source, line);
}

}  // namespace VekHost
