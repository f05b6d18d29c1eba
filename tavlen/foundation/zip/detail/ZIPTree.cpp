#include "tavlen/foundation/zip/detail/ZIPTree.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/detail/ZIPBudget.h"
#include "tavlen/foundation/zip/detail/ZIPEntryName.h"
#include "tavlen/foundation/zip/detail/ZIPNameSet.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

class TreeReader {
 public:
  explicit TreeReader(const ZIPArchive::Limits& limits) : names_(limits.entries), budget_(limits) {}

  /// Recursive: validateZIPName() limits the length of a name and thereby the depth.
  void add(const fs::path& path, std::string name) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) throwSystemError(path);
    validateKind(status.st_mode, name);
    const bool isFolder = S_ISDIR(status.st_mode);
    if (isFolder) name += '/';
    validateZIPName(name);
    names_.add(name);
    const std::uint64_t size = isFolder ? 0 : static_cast<std::uint64_t>(status.st_size);
    budget_.add(name, size);
    items_.push_back({name, path, status.st_mode, size});
    if (!isFolder) return;
    for (const std::string& child : childrenOf(path)) add(path / child, name + child);
  }

  std::vector<ZIPItem> takeItems() { return std::move(items_); }

 private:
  static void validateKind(mode_t mode, const std::string& name) {
    if (S_ISREG(mode) || S_ISDIR(mode)) return;
    throw ZIPError(S_ISLNK(mode) ? ZIPError::Case::symbolicLink : ZIPError::Case::specialFile,
                   wellFormedUTF8(name));
  }

  /// Not by a directory_iterator, some of whose steps end the process when memory runs out.
  static std::vector<std::string> childrenOf(const fs::path& folder) {
    std::vector<std::string> names;
    FolderReader reader(FileDescriptor::open(folder, kOpenFolder), folder);
    while (std::optional<std::string> name = reader.next()) {
      if (!isTemporaryName(*name)) names.push_back(std::move(*name));
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  ZIPNameSet names_;
  ZIPBudget budget_;
  std::vector<ZIPItem> items_;
};

}  // namespace

std::vector<ZIPItem> readZIPTree(const fs::path& item, const ZIPArchive::Limits& limits) {
  TreeReader reader(limits);
  const bool endsInSlash = !item.has_filename() && item.has_parent_path();
  const fs::path path = endsInSlash ? item.parent_path() : item;
  reader.add(path, path.filename().string());
  return reader.takeItems();
}

}  // namespace tavlen
