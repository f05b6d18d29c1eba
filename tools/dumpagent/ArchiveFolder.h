#pragma once

#include <filesystem>
#include <string_view>

namespace tavlen::dumpagent {

/// A new folder for one archive, accessible only to its user. The destructor deletes it, unless
/// leave() was called.
class ArchiveFolder {
 public:
  /// Creates the folder in `parent`, which is created if it is missing. Throws std::system_error.
  explicit ArchiveFolder(const std::filesystem::path& parent);
  ArchiveFolder(const ArchiveFolder&) = delete;
  ArchiveFolder& operator=(const ArchiveFolder&) = delete;
  ~ArchiveFolder();

  /// Writes the archive and returns its path. Throws std::system_error.
  std::filesystem::path write(std::string_view bytes) const;
  /// Keeps the folder on destruction: the receiver of the archive deletes it.
  void leave() { path_.clear(); }

 private:
  std::filesystem::path path_;
};

}  // namespace tavlen::dumpagent
