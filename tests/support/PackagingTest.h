#pragma once

#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/AppPlist.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {

/// With the app com.example.notes, stored tweaks, and a transpiler that gives back what it is
/// given.
class PackagingTest : public StoreTest {
 protected:
  /// Lists that app and a.b for the shared list, which asks once in a process.
  struct Fetcher final : AppListFetcher {
    std::vector<AppListApp> fetchAllApps() const override {
      return {{"com.example.notes", "Notes", path("Applications/Notes.app")},
              {"a.b", "App", path("Applications/App.app")}};
    }
  };
  inline static const bool kHasFetcher =
      (AppList::setSharedFetcher(std::make_unique<Fetcher>()), true);

  PackagingTest() {
    tree().write("Applications/Notes.app/Info.plist",
                 appPlist("com.example.notes", "Notes",
                          "<key>CFBundleVersion</key><string>1</string><key>MinimumOSVersion</key>"
                          "<string>14.0</string><key>Unknown</key><true/>"));
    tree().write("share/ob.js",
                 "var count = 0; var OBJSTranspiler = { transpile(source) { if (source == 'bad') "
                 "throw new Error('bad'); return { code: source + ++count, map: 'map' }; } };");
    fs::create_directory(directory());
  }

  /// Makes the stored tweak `id`; gives its folder's path in the tree, a slash at its end.
  static std::string tweak(const std::string& id, const std::string& script = "",
                           const std::string& overrides = "",
                           const std::string& app = "com.example.notes") {
    std::string folder = store() + id + "/";
    tree().write(folder + "Manifest.json",
                 R"({"configuration":{"name":")" + id + R"(","color":"darkRed","bundleID":")" +
                     app + R"("},"overrides":[)" + overrides + R"(],"hooks":[]})");
    if (!script.empty()) tree().write(folder + "script.objs", script);
    return folder;
  }
  static std::string icon(std::uint8_t red) { return Image(1, 1, {red, 0, 0, 255}).pngData(); }

  static std::string store() { return std::string(kTweaksDir.substr(1)) + "/"; }
  static fs::path path(const std::string& name) { return tree().path() / name; }
  static fs::path transpiler() { return path("share"); }
  static fs::path directory() { return path("packages"); }

  static std::vector<std::string> entries(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      names.push_back(entry.path().lexically_relative(folder).string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
};

}  // namespace tavlen
