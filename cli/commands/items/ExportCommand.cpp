#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "cli/arguments/CollectionArgument.h"
#include "cli/arguments/StoredItem.h"
#include "cli/arguments/UsageError.h"
#include "cli/commands/Commands.h"
#include "cli/items/ItemRow.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ProgressLine.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TweakCheck.h"
#include "cli/tweaks/TweakForReading.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string item;
  std::string output;
  bool force = false;
  bool skipsMissing = false;
  bool json = false;
};

constexpr const char* kStandardOutput = "-";

/// A temporary folder for the archive: next to the store, or in TMPDIR if that cannot be written
/// (RAII).
class WorkFolder {
 public:
  WorkFolder() {
    try {
      nextToStore_.emplace(DeviceRoot::shared().resolve(kApplicationSupportDir));
    } catch (const std::system_error&) {
      elsewhere_ = makeUniqueTemporaryFolder("tavlen-");
    }
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  ~WorkFolder() {
    if (!elsewhere_.empty()) removeQuietly(elsewhere_);
  }

  const fs::path& path() const { return nextToStore_ ? nextToStore_->path() : elsewhere_; }

 private:
  std::optional<TemporaryDirectory> nextToStore_;
  fs::path elsewhere_;
};

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
  return all;
}

/// The members to export; none for a tweak. Throws if some cannot be opened, unless the user wants
/// to leave them out: an archive that names them could not be imported.
std::vector<TweakFile::Opened> membersOf(const ItemForReading& read, const Options& options) {
  if (read.item.collection() == nullptr) return {};
  const TweakCollection::Manifest& manifest = read.item.collection()->manifest;
  std::vector<TweakFile::Opened> members = read.members();
  const std::vector<std::string> missing = missingMembers(manifest, members);
  if (!missing.empty() && !options.skipsMissing) {
    throw std::runtime_error(options.item + ": cannot open " +
                             (missing.size() == 1 ? "the member " : "the members ") +
                             joined(missing) + "; --skip-missing exports a copy without " +
                             (missing.size() == 1 ? "it" : "them"));
  }
  for (const std::string& id : missing) {
    printWarning(id + ": this member cannot be opened and is left out");
  }
  return members;
}

void warnOf(const ItemForReading& read, const std::vector<TweakFile::Opened>& members) {
  if (read.text) {
    for (const Diagnostic& warning : warningsFor(*read.text, {})) print(warning);
  } else if (read.item.tweak() != nullptr) {
    printWarnings(*read.item.tweak(), read.path);
  }
  for (const TweakFile::Opened& member : members)
    printWarnings(member, member.file->url().string());
}

void move(const fs::path& archive, const fs::path& file, bool force) {
  requireFreeOutput(file.string(), force);
  if (!isTaken(file)) return moveItem(archive, file);
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

void printContents(const fs::path& file) {
  const FileDescriptor input = FileDescriptor::open(file, O_RDONLY);
  std::array<char, 1 << 16> part{};
  while (const std::size_t count = input.read(part, file.string())) {
    printData({part.data(), count});
  }
}

/// Moves the archive to the place that the user chose, which it returns.
fs::path deliver(const fs::path& archive, const Options& options, bool isFolder) {
  fs::path file = options.output;
  if (isFolder) file /= archive.filename();
  move(archive, file, options.force);
  if (!TweakManager::canHandle(file)) {
    printWarning(file.string() + ": import recognises archives by their extension, " +
                 archive.extension().string());
  }
  return file;
}

int exportItem(const Options& options) {
  const ItemForReading read = itemForReading(options.item);
  const OpenedItem& item = read.item;
  const fs::path output = options.output;
  const bool isStream = options.output == kStandardOutput;
  const bool isFolder = !isStream && (!output.has_filename() || fs::is_directory(output));
  // Check now, rather than after exporting.
  if (!isFolder) requireFreeOutput(options.output, options.force);
  const std::vector<TweakFile::Opened> members = membersOf(read, options);
  warnOf(read, members);
  const WorkFolder folder;
  const fs::path archive = [&] {
    const ProgressLine line("exporting " + options.item);
    return TweakManager::exportOpened(item, members, folder.path(), line.progress().get());
  }();
  if (isStream) {
    printContents(archive);
    return 0;
  }
  const std::string file = deliver(archive, options, isFolder).string();
  if (options.json) {
    ItemRow row = rowOf(read);
    row.archive = wellFormedUTF8(file);
    printJSON(row);
  } else {
    printData(escapedForTerminal(file) + "\n");
  }
  return 0;
}

}  // namespace

void addExportCommand(Command app) {
  Command command =
      app.addCommand("export", "Write a tweak or a collection to an archive and print its path");
  const auto options = std::make_shared<Options>();
  command.text("ITEM", options->item, kReadItemHelp).required().notEmpty();
  command
      .text("-o,--output", options->output,
            "The archive, or an existing folder, in which it is named after the item; - for the "
            "standard output; the default is the current folder")
      .typeName("FILE|DIR")
      .notEmpty();
  command.flag("-f,--force", options->force, kForceHelp);
  command.flag("--skip-missing", options->skipsMissing,
               "Export a copy of the collection without the members that cannot be opened");
  command.flag("--json", options->json,
               "Print the item as a JSON object with the path of the archive");
  command.prepare([options] {
    if (options->json && options->output == kStandardOutput)
      throw UsageError("-o -: the archive itself is printed, not --json");
    return [options] { return exportItem(*options); };
  });
}

}  // namespace tavlen::cli
