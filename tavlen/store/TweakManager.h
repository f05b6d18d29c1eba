#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/items/ListedItem.h"
#include "tavlen/items/TweakProtocol.h"
#include "tavlen/store/BrokenItem.h"
#include "tavlen/store/FoundItems.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen {

class Progress;

/// Lists, opens, imports and exports stored tweaks and collections. Stateless. Threads: any.
class TAVLEN_API TweakManager {
 public:
  /// The cases of Error.
  enum class ErrorCase { unknownTweakType };
  class Error;

  TweakManager() = delete;

  /// The items in the tweaks directory, in directory order. Blocks while it opens each item, and
  /// cannot be cancelled, like the other functions that list or find items. Items that cannot be
  /// opened are left out. Empty if the directory cannot be read.
  static std::vector<std::shared_ptr<TweakProtocol>> allTweaks();
  /// As allTweaks(), but also returns the items' settings. Reads every document once.
  static std::vector<ListedItem> listedTweaks();
  /// As listedTweaks(), and appends to `broken` the items that it leaves out: a tweak's folder, or
  /// what lies where a collection does.
  static std::vector<ListedItem> listedTweaks(std::vector<BrokenItem>& broken);
  /// The broken item with that identifier; nothing if there is no such item, or it can be opened.
  static std::optional<BrokenItem> brokenWithID(std::string_view id);
  /// The items that `text` names. The first of these that exist count: the item with that
  /// identifier; that identifier in another case; the items with that name; those whose identifier
  /// begins with `text`, in any case, if it has at least kShortestPrefix characters. A broken item
  /// has no name. Reads each document at most once. Threads: any.
  static FoundItems find(std::string_view text);
  /// The fewest characters that stand for an identifier that begins with them.
  static constexpr std::size_t kShortestPrefix = 4;

  /// The item with that identifier in the tweaks directory. Throws Error::unknownTweakType if no
  /// kind accepts the identifier or if it is not a plain path component, and what the kind's at()
  /// throws.
  static std::shared_ptr<TweakProtocol> tweakWithID(std::string_view id);
  /// The item at `url`. The last component determines the kind. Throws as tweakWithID() does.
  static std::shared_ptr<TweakProtocol> tweakAt(std::filesystem::path url);
  /// As tweakWithID(), but also returns the manifest that was read.
  static OpenedItem openWithID(std::string_view id);
  /// As tweakAt(), but also returns the manifest that was read.
  static OpenedItem openAt(std::filesystem::path url);

  /// Whether `url` has the extension of an archive of tweaks or collections.
  static bool canHandle(const std::filesystem::path& url);

  /// Imports an archive and returns the new item. Posts nothing; the caller announces the item.
  /// Blocks. `progress`, which may be null, reports and cancels unpacking. Throws
  /// Error::unknownTweakType, ZIPError, std::system_error, and what the kind's handlePayloadAt()
  /// throws.
  static std::shared_ptr<TweakProtocol> decompressAt(const std::filesystem::path& url,
                                                     Progress* progress = nullptr);

  /// Unpacks the archive of a tweak into the new folder `folder`, and opens the tweak there. Stores
  /// and posts nothing. Blocks. `progress`, which may be null, reports and cancels unpacking.
  /// Throws Error::unknownTweakType for other archives, and as decompressAt() and TweakFile::open()
  /// do.
  static TweakFile::Opened openTweakArchive(const std::filesystem::path& url,
                                            const std::filesystem::path& folder,
                                            Progress* progress = nullptr);
  /// The same for the archive of a collection; opening its members cannot be cancelled. Throws as
  /// TweakCollection::openPayloadAt() does.
  static TweakCollection::Unpacked openCollectionArchive(const std::filesystem::path& url,
                                                         const std::filesystem::path& folder,
                                                         Progress* progress = nullptr);

  /// Writes an archive named after the item into a new temporary folder next to the tweaks
  /// directory, and returns the archive's path. The caller removes the archive and its folder.
  /// Blocks; packs on a few threads of its own, which have ended when it returns or throws.
  /// `progress`, which may be null, reports and cancels packing. Throws ZIPError,
  /// std::system_error, std::runtime_error for refusedEntries(), and what reading the manifest
  /// throws.
  static std::filesystem::path export_(const TweakProtocol& tweak, Progress* progress = nullptr);
  /// As export_(), but uses what has been read, and leaves files in the empty folder `folder`,
  /// which the caller removes. The archive of a collection is that of a copy with only `members`,
  /// see TweakCollection::Opened::preparePayloadIn(); so it can be imported even if others are
  /// missing. For a tweak, `members` must be empty. Throws as export_() does.
  static std::filesystem::path exportOpened(const OpenedItem& opened,
                                            std::span<const TweakFile::Opened> members,
                                            const std::filesystem::path& folder,
                                            Progress* progress = nullptr);
};

/// An error of the store.
class TAVLEN_API TweakManager::Error : public CasedError<TweakManager::ErrorCase> {
 public:
  /// The name is neither that of a tweak nor that of a collection.
  static Error unknownTweakType();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
