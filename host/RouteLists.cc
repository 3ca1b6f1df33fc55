#include "host/RouteLists.h"

#include <yaml-cpp/eventhandler.h>

#include <algorithm>
#include <optional>
#include <sstream>

#include "host/LoadError.h"
#include "host/YamlText.h"

namespace VekHost {

namespace {

// Walks the document's events and notes every block list of routes, with the offset of each
// of its entries: the value of a key `mroutes` in the map under `state`, `set` or `delete`.
// A list under that key anywhere else (an expectation's `equals:`) is plain YAML.
class ListFinder : public YAML::EventHandler {
 public:
  explicit ListFinder(std::size_t textSize) : textSize_(textSize) {}

  // The lists found, keyed by their offset; entries by the offset of their content.
  std::map<std::size_t, std::vector<std::size_t>> contents;
  std::map<std::size_t, std::size_t> ends;
  std::optional<YAML::Mark> firstAlias;

  void finish() {
    for (std::size_t list : open_) ends[list] = textSize_;
    open_.clear();
  }

  void OnDocumentStart(const YAML::Mark& mark) override { marked(mark); }
  void OnDocumentEnd() override {}
  void OnNull(const YAML::Mark& mark, YAML::anchor_t) override { node(mark, nullptr); }
  void OnAlias(const YAML::Mark& mark, YAML::anchor_t) override {
    if (!firstAlias) firstAlias = mark;
    node(mark, nullptr);
  }
  void OnScalar(const YAML::Mark& mark, const std::string&, YAML::anchor_t,
                const std::string& value) override {
    node(mark, &value);
  }
  void OnSequenceStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t,
                       YAML::EmitterStyle::value style) override {
    const std::optional<std::string> key = node(mark, nullptr);
    const bool routes = key && *key == "mroutes" && holdsRouteLists(frames_.back().ownerKey) &&
                        style == YAML::EmitterStyle::Block;
    frames_.push_back(Frame{false, true, {}, {}, routes ? std::optional(mark.pos) : std::nullopt});
    if (routes) contents[mark.pos];
  }
  void OnSequenceEnd() override { close(); }
  void OnMapStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t,
                  YAML::EmitterStyle::value) override {
    std::string ownerKey = node(mark, nullptr).value_or("");
    frames_.push_back(Frame{true, true, {}, std::move(ownerKey), std::nullopt});
  }
  void OnMapEnd() override { close(); }

 private:
  struct Frame {
    bool map;
    bool atKey;
    std::string key;       // of a map: the key whose value comes next
    std::string ownerKey;  // of a map: the key it is the value of

    std::optional<std::size_t> routeList;  // the offset of this list, if it is one
  };

  // Any event with a position ends the lists that closed before it.
  void marked(const YAML::Mark& mark) {
    for (std::size_t list : open_) ends[list] = static_cast<std::size_t>(mark.pos);
    open_.clear();
  }

  static bool holdsRouteLists(const std::string& key) {
    return key == "state" || key == "set" || key == "delete";
  }

  // A node begins; gives the key it is the value of, if it is the value of a key.
  std::optional<std::string> node(const YAML::Mark& mark, const std::string* scalar) {
    marked(mark);
    if (frames_.empty()) return std::nullopt;
    Frame& top = frames_.back();
    if (top.routeList) contents[*top.routeList].push_back(static_cast<std::size_t>(mark.pos));
    if (!top.map) return std::nullopt;
    if (top.atKey) {
      top.atKey = false;
      top.key = scalar ? *scalar : std::string();
      return std::nullopt;
    }
    top.atKey = true;
    return top.key;
  }

  void close() {
    if (frames_.back().routeList) open_.push_back(*frames_.back().routeList);
    frames_.pop_back();
  }

  std::size_t textSize_;
  std::vector<Frame> frames_;
  std::vector<std::size_t> open_;
};

// Notes where the next document begins and nothing else.
class DocumentStart : public YAML::EventHandler {
 public:
  std::optional<YAML::Mark> mark;

  void OnDocumentStart(const YAML::Mark& at) override { mark = at; }
  void OnDocumentEnd() override {}
  void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
  void OnAlias(const YAML::Mark&, YAML::anchor_t) override {}
  void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t,
                const std::string&) override {}
  void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                       YAML::EmitterStyle::value) override {}
  void OnSequenceEnd() override {}
  void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t,
                  YAML::EmitterStyle::value) override {}
  void OnMapEnd() override {}
};

