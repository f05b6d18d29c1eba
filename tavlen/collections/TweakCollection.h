#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/ListedItem.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

/// A handle on one collection file. A collection lists tweaks that are shown, shared and installed
/// together.
class TAVLEN_API TweakCollection : public TweakProtocol,
                                   public std::enable_shared_from_this<TweakCollection> {
 public:
  struct Manifest;
  struct Opened;
  struct Unpacked;
  struct Diff;

  /// The extension of archives of collections, without the full stop.
  static constexpr std::string_view compressedExtension = "tvxc";
  /// The suffix of the identifiers of stored collections.
  static constexpr std::string_view kIDSuffix = ".collection";

  /// Opens the file at `url` and reads it once to check it. Throws as manifest() does.
  static std::shared_ptr<TweakCollection> at(const std::filesystem::path& url);
  /// As at(), but also returns the manifest that was read. Throws as at() does.
  static Opened open(const std::filesystem::path& url);
  /// The collection in the file `url`, decoded from its bytes, which the caller has read. Opens no
  /// file. Throws DecodingError.
  static Opened opened(const std::filesystem::path& url, std::string_view document);
  /// As opened(), but keeps only the settings. Throws DecodingError.
  static ListedItem listed(std::string path, std::string_view document);
  /// A handle on the file `url`, which need not exist: for a broken item. Reads nothing.
  static std::shared_ptr<TweakCollection> handle(const std::filesystem::path& url);
  /// The path of the collection `id`, relative to the folder that contains it.
  static std::string documentOf(std::string_view id) { return std::string(id); }
  /// Creates a new collection without members in the tweaks directory. Posts nothing. Throws
  /// std::system_error.
  static std::shared_ptr<TweakCollection> create(std::string name, TweakColor color,
                                                 TweakGlyph glyph, std::string bundleID);
  /// Imports the unpacked folder `url`, which has the layout of preparePayloadIn(): moves the
  /// collection and its members into the tweaks directory under new identifiers. Posts nothing.
  /// Throws TweakError::missing, DecodingError, std::system_error, and what TweakFile::at() throws.
  /// Members that were moved before an error stay in the store.
  static std::shared_ptr<TweakCollection> handlePayloadAt(const std::filesystem::path& url);
  /// Opens the collection in such a folder. Stores and posts nothing. Throws as handlePayloadAt()
  /// does, but leaves out members that cannot be opened.
  static Unpacked openPayloadAt(const std::filesystem::path& url);

  /// Whether a stored item of that identifier is a collection.
  static bool isValidID(std::string_view text);
  /// An unused path for a new collection in the tweaks directory. Creates nothing.
  static std::filesystem::path uniqueTweakURL();

  /// Reads the file to check it. Throws what manifest() throws.
  void validate() const;

  /// Reads the file. Throws TweakError::missing if it does not exist, std::system_error if it
  /// cannot be read, and DecodingError.
  Manifest manifest() const;
  TweakManifest genericManifest() const override;
  TweakConfiguration genericConfiguration() const override;
  /// Replaces the file atomically, then posts the change unless tweakPoster() is silenced. Throws
  /// EncodingError and std::system_error, and then posts nothing.
  void setManifest(const Manifest& manifest);
  /// Reads the manifest, lets `change` edit it and stores it. If `change` throws, the exception
  /// passes through and nothing is stored. Throws as manifest() and setManifest() do.
  void updateManifest(const std::function<void(Manifest&)>& change);

  std::string_view archiveExtension() const override { return compressedExtension; }
  TweakDiff diffFor(GenericTweakDiffMode mode) override;
  void preparePayloadIn(const std::filesystem::path& directory) const override;
  void package(const std::filesystem::path& directory, const std::filesystem::path& transpiler,
               TweakInfo& tweakInfo, bool copyExecutables) const override;

 private:
  explicit TweakCollection(std::string path) : TweakProtocol(std::move(path)) {}
};

}  // namespace tavlen
