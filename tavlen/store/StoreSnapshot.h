#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/store/FileStamp.h"

namespace tavlen {

/// The items in the tweaks directory at one moment, with the file status of their documents.
/// Comparing two snapshots shows what has changed, without reading any document. A value.
///
/// An item exists once its manifest exists. Names that begin with "." are ignored.
class TAVLEN_API StoreSnapshot {
 public:
  /// A file of an item, or the folder of its resources.
  enum class Document { manifest, script, icon, resources };

  /// The difference in one item between two snapshots.
  struct Change {
    /// What happened to an item.
    enum class Kind { created, changed, deleted };

    /// What happened to this one.
    Kind kind;
    /// The item's identifier.
    std::string id;
    /// The documents that were created, changed or deleted. A collection has only a manifest.
    std::vector<Document> documents;

    bool operator==(const Change&) const = default;
  };

  /// An empty snapshot.
  StoreSnapshot() = default;
  /// Takes a snapshot. Files that cannot be examined count as missing. Blocks while it
  /// examines the files of each item, and cannot be cancelled.
  static StoreSnapshot take();

  /// The changes from `before` to this snapshot, sorted by identifier.
  std::vector<Change> changesSince(const StoreSnapshot& before) const;

  /// The items' identifiers, sorted.
  std::vector<std::string> ids() const;

  /// The folders to watch for changes: the tweaks directory, the tweaks' folders and those of their
  /// resources. If the tweaks directory does not exist, its closest existing parent.
  const std::vector<std::filesystem::path>& folders() const { return folders_; }

 private:
  static constexpr std::size_t kDocuments = 4;
  /// Indexed by Document.
  using Item = std::array<std::optional<FileStamp>, kDocuments>;

  Item tweakAt(const std::filesystem::path& folder);
  /// A stamp that changes with any file in `folder`; nothing without the folder.
  std::optional<FileStamp> stampOfFiles(const std::filesystem::path& folder);
  void add(const std::filesystem::path& entry);
  static std::vector<Document> difference(const Item& before, const Item& after);

  std::map<std::string, Item> items_;
  std::vector<std::filesystem::path> folders_;
};

}  // namespace tavlen
