#include "tavlen/tweaks/TweakFile.h"

#include <cerrno>
#include <exception>
#include <system_error>
#include <tuple>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Discarded.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/ExclusiveRename.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/items/StoredDocument.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFileDiff.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

constexpr const char* kManifestFile = "Manifest.json";

/// A manifest for callers that need only its settings: the rest is checked and discarded.
struct ManifestSummary {
  TweakFile::Manifest::Configuration configuration;
  Discarded<decltype(TweakFile::Manifest::_overrides)> overrides;
  Discarded<decltype(TweakFile::Manifest::_hooks)> hooks;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("configuration", &ManifestSummary::configuration),
                      requiredField("overrides", &ManifestSummary::overrides),
                      requiredField("hooks", &ManifestSummary::hooks)};
  }
};

void store(const fs::path& file, std::string_view contents) {
  replaceFile(DeviceRoot::shared(), file, contents);
}

void storeIcon(const fs::path& folder, const std::optional<Image>& icon) {
  if (icon) return store(folder / TweakFile::iconFile, icon->pngData());
  const fs::path file = DeviceRoot::shared().followParent(folder / TweakFile::iconFile);
  std::error_code error;
  fs::remove(file, error);
  if (error) throw std::system_error(error, file.string());
}

void post(TweakDiff diff) {
  tweakPoster().performNotificationPostingOperation(
      [&] { postTweakDiffs(NotificationCenter::default_(), {std::move(diff)}); });
}

/// Syncs the user's own documents before the tweak is moved into the store. Other files of a tweak
/// may be large, and can be imported again.
void syncDocuments(const std::filesystem::path& folder) {
  const DeviceRoot root = DeviceRoot::shared();
  for (const char* name : {kManifestFile, TweakFile::scriptFile, TweakFile::iconFile}) {
    const fs::path file = folder / name;
    if (fs::is_regular_file(root.status(file))) root.open(file, kOpenToRead).sync(file);
  }
  syncFolder(folder);
}

/// Exchanges two folders of one volume.
void exchange(const fs::path& payload, const fs::path& folder) {
  const int error = exchangeEntries(payload.c_str(), folder.c_str());
  if (error == 0) return;
  if (error != ENOTSUP) throw std::system_error(error, std::generic_category(), folder.string());
  fs::path old = payload;
  old += ".old";
  fs::rename(folder, old);
  try {
    fs::rename(payload, folder);
  } catch (const std::system_error&) {
    fs::rename(old, folder);
    throw;
  }
  fs::rename(old, payload);
}

}  // namespace

std::shared_ptr<TweakFile> TweakFile::at(const std::filesystem::path& url) {
  std::shared_ptr<TweakFile> tweak(new TweakFile(url));
  tweak->validate();
  return tweak;
}

TweakFile::Opened TweakFile::open(const std::filesystem::path& url) {
  std::shared_ptr<TweakFile> tweak(new TweakFile(url));
  IgnoredKeys ignored;
  auto manifest = decodeDocument<Manifest>(tweak->documentInFolder(), ignored);
  return {std::move(tweak), std::move(manifest), std::move(ignored)};
}

TweakFile::Opened TweakFile::opened(const std::filesystem::path& url, std::string_view document) {
  IgnoredKeys ignored;
  auto manifest = decodeDocument<Manifest>(document, ignored);
  return {std::shared_ptr<TweakFile>(new TweakFile(url)), std::move(manifest), std::move(ignored)};
}

ListedItem TweakFile::listed(std::string path, std::string_view document) {
  TweakConfiguration configuration(decodeDocument<ManifestSummary>(document).configuration);
  return {std::shared_ptr<TweakFile>(new TweakFile(std::move(path))), std::move(configuration)};
}

std::shared_ptr<TweakFile> TweakFile::handle(const std::filesystem::path& url) {
  return std::shared_ptr<TweakFile>(new TweakFile(url));
}

std::string TweakFile::documentOf(std::string_view id) {
  std::string path;
  path.reserve(id.size() + 1 + std::string_view(kManifestFile).size());
  return path.append(id).append("/").append(kManifestFile);
}

std::shared_ptr<TweakFile> TweakFile::create(std::string name, TweakColor color, TweakGlyph glyph,
                                             std::string bundleID) {
  std::shared_ptr<TweakFile> tweak(new TweakFile(uniqueTweakURL()));
  tweakPoster().performWithoutNotifications([&] {
    // Under a name that lists leave out, so that a crash leaves no half tweak among the others.
    const fs::path folder = TweaksDirectory::create();
    sweepTemporaryFiles(FileDescriptor::open(folder, O_RDONLY | O_DIRECTORY).get());
    const fs::path draft = folder / temporaryName();
    fs::create_directory(draft);
    fs::create_directory(draft / resourcesFolder);
    fs::create_directory(draft / executablesFolder);
    Manifest manifest;
    manifest.configuration = {std::move(name), color, std::move(bundleID), std::move(glyph)};
    store(draft / kManifestFile, encodeDocument(manifest));
    fs::rename(draft, tweak->url());
    syncFolder(folder);
    tweak->validate();
  });
  return tweak;
}

std::shared_ptr<TweakFile> TweakFile::handlePayloadAt(const std::filesystem::path& url) {
  // Check the folder before moving it, so that nothing invalid enters the store. Moving a symbolic
  // link would put into the store a reference to content elsewhere.
  const std::shared_ptr<TweakFile> payload(new TweakFile(url));
  std::error_code ignored;
  if (fs::is_symlink(payload->url(), ignored)) throw Error::notFound();
  payload->validate();
  syncDocuments(payload->url());
  TweaksDirectory::create();
  std::shared_ptr<TweakFile> tweak(new TweakFile(uniqueTweakURL()));
  moveItem(payload->url(), tweak->url());
  return tweak;
}

