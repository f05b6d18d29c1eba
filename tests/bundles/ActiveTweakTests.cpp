#include <gtest/gtest.h>

#include <cstdlib>

#include "PackagingTest.h"
#include "TestPaths.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/device/InstalledTweaks.h"
#include "tavlen/tweaks/InstallableItem.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

/// Installs stored tweaks by the reference helper.
class ActiveTweakTest : public PackagingTest {
 protected:
  ActiveTweakTest() {
    ::setenv("TAVLEN_ROOT", tree().path().c_str(), 1);
    program(std::string(kFileOperationsPath.substr(1)),
            "exec '" + paths().fileOperations + "' \"$@\"");
    program("usr/bin/killall", "echo respring >> '" + path("calls").string() + "'");
  }
  ~ActiveTweakTest() override { ::unsetenv("TAVLEN_ROOT"); }

  static void program(const std::string& name, const std::string& script) {
    fs::permissions(tree().write(name, "#!/bin/sh\n" + script + "\n"), fs::perms::owner_all);
  }
  void install(const std::string& id) const {
    const InstallableItem item(TweakFile::at(path(store() + id)), transpiler(), false);
    ipa_->setActiveTweak(&item);
  }
  static fs::path installed() {
    return DeviceRoot::shared().resolve(InstalledTweaks::directory("com.example.notes"));
  }
  /// The code of the installed tweaks; "none" where there is not one, and nothing but its record.
  static std::string code() {
    std::string found;
    if (!fs::exists(installed())) return "none";
    for (const auto& entry : fs::directory_iterator(installed())) {
      if (entry.path().filename() != kTweakInfoFilename) {
        found += readFile(entry.path() / "code.js");
      }
    }
    return found;
  }
  /// How often the home screen was restarted since the last question.
  static std::size_t resprings() {
    const std::string calls = fs::exists(path("calls")) ? readFile(path("calls")) : "";
    fs::remove(path("calls"));
    return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), '\n'));
  }

  std::shared_ptr<IPA> ipa_ = IPA::withAppDir(path("Applications/Notes.app"));
};

TEST_F(ActiveTweakTest, StoredTweaksAreInstalledReplacedAndCleared) {
  const struct {
    std::string id;
    std::string icon;
    std::size_t resprings;
  } rows[] = {{"A", "", 0}, {"B", icon(1), 1}, {"C", icon(1), 0}, {"D", icon(2), 1}, {"E", "", 1}};
  for (const auto& row : rows) {
    const std::string folder = tweak(row.id, row.id);
    tree().write(folder + "Resources/closed/x", "");
    fs::permissions(path(folder + "Resources/closed"), fs::perms(0500));
    if (!row.icon.empty()) tree().write(folder + "Icon.png", row.icon);
    install(row.id);
    EXPECT_EQ(code(), row.id + "1");
    EXPECT_EQ(ipa_->activeTweakID(), row.id);
    EXPECT_EQ(resprings(), row.resprings) << row.id;
    const auto url = InstalledTweaks::record("com.example.notes")->customIconURL;
    ASSERT_EQ(url.has_value(), !row.icon.empty());
    if (!url) continue;
    EXPECT_EQ(readFile(DeviceRoot::shared().resolve(url->path()->native())), row.icon);
  }
  TweakFile::at(path(store() + "A"))->uninstall();
  EXPECT_EQ(ipa_->activeTweakID(), "E") << "another one's";
  TweakFile::at(path(store() + "E"))->uninstall();
  EXPECT_EQ(code(), "none");
  EXPECT_EQ(ipa_->activeTweakID(), std::nullopt);
}

}  // namespace
}  // namespace tavlen
