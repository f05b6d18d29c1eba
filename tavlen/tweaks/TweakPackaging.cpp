#include "tavlen/tweaks/TweakPackaging.h"

#include <cerrno>
#include <string_view>
#include <system_error>

#include "tavlen/bundles/IPA.h"
#include "tavlen/bundles/InfoOverrides.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/InfoPlist.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/foundation/base/UUID.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/PackagedEntries.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtension = ".bundle";
constexpr const char* kCodeFile = "code.js";
constexpr const char* kMapFile = "code.js.map";
constexpr const char* kResourcesFolder = "Resources";
constexpr const char* kExecutablesFolder = "Executables";
constexpr const char* kIconFile = "Icon.png";

/// Creates a new folder, and deletes it again unless keep() was called (RAII).
class Bundle {
 public:
  explicit Bundle(const fs::path& directory) : url_(directory / newUUIDText().append(kExtension)) {
    fs::create_directory(url_);
  }
  Bundle(const Bundle&) = delete;
  Bundle& operator=(const Bundle&) = delete;
  ~Bundle() {
    std::error_code ignored;
    if (!isKept_) fs::remove_all(url_, ignored);
  }

  const fs::path& url() const { return url_; }
  void keep() { isKept_ = true; }

 private:
  fs::path url_;
  bool isKept_ = false;
};

/// Throws for links and removes set-ID bits in `copy`. Checking the copy instead of the source
/// avoids a TOCTOU race. Errors name the entry in `source`.
void settle(const fs::path& copy, const fs::path& source) {
  constexpr fs::perms kLentRights = fs::perms::set_uid | fs::perms::set_gid;
  const fs::file_status status = fs::symlink_status(copy);
  const std::string_view refusal = refusalOf(status.type());
  if (!refusal.empty()) throwRefusal(source, refusal);
  if ((status.permissions() & kLentRights) != fs::perms::none) {
    fs::permissions(copy, kLentRights, fs::perm_options::remove);
  }
  if (!fs::is_directory(status)) return;
  for (const fs::directory_entry& entry : fs::directory_iterator(copy)) {
    settle(entry.path(), source / entry.path().filename());
  }
}

void copySettled(const fs::path& source, const fs::path& destination) {
  copyItem(source, destination, isTemporaryName);
  settle(destination, source);
}

/// Copies the tweak's folder `name`. If it is missing, creates an empty one: version control, for
/// example, does not keep empty folders.
void copyFolder(const TweakFile& tweak, const fs::path& bundle, const char* name) {
  const fs::path source = DeviceRoot::shared().follow(tweak.url()) / name;
  std::error_code ignored;
  const fs::file_type type = fs::symlink_status(source, ignored).type();
  if (type == fs::file_type::not_found) {
    fs::create_directory(bundle / name);
  } else if (type == fs::file_type::regular) {
    throw std::system_error(ENOTDIR, std::generic_category(), source.string());
  } else {
    copySettled(source, bundle / name);
  }
}

std::string infoPlist(Info info, const TweakFile::Manifest& manifest) {
  for (const Override& override_ : manifest.overrides()) applyTo(info, override_);
  return encodePropertyList(info);
}

}  // namespace

void checkTarget(const TweakInfo& tweakInfo, const std::string& bundleID) {
  if (tweakInfo.bundleID == bundleID) return;
  throw TweakError::bundleIDMismatch(tweakInfo.bundleID.value_or(std::string()), bundleID);
}

void packageTweak(const TweakFile::Opened& tweak, const Info& target, const Packaging& packaging,
                  TweakInfo& tweakInfo) {
  const std::shared_ptr<TweakFile>& file = tweak.file;
  const TweakFile::Manifest& manifest = tweak.manifest;
  checkTarget(tweakInfo, manifest.configuration.bundleID);
  const std::string info = infoPlist(target, manifest);
  // A new transpiler for each tweak: an exception in one would fail all later conversions.
  const TweakProcessor::Output output =
      TweakProcessor(packaging.transpiler).process(manifest, file->script());

  Bundle bundle(packaging.directory);
  replaceFile(bundle.url() / kCodeFile, output.code);
  replaceFile(bundle.url() / kMapFile, output.map);
  replaceFile(bundle.url() / kInfoPlistFilename, info);
  copyFolder(*file, bundle.url(), kResourcesFolder);
  if (packaging.copyExecutables) copyFolder(*file, bundle.url(), kExecutablesFolder);
  const bool hasIcon = file->customIcon().has_value();
  if (hasIcon)
    copySettled(DeviceRoot::shared().follow(file->url()) / kIconFile, bundle.url() / kIconFile);

  TweakInfo next = tweakInfo;
  for (const Override& override_ : manifest.overrides()) applyTo(next, override_);
  if (hasIcon) {
    next.customIconURL = URL::fileURL(fs::path(InstalledRecords::directory(*tweakInfo.bundleID)) /
                                      bundle.url().filename() / kIconFile);
  }
  tweakInfo = std::move(next);
  bundle.keep();
}

void TweakFile::package(const fs::path& directory, const fs::path& transpiler, TweakInfo& tweakInfo,
                        bool copyExecutables) const {
  const Opened opened = {std::const_pointer_cast<TweakFile>(shared_from_this()), manifest()};
  const std::string& bundleID = opened.manifest.configuration.bundleID;
  checkTarget(tweakInfo, bundleID);
  packageTweak(opened, IPA::findWithBundleID(bundleID)->infoManager().info(),
               {directory, transpiler, copyExecutables}, tweakInfo);
}

}  // namespace tavlen
