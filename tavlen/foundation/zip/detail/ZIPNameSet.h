#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tavlen {

/// The names of an archive's entries, judged against each other: whether they can all stand side by
/// side in one tree. Names that only Unicode normalization makes equal are equal.
/// Threads: one object one thread at a time.
class ZIPNameSet {
 public:
  /// Takes that many files and folders, those counted that only stand in other names.
  explicit ZIPNameSet(std::uint64_t mostEntries) : mostEntries_(mostEntries) {}

  /// `name` has passed judgeZIPName(). Throws ZIPError: duplicateName, fileAsFolder,
  /// tooManyEntries.
  void add(std::string_view name);

 private:
  enum class Kind { file, folder, impliedFolder };
  struct Node {
    std::uint32_t number;
    Kind kind;
  };

  Node& nodeAt(std::uint32_t parent, std::string_view component, Kind kindIfNew);

  std::uint64_t mostEntries_;
  /// By the number of the folder around and the normalized component: as a tree, names with many
  /// components cost no more than the folders that they make.
  std::unordered_map<std::string, Node> nodes_;
};

}  // namespace tavlen
