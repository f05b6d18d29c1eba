#include "kvfileops/Copy.h"

#include <cerrno>
#include <exception>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "kvfileops/CallerRights.h"
#include "kvfileops/DeviceFolder.h"
#include "kvfileops/FileCopy.h"
#include "kvfileops/NewFile.h"
#include "kvfileops/NewFolder.h"
#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "kvfileops/TreeRemoval.h"
#include "kvfileops/TrustedFolder.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/text/Log.h"

namespace tavlen::fileops {

namespace {

/// How many folders may be nested in a per-app folder, including itself; each keeps two descriptors
/// open.
constexpr int kDeepestFolder = 64;
static_assert(kDeepestFolder <= kDeepestRemoval, "what was copied can be removed");

struct Entry {
  int folder;  ///< open
  std::string name;
  std::filesystem::path shown;

  Entry in(const FolderReader& reader, const std::string& entry) const {
    return {reader.descriptor(), entry, shown / entry};
  }
};

/// Until it is complete, a file or folder belongs to the program and is closed to others.
void handOver(const FileDescriptor& made, mode_t mode, const std::filesystem::path& shown) {
  giveToCaller(made, shown);
  made.setMode(mode & 0777, shown);
}

class TreeCopy {
 public:
  /// `depth` is that of the destination, counted from the folder of tweaks.
  TreeCopy(Entry destination, int depth) : destination_(std::move(destination)), depth_(depth) {}

  void run(const Entry& source) {
    try {
      copyEntry(source, destination_, depth_);
    } catch (...) {
      if (copy_) removeCopy();
      throw;
    }
  }

 private:
  /// Through the descriptor: by now another folder may have the copy's name. Reports its errors
  /// itself, as the copy's own error is the one to throw.
  void removeCopy() {
    try {
      emptyFolder(std::move(*copy_), destination_.shown);
      if (::unlinkat(destination_.folder, destination_.name.c_str(), AT_REMOVEDIR) != 0) {
        throwSystemError(destination_.shown);
      }
    } catch (const std::exception& error) {
      logToStandardError(std::string("kvfileops: a part of the copy is left: ") + error.what());
    }
  }

  void copyEntry(const Entry& source, const Entry& destination, int depth) {
    std::optional<FileDescriptor> folder;
    std::optional<FileDescriptor> file;
    {
      const CallerRights rights;
      folder = openFolder(source.folder, source.name, source.shown);
      if (!folder) file = openRegularFile(source.folder, source.name, source.shown);
    }
    if (folder) {
      copyFolder(std::move(*folder), source, destination, depth);
    } else if (file) {
      copy_ ? copyFile(*file, source, destination) : copyDocument(*file, source, destination);
    } else {
      throw Refusal(source.shown, "is neither a file nor a folder; links are not copied");
    }
  }

  /// A file that is copied alone is a document, which is complete or does not exist.
  static void copyDocument(const FileDescriptor& from, const Entry& source,
                           const Entry& destination) {
    NewFile to(destination.folder, destination.name, S_IRUSR | S_IWUSR, destination.shown);
    fill(to.descriptor(), from, source, destination);
    if (!to.commit()) throwSystemError(EEXIST, destination.shown);
  }

  static void copyFile(const FileDescriptor& from, const Entry& source, const Entry& destination) {
    FileDescriptor to = FileDescriptor::openAt(destination.folder, destination.name.c_str(),
                                               kOpenNewFile, destination.shown, S_IRUSR | S_IWUSR);
    fill(to, from, source, destination);
    to.close(destination.shown);
  }

  static void fill(const FileDescriptor& to, const FileDescriptor& from, const Entry& source,
                   const Entry& destination) {
    copyBytes(from, to, std::numeric_limits<std::uint64_t>::max(), source.shown);
    handOver(to, from.status(source.shown).st_mode, destination.shown);
  }

  void copyFolder(FileDescriptor from, const Entry& source, const Entry& destination, int depth) {
    if (depth > kDeepestFolder) throw Refusal(source.shown, "folders are nested too deeply");
    if (isCopy(from.status(source.shown))) throw Refusal(source.shown, "holds the copy itself");
    std::optional<FileDescriptor> made =
        makeNewFolder(destination.folder, destination.name, S_IRWXU, destination.shown);
    if (!made) throwSystemError(EEXIST, destination.shown);
    if (copy_) return fillFolder(*made, std::move(from), source, destination, depth);
    copy_ = std::move(made);
    fillFolder(*copy_, std::move(from), source, destination, depth);
  }

  void fillFolder(const FileDescriptor& to, FileDescriptor from, const Entry& source,
                  const Entry& destination, int depth) {
    const mode_t mode = from.status(source.shown).st_mode;
    FolderReader reader(std::move(from), source.shown);
    while (const std::optional<std::string> name = reader.next()) {
      copyEntry(source.in(reader, *name), {to.get(), *name, destination.shown / *name}, depth + 1);
    }
    handOver(to, mode, destination.shown);
  }

  bool isCopy(const struct stat& status) const {
    if (!copy_) return false;
    const struct stat copy = copy_->status(destination_.shown);
    return copy.st_dev == status.st_dev && copy.st_ino == status.st_ino;
  }

  Entry destination_;
  int depth_;
  std::optional<FileDescriptor> copy_;  ///< the topmost folder, once it is made
};

TrustedFolder folderOfSource(const std::filesystem::path& source) {
  const Links links = linksToFollow();
  const CallerRights rights;
  return TrustedFolder(source.parent_path(), links);
}

}  // namespace

void copy(const DeviceRoot& root, const std::filesystem::path& source,
          const std::filesystem::path& destination) {
  // A slash at its end would have a link followed.
  const std::filesystem::path from = withoutSlashAtEnd(source);
  if (!from.is_absolute()) throw Refusal(source, "is no absolute path");
  const DeviceFolder tweaks(root, kInstalledTweaksDir);
  const std::filesystem::path place = tweaks.relativePath(destination);
  if (!tweaks.exists()) throwSystemError(ENOENT, tweaks.path());
  const FileDescriptor parent = descend(tweaks.descriptor(), place.parent_path(), destination);
  const TrustedFolder sourceFolder = folderOfSource(from);
  if (!sourceFolder.exists()) throwSystemError(ENOENT, source);
  const auto depth = static_cast<int>(std::distance(place.begin(), place.end()));
  TreeCopy({parent.get(), place.filename().string(), destination}, depth)
      .run({sourceFolder.descriptor().get(), from.filename().string(), source});
}

}  // namespace tavlen::fileops
