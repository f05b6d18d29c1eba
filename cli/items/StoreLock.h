#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "cli/arguments/CommandLine.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::cli {

/// Keeps other commands from editing the items of one folder during its lifetime (RAII): without
/// it, of two commands that read, change and write one document, one would lose its change.
///
/// It locks the folder itself, with flock(): no file is made, nothing remains after a crash,
/// and a child process inherits nothing. Commands that only read take no lock. Not for use while an
/// editor, another child process or a slow input is awaited.
class StoreLock {
 public:
  /// Locks the folder that contains the item named by `item`; see folderOfItem(). Locks nothing if
  /// that folder does not exist: opening the item will report it. After a second of waiting, prints
  /// a message. Throws std::runtime_error after the time of `--lock-timeout`. Only warns if the
  /// folder cannot be locked at all, as on some network volumes.
  explicit StoreLock(const std::string& item);
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;
  /// Locks the store, for a command that adds items. Creates it if it does not exist. Throws as the
  /// constructor does, and std::system_error.
  static StoreLock ofStore();
  /// Locks `folder`, an absolute path, for a command that writes a tweak's text and files into it.
  /// Throws as the constructor does.
  static StoreLock ofFolder(const std::filesystem::path& folder);
  ~StoreLock();

  /// Ends the process with a message whenever a stored item has been changed without a lock: from
  /// then on, a subcommand that forgets it fails in its first test.
  static void requireForEdits();

 private:
  explicit StoreLock(const std::filesystem::path& folder);

  FileDescriptor folder_;
};

/// Adds `--lock-timeout`, the longest wait of a StoreLock.
void addLockTimeoutOption(Command app);

/// Sets the action of a subcommand that edits the item whose name parsing stores in `item`, which
/// must live as long as the command. The action runs under a StoreLock.
void runEdit(Command command, const std::string& item, Action edit);
/// As runEdit(), for a function that checks the arguments first; see Command::prepare().
void prepareEdit(Command command, const std::string& item, std::function<Action()> prepare);

}  // namespace tavlen::cli
