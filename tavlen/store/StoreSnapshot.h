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

/// Which items the tweaks directory held at one moment, and which state of their documents: enough
/// to tell what has changed since, without reading them. A value.
///
/// An item is there as soon as it has its manifest. Names that begin with "." are none.
class StoreSnapshot {
 public:
  enum class Document { manifest, script, icon };

  struct Change {
    enum class Kind { created, changed, deleted };

    Kind kind;
    /// The item's identifier.
    std::string id;
    /// Those that came, changed or went; a collection is its manifest.
    std::vector<Document> documents;

    bool operator==(const Change&) const = default;
  };

  /// Of nothing.
  StoreSnapshot() = default;
  /// Never fails: what cannot be looked at is not there.
  static StoreSnapshot take();

  /// What happened between the two, in the order of the identifiers.
  std::vector<Change> changesSince(const StoreSnapshot& before) const;

  /// The identifiers of the items, in order.
  std::vector<std::string> ids() const;

  /// The folders in which a later snapshot's changes show first; while there is no tweaks
  /// directory, the folder in which it, or what leads to it, will be made.
  const std::vector<std::filesystem::path>& folders() const { return folders_; }

 private:
  /// Another file, or another state of the same one, has another.
  struct Stamp {
    std::uint64_t volume;
    std::uint64_t file;
    std::int64_t size;
    std::int64_t seconds;
    std::int64_t nanoseconds;

    bool operator==(const Stamp&) const = default;
  };
  static constexpr std::size_t kDocuments = 3;
  /// By Document.
  using Item = std::array<std::optional<Stamp>, kDocuments>;

  static std::optional<Stamp> stampOf(const std::filesystem::path& file);
  static Item tweakAt(const std::filesystem::path& folder);
  void add(const std::filesystem::path& entry);
  static std::vector<Document> difference(const Item& before, const Item& after);

  std::map<std::string, Item> items_;
  std::vector<std::filesystem::path> folders_;
};

}  // namespace tavlen
