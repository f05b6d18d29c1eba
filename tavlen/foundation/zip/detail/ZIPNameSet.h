#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tavlen {

/// The names of an archive's entries, checked for conflicts: whether all of them can exist in one
/// tree. Names that are equal after Unicode normalization are equal. Threads: one object one thread
/// at a time.
class ZIPNameSet {
 public:
  /// Accepts at most `mostEntries` files and folders, including parent folders implied by a path.
  explicit ZIPNameSet(std::uint64_t mostEntries) : mostEntries_(mostEntries) {}

  /// Adds `name`, which has passed validateZIPName(). Throws ZIPError: duplicateName, fileAsFolder,
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
  /// Keyed by the parent folder's number and the normalized component. As this is a tree, long
  /// names cost no more than the folders that they imply.
  std::unordered_map<std::string, Node> nodes_;
};

}  // namespace tavlen
