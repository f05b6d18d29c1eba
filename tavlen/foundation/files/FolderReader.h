#pragma once

#include <dirent.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// The names in an open folder, without "." and "..".
///
/// Errors are std::system_error. Threads: any, one object one thread at a time.
class FolderReader {
 public:
  /// `folder` is a folder opened for reading; `shown` names it in errors.
  FolderReader(FileDescriptor folder, std::filesystem::path shown);

  /// For calls relative to the folder.
  int descriptor() const { return ::dirfd(stream_.get()); }
  const std::filesystem::path& path() const { return shown_; }

  /// The next name; nothing at the end.
  std::optional<std::string> next();
  /// Up to `most` names, from the beginning on.
  std::vector<std::string> first(std::size_t most);

 private:
  struct Closer {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };

  std::filesystem::path shown_;
  std::unique_ptr<DIR, Closer> stream_;
};

}  // namespace tavlen
