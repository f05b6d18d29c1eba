#include "cli/tweaks/AttachedFiles.h"

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/PlacedError.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FolderWalk.h"
#include "tavlen/foundation/files/TemporaryFile.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// The regular file at the relative path `name`; nothing unless it is inside the folder.
std::optional<fs::path> fileAt(const fs::path& folder, const std::string& name) {
  const DeviceRoot root = DeviceRoot::shared();
  auto file = pathInside(root, folder, name);
  if (!file || !fs::is_regular_file(root.status(*file))) return std::nullopt;
  return file;
}

fs::path requireFile(const fs::path& folder, const std::string& name) {
  if (auto file = fileAt(folder, name)) return *std::move(file);
  throw std::system_error(ENOENT, std::generic_category(), (folder / name).string());
}

std::string contentsOf(const fs::path& file) {
  return readFile(openedFile(DeviceRoot::shared(), file));
}

/// The place, without links, for a file at the relative path `name`. Makes the folders that lead to
/// it.
fs::path placeFor(const fs::path& folder, const std::string& name) {
  auto place = pathInside(DeviceRoot::shared(), folder, name);
  if (!place) throw std::runtime_error((folder / name).string() + ": leads out of the folder");
  fs::create_directories(place->parent_path());
  return *std::move(place);
}

}  // namespace

void throwUnreadable(const std::string& path, std::error_code error) {
  throw fileError(path, std::system_error(error, path), "unreadable-file");
}

std::set<std::string> attachedFiles(const fs::path& folder, const std::string& top,
                                    LeftOut leftOut) {
  std::set<std::string> names;
  const DeviceRoot root = DeviceRoot::shared();
  if (!isTaken(root.followParent(folder / top))) return names;
  const auto real = pathInside(root, folder, top);
  if (!real || !fs::is_directory(root.status(*real))) {
    leftOut(top, {});
    return names;
  }
  const auto nameOf = [&](const fs::path& path) {
    return (path == *real ? fs::path(top) : top / path.lexically_relative(*real)).string();
  };
  walkFolder(
      *real,
      [&](const fs::directory_entry& entry) {
        const fs::path& path = entry.path();
        if (isTemporaryName(path.filename())) return false;
        std::error_code error;
        const fs::file_type type = entry.symlink_status(error).type();
        if (!error && type == fs::file_type::directory) return true;
        std::string name = nameOf(path);
        if (!error && fileAt(folder, name)) {
          names.insert(std::move(name));
        } else {
          leftOut(name, error);
        }
        return false;
      },
      [&](const fs::path& path, std::error_code error) { leftOut(nameOf(path), error); });
  return names;
}

std::set<std::string> attachedFiles(const fs::path& folder, const std::string& shown) {
  std::set<std::string> names;
  for (const char* top : kAttachedFolders) {
    names.merge(attachedFiles(folder, top, [&](const std::string& name, std::error_code error) {
      const std::string file = (fs::path(shown) / name).string();
      if (error) throwUnreadable(file, error);
      print({.severity = Diagnostic::kWarning,
             .message = "the entry is not a file of the folder and is left out",
             .file = file,
             .code = "left-out"});
    }));
  }
  return names;
}

bool isSameFile(const fs::path& one, const fs::path& other, const std::string& name) {
  const auto left = fileAt(one, name);
  const auto right = fileAt(other, name);
  if (!left || !right) return false;
  const DeviceRoot root = DeviceRoot::shared();
  return root.status(*left).permissions() == root.status(*right).permissions() &&
         contentsOf(*left) == contentsOf(*right);
}

void copyAttachedFile(const fs::path& from, const fs::path& to, const std::string& name) {
  const fs::path source = requireFile(from, name);
  const fs::path place = placeFor(to, name);
  const DeviceRoot root = DeviceRoot::shared();
  replaceFile(root, place, contentsOf(source));
  fs::permissions(place, root.status(source).permissions());
}

void moveAttachedFile(const fs::path& from, const fs::path& to, const std::string& name) {
  fs::rename(from / name, placeFor(to, name));
}

}  // namespace tavlen::cli
