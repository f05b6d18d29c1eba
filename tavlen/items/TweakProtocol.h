#pragma once

#include <compare>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/items/TweakDiffProtocol.h"
#include "tavlen/items/TweakManifest.h"

namespace tavlen {

class IPA;
struct TweakInfo;

/// A handle on one stored item: a tweak or a collection of tweaks.
///
/// It holds no document: every call reads the disk again, so two handles on one item agree. Each
/// kind offers, beside this, the static members that TweakManager chooses it by:
/// `compressedExtension`, isValidID(), at() and handlePayloadAt().
/// Threads: calls may run side by side.
class TweakProtocol {
 public:
  virtual ~TweakProtocol() = default;
  TweakProtocol(const TweakProtocol&) = delete;
  TweakProtocol& operator=(const TweakProtocol&) = delete;

  /// Where the item lies; without a slash at its end.
  const std::filesystem::path& url() const { return url_; }
  /// The last component of url().
  std::string id() const { return url_.filename().string(); }

  /// The manifest as it is on the disk now; errors as the kind's manifest().
  virtual TweakManifest genericManifest() const = 0;
  /// genericManifest().genericConfiguration(), at less cost: the whole document is checked, and
  /// only this is kept. Errors as genericManifest().
  virtual TweakConfiguration genericConfiguration() const = 0;
  /// The extension of the kind's archives, without the full stop.
  virtual std::string_view archiveExtension() const = 0;
  /// Says that this item was created, or deleted.
  virtual TweakDiff diffFor(GenericTweakDiffMode mode) = 0;
  /// Lays the item out in the folder `directory`, as archives hold it. Throws std::system_error.
  virtual void preparePayloadIn(const std::filesystem::path& directory) const = 0;
  /// Builds what the loader takes: a fresh folder "<UUID>.bundle" in the existing folder
  /// `directory`, one a tweak, by the "ob.js" in the folder `transpiler`. `tweakInfo` gets the URL
  /// that the icon will have once installed for the app `tweakInfo.bundleID`. Throws
  /// TweakError::bundleIDMismatch for a tweak of another app, what associatedIPA(),
  /// InfoManager::info() and TweakProcessor throw, and std::system_error.
  virtual void package(const std::filesystem::path& directory,
                       const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                       bool copyExecutables) const = 0;

  /// Whether the name contains `query`, as localizedCaseInsensitiveContains() tells; false where
  /// the manifest cannot be read.
  bool isShownInSearchFor(std::string_view query) const;
  /// Orders two items by their names, as localizedCaseInsensitiveCompare(). Throws what
  /// genericManifest() throws.
  std::weak_ordering compareTo(const TweakProtocol& other) const;
  /// The installed app that the item is for. Throws IPA::Error::notFound, and as
  /// genericManifest().
  std::shared_ptr<IPA> associatedIPA() const;

  /// Makes no tweak the app's active one, if that is this item. Errors are swallowed.
  void uninstall();
  /// uninstall(), then takes the item off the disk. Errors are swallowed, nothing is posted.
  void delete_();
  /// Takes the item off the disk, and nothing else: it leaves its folder in one step, so that a
  /// reader finds all of it or nothing, for a ".TemporaryItems" on the same volume, where it is
  /// removed. Of an item that is named by a symbolic link, the link goes. Throws std::system_error;
  /// the item is then as it was.
  void remove();

 protected:
  /// url() becomes `url` without what stands behind its last name: a slash, "." or "..".
  explicit TweakProtocol(std::filesystem::path url);

 private:
  std::filesystem::path url_;
};

}  // namespace tavlen
