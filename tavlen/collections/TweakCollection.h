#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/items/ListedItem.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

/// A handle on one collection file, which names tweaks that are shown, shared and installed
/// together.
class TweakCollection : public TweakProtocol, public std::enable_shared_from_this<TweakCollection> {
 public:
  struct Manifest;
  struct Opened;
  struct Diff;

  /// Of exported collections.
  static constexpr std::string_view compressedExtension = "tvxc";
  /// What the names of stored collections end in.
  static constexpr std::string_view kIDSuffix = ".collection";

  /// Opens the file at `url` and reads it once, to check it. Errors as manifest()'s.
  static std::shared_ptr<TweakCollection> at(std::filesystem::path url);
  /// at(), with the manifest that it has read. Errors as at()'s.
  static Opened open(std::filesystem::path url);
  /// The collection in the file `url`, whose bytes the caller has read; no file is opened. Throws
  /// DecodingError.
  static Opened opened(std::filesystem::path url, std::string_view document);
  /// As opened(), with the settings alone.
  static ListedItem listed(std::filesystem::path url, std::string_view document);
  /// The path of the collection `id`, relative to the folder that it lies in.
  static std::string documentOf(std::string_view id) { return std::string(id); }
  /// Makes a new collection without members in the tweaks directory. Posts nothing. Throws
  /// std::system_error.
  static std::shared_ptr<TweakCollection> create(std::string name, TweakColor color,
                                                 TweakGlyph glyph, std::string bundleID);
  /// Takes in the unpacked folder `url`, as preparePayloadIn() makes it: the collection and its
  /// members move into the tweaks directory, under new identifiers. Posts nothing. Throws
  /// TweakError::missing, DecodingError, std::system_error, and what TweakFile::at() throws; what
  /// was moved before an error stays.
  static std::shared_ptr<TweakCollection> handlePayloadAt(const std::filesystem::path& url);

  /// Whether a stored item of that identifier would be a collection.
  static bool isValidID(std::string_view text);
  /// A place for a new collection.
  static std::filesystem::path uniqueTweakURL();

  /// Throws what manifest() throws.
  void validate() const;

  /// Reads the file. Throws TweakError::missing when it is not there; DecodingError, and
  /// std::system_error where it cannot be read, pass through.
  Manifest manifest() const;
  TweakManifest genericManifest() const override;
  TweakConfiguration genericConfiguration() const override;
  /// Replaces the file whole or not at all, then posts the change unless tweakPoster() is silenced.
  /// Throws EncodingError and std::system_error, and posts nothing then.
  void setManifest(const Manifest& manifest);
  /// Reads the manifest, lets `change` edit it and writes it back; what `change` throws stops that.
  void updateManifest(const std::function<void(Manifest&)>& change);

  std::string_view archiveExtension() const override { return compressedExtension; }
  TweakDiff diffFor(GenericTweakDiffMode mode) override;
  void preparePayloadIn(const std::filesystem::path& directory) const override;
  void package(const std::filesystem::path& directory, const std::filesystem::path& transpiler,
               TweakInfo& tweakInfo, bool copyExecutables) const override;

 private:
  explicit TweakCollection(std::filesystem::path url) : TweakProtocol(std::move(url)) {}
};

}  // namespace tavlen
