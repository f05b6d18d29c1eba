#pragma once

#include <compare>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/items/TweakDiffProtocol.h"
#include "tavlen/items/TweakManifest.h"

namespace tavlen {

class IPA;
struct TweakInfo;

/// A handle on one stored item: a tweak or a collection of tweaks.
///
/// It holds no document. Every call reads the disk again, so two handles on one item agree. Each
/// kind also has the static members by which TweakManager selects it: `compressedExtension`,
/// isValidID(), at() and handlePayloadAt().
/// Threads: calls may run concurrently.
class TAVLEN_API TweakProtocol {
 public:
  virtual ~TweakProtocol() = default;
  TweakProtocol(const TweakProtocol&) = delete;
  TweakProtocol& operator=(const TweakProtocol&) = delete;

  /// The path of the item, without a slash at its end.
  std::filesystem::path url() const { return path_; }
  /// The identifier: the last component of url().
  std::string id() const { return path_.substr(path_.rfind('/') + 1); }

  /// Reads the manifest. Throws as the kind's manifest() does.
  virtual TweakManifest genericManifest() const = 0;
  /// As genericManifest().genericConfiguration(), but cheaper: the whole document is checked, but
  /// only the settings are kept. Throws as genericManifest() does.
  virtual TweakConfiguration genericConfiguration() const = 0;
  /// The extension of the kind's archives, without the full stop.
  virtual std::string_view archiveExtension() const = 0;
  /// A diff which says that this item was created or deleted.
  virtual TweakDiff diffFor(GenericTweakDiffMode mode) = 0;
  /// Copies the item into the folder `directory`, in the layout of archives. Blocks, and cannot be
  /// cancelled. Throws std::system_error.
  virtual void preparePayloadIn(const std::filesystem::path& directory) const = 0;
  /// Builds the loader's input: for every tweak, a new folder "<UUID>.bundle" in the existing
  /// folder `directory`. Blocks, and cannot be cancelled. The code is translated by "ob.js" in the
  /// folder `transpiler`. `tweakInfo` receives the URL that the icon will have once installed for
  /// the app `tweakInfo.bundleID`. Throws TweakError::bundleIDMismatch for a tweak of another app,
  /// std::system_error, and what associatedIPA(), InfoManager::info() and TweakProcessor throw.
  virtual void package(const std::filesystem::path& directory,
                       const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                       bool copyExecutables) const = 0;

  /// Whether the name contains `query`, compared by localizedCaseInsensitiveContains(). False if
  /// the manifest cannot be read.
  bool isShownInSearchFor(std::string_view query) const;
  /// Compares the names by localizedCaseInsensitiveCompare(). Throws as genericManifest() does.
  std::weak_ordering compareTo(const TweakProtocol& other) const;
  /// The installed target app. Throws IPA::Error::notFound, and as genericManifest() does.
  std::shared_ptr<IPA> associatedIPA() const;

  /// Deactivates the item if it is the app's active one. Swallows errors.
  void uninstall();
  /// Calls uninstall(), then remove(). Swallows errors and posts nothing.
  void delete_();
  /// Deletes the item from the disk and does nothing else. The item is first renamed into a
  /// ".TemporaryItems" folder on the same volume, so that readers find all of it or nothing. If
  /// url() is a symbolic link, only the link is deleted. Throws std::system_error; the item is then
  /// unchanged.
  void remove();

 protected:
  /// url() becomes `path` without a slash, "." or ".." at its end.
  explicit TweakProtocol(std::string path);

  /// The text of url().
  const std::string& path() const { return path_; }

 private:
  /// A text, which costs a list of thousands less than a path does, with a copy of each component.
  std::string path_;
};

}  // namespace tavlen
