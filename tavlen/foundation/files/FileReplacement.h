#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavlen {

/// New contents for a file, which take its place whole or not at all.
///
/// The bytes lie in a temporary file beside it, already on the disk, until commit() gives them the
/// name in one step: a reader and a crash find the old file or the new one. Preparing several and
/// then committing them leaves little that can fail between the first and the last. A symbolic link
/// is followed; an existing file's permissions stay. Temporary names begin with "."; what a crash
/// left of them is removed by later replacements in the same folder.
/// Threads: any, one object one thread at a time.
class FileReplacement {
 public:
  /// Throws std::system_error with the path, for a folder (EISDIR) or anything else that is no
  /// regular file (EINVAL) in the file's place, too.
  FileReplacement(const std::filesystem::path& file, std::string_view contents);
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  /// Drops what was not committed.
  ~FileReplacement();

  /// To be called once. Throws std::system_error with the path; the file is then as it was.
  void commit();

 private:
  void create();
  void copyPermissions() const;
  void write(std::string_view bytes) const;
  void bringToDisk();
  [[noreturn]] void fail(int code) const;

  std::filesystem::path file_;       ///< as errors name it
  std::filesystem::path target_;     ///< behind all links
  std::filesystem::path temporary_;  ///< empty once it is gone
  int descriptor_ = -1;
};

/// Whether `name` is that of a temporary file, or of the folder that TemporaryDirectory makes,
/// which a crash may have left: not a part of what the user stored.
bool isTemporaryName(const std::filesystem::path& name);

/// A random name of that kind, for what is not to be seen before it is whole.
std::string makeTemporaryName();

/// Prepares the replacement of one file and commits it. Errors as FileReplacement's.
void replaceFile(const std::filesystem::path& file, std::string_view contents);

}  // namespace tavlen
