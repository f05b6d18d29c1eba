#include "tavlen/bundles/AppArchive.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/InfoPlist.h"

namespace tavlen {

namespace {

constexpr std::string_view kPayload = "Payload/";
constexpr std::string_view kAppEnding = ".app";

/// The folder of the app that contains `name`, a name in the archive; empty if none does.
std::string_view bundleAround(std::string_view name) {
  if (!name.starts_with(kPayload)) return {};
  const std::string_view folder = name.substr(0, name.find('/', kPayload.size()));
  const bool isApp = folder.size() < name.size() && folder.ends_with(kAppEnding) &&
                     folder.size() > kPayload.size() + kAppEnding.size();
  return isApp ? folder : std::string_view();
}

bool beginsLikeImage(std::string_view bytes) {
  constexpr std::array<std::string_view, 4> kBeginnings = {"\xCF\xFA\xED\xFE", "\xCE\xFA\xED\xFE",
                                                           "\xCA\xFE\xBA\xBE", "\xCA\xFE\xBA\xBF"};
  return std::find(kBeginnings.begin(), kBeginnings.end(), bytes) != kBeginnings.end();
}

}  // namespace

AppArchive::Error AppArchive::Error::noApp() {
  return {Case::noApp, {"app_archive.error.no_app", "The folder Payload has no app"}};
}

AppArchive::Error AppArchive::Error::severalApps(std::string first, std::string second) {
  return {Case::severalApps,
          {"app_archive.error.several_apps", "There are several apps: %@ and %@"},
          {std::move(first), std::move(second)}};
}

AppArchive::AppArchive(const std::filesystem::path& archive) : reader_(archive) {
  for (const std::string& name : reader_.names()) {
    const std::string_view folder = bundleAround(name);
    if (folder.empty()) continue;
    if (bundle_.empty()) bundle_ = folder;
    if (folder != bundle_) throw Error::severalApps(bundle_, std::string(folder));
    files_.push_back(name.substr(bundle_.size() + 1));
  }
  if (bundle_.empty()) throw Error::noApp();
  std::sort(files_.begin(), files_.end());
}

bool AppArchive::contains(const std::string& file) const {
  return std::binary_search(files_.begin(), files_.end(), file);
}

std::vector<std::string> AppArchive::images(FunctionRef<void(const ZIPError& fault)> skip) {
  constexpr std::size_t kMagicSize = 4;
  std::vector<std::string> found;
  for (const std::string& file : files_) {
    try {
      if (beginsLikeImage(reader_.firstBytes(bundle_ + "/" + file, kMagicSize))) {
        found.push_back(file);
      }
    } catch (const ZIPError& fault) {
      skip(fault);
    }
  }
  return found;
}

std::shared_ptr<IPA> AppArchive::unpack(std::vector<std::string> files,
                                        const std::filesystem::path& destination,
                                        Progress* progress) {
  if (!contains(kInfoPlistFilename)) throw IPA::Error::invalidIPA();
  files.emplace_back(kInfoPlistFilename);
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  for (std::string& file : files) file.insert(0, bundle_ + "/");
  reader_.unpack(files, destination, progress);
  return IPA::openAt(destination / bundle_);
}

}  // namespace tavlen
