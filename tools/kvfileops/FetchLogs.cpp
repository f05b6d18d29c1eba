#include "kvfileops/FetchLogs.h"

#include <cerrno>
#include <exception>
#include <optional>
#include <utility>

#include "kvfileops/AppExecutables.h"
#include "kvfileops/CallerRights.h"
#include "kvfileops/CrashLog.h"
#include "kvfileops/DeviceFolder.h"
#include "kvfileops/FileCopy.h"
#include "kvfileops/NewFile.h"
#include "kvfileops/OpenEntry.h"
#include "kvfileops/Refusal.h"
#include "kvfileops/TrustedFolder.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTimes.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/text/Log.h"

namespace tavlen::fileops {

namespace {

constexpr std::uint64_t kLargestLog = std::uint64_t{64} << 20;
/// The header of a log has some hundred bytes.
constexpr std::size_t kHeadSize = std::size_t{64} << 10;

TrustedFolder reachDestination(const std::filesystem::path& destination) {
  const Links links = linksToFollow();
  const CallerRights rights;
  TrustedFolder folder(destination, links);
  if (!folder.exists()) throwSystemError(ENOENT, destination);
  return folder;
}

/// Whether a file has one name, and got or lost none between two looks at it: each changes its
/// time.
bool hasKeptOneName(const struct stat& a, const struct stat& b) {
  return a.st_nlink == 1 && b.st_nlink == 1 && a.st_dev == b.st_dev && a.st_ino == b.st_ino &&
         changeTime(a).tv_sec == changeTime(b).tv_sec &&
         changeTime(a).tv_nsec == changeTime(b).tv_nsec;
}

/// Opens the log `name`; nothing where it is not a regular file.
///
/// Whoever may write among the logs could give any file of the volume a log's name, so with lent
/// rights a file that has another name is refused. The name among the logs could come and go while
/// the file is opened and its names are counted. It is therefore looked up before and after, and
/// all three have to agree.
std::optional<FileDescriptor> openLog(int folder, const std::string& name,
                                      const std::filesystem::path& shown) {
  const struct stat before = statusOfEntry(folder, name, shown);
  std::optional<FileDescriptor> log = openRegularFile(folder, name, shown);
  if (!log || !hasLentRights()) return log;
  const struct stat opened = log->status(shown);
  const struct stat after = statusOfEntry(folder, name, shown);
  if (!hasKeptOneName(before, opened) || !hasKeptOneName(opened, after)) {
    throw Refusal(shown, "has another name, or is being changed, and may not be a log");
  }
  return log;
}

/// Does not move the position from which the log is read.
std::string headOf(const FileDescriptor& log, const std::filesystem::path& shown) {
  std::string bytes(kHeadSize, '\0');
  bytes.resize(log.readAt(0, bytes, shown));
  return bytes;
}

class LogCopy {
 public:
  LogCopy(CrashLogSubject subject, TrustedFolder folder, std::filesystem::path shown)
      : subject_(std::move(subject)), folder_(std::move(folder)), shown_(std::move(shown)) {}

  void copyIfAbout(const FolderReader& logs, const std::string& name) const {
    const std::filesystem::path shown = logs.path() / name;
    const std::optional<FileDescriptor> log = openLog(logs.descriptor(), name, shown);
    if (!log) return;
    if (!isNamedAfter(subject_, name) && !isAbout(subject_, headOf(*log, shown))) {
      return;
    }
    const CallerRights rights;
    if (isThere(name)) return;
    NewFile copy(folder_.descriptor().get(), name, 0644, shown_ / name);
    copyBytes(*log, copy.descriptor(), kLargestLog, shown);
    (void)copy.commit();  // a file of this name that has appeared since is as good
  }

 private:
  bool isThere(const std::string& name) const {
    struct stat status {};
    if (::fstatat(folder_.descriptor().get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
      return true;
    if (errno != ENOENT) throwSystemError(shown_ / name);
    return false;
  }

  CrashLogSubject subject_;
  TrustedFolder folder_;
  std::filesystem::path shown_;
};

}  // namespace

bool fetchLogs(const DeviceRoot& root, const std::string& bundleID,
               const std::filesystem::path& destination) {
  if (!isPlainComponent(bundleID)) throw Refusal(bundleID, "is no bundle identifier");
  TrustedFolder target = reachDestination(destination);
  const DeviceFolder folder(root, kCrashReporterDir);
  if (!folder.exists()) return true;  // nothing has crashed yet
  std::optional<FileDescriptor> logs = openFolder(folder.descriptor().get(), ".", folder.path());
  if (!logs) throwSystemError(ENOTDIR, folder.path());

  bool isComplete = true;
  CrashLogSubject subject{bundleID, {}};
  try {
    subject.executables = executablesOfApp(root, bundleID);
  } catch (const std::exception& error) {
    logToStandardError(std::string("kvfileops: only logs that name the identifier are found: ") +
                       error.what());
    isComplete = false;
  }
  const LogCopy copy(std::move(subject), std::move(target), destination);
  FolderReader reader(std::move(*logs), folder.path());
  while (const std::optional<std::string> name = reader.next()) {
    if (!isCrashLogName(*name)) continue;
    try {
      copy.copyIfAbout(reader, *name);
    } catch (const std::exception& error) {
      logToStandardError(std::string("kvfileops: ") + error.what());
      isComplete = false;
    }
  }
  return isComplete;
}

}  // namespace tavlen::fileops
