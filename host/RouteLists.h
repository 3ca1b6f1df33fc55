#pragma once

#include <yaml-cpp/yaml.h>

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VekHost {

// Route lists are what makes a scenario file large, and the YAML reader keeps every node of
// a document until the whole document goes: a file of 10^5 routes would hold a few
// kilobytes of nodes per route. So each block list under a key `mroutes` is cut out of the
// text that is read as one document and read apart, a slice of entries at a time, each
// slice's nodes gone before the next is read.
class RouteLists {
 public:
  // A block list of entries, each by the offset of its dash.
  struct List {
    std::vector<std::size_t> dashes;
    std::size_t end = 0;  // where the text after the list begins
  };
  // Up to this many entries are read at a time.
  static constexpr std::size_t kSliceEntries = 256;

  // Finds the lists in `text`, which must outlive this. A text the YAML reader cannot read
  // is left whole: reading it reports the mistake.
  explicit RouteLists(std::string_view text);

  // What the one pass over the file's events saw besides the lists, for the loader to
  // refuse. The first alias (`*name`): a list read apart cannot reach an anchor outside it,
  // and an alias can stand for its own node or for copies of copies, which a reading of
  // the value as a whole would follow without end.
  const std::optional<YAML::Mark>& firstAlias() const { return firstAlias_; }
  // Where anything follows the first document: a second document, or a token that cannot
  // begin one (a ',' after the document's last value), on which the YAML reader's reading of
  // every document would take empty documents for ever.
  const std::optional<YAML::Mark>& afterDocument() const { return afterDocument_; }

  // The text to read as the document: like the file, line for line and byte for byte,
  // except that each list cut out holds one null entry.
  const std::string& skeleton() const { return skeleton_; }
  // The list whose first entry the node of the skeleton stands at, or null.
  const List* list(const YAML::Node& node) const;
  // Calls `read` with each slice of the list as a YAML list and the number of lines that
  // come before the slice in the file (add it to a line in the slice).
  void forEachSlice(
      const List& list,
      const std::function<void(const YAML::Node& slice, int linesBefore)>& read) const;

 private:
  std::string_view text_;
  std::string skeleton_;
  std::map<std::size_t, List> lists_;  // by the offset of the first dash
  std::optional<YAML::Mark> firstAlias_;
  std::optional<YAML::Mark> afterDocument_;
};

}  // namespace VekHost
