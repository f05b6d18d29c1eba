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

using FileVisitor = FunctionRef<void(const std::string& file)>;

void visitFile(std::string file, FileVisitor visit) {
  while (file.ends_with('/')) file.pop_back();
  visit(file);
}

/// Visits the files that `name`, a name as in an Info, refers to on the device with that ending.
void visitFilesNamed(const std::string& name, std::string_view ending, FileVisitor visit) {
  if (hasExtensionPNG(name)) return visitFile(name, visit);
  for (const std::string_view suffix : kScaleSuffixes) {
    visitFile(name + std::string(suffix) + std::string(ending), visit);
  }
}

/// Visits the files that the names in `info` refer to.
void visitFilesOf(const Info& info, FileVisitor visit) {
  for (const std::string& name : storedNames(info._icons, info._iconFiles, info._iconFile)
                                     .value_or(Names(kDefaultNames.begin(), kDefaultNames.end()))) {
    visitFilesNamed(name, kPhoneEnding, visit);
  }
  for (const std::string& name :
       storedNames(info._ipadIcons, info._ipadIconFiles, info._ipadIconFile).value_or(Names())) {
    visitFilesNamed(name, kPadEnding, visit);
  }
}

/// Tries candidate files and keeps the largest image.
class LargestIcon {
 public:
  explicit LargestIcon(const std::filesystem::path& bundle) : bundle_(bundle) {}

  void consider(const std::string& name) {
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

  std::optional<Image>& image() { return largest_; }

 private:
  static std::uint64_t area(const Image& image) {
    return std::uint64_t{image.width()} * image.height();
  }

  const DeviceRoot root_ = DeviceRoot::shared();
  const std::filesystem::path& bundle_;
  std::set<std::filesystem::path> seen_;
  std::optional<Image> largest_;
};

std::optional<Image> largestIcon(const InfoManager& app, const std::optional<std::string>& name) {
  LargestIcon icon(app.bundleURL);
  app.visitIconFiles(name, [&](const std::string& file) { icon.consider(file); });
  return std::move(icon.image());
}

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

void InfoManager::visitIconFiles(const std::optional<std::string>& name, FileVisitor visit) const {
  if (!name) return visitFilesOf(info(), visit);
  visitFilesNamed(*name, kPhoneEnding, visit);
  visitFilesNamed(*name, kPadEnding, visit);
}

Image InfoManager::icon() const {
  std::optional<Image> icon = largestIcon(*this, std::nullopt);
  if (!icon) throw Error::noIconFound();
  return std::move(*icon);
}

Image InfoManager::icon(const std::string& name) const {
  std::optional<Image> icon = largestIcon(*this, name);
  if (!icon) throw Error::iconNotFound(name);
  return std::move(*icon);
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
