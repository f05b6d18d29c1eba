#pragma once

#include <dirent.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// Iterates over the names in an open folder, without "." and "..".
///
/// Errors are std::system_error with the path. Threads: any, one object one thread at a time.
class TAVLEN_API FolderReader {
 public:
  /// Takes over `folder`, a folder opened for reading; `shown` names it in errors.
  FolderReader(FileDescriptor folder, std::filesystem::path shown);

  /// The open folder, for calls relative to it; stays owned.
  int descriptor() const { return ::dirfd(stream_.get()); }
  /// The folder's path, as errors name it.
  const std::filesystem::path& path() const { return shown_; }

  /// The next name, in the system's order; nothing at the end.
  std::optional<std::string> next();
  /// Up to `most` names, starting again from the first.
  std::vector<std::string> first(std::size_t most);

 private:
  struct Closer {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };

  std::filesystem::path shown_;
  std::unique_ptr<DIR, Closer> stream_;
};

}  // namespace tavlen
