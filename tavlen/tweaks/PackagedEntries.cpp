#include "tavlen/tweaks/PackagedEntries.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/TemporaryFile.h"

namespace tavlen {

namespace fs = std::filesystem;

std::string_view refusalOf(fs::file_type type) {
  if (type == fs::file_type::symlink) return "a symbolic link cannot be packaged";
  if (type == fs::file_type::regular || type == fs::file_type::directory) return {};
  return "neither a file nor a folder, and cannot be packaged";
}

std::vector<RefusedEntry> refusedEntries(const fs::path& folder) {
  std::vector<RefusedEntry> refused;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (isTemporaryName(entry->path().filename())) {
      entry.disable_recursion_pending();
      continue;
    }
    std::error_code unknown;
    const std::string_view reason = refusalOf(entry->symlink_status(unknown).type());
    if (!unknown && !reason.empty())
      refused.push_back({entry->path().lexically_relative(folder), reason});
  }
  std::sort(refused.begin(), refused.end(),
            [](const auto& one, const auto& other) { return one.path < other.path; });
  return refused;
}

void throwRefusal(const fs::path& entry, std::string_view reason) {
  throwSystemError(EINVAL, entry.string().append(": ").append(reason));
}

}  // namespace tavlen
