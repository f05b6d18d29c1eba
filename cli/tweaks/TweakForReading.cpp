#include "cli/tweaks/TweakForReading.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/arguments/StoredItem.h"
#include "cli/terminal/Diagnostic.h"
#include "cli/terminal/HiddenFolder.h"
#include "cli/terminal/PlacedError.h"
#include "cli/terminal/ProgressLine.h"
#include "cli/terminal/ShownText.h"
#include "cli/tweaks/TemporaryTweak.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/TweakContents.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/TextLines.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/store/TweakManager.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// What a tweak that has no folder yet goes by: the name of the text's folder, or of the archive.
std::string nameFor(const std::string& argument) {
  const fs::path path = fs::absolute(argument).lexically_normal();
  const bool isFile = argument == "-" || path.filename() == kTextFile || !path.has_filename();
  const fs::path name = isFile ? path.parent_path().filename() : path.stem();
  return name.empty() ? "tweak" : name.string();
}

void useFolder(OpenedTweak& tweak, TweakFile::Opened opened) {
  tweak.file = std::move(opened.file);
  tweak.manifest = std::move(opened.manifest);
  tweak.ignoredKeys = std::move(opened.ignoredKeys);
}

OpenedTweak tweakFromText(const std::string& argument) {
  OpenedTweak tweak;
  tweak.argument = argument;
  TextInput input = readTextInput(argument);
  tweak.folder = fs::path(input.file).parent_path().string();
  auto folder = std::make_shared<HiddenFolder>();
  const fs::path draft = folder->path() / nameFor(argument);
  makeTweakFolder(draft, contentsOf(input));
  useFolder(tweak, {TweakFile::handle(draft), input.text.manifest});
  tweak.text = std::make_shared<TextInput>(std::move(input));
  tweak.temporaryFolder = std::move(folder);
  return tweak;
}

bool isOfCollection(const std::string& archive) {
  return lowercased(archive).ends_with(TweakCollection::compressedExtension);
}

/// What `unpack` makes of the archive, with errors that name it.
template <class Unpack>
auto unpacked(const std::string& archive, const Unpack& unpack) {
  try {
    const ProgressLine line("unpacking " + archive);
    return unpack(line.progress().get());
  } catch (const DecodingError& error) {
    throw documentError(archive + "/" + kDocumentFile, error);
  } catch (const DescribedError& error) {
    throw std::runtime_error(archive + ": " + errorText(error));
  }
}

OpenedTweak tweakFromArchive(const std::string& argument) {
  if (isOfCollection(argument))
    throw std::runtime_error(argument + ": is the archive of a collection; import makes one of it");
  OpenedTweak tweak;
  tweak.argument = argument;
  tweak.folder = argument;
  auto folder = std::make_shared<HiddenFolder>();
  const fs::path place = folder->path() / nameFor(argument);
  useFolder(tweak, unpacked(argument, [&](Progress* progress) {
              return TweakManager::openTweakArchive(argument, place, progress);
            }));
  tweak.temporaryFolder = std::move(folder);
  return tweak;
}

ItemForReading collectionFromArchive(const std::string& argument) {
  auto folder = std::make_shared<HiddenFolder>();
  const fs::path place = folder->path() / nameFor(argument);
  auto [collection, members] = unpacked(argument, [&](Progress* progress) {
    return TweakManager::openCollectionArchive(argument, place, progress);
  });
  return {std::move(collection), argument, std::move(folder), nullptr, std::move(members)};
}

/// Where the script ceases to be UTF-8, if that is the error.
std::optional<TextPosition> malformedPlace(const fs::path& script, const std::exception& error) {
  const auto* failure = dynamic_cast<const std::system_error*>(&error);
  if (failure == nullptr || failure->code() != std::errc::illegal_byte_sequence)
    return std::nullopt;
  const std::string bytes = readFile(openedFile(DeviceRoot::shared(), script));
  return linePositionAt(bytes, validUTF8Length(bytes));
}

}  // namespace

OpenedTweak tweakForReading(const std::string& argument) {
  const ItemForm form = isItemPath(argument) ? formOf(argument) : ItemForm::item;
  if (form == ItemForm::text) return tweakFromText(argument);
  if (form == ItemForm::archive) return tweakFromArchive(argument);
  OpenedTweak tweak;
  tweak.argument = argument;
  useFolder(tweak, openedTweak(argument));
  tweak.folder = isItemPath(argument) ? itemFolder(argument) : tweak.file->url().string();
  return tweak;
}

OpenedTweak openTweak(const std::string& argument) {
  OpenedTweak tweak = tweakForReading(argument);
  try {
    tweak.script = tweak.file->readScript().value_or(std::string());
  } catch (const std::exception& error) {
    tweak.scriptIsUnreadable = true;
    Diagnostic message = asWarning(
        fileError(tweak.pathOf(TweakFile::scriptFile), error, "unreadable-script").diagnostic());
    message.message += "; the script counts as empty";
    if (const auto place = malformedPlace(tweak.file->url() / TweakFile::scriptFile, error)) {
      message.line = place->line;
      message.column = place->column;
    }
    print(message);
  }
  return tweak;
}

ItemForReading itemForReading(const std::string& argument) {
  if (!isItemPath(argument) || formOf(argument) == ItemForm::item) {
    OpenedItem item = openedItem(argument);
    std::string path = item.item()->url().string();
    return {std::move(item), std::move(path), nullptr};
  }
  if (formOf(argument) == ItemForm::archive && isOfCollection(argument))
    return collectionFromArchive(argument);
  OpenedTweak tweak = tweakForReading(argument);
  return {TweakFile::Opened{std::move(tweak.file), std::move(tweak.manifest),
                            std::move(tweak.ignoredKeys)},
          argument, std::move(tweak.temporaryFolder), std::move(tweak.text)};
}

ItemForReading collectionForReading(const std::string& argument) {
  ItemForReading read = itemForReading(argument);
  if (read.item.collection() != nullptr) return read;
  throw std::runtime_error(argument + ": is a tweak, not a collection");
}

std::vector<TweakFile::Opened> ItemForReading::members() const {
  if (!isItem() || item.collection() == nullptr) return archived;
  return item.collection()->manifest.openedTweaks();
}

ItemRow rowOf(const ItemForReading& read) {
  const TweakProtocol& item = *read.item.item();
  const TweakConfiguration configuration = read.item.configuration();
  ItemRow row = read.isItem() ? rowOf(item, configuration) : rowOf(item, configuration, false);
  row.path = wellFormedUTF8(read.path);
  if (!read.isItem()) row.id = std::nullopt;
  return row;
}

}  // namespace tavlen::cli
