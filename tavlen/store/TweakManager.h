#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/items/ListedItem.h"
#include "tavlen/items/TweakProtocol.h"
#include "tavlen/store/OpenedItem.h"

namespace tavlen {

class Progress;

/// The stored tweaks and collections as a whole. Keeps no state. Threads: any.
class TweakManager {
 public:
  enum class ErrorCase { unknownTweakType };
  class Error;

  TweakManager() = delete;

  /// What the tweaks directory holds, in the order of its listing. What cannot be opened is left
  /// out; empty where the directory cannot be read.
  static std::vector<std::shared_ptr<TweakProtocol>> allTweaks();
  /// allTweaks(), with what lists show of them: every document is read once.
  static std::vector<ListedItem> listedTweaks();
  /// Those of allTweaks() that have that name, with their manifests. Reads every document once.
  static std::vector<OpenedItem> openNamed(std::string_view name);

  /// The item of that identifier in the tweaks directory. Throws Error::unknownTweakType for an
  /// identifier that no kind accepts, or that is not one plain path component, and what the kind's
  /// at() throws.
  static std::shared_ptr<TweakProtocol> tweakWithID(std::string_view id);
  /// The item at `url`, of the kind that its last component tells. Errors as tweakWithID().
  static std::shared_ptr<TweakProtocol> tweakAt(std::filesystem::path url);
  /// As tweakWithID() and tweakAt(), with the manifest that was read.
  static OpenedItem openWithID(std::string_view id);
  static OpenedItem openAt(std::filesystem::path url);

  /// Whether `url` is named like an archive of one of the kinds.
  static bool canHandle(const std::filesystem::path& url);

  /// Imports an archive; announcing what came is the caller's. Throws Error::unknownTweakType,
  /// ZIPError, std::system_error, and what the kind's handlePayloadAt() throws.
  static std::shared_ptr<TweakProtocol> decompressAt(const std::filesystem::path& url,
                                                     Progress* progress = nullptr);

  /// Writes an archive, named after the item, into a fresh temporary folder beside the tweaks
  /// directory, and gives its path; file and folder are then the caller's to remove. Throws
  /// ZIPError, std::system_error, and what reading the manifest throws.
  static std::filesystem::path export_(const TweakProtocol& tweak, Progress* progress = nullptr);
  /// As export_(), of an item whose manifest has been read.
  static std::filesystem::path exportOpened(const OpenedItem& opened, Progress* progress = nullptr);
};

class TweakManager::Error : public CasedError<TweakManager::ErrorCase> {
 public:
  static Error unknownTweakType();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
