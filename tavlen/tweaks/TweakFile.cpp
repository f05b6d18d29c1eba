#include "tavlen/tweaks/TweakFile.h"

#include <system_error>
#include <utility>

#include "tavlen/collections/TweakDiffNotifications.h"
#include "tavlen/collections/TweakPoster.h"
#include "tavlen/foundation/DiskSync.h"
#include "tavlen/foundation/FileReplacement.h"
#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/FileTree.h"
#include "tavlen/foundation/JSONDecoder.h"
#include "tavlen/foundation/JSONEncoder.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFileDiff.h"
#include "tavlen/tweaks/TweaksDirectory.h"

namespace tavlen {

namespace {

constexpr const char* kManifestFile = "Manifest.json";
constexpr const char* kScriptFile = "script.objs";
constexpr const char* kResourcesFolder = "Resources";
constexpr const char* kExecutablesFolder = "Executables";

}  // namespace

std::shared_ptr<TweakFile> TweakFile::at(const std::filesystem::path& url) {
  // The folder's name is the identifier, so a path must end in one: not in a slash, "." or "..".
  std::filesystem::path folder = url.has_filename() ? url : url.parent_path();
  if (!folder.empty() && !isPlainComponent(folder.filename().string())) {
    folder = std::filesystem::absolute(url).lexically_normal();
    if (!folder.has_filename()) folder = folder.parent_path();
  }
  std::shared_ptr<TweakFile> tweak(new TweakFile(folder));
  tweak->validate();
  return tweak;
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

bool TweakFile::isValidID(std::string_view text) { return text.find('.') == text.npos; }

std::filesystem::path TweakFile::uniqueTweakURL() { return TweaksDirectory::uniqueURL(); }

// A slash at the end, as folders are written.
std::filesystem::path TweakFile::resourcesDir() const { return url() / kResourcesFolder / ""; }

std::filesystem::path TweakFile::executablesDir() const { return url() / kExecutablesFolder / ""; }

void TweakFile::validate() const {
  std::error_code ignored;
  if (!std::filesystem::is_directory(url(), ignored)) throw Error::notFound();
  manifest();
}

TweakFile::Manifest TweakFile::manifest() const {
  const std::filesystem::path file = url() / kManifestFile;
  std::error_code ignored;
  if (!std::filesystem::exists(file, ignored)) throw Error::missing(kManifestFile);
  return decodeJSON<Manifest>(readFile(file));
}

TweakManifest TweakFile::genericManifest() const { return TweakManifest(manifest()); }

void TweakFile::setManifest(const Manifest& manifest) {
  replaceFile(url() / kManifestFile, encodeJSON(manifest));
  tweakPoster().performNotificationPostingOperation([&] {
    postTweakDiffs(NotificationCenter::default_(),
                   {std::make_shared<Diff>(shared_from_this(), Diff::UpdateManifest())});
  });
}

void TweakFile::updateManifest(const std::function<void(Manifest&)>& change) {
  Manifest changed = manifest();
  change(changed);
  setManifest(changed);
}

TweakDiff TweakFile::diffFor(GenericTweakDiffMode mode) {
  if (mode == GenericTweakDiffMode::delete_) {
    return std::make_shared<Diff>(shared_from_this(), Diff::Delete());
  }
  return std::make_shared<Diff>(shared_from_this(), Diff::Create());
}

void TweakFile::preparePayloadIn(const std::filesystem::path& directory) const {
  copyItem(url(), directory, isTemporaryName);
}

std::string TweakFile::script() const {
  try {
    return readScript().value_or(std::string());
  } catch (const std::exception&) {
    return {};
  }
}

std::optional<std::string> TweakFile::readScript() const {
  const std::filesystem::path file = url() / kScriptFile;
  std::error_code ignored;
  if (std::filesystem::symlink_status(file, ignored).type() ==
      std::filesystem::file_type::not_found) {
    return std::nullopt;
  }
  return readText(file);
}

TweakFile::Error TweakFile::Error::missing(std::string file) {
  return {Case::missing, {"tweak_file.error.missing", "Missing %@"}, {std::move(file)}};
}

TweakFile::Error TweakFile::Error::notFound() {
  return {Case::notFound, {"tweak_file.error.not_found", "Not found"}};
}

}  // namespace tavlen
