#include "tavlen/introspection/headers/detail/HeaderFolder.h"

#include <fcntl.h>

#include <cstdio>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/TemporaryFile.h"

namespace tavlen {

namespace {

FileDescriptor openedFolder(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  // For a link to a folder, too, which create_directories() does not accept.
  FileDescriptor folder = FileDescriptor::tryOpenAt(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY);
  if (!folder) throwSystemError(path);
  return folder;
}

}  // namespace

HeaderFolder::HeaderFolder(std::filesystem::path folder)
    : path_(std::move(folder)), folder_(openedFolder(path_)) {
  sweepTemporaryFiles(folder_.get());
}

std::string HeaderFolder::nameFor(std::string_view identifier) {
  constexpr std::size_t kMost = 200;  // file systems allow 255 bytes, with number and extension
  return names_.addIgnoringCase(identifier.substr(0, kMost)) + ".h";
}

void HeaderFolder::write(const std::string& name, std::string_view contents) const {
  const std::filesystem::path shown = path_ / name;
  TemporaryFile file(folder_.get(), {}, 0666, shown);
  file.descriptor().write(contents, shown);
  file.close();
  if (::renameat(folder_.get(), file.path().c_str(), folder_.get(), name.c_str()) != 0) {
    throwSystemError(shown);
  }
  file.leave();
}

}  // namespace tavlen
