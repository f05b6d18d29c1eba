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
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/text/Log.h"

namespace tavlen::fileops {

namespace {

/// How many folders may be nested in a per-app folder, itself included: each keeps two descriptors
/// open.
constexpr int kDeepestFolder = 64;
static_assert(kDeepestFolder <= kDeepestRemoval, "what was copied can be removed");

struct Entry {
  int folder;  ///< opened, or AT_FDCWD
  std::string name;
  std::filesystem::path shown;

  Entry in(const FolderReader& reader, const std::string& entry) const {
    return {reader.descriptor(), entry, shown / entry};
  }
};

/// What is made stays the program's own, and closed to others, until it is filled.
void handOver(const FileDescriptor& made, mode_t mode, const std::filesystem::path& shown) {
  giveToCaller(made, shown);
  made.setMode(mode & 0777, shown);
}

class TreeCopy {
 public:
  /// `depth` is the destination's, from the folder of tweaks on.
  TreeCopy(Entry destination, int depth) : destination_(std::move(destination)), depth_(depth) {}

  void run(const Entry& source) {
    try {
      copyEntry(source, destination_, depth_);
    } catch (...) {
      if (copy_) removeWhatIsThere();
      throw;
    }
  }

 private:
  /// Whatever it meets, the first error is the one that is thrown.
  void removeWhatIsThere() const {
    try {
      removeEntry(destination_.folder, destination_.name, destination_.shown);
    } catch (const std::exception& error) {
      logToStandardError(std::string("kvfileops: a part stays: ") + error.what());
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

  /// A file that is copied alone is a document: there whole or not at all.
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
    const struct stat status = from.status(source.shown);
    if (isCopy(status)) throw Refusal(source.shown, "holds the copy itself");
    const std::optional<FileDescriptor> to =
        makeNewFolder(destination.folder, destination.name, S_IRWXU, destination.shown);
    if (!to) throwSystemError(EEXIST, destination.shown);
    if (!copy_) copy_ = to->status(destination.shown);
    FolderReader reader(std::move(from), source.shown);
    while (const std::optional<std::string> name = reader.next()) {
      copyEntry(source.in(reader, *name), {to->get(), *name, destination.shown / *name}, depth + 1);
    }
    handOver(*to, status.st_mode, destination.shown);
  }

  bool isCopy(const struct stat& status) const {
    return copy_ && copy_->st_dev == status.st_dev && copy_->st_ino == status.st_ino;
  }

  Entry destination_;
  int depth_;
  std::optional<struct stat> copy_;  ///< the topmost folder, once it is made: ours to remove
};

}  // namespace

void copy(const DeviceRoot& root, const std::filesystem::path& source,
          const std::filesystem::path& destination) {
  if (!source.is_absolute()) throw Refusal(source, "is no absolute path");
  const DeviceFolder tweaks(root, kInstalledTweaksDir);
  const std::filesystem::path place = tweaks.relativePath(destination);
  std::optional<FileDescriptor> folder = tweaks.open();
  if (!folder) throwSystemError(ENOENT, tweaks.path());
  const FileDescriptor parent = descend(std::move(*folder), place.parent_path(), destination);
  // A slash at its end would have a link followed.
  std::string from = source.string();
  while (from.size() > 1 && from.back() == '/') from.pop_back();
  const auto depth = static_cast<int>(std::distance(place.begin(), place.end()));
  TreeCopy({parent.get(), place.filename().string(), destination}, depth)
      .run({AT_FDCWD, from, source});
}

}  // namespace tavlen::fileops
