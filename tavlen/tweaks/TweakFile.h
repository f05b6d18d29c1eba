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
#include "tavlen/foundation/base/API.h"
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
class TAVLEN_API TweakFile : public TweakProtocol, public std::enable_shared_from_this<TweakFile> {
 public:
  /// The cases of Error.
  enum class ErrorCase { missing, notFound };
  class Error;
  struct Manifest;
  struct Opened;
  struct Diff;

  /// The extension of archives of tweaks, without the full stop.
  static constexpr std::string_view compressedExtension = "tvx";

  /// The names, in a tweak's folder, of the user's own icon, the script, and the folders of other
  /// files. Each of them may be missing.
  static constexpr const char* iconFile = "Icon.png";
  static constexpr const char* scriptFile = "script.objs";
  static constexpr const char* resourcesFolder = "Resources";
  static constexpr const char* executablesFolder = "Executables";

  /// Opens the folder at `url` and reads its manifest once to check it. Throws as validate() does.
  static std::shared_ptr<TweakFile> at(const std::filesystem::path& url);
  /// As at(), but also returns the manifest that was read. Throws as at() does.
  static Opened open(const std::filesystem::path& url);
  /// The tweak in the folder `url`, decoded from the bytes of its document, which the caller has
  /// read. Opens no file. Throws DecodingError.
  static Opened opened(const std::filesystem::path& url, std::string_view document);
  /// As opened(), but keeps only the settings. Throws DecodingError.
  static ListedItem listed(std::string path, std::string_view document);
  /// A handle on the folder `url`, which need not exist: for a broken item. Reads nothing.
  static std::shared_ptr<TweakFile> handle(const std::filesystem::path& url);
  /// The path of the document of the tweak `id`, relative to the folder that contains the tweak.
  static std::string documentOf(std::string_view id);
  /// Creates a new tweak in the tweaks directory. Posts no notification; the caller announces the
  /// tweak after adding it to its UI. Throws std::system_error; a part of the folder may then stay
  /// under a name that lists leave out, until a later tweak is made.
  static std::shared_ptr<TweakFile> create(std::string name, TweakColor color, TweakGlyph glyph,
                                           std::string bundleID);
  /// Imports the unpacked tweak folder `url`: moves it into the tweaks directory, which is created
  /// if it is missing, under a new identifier. Throws Error::notFound if `url` is not a folder or
  /// is a symbolic link, std::system_error, and what validate() throws; nothing is then left in the
  /// store.
  static std::shared_ptr<TweakFile> handlePayloadAt(const std::filesystem::path& url);

  /// Replaces the whole tweak by the tweak folder `payload` of the same volume, which then holds
  /// the old tweak, and posts the change of the manifest and of the icon. The two are exchanged in
  /// one step. Where the volume cannot do that, readers may miss the tweak for a moment, and
  /// `payload` has a namesake with the extension "old" if a crash ends the process just then.
  /// Throws std::system_error and what validate() throws; the tweak is then unchanged.
  void replaceBy(const std::filesystem::path& payload);

  /// Whether a stored item of that identifier is a tweak: the identifier contains no full stop.
  static bool isValidID(std::string_view text);
  /// An unused path for a new tweak in the tweaks directory. Creates nothing.
  static std::filesystem::path uniqueTweakURL();

  /// For callers that combine several edits into one step. No function of this class locks it. Lock
  /// order: before tweakPoster()'s lock.
  mutable std::recursive_mutex recursiveLock;

  /// The folder "Resources", with a slash at its end. It need not exist.
  std::filesystem::path resourcesDir() const;
  /// The folder "Executables", with a slash at its end. It need not exist.
  std::filesystem::path executablesDir() const;

  /// Reads the manifest to check it. Throws Error::notFound unless url() is a folder, and what
  /// manifest() throws.
  void validate() const;

  /// Reads Manifest.json. Throws Error::missing if the file does not exist, std::system_error if it
  /// cannot be read, and DecodingError.
  Manifest manifest() const;
  TweakManifest genericManifest() const override;
  TweakConfiguration genericConfiguration() const override;
  /// Replaces Manifest.json atomically, then posts the change unless tweakPoster() is silenced.
  /// Throws EncodingError and std::system_error, and then posts nothing.
  void setManifest(const Manifest& manifest);
  /// Reads the manifest, lets `change` edit it and stores it. If `change` throws, the exception
  /// passes through and nothing is stored. Throws as manifest() and setManifest() do.
  void updateManifest(const std::function<void(Manifest&)>& change);

  /// The user's own icon. Returns nothing if the file is missing, is larger than 64 MiB or holds no
  /// image.
  std::optional<Image> customIcon() const;
  /// Stores `icon` as PNG, or removes the file if there is no icon. Swallows errors. Posts the
  /// change even after an error, unless tweakPoster() is silenced.
  void setCustomIcon(const std::optional<Image>& icon);
  /// As setCustomIcon(), but throws std::system_error, and then posts nothing. Removing a missing
  /// file is not an error.
  void writeCustomIcon(const std::optional<Image>& icon);
  /// The user's own icon, or else the target app's. Throws as manifest(), IPA::findWithBundleID()
  /// and InfoManager::icon() do.
  Image displayedIcon() const;

  /// The user's script; empty if it is missing or cannot be read.
  std::string script() const;
  /// The user's script, or nothing if the file does not exist. Throws std::system_error if it
  /// cannot be read.
  std::optional<std::string> readScript() const;
  /// Stores the script. Swallows errors and posts nothing.
  void setScript(std::string_view text);
  /// As setScript(), but throws std::system_error: EILSEQ for text that is not UTF-8.
  void writeScript(std::string_view text);

  /// A new override of `kind`, with the target app's current values. Throws as manifest(),
  /// associatedIPA() and InfoManager::info() do.
  Override makeOverride(const OverrideKindInfo& kind) const;

  /// An editor for the tweak's hook of that identity, which need not exist.
  HookManager managerFor(MethodIdentity identity);

  std::string_view archiveExtension() const override { return compressedExtension; }
  TweakDiff diffFor(GenericTweakDiffMode mode) override;
  void preparePayloadIn(const std::filesystem::path& directory) const override;
  void package(const std::filesystem::path& directory, const std::filesystem::path& transpiler,
               TweakInfo& tweakInfo, bool copyExecutables) const override;

 private:
  explicit TweakFile(std::string path) : TweakProtocol(std::move(path)) {}

  /// The bytes of Manifest.json. Throws as manifest(), except for DecodingError.
  std::string document() const;
  /// As document(), but throws Error::notFound unless url() is a folder.
  std::string documentInFolder() const;
};

/// An error of a stored tweak.
class TAVLEN_API TweakFile::Error : public CasedError<TweakFile::ErrorCase> {
 public:
  /// The file named `file` is missing.
  static Error missing(std::string file);
  /// No tweak folder exists at that place.
  static Error notFound();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