std::size_t columnOf(std::string_view text, std::size_t at) {
  const std::size_t lineStart = text.rfind('\n', at == 0 ? 0 : at - 1);
  return lineStart == std::string_view::npos || at == 0 ? at : at - lineStart - 1;
}

// The list ends where what follows it begins; when that is an entry of an outer list, its
// dash stands on the same line before it and belongs to the outer list. So the list ends at
// the start of that line, if only blanks and dashes come before the next thing on it.
std::size_t lineStartBefore(std::string_view text, std::size_t end) {
  if (end >= text.size()) return end;
  const std::size_t lineStart = text.rfind('\n', end == 0 ? 0 : end - 1);
  if (lineStart == std::string_view::npos) return end;
  const std::string_view before = text.substr(lineStart + 1, end - lineStart - 1);
  return before.find_first_not_of(" -") == std::string_view::npos ? lineStart + 1 : end;
}

int newlines(std::string_view text, std::size_t from, std::size_t to) {
  return static_cast<int>(std::count(text.begin() + static_cast<std::ptrdiff_t>(from),
                                     text.begin() + static_cast<std::ptrdiff_t>(to), '\n'));
}

}  // namespace

RouteLists::RouteLists(std::string_view text) : text_(text), skeleton_(text) {
  ListFinder finder(text.size());
  std::istringstream in{std::string(text)};
  YAML::Parser parser(in);
  try {
    parser.HandleNextDocument(finder);
    finder.finish();
  } catch (const YAML::Exception&) {
    return;  // read whole, the document reports its own mistake
  }
  firstAlias_ = finder.firstAlias;
  // One look past the first document, never more: on a token that begins no document the
  // parser reports an empty one without moving on.
  DocumentStart next;
  try {
    if (parser.HandleNextDocument(next)) afterDocument_ = next.mark;
  } catch (const YAML::Exception& error) {
    afterDocument_ = next.mark ? *next.mark : error.mark;
  }
  for (const auto& [start, contents] : finder.contents) {
    if (contents.empty()) continue;
    List list;
    list.end = lineStartBefore(text, finder.ends.at(start));
    for (std::size_t content : contents) {
      const std::size_t dash = text.rfind('-', content);
      list.dashes.push_back(dash);
    }
    // The first entry stays, as a null; the rest of the list becomes blank, lines kept.
    skeleton_[contents.front()] = '~';
    for (std::size_t at = contents.front() + 1; at < list.end; ++at) {
      if (skeleton_[at] != '\n') skeleton_[at] = ' ';
    }
    lists_.emplace(list.dashes.front(), std::move(list));
  }
}

const RouteLists::List* RouteLists::list(const YAML::Node& node) const {
  if (!node.IsSequence() || node.Mark().pos < 0) return nullptr;
  auto it = lists_.find(static_cast<std::size_t>(node.Mark().pos));
  return it == lists_.end() ? nullptr : &it->second;
}

void RouteLists::forEachSlice(
    const List& list,
    const std::function<void(const YAML::Node& slice, int linesBefore)>& read) const {
  // Lines are counted on from slice to slice, so that a list costs one pass over its text.
  int before = newlines(text_, 0, list.dashes.front());
  std::size_t counted = list.dashes.front();
  for (std::size_t first = 0; first < list.dashes.size(); first += kSliceEntries) {
    const std::size_t start = list.dashes[first];
    before += newlines(text_, counted, start);
    counted = start;
    const std::size_t next = first + kSliceEntries;
    const std::size_t end = next < list.dashes.size() ? list.dashes[next] : list.end;
    // The first line gets its indentation back, so that the entries line up as in the file.
    const std::string slice =
        std::string(columnOf(text_, start), ' ') + std::string(text_.substr(start, end - start));
    YAML::Node node;
    try {
      node = YAML::Load(slice);
    } catch (const YAML::Exception& error) {
      const LoadError explained = YamlText::explain(error, slice);
      throw LoadError(explained.line() + before, explained.what());
    }
    read(node, before);
  }
}

}  // namespace VekHost
