#pragma once

#include <filesystem>
#include <string_view>

namespace tavlen::dumpagent {

/// A fresh folder, private to its user, for one archive. It goes with the object unless it is left
/// to whoever is told of it.
class ArchiveFolder {
 public:
  /// Makes it in `parent`, and that where it is missing. Throws std::system_error.
  explicit ArchiveFolder(const std::filesystem::path& parent);
  ArchiveFolder(const ArchiveFolder&) = delete;
  ArchiveFolder& operator=(const ArchiveFolder&) = delete;
  ~ArchiveFolder();

  /// Writes the archive and gives its path. Throws std::system_error.
  std::filesystem::path write(std::string_view bytes) const;
  void leave() { path_.clear(); }

 private:
  std::filesystem::path path_;
};

}  // namespace tavlen::dumpagent
