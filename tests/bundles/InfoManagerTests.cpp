#include "tavlen/bundles/InfoManager.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
#include "tests/support/AppPlist.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

Image square(std::uint32_t side, std::uint8_t color = 0) {
  return {side, side, std::vector<std::uint8_t>(std::size_t{side} * side * 4, color)};
}

Info::Icons icons(std::vector<std::string> files) { return {Info::Icons::PrimaryIcon{files}}; }

class InfoManagerTest : public testing::Test {
 protected:
  void SetUp() override {
    info.executable = "exe";
    info.bundleID = "a.b";
    info.build = "1";
    fs::create_directory(bundle());
  }

  fs::path bundle() const { return folder_.path() / "App.app"; }
  void write(const std::string& name, std::string_view bytes) const {
    folder_.write("App.app/" + name, bytes);
  }
  void writeInfo() const { write("Info.plist", encodePropertyList(info)); }
  void writeIcon(const std::string& name, const Image& image) const {
    write(name, image.pngData());
  }

  /// What icon() does now: the side of the image, or the case of the error.
  std::string outcome(const std::optional<std::string>& name = {}) const {
    writeInfo();
    const InfoManager manager(bundle());
    try {
      return std::to_string((name ? manager.icon(*name) : manager.icon()).width());
    } catch (const InfoManager::Error& error) {
      return error.description();
    } catch (const std::system_error& error) {
      return std::generic_category().message(error.code().value());
    }
  }

  Info info;

 private:
  TemporaryFolder folder_;
};

TEST_F(InfoManagerTest, IconNamesComeFromTheNewestKeyThatIsThere) {
  std::uint32_t side = 1;
  for (const char* name : {"Icon.png", "Icon-83.5@2x.png", "one.png", "files@3x.png", "primary.png",
                           "padOne~ipad.png", "padFiles@2x~ipad.png", "padPrimary@3x~ipad.png"}) {
    writeIcon(name, square(side++));
  }
  EXPECT_EQ(outcome(), "2");
  info._iconFile = "one";
  EXPECT_EQ(outcome(), "3");
  info._iconFiles = {"files"};
  EXPECT_EQ(outcome(), "4");
  info._icons = icons({"primary"});
  EXPECT_EQ(outcome(), "5");
  info._icons->primaryIcon.reset();
  EXPECT_EQ(outcome(), "4");
  info._iconFiles->clear();  // present, so the older key and the default names stay unread
  EXPECT_EQ(outcome(), "No icon found");

  info._ipadIconFile = "padOne";
  EXPECT_EQ(outcome(), "6");
  info._ipadIconFiles = {"padFiles"};
  EXPECT_EQ(outcome(), "7");
  info._ipadIcons = icons({"padPrimary", "files"});  // "files" has no file for the iPad
  EXPECT_EQ(outcome(), "8");
  info._iconFiles.reset();
  info._iconFile.reset();
  info._ipadIcons = icons({});
  EXPECT_EQ(outcome(), "2") << "the default names go before the iPad's";
}

TEST_F(InfoManagerTest, NamesAreExpandedByTheirExtension) {
  const struct {
    std::string name;
    std::string file;
    bool isFound;
  } rows[] = {
      {"a.png", "a.png", true},     {"a.png", "a.png.png", false},    {"a.png", "a@2x.png", false},
      {"a.PNG", "a.PNG", false},    {"a.PNG", "a.PNG@3x.png", true},  {"a", "a@2x.png", true},
      {"a", "a@4x.png", false},     {"a", "a~ipad.png", false},       {".png", ".png", false},
      {".png", ".png.png", true},   {"...png", "...png", false},      {"....png", "....png", true},
      {"s/a.png", "s/a.png", true}, {"s.png/a", "s.png/a.png", true}, {"a.png.b", "a.png.b", false},
      {"s/../a", "a.png", true},    {"a.b png", "a.b png.png", true}};
  for (const auto& [name, file, isFound] : rows) {
    fs::remove_all(bundle());
    fs::create_directory(bundle());
    fs::create_directories(bundle() / "s");
    info._iconFiles = {name};
    writeIcon(file, square(1));
    EXPECT_EQ(outcome(), isFound ? "1" : "No icon found") << name << " " << file;
  }
}

TEST_F(InfoManagerTest, TheFirstOfTheLargestWins) {
  info._iconFiles = {"a", "b.png", "b.png"};
  info._ipadIconFiles = {"c"};
  writeIcon("a@2x.png", square(2, 10));
  writeIcon("b.png", Image(1, 4, std::vector<std::uint8_t>(16, 20)));
  writeIcon("c~ipad.png", Image(4, 1, std::vector<std::uint8_t>(16, 30)));
  writeInfo();
  EXPECT_EQ(InfoManager(bundle()).icon(), square(2, 10));
  writeIcon("a@3x.png", square(3));
  EXPECT_EQ(outcome(), "3");
}

