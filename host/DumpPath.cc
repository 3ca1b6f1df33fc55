#include "host/DumpPath.h"

#include <charconv>

namespace VekHost {

namespace {

// Reads `"key"]` or `123]` after an opening bracket; advances `pos` past the bracket.
std::optional<std::string> bracketKey(std::string_view text, std::size_t& pos, std::string* error) {
  std::string key;
  if (pos < text.size() && text[pos] == '"') {
    for (++pos; pos < text.size() && text[pos] != '"'; ++pos) {
      if (text[pos] == '\\' && pos + 1 < text.size()) ++pos;
      key += text[pos];
    }
    if (pos >= text.size()) {
      *error = "unterminated quote";
      return std::nullopt;
    }
    ++pos;
  } else {
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') key += text[pos++];
    if (key.empty()) {
      *error = "a bracket holds a quoted key or an array position";
      return std::nullopt;
    }
  }
  if (pos >= text.size() || text[pos] != ']') {
    *error = "missing ']'";
    return std::nullopt;
  }
  ++pos;
  return key;
}

std::optional<std::size_t> arrayPosition(std::string_view key) {
  std::size_t position = 0;
  auto [end, ec] = std::from_chars(key.data(), key.data() + key.size(), position);
  if (ec != std::errc() || end != key.data() + key.size()) return std::nullopt;
  return position;
}

std::string joined(const std::vector<std::string>& keys, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += (i ? "." : "") + keys[i];
  return text.empty() ? "the dump" : "'" + text + "'";
}

}  // namespace

std::optional<DumpPath> DumpPath::parse(std::string_view text, std::string* error) {
  DumpPath path;
  std::size_t pos = 0;
  bool expectKey = true;  // at the start and after a dot
  while (pos < text.size()) {
    if (text[pos] == '[') {
      auto key = bracketKey(text, ++pos, error);
      if (!key) return std::nullopt;
      path.keys_.push_back(*key);
      expectKey = false;
    } else if (text[pos] == '.' && !expectKey) {
      ++pos;
      expectKey = true;
    } else if (expectKey && text[pos] != '.' && text[pos] != ']') {
      std::size_t end = text.find_first_of(".[]", pos);
      if (end == std::string_view::npos) end = text.size();
      path.keys_.emplace_back(text.substr(pos, end - pos));
      pos = end;
      expectKey = false;
    } else {
      *error =
          "unexpected '" + std::string(1, text[pos]) + "' at position " + std::to_string(pos + 1);
      return std::nullopt;
    }
  }
  if (path.keys_.empty() || expectKey) {
    *error = "a path ends with a key";
    return std::nullopt;
  }
  return path;
}

const nlohmann::json* DumpPath::find(const nlohmann::json& root, std::string* missing) const {
  const nlohmann::json* at = &root;
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    const std::string& key = keys_[i];
    if (at->is_object()) {
      auto it = at->find(key);
      if (it == at->end()) {
        *missing = "no key '" + key + "' in " + joined(keys_, i);
        return nullptr;
      }
      at = &*it;
    } else if (at->is_array()) {
      auto position = arrayPosition(key);
      if (!position || *position >= at->size()) {
        *missing = "no position " + key + " in " + joined(keys_, i) + " (" +
                   std::to_string(at->size()) + " entries)";
        return nullptr;
      }
      at = &(*at)[*position];
    } else {
      *missing = joined(keys_, i) + " is " + at->type_name() + ", not an object or array";
      return nullptr;
    }
  }
  return at;
}

}  // namespace VekHost
