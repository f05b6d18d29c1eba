#include "tavlen/bundles/BundleExecutables.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/macho/MachOFile.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// Finds the regular files below a folder; of a file with several names, one.
class RegularFiles {
 public:
  explicit RegularFiles(const fs::path& folder) : folder_(folder) {}

  /// Adds the file `relative`; queues a folder; ignores other entries.
  void add(std::string relative) {
    struct stat status {};
    if (::lstat((folder_ / relative).c_str(), &status) != 0) return;
    if (S_ISDIR(status.st_mode)) {
      pending_.push_back(std::move(relative));
    } else if (S_ISREG(status.st_mode) && seen_.emplace(status.st_dev, status.st_ino).second) {
      found_.push_back(std::move(relative));
    }
  }

  /// Keeps one folder open at a time, whatever the depth.
  std::vector<std::string> find() {
    pending_.emplace_back();
    while (!pending_.empty()) {
      const std::string next = std::move(pending_.back());
      pending_.pop_back();
      readFolder(next);
    }
    return std::move(found_);
  }

 private:
  void readFolder(const std::string& relative) {
    std::error_code error;
    fs::directory_iterator entry(folder_ / relative, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      add((fs::path(relative) / entry->path().filename()).string());
    }
    if (error && error != std::errc::no_such_file_or_directory) {
      throw IPA::Error::errorReading(relative);
    }
  }

  const fs::path& folder_;
  std::set<std::pair<dev_t, ino_t>> seen_;
  std::vector<std::string> pending_;
  std::vector<std::string> found_;
};

std::optional<MachOFile> machOFileAt(const fs::path& folder, const std::string& relative) {
  try {
    return MachOFile::read(openedFile(DeviceRoot::shared(), (folder / relative).string()));
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::no_such_file_or_directory) return std::nullopt;
    throw IPA::Error::errorReading(relative);
  }
}

void sortByRelativePath(std::vector<std::shared_ptr<Executable>>& executables) {
  std::sort(executables.begin(), executables.end(), [](const auto& left, const auto& right) {
    return left->relativePath() < right->relativePath();
  });
}

}  // namespace

BundleExecutables BundleExecutables::find(const std::shared_ptr<IPA>& ipa,
                                          const std::string& mainName) {
  if (!isPlainComponent(mainName)) throw IPA::Error::invalidFilename(mainName);
  const fs::path& folder = ipa->appDir();
  RegularFiles search(folder);
  // Added first, so that the main executable is found under this name.
  search.add(mainName);
  const std::vector<std::string> files = search.find();
  if (files.empty() || files.front() != mainName) throw Executable::Error::missing(mainName);
  BundleExecutables found;
  for (const std::string& relative : files) {
    const std::optional<MachOFile> file = machOFileAt(folder, relative);
    const bool isMain = relative == mainName;
    if (!file) {
      if (isMain) throw IPA::Error::errorReading(mainName);
      continue;
    }
    const auto executable = std::make_shared<Executable>(ipa, folder, relative, isMain);
    if (isMain) {
      found.main = executable;
      continue;
    }
    const MachOSlice::FileType type = file->preferred().fileType;
    if (type == MachOSlice::FileType::execute) {
      found.programs.push_back(executable);
    } else if (type == MachOSlice::FileType::dylib || type == MachOSlice::FileType::bundle) {
      found.libraries.push_back(executable);
    }
  }
  sortByRelativePath(found.programs);
  sortByRelativePath(found.libraries);
  return found;
}

}  // namespace tavlen
