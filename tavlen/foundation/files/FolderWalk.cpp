#include "tavlen/foundation/files/FolderWalk.h"

#include <utility>
#include <vector>

namespace tavlen {

namespace fs = std::filesystem;

void walkFolder(const fs::path& folder, FunctionRef<bool(const fs::directory_entry& entry)> visit,
                FunctionRef<void(const fs::path& folder, std::error_code error)> fail) {
  std::vector<fs::path> folders = {folder};
  while (!folders.empty()) {
    const fs::path next = std::move(folders.back());
    folders.pop_back();
    std::error_code error;
    fs::directory_iterator entry(next, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      std::error_code unknown;
      const bool isFolder = entry->symlink_status(unknown).type() == fs::file_type::directory;
      if (visit(*entry) && isFolder) folders.push_back(entry->path());
    }
    if (error) fail(next, error);
  }
}

}  // namespace tavlen
