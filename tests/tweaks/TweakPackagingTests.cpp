#include "tavlen/tweaks/TweakPackaging.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tavlen/bundles/IPA.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tavlen/items/TweakError.h"
#include "tests/support/PackagingTest.h"

namespace tavlen {
namespace {
using testing::ElementsAre;
using testing::EndsWith;

class TweakPackagingTest : public PackagingTest {
 protected:
  fs::path package(const std::string& id, bool copyExecutables = false) {
    TweakFile::at(path(store() + id))
        ->package(directory(), transpiler(), tweakInfo_, copyExecutables);
    return fs::directory_iterator(directory())->path();
  }

  TweakInfo tweakInfo_{"com.example.notes", "T"};
};

TEST_F(TweakPackagingTest, LaysOutWhatTheLoaderTakes) {
  const std::string folder =
      tweak("T", "script",
            R"({"type":"Version","value":"9"},{"type":"Version","value":"9.1"},)"
            R"({"type":"MinimumOSVersion"})");
  tree().write(folder + "Resources/a/b.txt", "text");
  tree().write(folder + "Executables/tool", "run");
  fs::permissions(path(folder + "Executables/tool"), fs::perms(06755));
  tree().write(folder + "Icon.png", icon(7));

  const fs::path bundle = package("T", true);
  const std::string uuid = bundle.filename().stem();
  EXPECT_EQ(bundle.extension(), ".bundle");
  EXPECT_EQ(uuid.size(), 36U);
  EXPECT_THAT(entries(bundle),
              ElementsAre("Executables", "Executables/tool", "Icon.png", "Info.plist", "Resources",
                          "Resources/a", "Resources/a/b.txt", "code.js", "code.js.map"));
  EXPECT_EQ(readFile(bundle / "code.js"), "script1");
  EXPECT_EQ(readFile(bundle / "code.js.map"), "map");
  EXPECT_EQ(readFile(bundle / "Icon.png"), icon(7));
  EXPECT_EQ(fs::status(bundle / "Executables/tool").permissions(), fs::perms(0755));
  const Info info = decodePropertyList<Info>(readFile(bundle / "Info.plist"));
  EXPECT_EQ(info.version(), "9.1") << "in stored order";
  EXPECT_EQ(info.minimumOSVersion, std::nullopt);
  EXPECT_EQ(info.executable, "Notes");
  EXPECT_EQ(tweakInfo_.customIconURL->absoluteString,
            "file:///var/mobile/Library/Application%20Support/Marrowgleam/Installed%20Tweaks/"
            "com.example.notes/" +
                uuid + ".bundle/Icon.png");
  EXPECT_EQ(tweakInfo_.tweakID, "T");
}

TEST_F(TweakPackagingTest, LeavesOutWhatTheTweakDoesNotHave) {
  const std::string folder = tweak("T");
  tree().write(folder + "Executables/tool", "run");
  tree().write(folder + "Icon.png", "no picture");
  EXPECT_THAT(entries(package("T")),
              ElementsAre("Info.plist", "Resources", "code.js", "code.js.map"));
  EXPECT_EQ(tweakInfo_.customIconURL, std::nullopt);
}

TEST_F(TweakPackagingTest, AFailureLeavesNothing) {
  tree().write("secret", "secret");
  tree().write("Icon.png", icon(1));
  const auto linked = [](const std::string& name, const fs::path& target) {
    return [=](const std::string& folder) {
      fs::create_directories(path(folder + name).parent_path());
      fs::create_symlink(target, path(folder + name));
    };
  };
  const struct {
    std::function<void(const std::string& folder)> spoil;
    std::string error;  ///< a part of it
  } rows[] = {
      {[](const auto&) { tweak("T", "", "", "com.other"); },
       "Bundle ID mismatch (expected 'com.example.notes' but found 'com.other')"},
      {[](const auto&) { tweak("T", "bad"); }, "Error: bad\n\nCall stack:\ntranspile@"},
      {[](const auto& folder) { fs::remove(path(folder + "Manifest.json")); },
       "Missing Manifest.json"},
      {linked("Resources", "/secret"), "/T/Resources: a symbolic link cannot be packaged"},
      {linked("Resources/a/link", "b"), "/T/Resources/a/link: a symbolic link cannot be packaged"},
      {linked("Executables/link", path("secret")),
       "/T/Executables/link: a symbolic link cannot be packaged"},
      {linked("Icon.png", "/Icon.png"), "/T/Icon.png: a symbolic link cannot be packaged"},
      {[](const auto& folder) {
         fs::create_directory(path(folder + "Resources"));
         ::mkfifo(path(folder + "Resources/pipe").c_str(), 0600);
       },
       "/T/Resources/pipe: "},
      {[](const auto& folder) { tree().write(folder + "Resources", ""); },
       "/T/Resources: Not a directory"}};
  for (const auto& [spoil, error] : rows) {
    fs::remove_all(path(store()));
    const std::string folder = tweak("T");
    const auto opened = TweakFile::at(path(folder));
    spoil(folder);
    const std::string message =
        messageOf([&] { opened->package(directory(), transpiler(), tweakInfo_, true); });
    EXPECT_THAT(message, testing::HasSubstr(error));
    EXPECT_TRUE(fs::is_empty(directory())) << error;
    EXPECT_EQ(tweakInfo_, TweakInfo("com.example.notes", "T")) << error;
  }
  // These stay spoilt, so they come last.
  fs::remove_all(path(store()));
  tweak("T");
  const auto failure = [&] { return messageOf([&] { package("T"); }); };
  fs::remove(transpiler() / "ob.js");
  EXPECT_THAT(failure(), EndsWith("/ob.js: No such file or directory"));
  fs::remove(path("Applications/Notes.app/Info.plist"));
  EXPECT_THAT(failure(), EndsWith("/Info.plist: No such file or directory"));
  tweak("T", "", "", "com.gone");
  tweakInfo_.bundleID = "com.gone";
  EXPECT_EQ(failure(), "IPA not found with bundle ID: com.gone");
}

TEST_F(TweakPackagingTest, TheTargetAppLendsItsIconAndValues) {
  const fs::path info = tree().write(
      "Applications/App.app/Info.plist",
      appPlist("a.b", "x",
               "<key>CFBundleVersion</key><string>1.7</string><key>CFBundleIconFile</key>"
               "<string>Icon</string>"));
  const Image red(1, 1, {255, 0, 0, 255});
  const Image green(1, 1, {0, 255, 0, 255});
  tree().write("Applications/App.app/Icon.png", green.pngData());
  const auto tweak = newTweak("A");
  EXPECT_EQ(tweak->associatedIPA()->appDir(), info.parent_path());
  EXPECT_EQ(tweak->displayedIcon(), green);
  tweak->setCustomIcon(red);
  EXPECT_EQ(tweak->displayedIcon(), red);
  std::ofstream(tweak->url() / "Icon.png") << "no picture";
  EXPECT_EQ(tweak->displayedIcon(), green);
  for (const auto& [index, kind] : OverrideContainer::allByIndex()) {
    if (kind.identifier == "Build") {
      EXPECT_EQ(std::get<BuildOverride>(tweak->makeOverride(kind)).value, "1.7");
    }
  }
  tweak->updateManifest([](auto& manifest) { manifest.configuration.bundleID = "not.there"; });
  EXPECT_THROW(tweak->displayedIcon(), IPA::Error);
  EXPECT_THROW(tweak->associatedIPA(), IPA::Error);
  tweak->delete_();
  EXPECT_FALSE(fs::exists(tweak->url())) << "there is nothing to uninstall it from";
}

}  // namespace
}  // namespace tavlen
