#include "tavlen/device/DeviceRoot.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>

#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

TEST(DeviceRoot, ResolvesDevicePaths) {
  const struct {
    const char* root;
    const char* prefix;
    const char* devicePath;
    const char* resolved;
  } rows[] = {{"/", "", "/usr/bin/killall", "/usr/bin/killall"},
              {"/no/tree", "", "/", "/no/tree"},
              {"/no/tree/", "", "/var//mobile/", "/no/tree/var/mobile"},
              {"/no/./tree/x/..", "", "/var/./mobile", "/no/tree/var/mobile"},
              {"/no/tree", "", "/../../etc/passwd", "/no/tree/etc/passwd"},
              {"/no/tree", "", "var", "/no/tree/var"},
              {"/no/tree", "", "//etc", "/no/tree/etc"},
              {"/", "/var/jb", "/usr/bin/killall", "/var/jb/usr/bin/killall"},
              {"/", "/var/jb/", "/bin", "/var/jb/bin"},
              {"/", "var/jb", "/var/../bin/kill", "/var/jb/bin/kill"},
              {"/", "/var/jb", "/usrlocal/x", "/usrlocal/x"},
              {"/", "/var/jb", "/Applications/Marrowgleam.app/bin/kvfileops",
               "/var/jb/Applications/Marrowgleam.app/bin/kvfileops"},
              {"/", "/var/jb", "/Applications/Other.app", "/Applications/Other.app"},
              {"/", "/var/jb", "/var/jb/usr/bin/killall", "/var/jb/usr/bin/killall"},
              {"/", "/usr/jb", "/usr/jb/bin/kill", "/usr/jb/bin/kill"},
              {"/no/tree", "/usr/jb", "/usr/bin", "/no/tree/usr/jb/usr/bin"},
              {"/", "/", "/bin/kill", "/bin/kill"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.root << ' ' << row.prefix << ' ' << row.devicePath);
    const DeviceRoot root(row.root, row.prefix);
    EXPECT_EQ(root.resolve(row.devicePath), row.resolved);
    // Asked again, nothing is joined twice.
    EXPECT_EQ(root.resolve(root.devicePath(row.resolved).native()), row.resolved);
  }
  EXPECT_EQ(DeviceRoot("tree").url(), std::filesystem::current_path() / "tree");
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
  namespace fs = std::filesystem;
  const TemporaryFolder folder;
  folder.write("outside/secret", "s");
  const fs::path tree = folder.path() / "tree";
  folder.write("tree/private/var/mobile/file", "f");
  const struct {
    const char* link;
    const char* target;
  } links[] = {{"var", "private/var"},
               {"absolute", "/private/var"},
               {"private/up", "../var/mobile"},
               {"beside", "../outside"},
               {"escape", "/../../outside/secret"},
               {"dangling", "/missing/x"},
               {"circle", "circle"}};
  for (const auto& each : links) fs::create_symlink(each.target, tree / each.link);

  const struct {
    const char* devicePath;
    const char* resolved;
  } rows[] = {{"/var/mobile/file", "private/var/mobile/file"},
              {"/absolute/mobile/file", "private/var/mobile/file"},
              {"/private/up/file", "private/var/mobile/file"},
              {"/private/up/new/deeper", "private/var/mobile/new/deeper"},
              {"/var", "private/var"},
              {"/beside/secret", "outside/secret"},
              {"/escape", "outside/secret"},
              {"/dangling/y", "missing/x/y"}};
  const DeviceRoot root(tree);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.devicePath);
    EXPECT_EQ(root.resolve(row.devicePath), tree / row.resolved);
  }
  EXPECT_THROW(root.resolve("/circle/x"), std::system_error);
  EXPECT_EQ(DeviceRoot("/").resolve((tree / "var").native()), tree / "var");
}

TEST(DeviceRoot, IsSharedByTheProcess) {
  const DeviceRoot before = DeviceRoot::shared();
  DeviceRoot::setShared(DeviceRoot("/no/tree"));
  EXPECT_EQ(DeviceRoot::shared().resolve("/x"), "/no/tree/x");
  DeviceRoot::setShared(before);
  EXPECT_EQ(DeviceRoot::shared().url(), before.url());
}

}  // namespace
}  // namespace tavlen
