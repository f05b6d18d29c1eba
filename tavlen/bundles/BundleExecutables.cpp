#include "tavlen/bundles/BundleExecutables.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/MachOHeader.h"
#include "tavlen/foundation/RandomAccessFile.h"

namespace tavlen {

namespace {

using Directory = std::filesystem::recursive_directory_iterator;

/// The relative paths of the regular files below `folder`, one of each file that has several.
std::vector<std::string> regularFiles(const std::filesystem::path& folder,
                                      const std::string& preferred) {
  std::set<std::pair<dev_t, ino_t>> seen;
  std::vector<std::string> files;
  const auto add = [&](std::string relative) {
    struct stat status {};
    if (::lstat((folder / relative).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
    if (seen.emplace(status.st_dev, status.st_ino).second) files.push_back(std::move(relative));
  };
  // First, so that the main executable is the one that is kept of its names.
  add(preferred);
  std::error_code error;
  std::string relative = ".";
  for (Directory entry(folder, error); entry != Directory(); entry.increment(error)) {
    relative = entry->path().lexically_relative(folder).string();
    add(relative);
  }
  // A folder that could not be opened ends the walk; it is the one that was met last.
  if (error) throw IPA::Error::errorReading(relative);
  return files;
}

std::optional<MachOHeader> headerOf(const std::filesystem::path& folder,
                                    const std::string& relative) {
  try {
    return MachOHeader::read(RandomAccessFile(folder / relative));
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
  const std::filesystem::path& folder = ipa->appDir();
  const std::vector<std::string> files = regularFiles(folder, mainName);
  if (files.empty() || files.front() != mainName) throw Executable::Error::missing(mainName);
  BundleExecutables found;
  for (const std::string& relative : files) {
    const std::optional<MachOHeader> header = headerOf(folder, relative);
    const bool isMain = relative == mainName;
    if (!header) {
      if (isMain) throw IPA::Error::errorReading(mainName);
      continue;
    }
    const auto executable = std::make_shared<Executable>(ipa, folder, relative, isMain);
    if (isMain) {
      found.main = executable;
    } else if (header->fileType == MachOHeader::FileType::execute) {
      found.programs.push_back(executable);
    } else if (header->fileType == MachOHeader::FileType::dylib ||
               header->fileType == MachOHeader::FileType::bundle) {
      found.libraries.push_back(executable);
    }
  }
  sortByRelativePath(found.programs);
  sortByRelativePath(found.libraries);
  return found;
}

}  // namespace tavlen
