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
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/text/Log.h"

namespace tavlen::fileops {

namespace {

constexpr std::uint64_t kLargestLog = std::uint64_t{64} << 20;
/// A header has some hundred bytes.
constexpr std::size_t kHeadSize = std::size_t{64} << 10;

FileDescriptor openDestination(const std::filesystem::path& destination) {
  if (!destination.is_absolute()) throw Refusal(destination, "is no absolute path");
  const CallerRights rights;
  return FileDescriptor::open(destination, O_PATH | O_DIRECTORY);
}

/// Whoever may write among the logs could give any file of the volume a log's name.
void requireOneName(const FileDescriptor& log, const std::filesystem::path& shown) {
  if (log.status(shown).st_nlink != 1) throw Refusal(shown, "has other names and may be no log");
}

/// Where the log is read from later does not change.
std::string headOf(const FileDescriptor& log, const std::filesystem::path& shown) {
  std::string bytes(kHeadSize, '\0');
  bytes.resize(log.readAt(0, bytes, shown));
  return bytes;
}

class LogCopy {
 public:
  LogCopy(CrashLogSubject subject, FileDescriptor folder, std::filesystem::path shown)
      : subject_(std::move(subject)), folder_(std::move(folder)), shown_(std::move(shown)) {}

  void copyIfAbout(const FolderReader& logs, const std::string& name) const {
    const std::filesystem::path shown = logs.path() / name;
    const std::optional<FileDescriptor> log = openRegularFile(logs.descriptor(), name, shown);
    if (!log) return;
    requireOneName(*log, shown);
    if (!isNamedAfter(subject_, name) && !isAbout(subject_, headOf(*log, shown))) {
      return;
    }
    const CallerRights rights;
    if (isThere(name)) return;
    NewFile copy(folder_.get(), name, 0644, shown_ / name);
    copyBytes(*log, copy.descriptor(), kLargestLog, shown);
    (void)copy.commit();  // where it is there by now, that is as good
  }

 private:
  bool isThere(const std::string& name) const {
    struct stat status {};
    if (::fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return true;
    if (errno != ENOENT) throwSystemError(shown_ / name);
    return false;
  }

  CrashLogSubject subject_;
  FileDescriptor folder_;
  std::filesystem::path shown_;
};

}  // namespace

bool fetchLogs(const DeviceRoot& root, const std::string& bundleID,
               const std::filesystem::path& destination) {
  if (!isPlainComponent(bundleID)) throw Refusal(bundleID, "is no bundle identifier");
  FileDescriptor target = openDestination(destination);
  const DeviceFolder folder(root, kCrashReporterDir);
  const std::optional<FileDescriptor> passage = folder.open();
  if (!passage) return true;  // nothing has crashed yet
  std::optional<FileDescriptor> logs = openFolder(passage->get(), ".", folder.path());
  if (!logs) throwSystemError(ENOTDIR, folder.path());

  bool isComplete = true;
  CrashLogSubject subject{bundleID, {}};
  try {
    subject.executables = executablesOfApp(root, bundleID);
  } catch (const std::exception& error) {
    logToStandardError(std::string("kvfileops: logs are only known by the identifier: ") +
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
