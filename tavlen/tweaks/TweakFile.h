#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/items/ListedItem.h"
#include "tavlen/items/TweakColor.h"
#include "tavlen/items/TweakGlyph.h"
#include "tavlen/items/TweakProtocol.h"

namespace tavlen {

class HookManager;
struct MethodIdentity;

/// A handle on one tweak folder.
class TweakFile : public TweakProtocol, public std::enable_shared_from_this<TweakFile> {
 public:
  enum class ErrorCase { missing, notFound };
  class Error;
  struct Manifest;
  struct Opened;
  struct Diff;

  /// Of exported tweaks.
  static constexpr std::string_view compressedExtension = "tvx";

  /// Opens the folder at `url` and reads its manifest once, to check it. Errors as validate()'s.
  static std::shared_ptr<TweakFile> at(std::filesystem::path url);
  /// at(), with the manifest that it has read. Errors as at()'s.
  static Opened open(std::filesystem::path url);
  /// The tweak in the folder `url`, whose document's bytes the caller has read; no file is opened.
  /// Throws DecodingError.
  static Opened opened(std::filesystem::path url, std::string_view document);
  /// As opened(), with the settings alone.
  static ListedItem listed(std::filesystem::path url, std::string_view document);
  /// The path of the document of the tweak `id`, relative to the folder that the tweak lies in.
  static std::string documentOf(std::string_view id);
  /// Makes a new tweak in the tweaks directory. Posts nothing: who adds it to what is shown
  /// announces it. Throws std::system_error; a part of the folder may then stay under a name that
  /// lists leave out, until a later tweak is made.
  static std::shared_ptr<TweakFile> create(std::string name, TweakColor color, TweakGlyph glyph,
                                           std::string bundleID);
  /// Takes in the unpacked tweak folder `url`: it moves into the tweaks directory, which is made
  /// where it is missing, under a new identifier. Throws Error::notFound where there is no folder
  /// or a link to one, what validate() throws, and std::system_error; nothing is left in the store
  /// then.
  static std::shared_ptr<TweakFile> handlePayloadAt(const std::filesystem::path& url);

  /// Whether a stored item of that identifier would be a tweak: there is no full stop in it.
  static bool isValidID(std::string_view text);
  /// A place for a new tweak.
  static std::filesystem::path uniqueTweakURL();

  /// For callers that make several edits as one step; no call of this class takes it. To be taken
  /// before tweakPoster()'s.
  mutable std::recursive_mutex recursiveLock;

  std::filesystem::path resourcesDir() const;
  std::filesystem::path executablesDir() const;

  /// Throws Error::notFound unless a folder stands at url(), and what manifest() throws.
  void validate() const;

  /// Reads Manifest.json. Throws Error::missing when it is not there; DecodingError, and
  /// std::system_error where the file cannot be read, pass through.
  Manifest manifest() const;
  TweakManifest genericManifest() const override;
  TweakConfiguration genericConfiguration() const override;
  /// Replaces Manifest.json whole or not at all, then posts the change unless tweakPoster() is
  /// silenced. Throws EncodingError and std::system_error, and posts nothing then.
  void setManifest(const Manifest& manifest);
  /// Reads the manifest, lets `change` edit it and writes it back; what `change` throws stops that.
  void updateManifest(const std::function<void(Manifest&)>& change);

  /// The user's own icon; none where there is no file, no image in it, or more than 64 MiB.
  std::optional<Image> customIcon() const;
  /// Stores `icon` as PNG, or removes the file. Errors are swallowed; posts in every case, unless
  /// tweakPoster() is silenced.
  void setCustomIcon(const std::optional<Image>& icon);
  /// As setCustomIcon(), but throws std::system_error, and posts nothing then. Removing a file that
  /// is not there is no error.
  void writeCustomIcon(const std::optional<Image>& icon);
  /// The user's own icon, or else the target app's. Throws as manifest(), IPA::findWithBundleID()
  /// and InfoManager::icon().
  Image displayedIcon() const;

  /// The user's script; empty when it cannot be read.
  std::string script() const;
  /// The user's script, or nothing when there is none. Throws std::system_error where it is there
  /// and cannot be read.
  std::optional<std::string> readScript() const;
  /// Stores the script. Errors are swallowed; nothing is posted.
  void setScript(std::string_view text);
  /// As setScript(), but throws std::system_error, EILSEQ for text that is not UTF-8.
  void writeScript(std::string_view text);

  /// A new override of `kind`, made of the target app's current values. Throws as manifest(),
  /// associatedIPA() and InfoManager::info().
  Override makeOverride(const OverrideKindInfo& kind) const;

  /// The editor of the tweak's hook of that identity, which need not be there.
  HookManager managerFor(MethodIdentity identity);

  std::string_view archiveExtension() const override { return compressedExtension; }
  TweakDiff diffFor(GenericTweakDiffMode mode) override;
  void preparePayloadIn(const std::filesystem::path& directory) const override;
  void package(const std::filesystem::path& directory, const std::filesystem::path& transpiler,
               TweakInfo& tweakInfo, bool copyExecutables) const override;

 private:
  explicit TweakFile(std::filesystem::path url) : TweakProtocol(std::move(url)) {}

  /// The bytes of Manifest.json. Throws as manifest(), but for DecodingError.
  std::string document() const;
  /// The same, but Error::notFound unless a folder stands at url().
  std::string documentInFolder() const;
};

class TweakFile::Error : public CasedError<TweakFile::ErrorCase> {
 public:
  /// `file` is the name of the file that is missing.
  static Error missing(std::string file);
  static Error notFound();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
