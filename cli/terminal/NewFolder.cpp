#include "cli/terminal/NewFolder.h"

#include <cerrno>
#include <string>
#include <system_error>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// The path that the error names.
fs::path pathIn(const std::system_error& error) {
  if (const auto* failure = dynamic_cast<const fs::filesystem_error*>(&error))
    return failure->path1();
  const std::string text = error.what();
  const std::string reason = ": " + error.code().message();
  return text.ends_with(reason) ? text.substr(0, text.size() - reason.size()) : text;
}

}  // namespace

void makeFolder(const fs::path& folder, FunctionRef<void(const fs::path& draft)> write) {
  if (isTaken(folder)) throwSystemError(ENOTDIR, folder);
  fs::path place = fs::weakly_canonical(fs::absolute(folder));
  if (!place.has_filename()) place = place.parent_path();
  fs::path first = place;  // the first folder of the path that does not exist
  while (!isTaken(first.parent_path())) first = first.parent_path();
  if (!fs::is_directory(first.parent_path())) throwSystemError(ENOTDIR, folder);
  const TemporaryDirectory work(first.parent_path());
  const fs::path draft = work.path() / place.lexically_relative(first.parent_path());
  callInDraft(draft, folder, [&] {
    fs::create_directories(draft);
    write(draft);
  });
  moveItem(work.path() / first.filename(), first);
}

void callInDraft(const fs::path& draft, const fs::path& folder, FunctionRef<void()> write) {
  try {
    write();
  } catch (const std::system_error& error) {
    const fs::path path = pathIn(error).lexically_relative(draft);
    if (path.empty() || *path.begin() == "..") throw;
    throw std::system_error(error.code(), (path == "." ? folder : folder / path).string());
  }
}

}  // namespace tavlen::cli
