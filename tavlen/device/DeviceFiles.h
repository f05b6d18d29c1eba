#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/RandomAccessFile.h"

/// Files that may lie below a device root, by the device's symbolic links: a link in a copied tree
/// means a place in that tree, never one of the machine that looks at it. Paths are host paths;
/// those outside the root, and all where the root is "/", are the system's own.
///
/// Errors are std::system_error with the path in the text. Threads: any.
namespace tavlen {

/// Opens a file for reading, as RandomAccessFile does.
TAVLEN_API RandomAccessFile openedFile(const DeviceRoot& root, const std::string& path);

/// A folder that stays open for readers of thousands of files in it.
class TAVLEN_API DeviceFolder {
 public:
  /// Throws std::system_error where there is no folder, or it may not be listed.
  DeviceFolder(DeviceRoot root, std::filesystem::path path);

  /// The folder opened once more, for a reader of its names.
  FileDescriptor opened() const;
  /// As openedFile(root, path / name). While there is no link on the way, only `name` is looked up.
  RandomAccessFile openedFile(std::string name) const;
  /// The contents of the file `name`, read into `buffer` without asking for the size first. Nothing
  /// where they do not fit, are empty, or cannot be read, which openedFile() then explains.
  std::optional<std::string_view> readSmall(const std::string& name, std::span<char> buffer) const;

 private:
  DeviceRoot root_;
  std::filesystem::path path_;
  bool hasOwnLinks_;
  FileDescriptor folder_;
};

/// Prepares new contents for a file, whose folder must exist; see FileReplacement. Never null.
TAVLEN_API std::unique_ptr<FileReplacement> replacementOf(const DeviceRoot& root,
                                                          const std::filesystem::path& path,
                                                          std::string_view contents);

/// Prepares the replacement of one file and commits it.
TAVLEN_API void replaceFile(const DeviceRoot& root, const std::filesystem::path& path,
                            std::string_view contents);

/// The absolute path, without links, of the file or folder at `path`. Throws ENOENT if there is
/// none.
TAVLEN_API std::filesystem::path canonical(const DeviceRoot& root,
                                           const std::filesystem::path& path);

/// As pathInside(folder, name), by the device's links; the path that is returned holds none.
TAVLEN_API std::optional<std::filesystem::path> pathInside(const DeviceRoot& root,
                                                           const std::filesystem::path& folder,
                                                           std::string_view name);

}  // namespace tavlen
