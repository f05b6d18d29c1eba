#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>

#include "tavlen/foundation/image/Image.h"
#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

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
  /// What the command writes with these arguments; all of one colour where it fails.
  Image icon(const std::string& app, const std::string& options = "") const {
    const Result result = run("icon -o icon.png " + options, {app});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");
    return Image::decode(contents("icon.png")).value_or(Image(1, 1, {0, 0, 0, 0}));
  }
};

std::vector<int> pixel(const Image& image, std::size_t x, std::size_t y) {
  const auto first =
      image.pixels().begin() + static_cast<std::ptrdiff_t>((y * image.width() + x) * 4);
  return {first, first + 4};
}

TEST_F(IconCommandTest, WritesTheLargestIconOrTheOneAskedFor) {
  const std::string notes = app("Notes.app");
  const Image largest = icon(notes);
  EXPECT_EQ(largest.width(), 180U);
  EXPECT_THAT(pixel(largest, 0, 0), ElementsAre(0, 0, 0, 0));
  EXPECT_THAT(pixel(largest, 90, 90), ElementsAre(255, 255, 255, 255));
  EXPECT_THAT(pixel(largest, 90, 0), ElementsAre(46, 110, 220, 255));

  EXPECT_EQ(icon(notes, "--name AppIcon76x76").width(), 152U);
  EXPECT_EQ(icon(notes, "--name AppIcon60x60@2x.png").width(), 120U);
  const Image small = icon(notes, "--size 45");
  EXPECT_EQ(small.height(), 45U);
  EXPECT_THAT(pixel(small, 22, 22), ElementsAre(255, 255, 255, 255));
  EXPECT_EQ(icon(app("旅ノート.app")).width(), 120U);
  EXPECT_EQ(icon("device/Applications/Almanac.app/").width(), 120U);
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

TEST_F(IconCommandTest, TheTreeIsReplacedAndNothingElseIs) {
  write("device/Applications/Old.app/Info.plist", "");
  SetUp();
  EXPECT_FALSE(fs::exists(folder() / "device/Applications/Old.app"));
  write("mine/file", "");
  const std::string script = paths().examples + "/make-device";
  EXPECT_NE(
      std::system(("'" + script + "' '" + (folder() / "mine").string() + "' 2>/dev/null").c_str()),
      0);
  EXPECT_TRUE(fs::exists(folder() / "mine/file"));
}

}  // namespace
}  // namespace tavlen
