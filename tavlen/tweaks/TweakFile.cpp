#include "tavlen/tweaks/TweakFile.h"

#include <system_error>
#include <utility>

#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/JSONDecoder.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

namespace {

constexpr const char* kManifestFile = "Manifest.json";
constexpr const char* kScriptFile = "script.objs";
constexpr const char* kResourcesFolder = "Resources";

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

std::filesystem::path TweakFile::resourcesDir() const { return url_ / kResourcesFolder; }

void TweakFile::validate() const {
  std::error_code ignored;
  if (!std::filesystem::is_directory(url_, ignored)) throw Error::notFound();
  manifest();
}

TweakFile::Manifest TweakFile::manifest() const {
  const std::filesystem::path file = url_ / kManifestFile;
  std::error_code ignored;
  if (!std::filesystem::exists(file, ignored)) throw Error::missing(kManifestFile);
  return decodeJSON<Manifest>(readFile(file));
}

std::string TweakFile::script() const {
  try {
    return readScript().value_or(std::string());
  } catch (const std::exception&) {
    return {};
  }
}

std::optional<std::string> TweakFile::readScript() const {
  const std::filesystem::path file = url_ / kScriptFile;
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
