#include "tavlen/bundles/InfoManager.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/InfoPlist.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"

namespace tavlen {

namespace {

using Names = std::vector<std::string>;

constexpr std::string_view kPhoneEnding = ".png";
constexpr std::string_view kPadEnding = "~ipad.png";
constexpr std::array<std::string_view, 3> kScaleSuffixes = {"", "@2x", "@3x"};
constexpr std::array<std::string_view, 5> kDefaultNames = {"Icon", "Icon-60", "Icon-72", "Icon-76",
                                                           "Icon-83.5"};

/// The names under the three keys for a device, the newest key first; nothing when no key exists.
std::optional<Names> storedNames(const std::optional<Info::Icons>& icons,
                                 const std::optional<Names>& files,
                                 const std::optional<std::string>& file) {
  if (icons && icons->primaryIcon) return icons->primaryIcon->iconFiles;
  if (files) return files;
  if (file) return Names{*file};
  return std::nullopt;
}

/// Whether the platform takes "png" for the path extension of `name`: trailing slashes are ignored;
/// a dot at the beginning of the last component, or after "." or "..", does not begin an extension.
bool hasExtensionPNG(std::string_view name) {
  constexpr std::string_view kExtension = ".png";
  while (name.ends_with('/')) name.remove_suffix(1);
  if (!name.ends_with(kExtension)) return false;
  name.remove_suffix(kExtension.size());
  const std::string_view stem = name.substr(name.rfind('/') + 1);
  return !stem.empty() && stem != "." && stem != "..";
}

/// Tries candidate files and keeps the largest image.
class LargestIcon {
 public:
  explicit LargestIcon(const std::filesystem::path& bundle) : bundle_(bundle) {}

  void consider(const std::string& name, std::string_view ending) {
    if (hasExtensionPNG(name)) return considerFile(name);
    for (const std::string_view suffix : kScaleSuffixes) {
      considerFile(name + std::string(suffix) + std::string(ending));
    }
  }

  std::optional<Image>& image() { return largest_; }

 private:
  static std::uint64_t area(const Image& image) {
    return std::uint64_t{image.width()} * image.height();
  }

  void considerFile(std::string_view name) {
    while (name.ends_with('/')) name.remove_suffix(1);
    // Most candidates do not exist, and this check is cheap.
    if (!std::filesystem::exists(root_.status(bundle_ / name))) return;
    const std::optional<std::filesystem::path> file = pathInside(root_, bundle_, name);
    if (!file) return;
    // A file seen before cannot win, so decode it only once, however often a list names it.
    if (!seen_.insert(*file).second) return;
    const std::optional<std::string> bytes =
        readFileUpTo(openedFile(root_, *file), limits::kIconFileBytes);
    if (!bytes) return;
    std::optional<Image> image = Image::decode(*bytes);
    if (image && (!largest_ || area(*image) > area(*largest_))) largest_ = std::move(image);
  }

  const DeviceRoot root_ = DeviceRoot::shared();
  const std::filesystem::path& bundle_;
  std::set<std::filesystem::path> seen_;
  std::optional<Image> largest_;
};

}  // namespace

InfoManager::Error InfoManager::Error::iconNotFound(std::string name) {
  return {Case::iconNotFound,
          {"info_manager.error.icon_not_found", "Icon not found: %@"},
          {std::move(name)}};
}

InfoManager::Error InfoManager::Error::noIconFound() {
  return {Case::noIconFound, {"info_manager.error.no_icon_found", "No icon found"}};
}

InfoManager::Error InfoManager::Error::couldNotResize() {
  return {Case::couldNotResize, {"info_manager.error.could_not_resize", "Could not resize icon"}};
}

Info InfoManager::info() const {
  return decodePropertyList<Info>(readInfoPlist(DeviceRoot::shared(), bundleURL));
}

Image InfoManager::icon() const {
  const Info info = this->info();
  LargestIcon icon(bundleURL);
  for (const std::string& name : storedNames(info._icons, info._iconFiles, info._iconFile)
                                     .value_or(Names(kDefaultNames.begin(), kDefaultNames.end()))) {
    icon.consider(name, kPhoneEnding);
  }
  for (const std::string& name :
       storedNames(info._ipadIcons, info._ipadIconFiles, info._ipadIconFile).value_or(Names())) {
    icon.consider(name, kPadEnding);
  }
  if (!icon.image()) throw Error::noIconFound();
  return std::move(*icon.image());
}

Image InfoManager::icon(const std::string& name) const {
  LargestIcon icon(bundleURL);
  icon.consider(name, kPhoneEnding);
  icon.consider(name, kPadEnding);
  if (!icon.image()) throw Error::iconNotFound(name);
  return std::move(*icon.image());
}

Image InfoManager::resizedIcon(const Image& icon, std::uint32_t longerSide) {
  const std::uint64_t longest = std::max(icon.width(), icon.height());
  const auto scaled = [&](std::uint64_t side) {
    return static_cast<std::uint32_t>(
        std::max<std::uint64_t>((side * longerSide + longest / 2) / longest, 1));
  };
  std::optional<Image> image;
  if (longerSide > 0) image = icon.resized(scaled(icon.width()), scaled(icon.height()));
  if (!image) throw Error::couldNotResize();
  return std::move(*image);
}

}  // namespace tavlen
