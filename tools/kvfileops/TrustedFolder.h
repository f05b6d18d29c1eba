#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "kvfileops/NewFolder.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fileops {

/// Which symbolic links are followed on the way to a folder.
enum class Links {
  all,
  /// Those that root owns, in folders that only root may write, from "/" down. No other user can
  /// have put such a link there, or can exchange it while the program runs.
  ofRoot,
};

/// What the rights of the process demand: with lent rights, only the links of root. To be asked
/// while no CallerRights lives.
Links linksToFollow();

/// A folder, reached from "/" one component at a time, each opened in the folder before it.
///
/// The system's own way through a path follows every link, and asking first and opening afterwards
/// leaves time to exchange a folder for a link. Here no component is opened through a link: a link
/// is read, judged, and its target takes its place among the components. All folders on the way
/// stay open, so that ".." goes back to where the way came from, wherever others have moved the
/// folder since. Only openat() is used, which every system has.
///
/// Errors: Refusal, which names the link; std::system_error. Threads: one at a time.
class TrustedFolder {
 public:
  /// Goes to the absolute path `path`, with the rights that the process has at this moment. The
  /// last components may be missing.
  TrustedFolder(const std::filesystem::path& path, Links links);

  /// Where the folder lies, or will lie: absolute, without links and dots.
  std::filesystem::path path() const;
  /// Whether no component is missing.
  bool exists() const { return missing_.empty(); }
  /// The folder, for calls relative to it; the deepest one on the way that exists where it is
  /// missing.
  const FileDescriptor& descriptor() const { return steps_.back().folder; }
  /// Makes what is missing. The folder itself then belongs to `owner`, the folders that lead to it
  /// to the program. All are open to everybody and closed to changes by others (0755).
  void make(Owner owner);

 private:
  struct Step {
    FileDescriptor folder;
    std::string name;
    bool isRootsAlone;  ///< only root may write it and the folders that lead to it
  };

  void go(const std::filesystem::path& path, Links links);
  void goBack();
  /// Enters the folder `name` of the current one, or notes that it is missing. False where
  /// something else has this name.
  bool enter(const std::string& name);
  void append(FileDescriptor folder, const std::string& name);
  /// Where the link `name` of the current folder leads, if `links` has it followed.
  std::filesystem::path targetOf(const std::string& name, Links links) const;

  std::vector<Step> steps_;  ///< never empty: begins with "/"
  std::vector<std::string> missing_;
};

}  // namespace tavlen::fileops
