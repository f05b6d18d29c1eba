#include "tavlen/store/TweakManager.h"

#include <dirent.h>

#include <algorithm>
#include <array>
#include <exception>
#include <string>
#include <system_error>
#include <utility>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/UUID.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

constexpr const char* kPayloadFolder = "Payload";

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using FolderPointer = std::unique_ptr<DIR, CloseFolder>;

struct Kind {
  std::string_view compressedExtension;
  bool (*isValidID)(std::string_view text);
  std::shared_ptr<TweakProtocol> (*at)(fs::path url);
  std::shared_ptr<TweakProtocol> (*handlePayloadAt)(const fs::path& url);
};

template <class T>
constexpr Kind kindOf() {
  return {T::compressedExtension, T::isValidID,
          [](fs::path url) -> std::shared_ptr<TweakProtocol> { return T::at(std::move(url)); },
          [](const fs::path& url) -> std::shared_ptr<TweakProtocol> {
            return T::handlePayloadAt(url);
          }};
}

/// The first one that takes an item has it.
constexpr std::array<Kind, 2> kKinds = {kindOf<TweakFile>(), kindOf<TweakCollection>()};

/// The kind that takes a stored item of that identifier; null when none does.
const Kind* kindOfID(std::string_view id) {
  const auto* const kind =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& k) { return k.isValidID(id); });
  return kind != kKinds.end() ? kind : nullptr;
}

/// The kind whose archives are named like `url`; null when there is none.
const Kind* kindOfArchive(const fs::path& url) {
  std::string extension = (url.has_filename() ? url : url.parent_path()).extension().string();
  if (extension.empty()) return nullptr;
  extension.erase(0, 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  const auto* const kind = std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& k) {
    return k.compressedExtension == extension;
  });
  return kind != kKinds.end() ? kind : nullptr;
}

/// A temporary folder beside the tweaks directory, on its volume.
fs::path temporaryItemsParent() { return DeviceRoot::shared().resolve(kApplicationSupportDir); }

/// `name` as a file's, with the extension. What only names a folder, or hides the file, does so no
/// more with an extension behind it, or was the user's wish.
std::string archiveName(std::string name, const std::string& id, std::string_view extension) {
  constexpr std::size_t kLongestName = 255;
  constexpr std::string_view kNotInNames("/:\0", 3);
  if (name.empty()) name = id;
  for (std::size_t at = name.find_first_of(kNotInNames); at != std::string::npos;
       at = name.find_first_of(kNotInNames, at)) {
    name[at] = '-';
  }
  std::size_t length = std::min(name.size(), kLongestName - 1 - extension.size());
  const auto isContinuation = [&](std::size_t at) {
    return at < name.size() && (static_cast<unsigned char>(name[at]) & 0xC0U) == 0x80U;
  };
  while (length > 0 && isContinuation(length)) --length;
  name.resize(length);
  return name.append(".").append(extension);
}

/// What no archive may hold is named as the archive's reader would, not as the copy would fail.
void refuseSpecialFiles(const fs::path& folder, const fs::path& nameInArchive) {
  std::error_code ignored;  // the copy tells
  fs::recursive_directory_iterator entry(folder, ignored);
  for (; !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
    if (entry->is_symlink() || entry->is_regular_file() || entry->is_directory()) continue;
    const fs::path name = nameInArchive / entry->path().lexically_relative(folder);
    throw ZIPError(ZIPError::Case::specialFile, wellFormedUTF8(name.native()));
  }
}

void refuseSpecialFiles(const TweakProtocol& item) {
  const fs::path payload = kPayloadFolder;
  if (const auto* collection = dynamic_cast<const TweakCollection*>(&item)) {
    for (const std::shared_ptr<TweakFile>& tweak : collection->manifest().tweaks()) {
      refuseSpecialFiles(tweak->url(), payload / "Tweaks" / tweak->id());
    }
  } else {
    refuseSpecialFiles(item.url(), payload);
  }
}

}  // namespace

std::vector<std::shared_ptr<TweakProtocol>> TweakManager::allTweaks() {
  std::vector<std::shared_ptr<TweakProtocol>> tweaks;
  const fs::path folder = TweaksDirectory::url();
  const FolderPointer entries(::opendir(folder.c_str()));
  if (entries == nullptr) return tweaks;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): only where threads share a stream
  while (const dirent* const entry = ::readdir(entries.get())) {
    const std::string_view name(&entry->d_name[0]);
    const Kind* const kind = kindOfID(name);
    if (kind == nullptr || isTemporaryName(name)) continue;
    try {
      tweaks.push_back(kind->at(folder / name));
    } catch (const std::exception&) {
      continue;  // left out, as documented
    }
  }
  return tweaks;
}

std::shared_ptr<TweakProtocol> TweakManager::tweakWithID(std::string_view id) {
  if (!isPlainComponent(id)) throw Error::unknownTweakType();
  return tweakAt(TweaksDirectory::url() / id);
}

std::shared_ptr<TweakProtocol> TweakManager::tweakAt(std::filesystem::path url) {
  const Kind* const kind =
      kindOfID((url.has_filename() ? url : url.parent_path()).filename().native());
  if (kind == nullptr) throw Error::unknownTweakType();
  return kind->at(std::move(url));
}

bool TweakManager::canHandle(const std::filesystem::path& url) {
  return kindOfArchive(url) != nullptr;
}

std::shared_ptr<TweakProtocol> TweakManager::decompressAt(const std::filesystem::path& url,
                                                          Progress* progress) {
  const Kind* const kind = kindOfArchive(url);
  if (kind == nullptr) throw Error::unknownTweakType();
  const TemporaryDirectory temporary(temporaryItemsParent());
  const fs::path unpacked = temporary.path() / newUUIDText();
  // What other programs put beside it, such as "__MACOSX", is no business of ours.
  ZIPArchive::unzipItem(url, unpacked, progress, {}, kPayloadFolder);
  return kind->handlePayloadAt(unpacked / kPayloadFolder);
}

std::filesystem::path TweakManager::export_(const TweakProtocol& tweak, Progress* progress) {
  const std::string name = archiveName(tweak.genericManifest().genericConfiguration().name(),
                                       tweak.id(), tweak.archiveExtension());
  TemporaryDirectory output(temporaryItemsParent());
  {
    const TemporaryDirectory temporary(temporaryItemsParent());
    const fs::path payload = temporary.path() / kPayloadFolder;
    const fs::path archive = temporary.path() / "Payload.zip";
    refuseSpecialFiles(tweak);
    tweak.preparePayloadIn(payload);
    ZIPArchive::zipItem(payload, archive, progress);
    moveItem(archive, output.path() / name);
  }
  return output.release() / name;
}

TweakManager::Error TweakManager::Error::unknownTweakType() {
  return {Case::unknownTweakType, {"tweak_manager.error.unknown_tweak_type", "Unknown tweak type"}};
}

}  // namespace tavlen
