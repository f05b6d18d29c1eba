#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace tavlen {

/// The items in the tweaks directory at one moment, with the file status of their documents.
/// Comparing two snapshots shows what has changed, without reading any document. A value.
///
/// An item exists once its manifest exists. Names that begin with "." are ignored.
class StoreSnapshot {
 public:
  /// A file of an item.
  enum class Document { manifest, script, icon };

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
  /// Takes a snapshot. Files that cannot be examined count as missing.
  static StoreSnapshot take();

  /// The changes from `before` to this snapshot, sorted by identifier.
  std::vector<Change> changesSince(const StoreSnapshot& before) const;

  /// The items' identifiers, sorted.
  std::vector<std::string> ids() const;

  /// The folders to watch for changes: the tweaks directory and the tweaks' folders. If the tweaks
  /// directory does not exist, its closest existing parent.
  const std::vector<std::filesystem::path>& folders() const { return folders_; }

 private:
  /// Identifies a file and its state: it differs for another file and after a change.
  struct Stamp {
    std::uint64_t volume;
    std::uint64_t file;
    std::int64_t size;
    std::int64_t seconds;
    std::int64_t nanoseconds;

    bool operator==(const Stamp&) const = default;
  };
  static constexpr std::size_t kDocuments = 3;
  /// Indexed by Document.
  using Item = std::array<std::optional<Stamp>, kDocuments>;

  static std::optional<Stamp> stampOf(const std::filesystem::path& file);
  static Item tweakAt(const std::filesystem::path& folder);
  void add(const std::filesystem::path& entry);
  static std::vector<Document> difference(const Item& before, const Item& after);

  std::map<std::string, Item> items_;
  std::vector<std::filesystem::path> folders_;
};

}  // namespace tavlen
