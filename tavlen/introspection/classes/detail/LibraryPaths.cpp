#include "tavlen/introspection/classes/detail/LibraryPaths.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/bundles/InfoManager.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kRunPath = "@rpath/";
constexpr int kMainExecutable = -1;

bool isBundleOfProgram(const fs::path& folder) {
  return folder.extension() == ".app" || folder.extension() == ".appex";
}

bool isBelow(const fs::path& path, const fs::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
         folder.end();
}

/// The nearest folder above `file` that is the bundle of a program; empty for none.
fs::path programFolderAbove(const fs::path& file) {
  for (fs::path folder = file.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (isBundleOfProgram(folder)) return folder;
  }
  return {};
}

/// The program of the bundle `folder`; empty if it cannot be told.
fs::path programIn(const fs::path& folder) {
  try {
    const std::string name = InfoManager(folder).info().executable;
    return isPlainComponent(name) ? folder / name : fs::path();
  } catch (const std::exception&) {
    return {};
  }
}

std::vector<std::string> runPathsOf(const fs::path& program, const MachOSlice& like) {
  try {
    const auto file = std::make_shared<const RandomAccessFile>(
        openedFile(DeviceRoot::shared(), program.string()));
    const std::optional<MachOFile> machO = MachOFile::read(*file);
    if (!machO) return {};
    const MachOSlice* same = machO->sliceNamed(like.architecture());
    return MachOImage(file, same != nullptr ? *same : machO->preferred()).runPaths();
  } catch (const std::exception&) {
    return {};  // the name stays as it is written
  }
}

}  // namespace

LibraryPaths::LibraryPaths(const Executable& executable, const MachOImage& image)
    : image_(image),
      file_(fs::absolute(executable.path()).lexically_normal()),
      programFolder_(programFolderAbove(file_)) {
  if (image.slice().fileType == MachOSlice::FileType::execute) programFolder_ = file_.parent_path();
  const std::shared_ptr<IPA> app = executable.ipa();
  bundle_ =
      app != nullptr ? fs::absolute(app->appDir()).lexically_normal() : programFolderAbove(file_);
}

std::optional<SharedText> LibraryPaths::pathOf(int ordinal) {
  const auto [place, isNew] = paths_.try_emplace(ordinal);
  if (isNew) {
    const std::optional<std::string> path = find(ordinal);
    if (path) place->second = wellFormedUTF8(*path);
  }
  return place->second;
}

std::optional<std::string> LibraryPaths::find(int ordinal) {
  if (ordinal == 0) return DeviceRoot::shared().devicePath(file_).string();
  if (ordinal == kMainExecutable) {
    const fs::path program = programFolder_.empty() ? fs::path() : programIn(programFolder_);
    if (program.empty()) return std::nullopt;
    return DeviceRoot::shared().devicePath(program).string();
  }
  const auto& libraries = image_.libraries();
  if (ordinal < 0 || static_cast<std::size_t>(ordinal) > libraries.size()) return std::nullopt;
  return resolved(libraries[static_cast<std::size_t>(ordinal) - 1].name);
}

std::string LibraryPaths::resolved(const std::string& name) {
  if (!name.starts_with('@') || bundle_.empty()) return name;
  const fs::path folder = file_.parent_path();
  if (!name.starts_with(kRunPath)) return pathInBundle(name, folder).value_or(name);
  const std::string inFolder = "/" + name.substr(kRunPath.size());
  const auto search = [&](const std::vector<std::string>& runPaths, const fs::path& loader) {
    std::optional<std::string> found;
    for (const std::string& runPath : runPaths) {
      if (found || lookups_ == 0) break;
      --lookups_;
      found = pathInBundle(runPath + inFolder, loader);
    }
    return found;
  };
  if (auto found = search(image_.runPaths(), folder)) return *found;
  return search(runPathsOfProgram(), programFolder_).value_or(name);
}

const std::vector<std::string>& LibraryPaths::runPathsOfProgram() {
  if (!programRunPaths_) {
    programRunPaths_.emplace();
    const bool isProgram = image_.slice().fileType == MachOSlice::FileType::execute;
    const fs::path program =
        isProgram || programFolder_.empty() ? fs::path() : programIn(programFolder_);
    if (!program.empty()) programRunPaths_ = runPathsOf(program, image_.slice());
  }
  return *programRunPaths_;
}

std::optional<std::string> LibraryPaths::pathInBundle(const std::string& name,
                                                      const fs::path& loaderFolder) const {
  constexpr std::string_view kProgram = "@executable_path/";
  constexpr std::string_view kLoader = "@loader_path/";
  const bool isOfProgram = name.starts_with(kProgram);
  const fs::path& folder = isOfProgram ? programFolder_ : loaderFolder;
  if ((!isOfProgram && !name.starts_with(kLoader)) || folder.empty()) return std::nullopt;
  const std::string inFolder = name.substr((isOfProgram ? kProgram : kLoader).size());
  const fs::path path = (folder / inFolder).lexically_normal();
  const DeviceRoot root = DeviceRoot::shared();
  if (!isBelow(path, bundle_) || !fs::is_regular_file(root.status(path))) return std::nullopt;
  return root.devicePath(path).string();
}

}  // namespace tavlen
