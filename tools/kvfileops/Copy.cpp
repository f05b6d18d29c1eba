#include "kvfileops/Copy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "kvfileops/CallerRights.h"
#include "kvfileops/DeviceFolder.h"
#include "kvfileops/Failure.h"
#include "kvfileops/FileCopy.h"
#include "kvfileops/FolderReader.h"
#include "kvfileops/NewFile.h"
#include "kvfileops/NewFolder.h"
#include "kvfileops/TreeRemoval.h"
#include "tavlen/device/DevicePaths.h"
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

struct stat statusOf(int descriptor, const std::filesystem::path& shown) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) fail(errno, shown);
  return status;
}

/// What is made stays the program's own, and closed to others, until it is filled.
void handOver(int descriptor, mode_t mode, const std::filesystem::path& shown) {
  giveToCaller(descriptor, shown);
  if (::fchmod(descriptor, mode & 0777) != 0) fail(errno, shown);
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
    std::optional<Descriptor> folder;
    std::optional<Descriptor> file;
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
  static void copyDocument(const Descriptor& from, const Entry& source, const Entry& destination) {
    NewFile to(destination.folder, destination.name, S_IRUSR | S_IWUSR, destination.shown);
    fill(to.descriptor(), from, source, destination);
    if (!to.commit()) fail(EEXIST, destination.shown);
  }

  static void copyFile(const Descriptor& from, const Entry& source, const Entry& destination) {
    Descriptor to(::openat(destination.folder, destination.name.c_str(),
                           O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                           S_IRUSR | S_IWUSR));
    if (to.get() < 0) fail(errno, destination.shown);
    fill(to.get(), from, source, destination);
    closeWritten(std::move(to), destination.shown);
  }

  static void fill(int to, const Descriptor& from, const Entry& source, const Entry& destination) {
    copyBytes(from.get(), to, std::numeric_limits<std::uint64_t>::max(), source.shown);
    handOver(to, statusOf(from.get(), source.shown).st_mode, destination.shown);
  }

  void copyFolder(Descriptor from, const Entry& source, const Entry& destination, int depth) {
    if (depth > kDeepestFolder) throw Refusal(source.shown, "folders are nested too deeply");
    const struct stat status = statusOf(from.get(), source.shown);
    if (isCopy(status)) throw Refusal(source.shown, "holds the copy itself");
    const std::optional<Descriptor> to =
        makeNewFolder(destination.folder, destination.name, S_IRWXU, destination.shown);
    if (!to) fail(EEXIST, destination.shown);
    if (!copy_) copy_ = statusOf(to->get(), destination.shown);
    FolderReader reader(std::move(from), source.shown);
    while (const std::optional<std::string> name = reader.next()) {
      copyEntry(source.in(reader, *name), {to->get(), *name, destination.shown / *name}, depth + 1);
    }
    handOver(to->get(), status.st_mode, destination.shown);
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
  std::optional<Descriptor> folder = tweaks.open();
  if (!folder) fail(ENOENT, tweaks.path());
  const Descriptor parent = descend(std::move(*folder), place.parent_path(), destination);
  // A slash at its end would have a link followed.
  std::string from = source.string();
  while (from.size() > 1 && from.back() == '/') from.pop_back();
  const auto depth = static_cast<int>(std::distance(place.begin(), place.end()));
  TreeCopy({parent.get(), place.filename().string(), destination}, depth)
      .run({AT_FDCWD, from, source});
}

}  // namespace tavlen::fileops