void TweakFile::replaceBy(const fs::path& payload) {
  handle(payload)->validate();
  syncDocuments(payload);
  const fs::path folder = canonical(DeviceRoot::shared(), url());
  exchange(payload, folder);
  syncFolder(folder.parent_path());
  post(std::make_shared<Diff>(shared_from_this(), Diff::UpdateManifest()));
  post(std::make_shared<Diff>(shared_from_this(), Diff::UpdateIcon()));
}

bool TweakFile::isValidID(std::string_view text) { return text.find('.') == text.npos; }

std::filesystem::path TweakFile::uniqueTweakURL() { return TweaksDirectory::uniqueURL(); }

std::filesystem::path TweakFile::resourcesDir() const { return url() / resourcesFolder / ""; }

std::filesystem::path TweakFile::executablesDir() const { return url() / executablesFolder / ""; }

std::string TweakFile::documentInFolder() const {
  try {
    return document();
  } catch (const std::exception&) {
    // Checked only after a failure, which saves a system call for every intact tweak.
    if (!fs::is_directory(DeviceRoot::shared().status(url()))) throw Error::notFound();
    throw;
  }
}

void TweakFile::validate() const { decodeDocument<ManifestSummary>(documentInFolder()); }

std::string TweakFile::document() const {
  try {
    return readDocument(openedFile(DeviceRoot::shared(), path() + "/" + kManifestFile));
  } catch (const std::system_error& error) {
    const bool isMissing = error.code() == std::errc::no_such_file_or_directory ||
                           error.code() == std::errc::not_a_directory;
    if (isMissing) throw Error::missing(kManifestFile);
    throw;
  }
}

TweakFile::Manifest TweakFile::manifest() const { return decodeDocument<Manifest>(document()); }

TweakManifest TweakFile::genericManifest() const { return TweakManifest(manifest()); }

TweakConfiguration TweakFile::genericConfiguration() const {
  return TweakConfiguration(decodeDocument<ManifestSummary>(document()).configuration);
}

void TweakFile::setManifest(const Manifest& manifest) {
  store(url() / kManifestFile, encodeDocument(manifest));
  post(std::make_shared<Diff>(shared_from_this(), Diff::UpdateManifest()));
}

void TweakFile::updateManifest(const std::function<void(Manifest&)>& change) {
  Manifest changed = manifest();
  change(changed);
  setManifest(changed);
}

std::optional<Image> TweakFile::customIcon() const {
  try {
    const std::optional<std::string> bytes =
        readFileUpTo(openedFile(DeviceRoot::shared(), url() / iconFile), limits::kIconFileBytes);
    return bytes ? Image::decode(*bytes) : std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void TweakFile::setCustomIcon(const std::optional<Image>& icon) {
  try {
    storeIcon(url(), icon);
  } catch (const std::exception&) {
    // As documented; callers that need the error use writeCustomIcon().
  }
  post(std::make_shared<Diff>(shared_from_this(), Diff::UpdateIcon()));
}

void TweakFile::writeCustomIcon(const std::optional<Image>& icon) {
  storeIcon(url(), icon);
  post(std::make_shared<Diff>(shared_from_this(), Diff::UpdateIcon()));
}

Image TweakFile::displayedIcon() const {
  if (std::optional<Image> icon = customIcon()) return std::move(*icon);
  return associatedIPA()->infoManager().icon();
}

TweakDiff TweakFile::diffFor(GenericTweakDiffMode mode) {
  if (mode == GenericTweakDiffMode::delete_) {
    return std::make_shared<Diff>(shared_from_this(), Diff::Delete());
  }
  return std::make_shared<Diff>(shared_from_this(), Diff::Create());
}

void TweakFile::preparePayloadIn(const std::filesystem::path& directory) const {
  // If url() is a symbolic link, copy the folder that it refers to.
  copyItem(canonical(DeviceRoot::shared(), url()), directory, isTemporaryName);
}

std::string TweakFile::script() const {
  try {
    return readScript().value_or(std::string());
  } catch (const std::exception&) {
    return {};
  }
}

std::optional<std::string> TweakFile::readScript() const {
  const DeviceRoot root = DeviceRoot::shared();
  const fs::path file = url() / scriptFile;
  if (!isTaken(root.followParent(file))) return std::nullopt;
  return readText(openedFile(root, file));
}

void TweakFile::setScript(std::string_view text) {
  try {
    writeScript(text);
  } catch (const std::exception&) {
    // As documented; callers that need the error use writeScript().
  }
}

void TweakFile::writeScript(std::string_view text) {
  const fs::path file = url() / scriptFile;
  // readScript() would reject such a file.
  if (!isValidUTF8(text)) throw std::system_error(EILSEQ, std::generic_category(), file.string());
  store(file, text);
}

Override TweakFile::makeOverride(const OverrideKindInfo& kind) const {
  return kind.withInfo(associatedIPA()->infoManager().info());
}

TweakFile::Error TweakFile::Error::missing(std::string file) {
  return {Case::missing, {"tweak_file.error.missing", "Missing %@"}, {std::move(file)}};
}

TweakFile::Error TweakFile::Error::notFound() {
  return {Case::notFound, {"tweak_file.error.not_found", "Not found"}};
}

}  // namespace tavlen
