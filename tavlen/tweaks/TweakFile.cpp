#include "tavlen/tweaks/TweakFile.h"

#include <cerrno>
#include <exception>
#include <system_error>
#include <tuple>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/coding/Discarded.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
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
constexpr const char* kIconFile = "Icon.png";
constexpr const char* kScriptFile = "script.objs";
constexpr const char* kResourcesFolder = "Resources";
constexpr const char* kExecutablesFolder = "Executables";

/// What a manifest is checked as where only its settings are kept.
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

/// Writes go where the device's links lead, so that none leaves a device tree.
void store(const fs::path& file, std::string_view contents) {
  replaceFile(DeviceRoot::shared().follow(file), contents);
}

void storeIcon(const fs::path& folder, const std::optional<Image>& icon) {
  if (icon) return store(folder / kIconFile, icon->pngData());
  const fs::path file = DeviceRoot::shared().follow(folder) / kIconFile;
  std::error_code error;
  fs::remove(file, error);
  if (error) throw std::system_error(error, file.string());
}

void post(TweakDiff diff) {
  tweakPoster().performNotificationPostingOperation(
      [&] { postTweakDiffs(NotificationCenter::default_(), {std::move(diff)}); });
}

/// What the user wrote is on the disk before it has its place in the store. What a tweak carries
/// beside it may be large, and can be imported again.
void syncDocuments(const std::filesystem::path& folder) {
  for (const char* name : {kManifestFile, kScriptFile, kIconFile}) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(folder / name, ignored)) syncFile(folder / name);
  }
  syncFolder(folder);
}

}  // namespace

std::shared_ptr<TweakFile> TweakFile::at(std::filesystem::path url) {
  std::shared_ptr<TweakFile> tweak(new TweakFile(std::move(url)));
  tweak->validate();
  return tweak;
}

TweakFile::Opened TweakFile::open(std::filesystem::path url) {
  std::shared_ptr<TweakFile> tweak(new TweakFile(std::move(url)));
  auto manifest = decodeDocument<Manifest>(tweak->documentInFolder());
  return {std::move(tweak), std::move(manifest)};
}

TweakFile::Opened TweakFile::opened(std::filesystem::path url, std::string_view document) {
  auto manifest = decodeDocument<Manifest>(document);
  return {std::shared_ptr<TweakFile>(new TweakFile(std::move(url))), std::move(manifest)};
}

ListedItem TweakFile::listed(std::filesystem::path url, std::string_view document) {
  TweakConfiguration configuration(decodeDocument<ManifestSummary>(document).configuration);
  return {std::shared_ptr<TweakFile>(new TweakFile(std::move(url))), std::move(configuration)};
}

std::string TweakFile::documentOf(std::string_view id) {
  return std::string(id).append("/").append(kManifestFile);
}

std::shared_ptr<TweakFile> TweakFile::create(std::string name, TweakColor color, TweakGlyph glyph,
                                             std::string bundleID) {
  std::shared_ptr<TweakFile> tweak(new TweakFile(uniqueTweakURL()));
  tweakPoster().performWithoutNotifications([&] {
    std::filesystem::create_directories(tweak->url());
    std::filesystem::create_directory(tweak->resourcesDir());
    std::filesystem::create_directory(tweak->executablesDir());
    Manifest manifest;
    manifest.configuration = {std::move(name), color, std::move(bundleID), std::move(glyph)};
    tweak->setManifest(manifest);
    syncFolder(tweak->url().parent_path());
    tweak->validate();
  });
  return tweak;
}

std::shared_ptr<TweakFile> TweakFile::handlePayloadAt(const std::filesystem::path& url) {
  // Looked at where it lies, so that nothing broken comes into the store. A link would put there
  // what lies elsewhere.
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

bool TweakFile::isValidID(std::string_view text) { return text.find('.') == text.npos; }

std::filesystem::path TweakFile::uniqueTweakURL() { return TweaksDirectory::uniqueURL(); }

// A slash at the end, as folders are written.
std::filesystem::path TweakFile::resourcesDir() const { return url() / kResourcesFolder / ""; }

std::filesystem::path TweakFile::executablesDir() const { return url() / kExecutablesFolder / ""; }

std::string TweakFile::documentInFolder() const {
  try {
    return document();
  } catch (const std::exception&) {
    // Asked only now, as opening a tweak that is well need not ask.
    std::error_code ignored;
    if (!fs::is_directory(url(), ignored)) throw Error::notFound();
    throw;
  }
}

void TweakFile::validate() const { decodeDocument<ManifestSummary>(documentInFolder()); }

std::string TweakFile::document() const {
  try {
    return readDocument(url().native() + "/" + kManifestFile);
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
        readFileUpTo(url() / kIconFile, limits::kIconFileBytes);
    return bytes ? Image::decode(*bytes) : std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void TweakFile::setCustomIcon(const std::optional<Image>& icon) {
  try {
    storeIcon(url(), icon);
  } catch (const std::exception&) {
    // As documented; writeCustomIcon() tells.
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
  // A folder that is named by a link goes along, not the link.
  std::error_code error;
  const fs::path folder = fs::canonical(url(), error);
  if (error) throw std::system_error(error, url().string());
  copyItem(folder, directory, isTemporaryName);
}

std::string TweakFile::script() const {
  try {
    return readScript().value_or(std::string());
  } catch (const std::exception&) {
    return {};
  }
}

std::optional<std::string> TweakFile::readScript() const {
  const fs::path file = url() / kScriptFile;
  std::error_code ignored;
  if (fs::symlink_status(file, ignored).type() == fs::file_type::not_found) return std::nullopt;
  return readText(file);
}

void TweakFile::setScript(std::string_view text) {
  try {
    writeScript(text);
  } catch (const std::exception&) {
    // As documented; writeScript() tells.
  }
}

void TweakFile::writeScript(std::string_view text) {
  const fs::path file = url() / kScriptFile;
  // It could not be read again.
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
