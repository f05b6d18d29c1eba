#include "tavlen/foundation/zip/detail/ZIPExtraction.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

constexpr mode_t kUsualFile = 0644;
constexpr mode_t kUsualFolder = 0755;
/// What an archive may ask for at most: write permission is the owner's alone.
constexpr mode_t kMostPermissions = 0755;

/// A process may have 256 open files on the device, and a name may have 512 components. Going up
/// past the last open folder costs a walk from the top, but only once for so many folders left.
constexpr std::size_t kMostLevels = 32;

/// The length of the path that is a folder on the way to both `a` and `b`.
std::size_t sharedFolder(std::string_view a, std::string_view b) {
  if (a.size() > b.size()) std::swap(a, b);
  const auto end = std::mismatch(a.begin(), a.end(), b.begin()).first;
  const auto length = static_cast<std::size_t>(end - a.begin());
  if (length == a.size() && (length == b.size() || b[length] == '/')) return length;
  const std::size_t slash = length == 0 ? std::string_view::npos : a.rfind('/', length - 1);
  return slash == std::string_view::npos ? 0 : slash;
}

}  // namespace

ZIPExtraction::ZIPExtraction(const std::filesystem::path& folder) : folder_(folder) {
  if (::mkdir(folder.c_str(), S_IRWXU) != 0) throwSystemError(folder);
  try {
    top_ = FileDescriptor::open(folder, kOpenFolder);
    allowed_ = kMostPermissions & ~probedMask();
  } catch (...) {
    removeQuietly(folder_);
    throw;
  }
}

ZIPExtraction::~ZIPExtraction() {
  if (!isKept_) removeQuietly(folder_);
}

/// The process's mask for new files. Asking the system for it sets it, for all threads, so that it
/// is told from what becomes of a folder with all permissions.
mode_t ZIPExtraction::probedMask() const {
  constexpr const char* kProbe = "mask";
  constexpr mode_t kAll = 0777;
  const std::string shown = shownPath(kProbe);
  struct stat status {};
  if (::mkdirat(top_.get(), kProbe, kAll) != 0 ||
      ::fstatat(top_.get(), kProbe, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
      ::unlinkat(top_.get(), kProbe, AT_REMOVEDIR) != 0) {
    throwSystemError(shown);
  }
  return ~status.st_mode & kAll;
}

mode_t ZIPExtraction::permissions(std::uint32_t mode, mode_t usual, mode_t least) const {
  return ((mode == 0 ? usual : mode) & allowed_) | least;
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
  const std::size_t shared = sharedFolder(path, path_);
  path_.resize(shared);
  while (!levels_.empty() && levels_.back().length > shared) levels_.pop_back();
  std::size_t length = levels_.empty() ? 0 : levels_.back().length;
  while (length < path.size()) {
    const std::size_t begin = length == 0 ? 0 : length + 1;
    length = std::min(path.find('/', begin), path.size());
    enter(path.substr(0, length), begin, length > shared, entry);
  }
  return deepest();
}

/// Goes on to the folder `path`, whose last component is at `begin`, from the one around it.
void ZIPExtraction::enter(std::string_view path, std::size_t begin, bool isNew,
                          const std::string& entry) {
  const std::string component(path.substr(begin));
  const int parent = deepest().get();
  if (isNew && ::mkdirat(parent, component.c_str(), S_IRWXU) != 0) {
    if (errno == EEXIST) throw ZIPError(ZIPError::Case::caseConflict, entry);
    throwSystemError(shownPath(path));
  }
  FileDescriptor folder = FileDescriptor::tryOpenAt(parent, component.c_str(), kOpenFolder);
  if (!folder) throwSystemError(shownPath(path));
  if (isNew) {
    folder.setMode(permissions(0, kUsualFolder, S_IRWXU), shownPath(path));
    path_ = path;
  }
  if (levels_.size() == kMostLevels) levels_.erase(levels_.begin());
  levels_.push_back({path.size(), std::move(folder)});
}

/// Text, because a path object costs an allocation for each of its components.
std::string ZIPExtraction::shownPath(std::string_view name) const {
  std::string path = folder_.native();
  if (!path.ends_with('/')) path += '/';
  return path.append(name);
}

}  // namespace tavlen
