#pragma once

#include <dirent.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kvfileops/Descriptor.h"

namespace tavlen::fileops {

/// Opens the folder `name` of the opened folder `parent` for reading; nothing where nothing stands
/// there, or something else, a symbolic link too. `shown` names it in errors (std::system_error).
std::optional<Descriptor> openFolder(int parent, const std::string& name,
                                     const std::filesystem::path& shown);

/// Opens the regular file `name` likewise; nothing where something else stands there, ENOENT where
/// nothing does. Never blocks.
std::optional<Descriptor> openRegularFile(int parent, const std::string& name,
                                          const std::filesystem::path& shown);

/// The names in an opened folder, without "." and "..".
class FolderReader {
 public:
  /// `folder` is a folder opened for reading; `shown` names it in errors (std::system_error).
  FolderReader(Descriptor folder, std::filesystem::path shown);

  /// For calls relative to the folder.
  int descriptor() const { return ::dirfd(stream_.get()); }
  const std::filesystem::path& path() const { return shown_; }

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

}  // namespace tavlen::fileops
