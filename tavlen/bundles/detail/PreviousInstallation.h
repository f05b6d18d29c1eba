#pragma once

#include <filesystem>
#include <system_error>
#include <vector>

namespace tavlen {

/// What is installed for an app while something else takes its place: moved aside, so that it can
/// come back when the new installation fails.
///
/// Threads: one object one thread at a time.
class PreviousInstallation {
 public:
  /// Lists `folder`, the app's folder of installed tweaks, which need not exist. `aside` is an
  /// existing empty folder on the same volume. Throws std::system_error.
  PreviousInstallation(std::filesystem::path folder, std::filesystem::path aside);

  /// Empties the folder, beginning with the record, so that a crash leaves none rather than one of
  /// half a tweak. Entries that may not be moved are copied, as far as they can be read, and left
  /// to the helper, which then leaves an empty folder if a tweak follows, else none. Throws
  /// std::system_error and Process::Error.
  void takeAway(bool isFollowedByTweak);
  /// Removes `placed`, the names that the new installation has put into the folder, and puts
  /// everything back, the record last and only if all the rest is there. Where the library may not
  /// write, by the helper. Returns whether all is as it was; if not, what is missing may lie aside.
  bool putBack(const std::vector<std::filesystem::path>& placed) const noexcept;

 private:
  void removeFromFolder(const std::vector<std::filesystem::path>& names) const;
  void makeFolder() const;
  /// Where the helper may have stopped in the middle of an entry that was copied aside: the
  /// original may be whole, so that only the helper, which was to remove it, removes it.
  void emptyByHelper() const;
  /// Whether `name` is back, or never went.
  bool restore(const std::filesystem::path& name) const noexcept;

  std::filesystem::path folder_;
  std::filesystem::path aside_;
  bool existed_;
  bool hadRecord_ = false;
  bool hasHelperStarted_ = false;             ///< it may have stopped halfway
  std::vector<std::filesystem::path> names_;  ///< of what the folder held besides the record
  std::vector<std::filesystem::path> moved_;  ///< those that are no longer in the folder
};

/// Whether `error` is one that the helper's rights may overcome.
bool isMissingPermission(const std::error_code& error);

/// Moves `source` to `destination`, or has the helper copy it there where the library may not
/// write. Throws std::system_error and Process::Error.
void moveOrCopyByHelper(const std::filesystem::path& source,
                        const std::filesystem::path& destination);

}  // namespace tavlen
