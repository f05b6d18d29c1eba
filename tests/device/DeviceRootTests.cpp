#include "tavlen/device/DeviceRoot.h"

#include <sys/stat.h>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/device/TweakInfo.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

TEST(DeviceRoot, ResolvesDevicePaths) {
  for (const auto& row : tableFrom("device-paths.txt", 4)) {
    SCOPED_TRACE(testing::PrintToString(row));
    const DeviceRoot root(row[0], row[1]);
    EXPECT_EQ(root.resolve(row[2]), row[3]);
    EXPECT_EQ(root.resolve(root.devicePath(row[3]).native()), row[3]);
  }
  EXPECT_EQ(DeviceRoot("tree").url(), fs::current_path() / "tree");
  EXPECT_TRUE(DeviceRoot("/x/..").isDevice());
}

TEST(DeviceRoot, NamesPathsAsTheDeviceDoes) {
  const DeviceRoot root("/no/tree");
  EXPECT_EQ(root.devicePath("/no/tree/var/x"), "/var/x");
  EXPECT_EQ(root.devicePath("/no/tree"), "/");
  EXPECT_EQ(root.devicePath("/no/tree/var/../../treehouse"), "/no/tree/var/../../treehouse");
  EXPECT_EQ(root.devicePath("/no/treehouse"), "/no/treehouse");
  EXPECT_EQ(DeviceRoot().devicePath("/var/x"), "/var/x");
  EXPECT_EQ(DeviceRoot().devicePath("here/x"), "here/x");
}

TEST(DeviceRoot, FollowsLinksBelowTheRoot) {
  const TemporaryFolder folder;
  folder.write("outside/secret", "s");
  const fs::path tree = folder.path() / "tree";
  folder.write("tree/private/var/mobile/file", "f");
  const std::pair<const char*, const char*> links[] = {{"var", "private/var"},
                                                       {"absolute", "/private/var"},
                                                       {"private/up", "../var/mobile"},
                                                       {"beside", "../outside"},
                                                       {"escape", "/../../outside/secret"},
                                                       {"dangling", "/missing/x"},
                                                       {"circle", "circle"}};
  for (const auto& [link, target] : links) fs::create_symlink(target, tree / link);

  const std::pair<const char*, const char*> rows[] = {
      {"/var/mobile/file", "private/var/mobile/file"},
      {"/absolute/mobile/file", "private/var/mobile/file"},
      {"/private/up/file", "private/var/mobile/file"},
      {"/private/up/new/deeper", "private/var/mobile/new/deeper"},
      {"/var", "private/var"},
      {"/beside/secret", "outside/secret"},
      {"/escape", "outside/secret"},
      {"/dangling/y", "missing/x/y"}};
  const DeviceRoot root(tree);
  for (const auto& [devicePath, resolved] : rows) {
    SCOPED_TRACE(devicePath);
    EXPECT_EQ(root.resolve(devicePath), tree / resolved);
  }
  EXPECT_THROW(root.resolve("/circle/x"), std::system_error);
  EXPECT_EQ(pathInside(root, tree / "var", "mobile/file"), tree / "private/var/mobile/file");
  EXPECT_EQ(pathInside(root, tree / "private/up", "../../../beside/secret"), std::nullopt);
  const std::string outside = (folder.path() / "outside/secret").relative_path();
  for (const std::string up : {"../../../../../../../../", "./../../../../../../../../../x/../"}) {
    EXPECT_EQ(pathInside(root, tree / "var", up + outside), std::nullopt) << up;
  }
  EXPECT_EQ(DeviceRoot("/").resolve((tree / "var").native()), tree / "var");
}

class TweakInfoTest : public testing::Test {
 protected:
  TweakInfoTest() { DeviceRoot::setShared(DeviceRoot(root_.path())); }
  ~TweakInfoTest() override { DeviceRoot::setShared(DeviceRoot()); }

  static TweakInfo withIcon(const char* url) {
    TweakInfo info("app", "tweak");
    info.customIconURL = URL{url};
    return info;
  }

  TemporaryFolder root_;
};

TEST_F(TweakInfoTest, respringsWhenTheIconsBytesDiffer) {
  root_.write("icons/a b.png", "one");
  root_.write("icons/same.png", "one");
  root_.write("icons/other.png", "two");
  root_.write("icons/empty.png", "");
  ASSERT_EQ(::mkfifo((root_.path() / "pipe").c_str(), 0600), 0);
  const auto huge = root_.write("huge.png", "one");
  fs::resize_file(huge, std::uintmax_t{1} << 40);  // sparse

  fs::create_symlink("circle.png", root_.path() / "circle.png");

  const char* const kIcon = "file:///icons/a%20b.png";
  const struct {
    const char* mine;  ///< null for a record without an icon
    const char* others;
    bool expected;
  } rows[] = {{nullptr, nullptr, false},
              {kIcon, nullptr, true},
              {nullptr, kIcon, true},
              {kIcon, kIcon, false},
              {kIcon, "file:///icons/same.png", false},
              {kIcon, "file:///icons/other.png", true},
              {kIcon, "file:///icons/missing.png", true},
              {"file:///icons/missing.png", "file:///icons/gone.png", false},
              {"file:///icons/empty.png", "file:///icons/missing.png", true},  // no bytes are bytes
              {"file:///icons", "file:///icons/missing.png", false},
              {"http://icons/a%20b.png", kIcon, true},
              {"file:///pipe", kIcon, true},
              {"file:///circle.png", kIcon, true},
              {"file:///huge.png", kIcon, true},
              {"file:///huge.png", "file:///pipe", false}};
  for (const auto& row : rows) {
    const TweakInfo mine = row.mine == nullptr ? TweakInfo("a", "b") : withIcon(row.mine);
    const TweakInfo others = row.others == nullptr ? TweakInfo() : withIcon(row.others);
    EXPECT_EQ(mine.shouldRespringAfterChangingFromOther(others), row.expected)
        << (row.mine == nullptr ? "none" : row.mine);
  }
  EXPECT_TRUE(withIcon(kIcon).shouldRespringAfterChangingFromOther(std::nullopt));
  EXPECT_FALSE(TweakInfo().shouldRespringAfterChangingFromOther(std::nullopt));
}

}  // namespace
}  // namespace tavlen
