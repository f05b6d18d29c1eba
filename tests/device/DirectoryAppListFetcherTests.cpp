#include "tavlen/device/DirectoryAppListFetcher.h"

#include <gmock/gmock.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <stdexcept>

#include "tavlen/bundles/Info.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

/// Info.plist with that identifier; `more` are further members.
std::string infoXML(const std::string& bundleID, const std::string& more = "") {
  return "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + bundleID +
         "</string>" + more + "</dict></plist>";
}

class DirectoryAppListFetcherTest : public testing::Test {
 protected:
  static constexpr const char* kContainers = "var/containers/Bundle/Application/";

  fs::path write(const std::string& bundle, std::string_view info) const {
    return tree_.write(bundle + "/Info.plist", info);
  }
  DirectoryAppListFetcher fetcher() const { return DirectoryAppListFetcher(DeviceRoot(root())); }
  /// Each app as "identifier|name|path below the root".
  std::vector<std::string> apps() const {
    std::vector<std::string> texts;
    for (const AppListApp& app : fetcher().fetchAllApps()) {
      texts.push_back(app.bundleID + "|" + app.displayName + "|" +
                      app.bundle.lexically_relative(root()).string());
    }
    return texts;
  }
  const fs::path& root() const { return tree_.path(); }

 private:
  TemporaryFolder tree_;
};

TEST_F(DirectoryAppListFetcherTest, ListsBothFoldersByPath) {
  const std::string containers = kContainers;
  EXPECT_THAT(apps(), testing::IsEmpty());
  write(containers + "B/Two.app", infoXML("com.two", "<key>CFBundleName</key><string>2</string>"));
  write(containers + "A/Three.app", infoXML("com.three",
                                            "<key>CFBundleDisplayName</key><string>Drei</string>"
                                            "<key>CFBundleName</key><string>3</string>"));
  write("Applications/One.app",
        infoXML("com.one",
                "<key>CFBundleDisplayName</key><true/>"
                "<key>SBAppTags</key><array><true/><string>Hidden</string></array>"));
  write("Applications/Dotted.name.app", infoXML("com.two"));
  write("Applications/bad\xFF.app",
        infoXML("com.bad", "<key>SBAppTags</key><string>hidden</string>"));
  EXPECT_THAT(apps(), testing::ElementsAre("com.two|Dotted.name|Applications/Dotted.name.app",
                                           "com.one|One|Applications/One.app",
                                           "com.bad|bad\xEF\xBF\xBD|Applications/bad\xFF.app",
                                           "com.three|Drei|" + containers + "A/Three.app",
                                           "com.two|2|" + containers + "B/Two.app"));
}

TEST_F(DirectoryAppListFetcherTest, LeavesOutWhatIsNoApp) {
  const std::string containers = kContainers;
  write("Applications/Kept.app", infoXML("com.kept"));
  const std::string hidden = "<key>SBAppTags</key><array><string>hidden</string></array>";
  write("Applications/Hidden.app", infoXML("com.hidden", hidden));
  write("Applications/Service.app", infoXML("com.apple.share"));
  write("Applications/Other.bundle", infoXML("com.other"));
  write("Applications/.app", infoXML("com.nameless"));
  write("Applications/Deep/In.app", infoXML("com.deep"));
  write(containers + "Shallow.app", infoXML("com.shallow"));
  write("Applications/Number.app",
        "<plist><dict><key>CFBundleIdentifier</key><integer>1</integer></dict></plist>");
  write("Applications/List.app",
        "<plist><array><string>CFBundleIdentifier</string></array></plist>");
  write("Applications/Broken.app", "bplist00");
  write("Applications/Empty.app", "");
  fs::create_directories(root() / "Applications/Folder.app/Info.plist");
  fs::create_directories(root() / "Applications/Missing.app");
  fs::create_directories(root() / "Applications/Pipe.app");
  ASSERT_EQ(::mkfifo((root() / "Applications/Pipe.app/Info.plist").c_str(), 0600), 0);
  std::ofstream(root() / "Applications/File.app") << infoXML("com.file");
  EXPECT_THAT(apps(), testing::ElementsAre("com.kept|Kept|Applications/Kept.app"));
}

TEST_F(DirectoryAppListFetcherTest, FollowsLinksInsideTheTreeOnly) {
  const TemporaryFolder outside;
  outside.write("Out.app/Info.plist", infoXML("com.out"));
  const auto link = [&](const fs::path& target, const std::string& name) {
    fs::create_directories((root() / name).parent_path());
    fs::create_symlink(target, root() / name);
  };
  // As some tools that free the system's volume leave it: one absolute, one relative.
  write("stash/Apps/One.app", infoXML("com.one"));
  link("/stash/Apps", "Applications");
  write("stash/Two.app", infoXML("com.two"));
  link("../../../../../stash/Two.app", kContainers + std::string("A/Again.app"));
  link("/stash/Two.app", kContainers + std::string("B/Two.app"));
  link("/stash/shared.plist", "stash/Apps/Linked.app/Info.plist");
  std::ofstream(root() / "stash/shared.plist") << infoXML("com.linked");
  // Out of the tree, into nothing, and round.
  link(outside.path() / "Out.app", "stash/Apps/Out.app");
  link(outside.path() / "Out.app/Info.plist", "stash/Apps/OutFile.app/Info.plist");
  link(outside.path(), kContainers + std::string("C"));
  link("Round.app", "stash/Apps/Round.app");
  EXPECT_THAT(apps(),
              testing::ElementsAre("com.linked|Linked|stash/Apps/Linked.app",
                                   "com.one|One|stash/Apps/One.app", "com.two|Two|stash/Two.app"));
}

TEST_F(DirectoryAppListFetcherTest, VisitsWithTheFileReadOnce) {
  const fs::path complete =
      write("Applications/A.app", infoXML("com.a",
                                          "<key>CFBundleExecutable</key><string>A</string>"
                                          "<key>CFBundleVersion</key><string>1</string>"
                                          "<key>UIDeviceFamily</key><integer>1</integer>"));
  const fs::path bare = write("Applications/B.app", infoXML("com.b"));
  const fs::path hidden = write("Applications/C.app", infoXML("com.apple.share"));
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(watch, 0);
  for (const fs::path& file : {complete, bare, hidden}) {
    ASSERT_GE(::inotify_add_watch(watch, file.c_str(), IN_OPEN), 0);
  }

  std::vector<std::string> seen;
  fetcher().visitAllApps([&](const AppListApp& app, const PropertyList& list) {
    std::string executable = "incomplete";
    PropertyListDecoder decoder(list);
    Info info;
    if (decoder.attempt([&] { decode(decoder, info); })) executable = info.executable;
    seen.push_back(app.bundleID + "|" + executable);
  });
  EXPECT_THAT(seen, testing::ElementsAre("com.a|A", "com.b|incomplete"));
  std::array<inotify_event, 16> opens{};
  EXPECT_EQ(::read(watch, opens.data(), sizeof opens), ssize_t{3 * sizeof(inotify_event)});
  ::close(watch);

  EXPECT_THROW(fetcher().visitAllApps([](const AppListApp&, const PropertyList&) {
    throw std::runtime_error("the visitor's");
  }),
               std::runtime_error);
}

}  // namespace
}  // namespace tavlen
