#include "cli/items/StoreLock.h"

#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "cli/arguments/StoredItem.h"
#include "cli/terminal/Console.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::chrono::seconds timeout(30);
/// The number of StoreLock objects.
int locks = 0;

/// Tries to lock `folder`. Returns whether another process holds the lock. Throws
/// std::system_error.
bool isHeldElsewhere(const FileDescriptor& folder, const fs::path& shown) {
  if (retryOnInterrupt([&] { return ::flock(folder.get(), LOCK_EX | LOCK_NB); }) == 0) return false;
  if (errno == EWOULDBLOCK) return true;
  throw std::system_error(errno, std::generic_category(), shown.string());
}

/// Tries again and again: a call that waits could not be given up.
void lock(const FileDescriptor& folder, const fs::path& shown) {
  constexpr std::chrono::milliseconds kLongestPause(10);
  constexpr std::chrono::seconds kSilence(1);
  const Clock::time_point start = Clock::now();
  bool isTold = false;
  for (std::chrono::milliseconds pause(1); isHeldElsewhere(folder, shown);
       pause = std::min(pause * 2, kLongestPause)) {
    const Clock::duration waited = Clock::now() - start;
    if (waited >= timeout) {
      throw std::runtime_error(shown.string() + ": another command is still editing it after " +
                               std::to_string(timeout.count()) + " s; see --lock-timeout");
    }
    if (waited >= kSilence && !std::exchange(isTold, true)) {
      printNote("waiting for another command that is editing " + shown.string());
    }
    std::this_thread::sleep_for(pause);
  }
}

/// The open folder; nothing if it does not exist. Throws std::system_error.
FileDescriptor opened(const fs::path& folder) {
  try {
    return DeviceRoot::shared().open(folder, O_RDONLY | O_DIRECTORY);
  } catch (const std::system_error& error) {
    const bool isMissing = error.code() == std::errc::no_such_file_or_directory ||
                           error.code() == std::errc::not_a_directory;
    if (isMissing) return FileDescriptor();
    throw;
  }
}

}  // namespace

StoreLock::StoreLock(const std::string& item) : StoreLock(folderOfItem(item)) {}

StoreLock StoreLock::ofStore() { return StoreLock(TweaksDirectory::create()); }

StoreLock StoreLock::ofFolder(const fs::path& folder) { return StoreLock(folder); }

StoreLock::StoreLock(const fs::path& folder) {
  try {
    folder_ = opened(folder);
    if (folder_) lock(folder_, folder);
  } catch (const std::system_error& error) {
    printWarning(std::string(error.what()) +
                 "; the folder cannot be locked, so edits by other commands at the same time may "
                 "be lost");
  }
  ++locks;
}

StoreLock::~StoreLock() { --locks; }

void StoreLock::requireForEdits() {
  addTweakDiffObserver(NotificationCenter::default_(), [](const TweakDiffs& /*diffs*/) {
    if (locks == 0) fatalError("a stored item was changed without a StoreLock");
  });
}

void addLockTimeoutOption(Command app) {
  app.number(
         "--lock-timeout", [](std::uint32_t seconds) { timeout = std::chrono::seconds(seconds); },
         "How long to wait for another command that is editing the store; the default is " +
             std::to_string(timeout.count()))
      .typeName("SECONDS");
}

void runEdit(Command command, const std::string& item, Action edit) {
  prepareEdit(command, item, [edit = std::move(edit)] { return edit; });
}

void prepareEdit(Command command, const std::string& item, std::function<Action()> prepare) {
  command.prepare([&item, prepare = std::move(prepare)]() -> Action {
    return [&item, edit = prepare()] {
      const StoreLock lock(item);
      return edit();
    };
  });
}

}  // namespace tavlen::cli
