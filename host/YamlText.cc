#include "host/YamlText.h"

#include <fmt/format.h>

namespace VekHost {

namespace {

// The length of the UTF-8 sequence that starts at `text[at]`, or 0 if none does.
std::size_t utf8Length(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  std::size_t length = 0;
  if (lead < 0x80) return 1;
  if (lead >= 0xc2 && lead <= 0xdf) length = 2;
  if (lead >= 0xe0 && lead <= 0xef) length = 3;
  if (lead >= 0xf0 && lead <= 0xf4) length = 4;
  if (length == 0 || at + length > text.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[at + i]) & 0xc0) != 0x80) return 0;
  }
  return length;
}

// The first line, at or before `last`, whose indentation holds a tab.
std::optional<int> tabIndentedLine(std::string_view text, int last) {
  int line = 1;
  for (std::size_t at = 0; at < text.size() && line <= last; ++line) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string_view row = text.substr(at, end - at);
    const std::size_t content = row.find_first_not_of(" \t");
    if (row.substr(0, content).find('\t') != std::string_view::npos) return line;
    at = end + 1;
  }
  return std::nullopt;
}

}  // namespace

std::optional<LoadError> YamlText::notText(std::string_view text) {
  int line = 1;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == '\0') {
      return LoadError(line, "the file holds a NUL byte: it is not a text file");
    }
    if (text[at] == '\n') ++line;
    const std::size_t length = utf8Length(text, at);
    if (length == 0) {
      return LoadError(line, fmt::format("byte 0x{:02x} is not UTF-8 text: a scenario is a "
                                         "UTF-8 text file",
                                         static_cast<unsigned char>(text[at])));
    }
    at += length;
  }
  return std::nullopt;
}

LoadError YamlText::explain(const YAML::Exception& error, std::string_view text) {
  const int line = error.mark.line + 1;
  if (auto tab = tabIndentedLine(text, line + 1)) {
    return LoadError(*tab, "a tab in the indentation: YAML indents with spaces only");
  }
  if (error.msg == YAML::ErrorMsg::ALIAS_NOT_FOUND) {
    return LoadError(line,
                     "a lone * starts an alias in YAML; for any source write \"*\" "
                     "(quoted)");
  }
  if (error.msg == YAML::ErrorMsg::BAD_FILE) {
    return LoadError(line, "nesting deeper than the YAML reader allows (about 500 levels)");
  }
  return LoadError(line, error.msg);
}

}  // namespace VekHost
