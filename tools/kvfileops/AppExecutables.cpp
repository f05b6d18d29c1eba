#include "kvfileops/AppExecutables.h"

#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "kvfileops/DeviceFolder.h"
#include "kvfileops/FileHead.h"
#include "kvfileops/FolderReader.h"
#include "tavlen/foundation/FileSystem.h"
#include "tavlen/foundation/Log.h"
#include "tavlen/foundation/PropertyListSerialization.h"

namespace tavlen::fileops {

namespace {

/// Larger than any list of an app; a file of another's making may have any size.
constexpr std::size_t kLargestList = std::size_t{4} << 20;

class Search {
 public:
  explicit Search(const std::string& bundleID) : bundleID_(bundleID) {}

  /// Looks at the apps in the folder `name`, and at those in its folders where it holds containers.
  void lookInto(int parent, const std::string& name, const std::filesystem::path& shown,
                bool holdsContainers) {
    std::optional<Descriptor> folder = openFolder(parent, name, shown);
    if (!folder) return;
    FolderReader reader(std::move(*folder), shown);
    while (const std::optional<std::string> entry = reader.next()) {
      try {
        if (holdsContainers) {
          lookInto(reader.descriptor(), *entry, shown / *entry, false);
        } else if (entry->ends_with(".app")) {
          readApp(reader.descriptor(), *entry, shown / *entry);
        }
      } catch (const std::exception& error) {
        logMessage("kvfileops: passed over: " + (shown / *entry).string() + ": " + error.what());
      }
    }
  }

  std::set<std::string> takeExecutables() { return std::move(executables_); }

 private:
  void readApp(int parent, const std::string& name, const std::filesystem::path& shown) {
    const std::optional<Descriptor> app = openFolder(parent, name, shown);
    if (!app) return;
    const auto file = openList(app->get(), shown / "Info.plist");
    if (!file) return;
    // A longer one is cut off, and then no list.
    const PropertyList list = readPropertyList(headOfFile(file->get(), kLargestList, shown));
    if (list.findString(list.root(), "CFBundleIdentifier") != bundleID_) return;
    const auto executable = list.findString(list.root(), "CFBundleExecutable");
    if (executable && isPlainComponent(*executable)) executables_.emplace(*executable);
  }

  /// Nothing where no list stands: the tool's own folder of programs is called an app, too.
  static std::optional<Descriptor> openList(int app, const std::filesystem::path& shown) {
    try {
      return openRegularFile(app, "Info.plist", shown);
    } catch (const std::system_error& error) {
      if (error.code() == std::errc::no_such_file_or_directory) return std::nullopt;
      throw;
    }
  }

  const std::string& bundleID_;
  std::set<std::string> executables_;
};

void search(Search& search, const DeviceRoot& root, std::string_view devicePath,
            bool holdsContainers) {
  const DeviceFolder folder(root, devicePath);
  if (const auto opened = folder.open()) {
    search.lookInto(opened->get(), ".", folder.path(), holdsContainers);
  }
}

}  // namespace

std::set<std::string> executablesOfApp(const DeviceRoot& root, const std::string& bundleID) {
  Search apps(bundleID);
  search(apps, root, "/Applications", false);
  search(apps, root, "/var/containers/Bundle/Application", true);
  return apps.takeExecutables();
}

}  // namespace tavlen::fileops
