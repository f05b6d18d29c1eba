#include "tavlen/tweaks/PackagedEntries.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "tavlen/foundation/files/FolderWalk.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/zip/ZIPArchive.h"

namespace tavlen {

namespace fs = std::filesystem;

namespace {

/// The folder of an archive in which a tweak's files lie: its length counts, too.
constexpr const char* kArchiveFolder = "Payload";

std::string unreadableText(const std::error_code& error) {
  return "cannot be packaged: " + error.message();
}

/// Why neither packages nor archives can contain the entry; empty if they can.
std::string refusalOfEntry(const fs::directory_entry& entry) {
  std::error_code error;
  const fs::file_type type = entry.symlink_status(error).type();
  if (error) return unreadableText(error);
  const std::string_view reason = refusalOf(type);
  if (!reason.empty()) return std::string(reason);
  // A folder's own error follows when it is read.
  if (type == fs::file_type::directory ||
      ::faccessat(AT_FDCWD, entry.path().c_str(), R_OK, AT_EACCESS) == 0)
    return {};
  return unreadableText(std::error_code(errno, std::generic_category()));
}

}  // namespace

std::string_view refusalOf(fs::file_type type) {
  if (type == fs::file_type::symlink) return "a symbolic link cannot be packaged";
  if (type == fs::file_type::regular || type == fs::file_type::directory) return {};
  return "neither a file nor a folder, and cannot be packaged";
}

std::vector<RefusedEntry> refusedEntries(const fs::path& folder) {
  std::vector<RefusedEntry> refused;
  const auto add = [&](const fs::path& path, std::string reason, bool isPackaged = false) {
    refused.push_back({path.lexically_relative(folder), std::move(reason), isPackaged});
  };
  walkFolder(
      folder,
      [&](const fs::directory_entry& entry) {
        const fs::path& path = entry.path();
        if (isTemporaryName(path.filename())) return false;
        if (!ZIPArchive::isEntryName((kArchiveFolder / path.lexically_relative(folder)).native())) {
          add(path, "no archive can contain an entry of this name", true);
          return false;
        }
        std::string reason = refusalOfEntry(entry);
        if (!reason.empty()) add(path, std::move(reason));
        return true;
      },
      [&](const fs::path& path, std::error_code error) { add(path, unreadableText(error)); });
  std::sort(refused.begin(), refused.end(),
            [](const auto& one, const auto& other) { return one.path < other.path; });
  return refused;
}

void throwRefusal(const fs::path& entry, std::string_view reason) {
  throw std::runtime_error(entry.string().append(": ").append(reason));
}

}  // namespace tavlen
