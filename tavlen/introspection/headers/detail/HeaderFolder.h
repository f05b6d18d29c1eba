#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/introspection/headers/detail/Identifiers.h"

namespace tavlen {

/// A folder that gets header files. Errors are std::system_error with the path. Threads: one object
/// one thread at a time.
class HeaderFolder {
 public:
  /// Opens the folder, and creates it and its parents unless it exists.
  explicit HeaderFolder(std::filesystem::path folder);

  /// The file name for the header of `identifier`, which has no "/". Names equal but for case are
  /// numbered, as most file systems of desktops cannot tell them apart; long ones are cut.
  std::string nameFor(std::string_view identifier);

  /// Replaces the file `name` of the folder, even if that is a link. Readers see the old contents
  /// or the new ones. Not flushed to the disk: a dump can be repeated.
  void write(const std::string& name, std::string_view contents) const;

 private:
  std::filesystem::path path_;
  FileDescriptor folder_;
  UniqueNames names_{'-'};
};

}  // namespace tavlen
