#include "tavlen/foundation/image/Image.h"
#include "tests/cli/CommandStoreTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

const std::string kContainers = "device/var/containers/Bundle/Application";

/// In a folder with the example of a device's tree, whose script draws the icons by itself.
class IconCommandTest : public CommandTest {
 protected:
  void SetUp() override {
    const std::string script = paths().examples + "/make-device";
    ASSERT_EQ(std::system(("'" + script + "' '" + (folder() / "device").string() + "'").c_str()),
              0);
  }

  /// The path of the container's app of that name.
  std::string app(const std::string& name) const {
    for (const auto& container : fs::directory_iterator(folder() / kContainers)) {
      if (!fs::exists(container.path() / name)) continue;
      return kContainers + "/" + container.path().filename().string() + "/" + name;
    }
    return name;
  }
  /// The width of the picture that the command writes with these options; 0 where it fails.
  std::size_t width(const std::string& app, const std::string& options = "") const {
    const Result result = run("icon -o icon.png " + options, {app});
    EXPECT_EQ(result.out + result.err, "");
    if (result.status != 0) return 0;
    const std::optional<Image> picture = Image::decode(contents("icon.png"));
    return picture ? picture->width() : 0;
  }
};

TEST_F(IconCommandTest, WritesTheLargestIconOrTheOneAskedFor) {
  const std::string notes = app("Notes.app");
  EXPECT_EQ(width(notes), 180U);
  EXPECT_EQ(width(notes, "--name AppIcon76x76"), 152U);
  EXPECT_EQ(width(notes, "--name AppIcon60x60@2x.png"), 120U);
  EXPECT_EQ(width(notes, "--size 45"), 45U);
  EXPECT_EQ(width(app("旅ノート.app")), 120U);
  EXPECT_EQ(width("device/Applications/Almanac.app/"), 120U);
}

TEST_F(IconCommandTest, AFailureIsOneLineAndLeavesTheFileAlone) {
  write("icon.png", "old");
  write("bare/Info.plist", contents(app("Notes.app") + "/Info.plist"));
  const std::string notes = app("Notes.app");
  const std::string broken = app("Broken.app");
  expectRefused(
      "icon",
      {{"bare -o icon.png", 1, "bare: No icon found\n"},
       {"bare --name 'a\nb' -o icon.png", 1, "bare: Icon not found: a\\nb\n"},
       {notes + " --size 0 -o icon.png", 1, notes + ": Could not resize icon\n"},
       {notes + " --size 16385 -o icon.png", 1, notes + ": Could not resize icon\n"},
       {broken + " -o icon.png", 1, broken + "/Info.plist: missing key \"CFBundleExecutable\"\n"},
       {"nowhere -o icon.png", 1, "IPA not found with bundle ID: nowhere\n"},
       {"./nowhere -o icon.png", 1, "./nowhere: No such file or directory\n"},
       {notes + " -o nowhere/x", 1, "nowhere/x: No such file or directory\n"},
       {"bare", 2, ""},
       {"bare -o x --size -1", 2, ""}});
  EXPECT_EQ(contents("icon.png"), "old");
}

TEST_F(IconCommandTest, NothingButATreeIsReplaced) {
  write("mine/file", "");
  const std::string script = paths().examples + "/make-device";
  EXPECT_NE(
      std::system(("'" + script + "' '" + (folder() / "mine").string() + "' 2>/dev/null").c_str()),
      0);
  EXPECT_TRUE(fs::exists(folder() / "mine/file"));
}

TEST_F(CommandStoreTest, IconSetStoresThePictureAndClearTakesItAway) {
  const std::string icon = stored(newTweak("T")) + "/Icon.png";
  const Image picture(2, 1, {1, 2, 3, 255, 4, 5, 6, 7});
  write("picture", picture.pngData());
  write("text", "no picture");
  EXPECT_EQ(run("icon set T picture").err, "");
  EXPECT_EQ(Image::decode(contents(icon)), picture);
  setInput("text");
  for (const char* file : {"text", "-", "gone", "."}) {
    EXPECT_EQ(run("icon set T", {file}).status, 1) << file;
  }
  EXPECT_EQ(Image::decode(contents(icon)), picture) << "as it was";
  EXPECT_EQ(run("icon clear T").err, "");
  EXPECT_FALSE(fs::exists(folder() / icon));
  for (const char* misuse : {"", "set", "set T", "clear", "clear T x", "clear T -o x",
                             "clear T --size 3", "set T picture x", "-o x", "com.example.notes"}) {
    EXPECT_EQ(run(std::string("icon ") + misuse).status, 2) << misuse;
  }
  EXPECT_FALSE(fs::exists(folder() / icon));
}

}  // namespace
}  // namespace tavlen
