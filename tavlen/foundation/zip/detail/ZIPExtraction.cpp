#include "tavlen/foundation/zip/detail/ZIPExtraction.h"

#include <algorithm>
#include <cerrno>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

constexpr mode_t kPermissions = 0777;
constexpr mode_t kUsualFile = 0644;
constexpr mode_t kUsualFolder = 0755;

/// The archive's permissions, plus those that the owner needs to read, change and remove the tree.
mode_t permissions(std::uint32_t mode, mode_t usual, mode_t least) {
  return mode == 0 ? usual : ((mode & kPermissions) | least);
}

}  // namespace

ZIPExtraction::ZIPExtraction(const std::filesystem::path& folder) : folder_(folder) {
  if (::mkdir(folder.c_str(), S_IRWXU) != 0) throwSystemError(folder);
  top_ = FileDescriptor::tryOpenAt(AT_FDCWD, folder.c_str(), kOpenFolder);
  if (top_) return;
  const int code = errno;
  ::rmdir(folder.c_str());
  throwSystemError(code, folder);
}

ZIPExtraction::~ZIPExtraction() {
  if (!isKept_) removeQuietly(folder_);
}

void ZIPExtraction::makeFolder(const std::string& name, std::uint32_t mode) {
  const std::string_view path = std::string_view(name).substr(0, name.size() - 1);
  openFolder(path, name).setMode(permissions(mode, kUsualFolder, S_IRWXU), shownPath(name));
}

void ZIPExtraction::makeFile(const std::string& name, std::uint32_t mode,
                             FunctionRef<void(Sink)> write) {
  const std::size_t slash = name.rfind('/');
  const bool isAtTop = slash == std::string::npos;
  const FileDescriptor& folder =
      openFolder(isAtTop ? "" : std::string_view(name).substr(0, slash), name);
  const char* leaf = name.c_str() + (isAtTop ? 0 : slash + 1);
  const std::string shown = shownPath(name);
  FileDescriptor file =
      FileDescriptor::tryOpenAt(folder.get(), leaf, kOpenNewFile, S_IRUSR | S_IWUSR);
  if (!file && errno == EEXIST) throw ZIPError(ZIPError::Case::caseConflict, name);
  if (!file) throwSystemError(shown);
  write([&](std::string_view bytes) { file.write(bytes, shown); });
  file.setMode(permissions(mode, kUsualFile, S_IRUSR | S_IWUSR), shown);
  file.close(shown);
}

const FileDescriptor& ZIPExtraction::openFolder(std::string_view path, const std::string& entry) {
  if (path.empty()) return top_;
  if (path == currentPath_) return current_;
  FileDescriptor folder;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    folder = stepInto(begin == 0 ? top_.get() : folder.get(), path.substr(0, end),
                      std::string(path.substr(begin, end - begin)), entry);
    begin = end + 1;
  }
  current_ = std::move(folder);
  currentPath_ = path;
  return current_;
}

FileDescriptor ZIPExtraction::stepInto(int parent, std::string_view path,
                                       const std::string& component, const std::string& entry) {
  const bool isNew = made_.find(path) == made_.end();
  const std::string shown = shownPath(path);
  if (isNew) {
    if (::mkdirat(parent, component.c_str(), S_IRWXU) != 0) {
      if (errno == EEXIST) throw ZIPError(ZIPError::Case::caseConflict, entry);
      throwSystemError(shown);
    }
    made_.emplace(path);
  }
  FileDescriptor folder = FileDescriptor::openAt(parent, component.c_str(), kOpenFolder, shown);
  if (isNew) folder.setMode(kUsualFolder, shown);
  return folder;
}

/// Text, because a path object costs an allocation for each of its components.
std::string ZIPExtraction::shownPath(std::string_view name) const {
  std::string path = folder_.native();
  if (!path.ends_with('/')) path += '/';
  return path.append(name);
}

}  // namespace tavlen
