#include "tavlen/foundation/zip/detail/ZIPExtraction.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <system_error>

#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

constexpr mode_t kPermissions = 0777;
constexpr mode_t kUsualFile = 0644;
constexpr mode_t kUsualFolder = 0755;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// The archive's permissions, but what the owner may not lose: to read, change and remove the tree.
mode_t permissions(std::uint32_t mode, mode_t usual, mode_t least) {
  return mode == 0 ? usual : ((mode & kPermissions) | least);
}

/// Gives 0 or what errno tells.
int writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      return count == 0 ? EIO : errno;
    }
  }
  return 0;
}

}  // namespace

ZIPExtraction::ZIPExtraction(const std::filesystem::path& folder) : folder_(folder) {
  if (::mkdir(folder.c_str(), S_IRWXU) != 0) fail(errno, {});
  top_ = FileDescriptor(::open(folder.c_str(), kOpenFolder));
  if (top_.get() >= 0) return;
  const int code = errno;
  ::rmdir(folder.c_str());
  fail(code, {});
}

ZIPExtraction::~ZIPExtraction() {
  if (isKept_) return;
  try {
    removeItem(folder_);
  } catch (const std::exception&) {
    // The error that led here tells more.
  }
}

void ZIPExtraction::makeFolder(const std::string& name, std::uint32_t mode) {
  const std::string_view path = std::string_view(name).substr(0, name.size() - 1);
  const int folder = openFolder(path, name);
  if (::fchmod(folder, permissions(mode, kUsualFolder, S_IRWXU)) != 0) fail(errno, name);
}

void ZIPExtraction::makeFile(const std::string& name, std::uint32_t mode,
                             FunctionRef<void(Sink)> write) {
  const std::size_t slash = name.rfind('/');
  const bool isAtTop = slash == std::string::npos;
  const int folder = openFolder(isAtTop ? "" : std::string_view(name).substr(0, slash), name);
  const char* leaf = name.c_str() + (isAtTop ? 0 : slash + 1);
  FileDescriptor file(::openat(folder, leaf, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                               S_IRUSR | S_IWUSR));
  if (file.get() < 0 && errno == EEXIST) throw ZIPError(ZIPError::Case::caseConflict, name);
  if (file.get() < 0) fail(errno, name);
  write([&](std::string_view bytes) {
    if (const int code = writeAll(file.get(), bytes); code != 0) fail(code, name);
  });
  if (::fchmod(file.get(), permissions(mode, kUsualFile, S_IRUSR | S_IWUSR)) != 0) {
    fail(errno, name);
  }
  // Some file systems report a failed write only here.
  if (::close(file.release()) != 0 && errno != EINTR) fail(errno, name);
}

int ZIPExtraction::openFolder(std::string_view path, const std::string& entry) {
  if (path.empty()) return top_.get();
  if (path == currentPath_) return current_.get();
  FileDescriptor folder;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    folder = stepInto(begin == 0 ? top_.get() : folder.get(), path.substr(0, end),
                      std::string(path.substr(begin, end - begin)), entry);
    begin = end + 1;
  }
  current_ = std::move(folder);
  currentPath_ = path;
  return current_.get();
}

FileDescriptor ZIPExtraction::stepInto(int parent, std::string_view path,
                                       const std::string& component, const std::string& entry) {
  const bool isNew = made_.find(path) == made_.end();
  if (isNew) {
    if (::mkdirat(parent, component.c_str(), S_IRWXU) != 0) {
      if (errno == EEXIST) throw ZIPError(ZIPError::Case::caseConflict, entry);
      fail(errno, path);
    }
    made_.emplace(path);
  }
  FileDescriptor folder(::openat(parent, component.c_str(), kOpenFolder));
  if (folder.get() < 0) fail(errno, path);
  if (isNew && ::fchmod(folder.get(), kUsualFolder) != 0) fail(errno, path);
  return folder;
}

void ZIPExtraction::fail(int code, std::string_view name) const {
  const std::filesystem::path path = name.empty() ? folder_ : folder_ / name;
  throw std::system_error(code, std::generic_category(), path.string());
}

}  // namespace tavlen
