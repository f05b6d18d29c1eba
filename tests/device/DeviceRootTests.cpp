#include "tavlen/device/DeviceRoot.h"

#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

TEST(DeviceRoot, ResolvesDevicePaths) {
  for (const auto& row : tableFrom("device-paths.txt", 4)) {
    SCOPED_TRACE(testing::PrintToString(row));
    const DeviceRoot root(row[0], row[1]);
    EXPECT_EQ(root.resolve(row[2]), row[3]);
    // Asked again, nothing is joined twice.
    EXPECT_EQ(root.resolve(root.devicePath(row[3]).native()), row[3]);
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