TEST_F(InfoManagerTest, WhatIsNoImageIsPassedOver) {
  info._iconFiles = {"bad", "huge.png", "good"};
  write("bad.png", "");
  write("bad@2x.png", square(9).pngData().substr(0, 50));
  writeIcon("huge.png", square(9));
  fs::resize_file(bundle() / "huge.png", std::uintmax_t{1} << 30);  // more behind the picture
  EXPECT_EQ(outcome(), "No icon found");
  writeIcon("good.png", square(1));
  EXPECT_EQ(outcome(), "1");
}

TEST_F(InfoManagerTest, NamesDoNotLeaveTheBundle) {
  const fs::path outside = bundle().parent_path() / "outside.png";
  fs::create_directory_symlink("..", bundle() / "up");
  fs::create_symlink(outside, bundle() / "link.png");
  writeIcon("../outside.png", square(1));
  const std::vector<std::string> names = {"../outside.png",      "../outside",
                                          "up/outside.png",      "link",
                                          "s/../../outside.png", outside.string()};
  for (const std::string& name : names) {
    info._iconFiles = {name};
    EXPECT_EQ(outcome(), "No icon found") << name;
    EXPECT_EQ(outcome(name), "Icon not found: " + name);
  }
}

TEST_F(InfoManagerTest, WhatCannotBeReadIsTheFileSystemsError) {
  info._iconFiles = {"fine", "other.png"};
  writeIcon("fine.png", square(1));
  ASSERT_EQ(::mkfifo((bundle() / "other.png").c_str(), 0600), 0);
  EXPECT_EQ(outcome(), "Invalid argument");
  EXPECT_EQ(outcome("other.png"), "Invalid argument");
  fs::remove(bundle() / "other.png");
  fs::create_directory(bundle() / "other.png");
  EXPECT_EQ(outcome(), "Is a directory");
  fs::remove(bundle() / "other.png");
  fs::create_symlink("nowhere", bundle() / "other.png");
  EXPECT_EQ(outcome(), "1");

  const InfoManager manager(bundle());
  info._name = "changed";
  writeInfo();
  EXPECT_EQ(manager.info().name(), "changed") << "the file is read each time";
  const auto read = [&] { static_cast<void>(manager.info()); };
  const auto readIcon = [&] { static_cast<void>(manager.icon()); };
  write("Info.plist", "text");
  EXPECT_THROW(read(), DecodingError);
  EXPECT_THROW(readIcon(), DecodingError);
  fs::remove(bundle() / "Info.plist");
  EXPECT_THROW(readIcon(), std::system_error);
  EXPECT_EQ(thrown<std::system_error>(read).value().code(), std::errc::no_such_file_or_directory);
}

TEST_F(InfoManagerTest, ANamedIconIsTheLargestOfItsFiles) {
  writeIcon("Icon-76.png", square(1));
  writeIcon("Icon-76@2x~ipad.png", square(2));
  writeIcon("Icon-76@3x.png", square(1));
  write("bad.png", "text");
  EXPECT_EQ(outcome("Icon-76"), "2");
  EXPECT_EQ(outcome("Icon-76.png"), "1");
  EXPECT_EQ(outcome("bad"), "Icon not found: bad");
  EXPECT_EQ(outcome("a%@"), "Icon not found: a%@");
}

TEST(ResizedIcon, KeepsItsAspectAndIsNeitherEmptyNorHuge) {
  const Image wide(300, 200, std::vector<std::uint8_t>(300 * 200 * 4, 255));
  for (const auto& [longer, height] :
       std::map<std::uint32_t, std::uint32_t>{{1, 1}, {5, 3}, {60, 40}}) {
    EXPECT_EQ(InfoManager::resizedIcon(wide, longer).width(), longer);
    EXPECT_EQ(InfoManager::resizedIcon(wide, longer).height(), height);
  }
  for (const std::uint32_t size : {0U, Image::kLongestSide + 1, 0xFFFF'FFFFU}) {
    EXPECT_EQ(thrown<InfoManager::Error>([&] { InfoManager::resizedIcon(wide, size); }),
              InfoManager::Error::couldNotResize());
  }
}

TEST_F(InfoManagerTest, FilesMayBeAsLargeAsTheirLimits) {
  writeIcon("I.png", square(7));
  fs::resize_file(bundle() / "I.png", limits::kIconFileBytes);
  EXPECT_EQ(outcome("I.png/"), "7");
  fs::resize_file(bundle() / "I.png", limits::kIconFileBytes + 1);
  EXPECT_EQ(outcome("I.png"), "Icon not found: I.png");

  std::string plist = appPlist("a.b", "exe");
  plist.resize(limits::kInfoPlistBytes, ' ');
  write("Info.plist", plist);
  EXPECT_EQ(InfoManager(bundle()).info().bundleID, "a.b");
  write("Info.plist", plist + " ");
  EXPECT_THAT(messageOf([&] { InfoManager(bundle()).info(); }),
              testing::HasSubstr("more than 16777216 bytes"));
}

}  // namespace
}  // namespace tavlen
