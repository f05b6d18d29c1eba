#include <cerrno>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "cli/arguments/CollectionArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/commands/Commands.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ProgressLine.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string item;
  std::string output;
  bool force = false;
};

/// Deletes the library's temporary archive on destruction (RAII).
class ExportedArchive {
 public:
  explicit ExportedArchive(fs::path path) : path_(std::move(path)) {}
  ExportedArchive(const ExportedArchive&) = delete;
  ExportedArchive& operator=(const ExportedArchive&) = delete;
  ~ExportedArchive() {
    std::error_code ignored;
    fs::remove_all(path_.parent_path(), ignored);
    // Fails, as intended, if another process is using the folder.
    fs::remove(path_.parent_path().parent_path(), ignored);
  }

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

/// The archive contains the collection's document unchanged, which refers to missing members, too.
void warnOfMissingMembers(const OpenedItem& item) {
  if (item.collection() == nullptr) return;
  for (const std::string& id : missingMembers(item.collection()->manifest)) {
    printWarning(id +
                 ": this member cannot be opened and is left out; importing the archive will fail");
  }
}

[[noreturn]] void refuse(const fs::path& file) {
  throw std::runtime_error(file.string() + ": already exists; use --force to replace it");
}

bool isTaken(const fs::path& file) {
  std::error_code ignored;
  return fs::symlink_status(file, ignored).type() != fs::file_type::not_found;
}

void move(const fs::path& archive, const fs::path& file, bool force) {
  if (!isTaken(file)) return moveItem(archive, file);
  if (!force) refuse(file);
  if (fs::is_directory(file)) {
    throw std::system_error(EISDIR, std::generic_category(), file.string());
  }
  // Move across volumes into a temporary folder first, so that the old file is replaced atomically.
  const TemporaryDirectory staging(fs::absolute(file).parent_path());
  const fs::path whole = staging.path() / file.filename();
  moveItem(archive, whole);
  syncFile(whole);
  fs::rename(whole, file);
  syncFolder(fs::absolute(file).parent_path());
}

int exportItem(const Options& options) {
  const OpenedItem item = openedItem(options.item);
  fs::path file = options.output.empty() ? "." : options.output;
  const bool isFolder = !file.has_filename() || fs::is_directory(file);
  // Check now, rather than after exporting.
  if (!isFolder && !options.force && isTaken(file)) refuse(file);
  warnOfMissingMembers(item);
  const ExportedArchive archive = [&] {
    const ProgressLine line("exporting " + options.item);
    return ExportedArchive(TweakManager::exportOpened(item, line.progress().get()));
  }();
  if (isFolder)
    file = options.output.empty() ? archive.path().filename() : file / archive.path().filename();
  move(archive.path(), file, options.force);
  if (!TweakManager::canHandle(file)) {
    printWarning(file.string() + ": import recognises archives by their extension, ." +
                 std::string(item.item()->archiveExtension()));
  }
  printData(escapedForTerminal(file.string()) + "\n");
  return 0;
}

}  // namespace

void addExportCommand(Command app) {
  Command command = app.addCommand(
      "export", "Write a stored tweak or collection to an archive and print the archive's path");
  const auto options = std::make_shared<Options>();
  command.text("ITEM", options->item, kItemHelp).required().notEmpty();
  command
      .text("-o,--output", options->output,
            "The archive, or an existing folder, in which it is named after the item; the "
            "default is the current folder")
      .typeName("FILE|DIR")
      .notEmpty();
  command.flag("-f,--force", options->force, "Replace an existing file");
  command.run([options] { return exportItem(*options); });
}

}  // namespace tavlen::cli
