#include "tavlen/device/DirectoryAppListFetcher.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <future>

#include "tavlen/bundles/Info.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tavlen/device/SystemService.h"
#include "tavlen/device/detail/ExcludedApps.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tests/support/StandIns.h"
#include "tests/support/TableFile.h"

namespace tavlen {
namespace {

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
  link(outside.path() / "Out.app", "stash/Apps/Out.app");
  link(outside.path() / "Out.app/Info.plist", "stash/Apps/OutFile.app/Info.plist");
  link(outside.path(), kContainers + std::string("C"));
  link("Round.app", "stash/Apps/Round.app");
  EXPECT_THAT(apps(),
              testing::ElementsAre("com.linked|Linked|stash/Apps/Linked.app",
                                   "com.one|One|stash/Apps/One.app", "com.two|Two|stash/Two.app"));
}

TEST_F(DirectoryAppListFetcherTest, VisitsWithTheFile) {
  write("Applications/A.app", infoXML("com.a",
                                      "<key>CFBundleExecutable</key><string>A</string>"
                                      "<key>CFBundleVersion</key><string>1</string>"
                                      "<key>UIDeviceFamily</key><integer>1</integer>"));
  write("Applications/B.app", infoXML("com.b"));
  write("Applications/C.app", infoXML("com.apple.share"));
  std::vector<std::string> seen;
  fetcher().visitAllApps([&](const AppListApp& app, const PropertyList& list) {
    std::string executable = "incomplete";
    PropertyListDecoder decoder(list);
    Info info;
    if (decoder.attempt([&] { decode(decoder, info); })) executable = info.executable;
    seen.push_back(app.bundleID + "|" + executable);
  });
  EXPECT_THAT(seen, testing::ElementsAre("com.a|A", "com.b|incomplete"));
  EXPECT_THROW(fetcher().visitAllApps([](const AppListApp&, const PropertyList&) {
    throw std::runtime_error("the visitor's");
  }),
               std::runtime_error);
}

using namespace std::string_literals;

std::string stringXML(const std::string& key, const std::string& value) {
  return "<key>" + key + "</key><string>" + value + "</string>";
}

/// An app's record: what it answers beside its identifier and its folder, /Apps/<name>.app.
std::string appXML(const std::string& name, const std::string& more = "") {
  return "<dict>" + more + stringXML("bundleIdentifier", "com.example." + name) +
         stringXML("bundleURL", "/Apps/" + name + ".app") + "</dict>";
}

std::string listXML(const std::string& records) {
  return "<key>applications</key><array>" + records + "</array>";
}

std::vector<std::string> fetchedIDs(const std::string& script) {
  const StandIns standIns(script);
  std::vector<std::string> ids;
  for (const AppListApp& app : LSAppListFetcher().fetchAllApps()) ids.push_back(app.bundleID);
  return ids;
}

// In a process of its own, in which nothing has loaded a class.
TEST(SystemAdapterDeathTest, MissingClassesHaveNoAppsAndNoPids) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      std::exit(LSAppListFetcher().fetchAllApps().empty() && !SystemService::isAvailable() &&
                        !SystemService::pidForApplication("com.example.a")
                    ? 0
                    : 1),
      testing::ExitedWithCode(0), "");
}

TEST(ExcludedApps, AreExactTexts) {
  EXPECT_EQ(excludedApps().size(), 50U);
  EXPECT_TRUE(isExcludedApp("com.apple.AdSheet") && isExcludedApp("com.apple.webapp1"));
  for (const char* kept : {"", "com.apple.Share", "com.apple.shar", "com.apple.share1",
                           "com.apple.webapp11", " com.apple.share", "com.apple.mobilesafari"}) {
    EXPECT_FALSE(isExcludedApp(kept)) << kept;
  }
}

TEST(LSAppListFetcher, KeepsTheWorkspacesOrderAndNames) {
  const std::string info =
      stringXML("CFBundleDisplayName", "Caf\xC3\xA9") + stringXML("CFBundleName", "not shown");
  const StandIns standIns(listXML(
      appXML("zebra", "<key>info</key><dict>" + info + "</dict>") +
      appXML("apple", "<key>info</key><dict><key>CFBundleDisplayName</key><integer>1</integer>" +
                          stringXML("CFBundleName", "Apple") + "</dict>") +
      appXML("my.app", "<key>appTags</key><array><string>visible</string></array>") + "<dict>" +
      stringXML("bundleIdentifier", "com.example.url") +
      stringXML("bundleURL", "file:///Apps/A%20b.app/") + "</dict>"));
  EXPECT_THAT(
      LSAppListFetcher().fetchAllApps(),
      testing::ElementsAre(AppListApp{"com.example.zebra", "Caf\xC3\xA9", "/Apps/zebra.app"},
                           AppListApp{"com.example.apple", "Apple", "/Apps/apple.app"},
                           AppListApp{"com.example.my.app", "my.app", "/Apps/my.app.app"},
                           AppListApp{"com.example.url", "A b", "/Apps/A b.app"}));
}

TEST(LSAppListFetcher, LeavesOutWhatIsNoAppToTarget) {
  for (const auto& row : tableFrom("left-out-apps.txt", 1)) {
    EXPECT_THAT(fetchedIDs(listXML(appXML("first") + row[0] + appXML("last"))),
                testing::ElementsAre("com.example.first", "com.example.last"))
        << row[0];
  }
}

TEST(LSAppListFetcher, KeepsAppsWithOddTagsAndOfOlderSystems) {
  for (const std::string& more :
       {stringXML("appTags", "hidden"), "<key>appTags</key><array><string>Hidden</string></array>"s,
        "<key>old</key><true/>"s}) {
    EXPECT_THAT(fetchedIDs(listXML(appXML("x", more))), testing::ElementsAre("com.example.x"))
        << more;
  }
}

TEST(LSAppListFetcher, HasNoAppsWithoutAWorkspacesList) {
  const std::string list = listXML(appXML("x"));
  for (const std::string& script :
       {""s, listXML(""), stringXML("applications", "x"), stringXML("workspace", "none") + list,
        stringXML("workspace", "raises") + list}) {
    EXPECT_THAT(fetchedIDs(script), testing::IsEmpty()) << script;
  }
}

TEST(SystemService, GivesPidsOfRunningAppsOnly) {
  const auto pid = [](const std::string& number) {
    const StandIns standIns("<key>pids</key><dict><key>com.example.a</key><integer>" + number +
                            "</integer></dict>");
    EXPECT_TRUE(SystemService::isAvailable());
    // Identifiers that the running app's only resembles.
    for (const std::string& other : {"com.example"s, "com.example.a\0b"s, "com.example.a\xFF"s}) {
      EXPECT_EQ(SystemService::pidForApplication(other), std::nullopt);
    }
    return SystemService::pidForApplication("com.example.a");
  };
  EXPECT_EQ(pid("4711"), 4711);
  EXPECT_EQ(pid("1"), 1);
  for (const char* number : {"0", "-1", "-4711", "-2147483648"}) {
    EXPECT_EQ(pid(number), std::nullopt) << number;
  }
  for (const char* state : {"none", "raises"}) {
    const StandIns standIns(stringXML("service", state));
    EXPECT_FALSE(SystemService::isAvailable()) << state;
    EXPECT_EQ(SystemService::pidForApplication("com.example.a"), std::nullopt) << state;
  }
}

/// What the completion of a launch is told; a text of ours where that takes too long.
std::optional<std::string> openingError(const std::string& bundleID,
                                        const SystemService::OpenOptions& options = {}) {
  const auto answer = std::make_shared<std::promise<std::optional<std::string>>>();
  auto error = answer->get_future();
  SystemService::openApplication(
      bundleID, options,
      [answer](const std::optional<std::string>& description) { answer->set_value(description); });
  if (error.wait_for(std::chrono::seconds(60)) != std::future_status::ready) return "no answer";
  return error.get();
}

TEST(SystemService, OpensAppsWithOptions) {
  const TemporaryFolder folder;
  const std::string notes = folder.path() / "options.plist";
  const StandIns standIns(stringXML("launchOptions", notes));
  SystemService::OpenOptions options;
  options.environment = {{"NAME", "caf\xC3\xA9"}, {"OTHER", ""}};
  const auto written = [&] {
    EXPECT_EQ(openingError("com.example.a", options), std::nullopt);
    std::string text = readFile(notes);
    std::erase_if(text, [](unsigned char byte) { return byte <= ' '; });
    return text;
  };
  const std::string rest = R"("__DebugOptions"={"__Environment"={NAME="caf\U00E9";OTHER="";};};})";
  EXPECT_EQ(written(), "{\"__ActivateSuspended\"=<*BN>;" + rest);
  options.isSuspended = true;
  EXPECT_EQ(written(), "{\"__ActivateSuspended\"=<*BY>;" + rest);
}

TEST(SystemService, TellsWhyAnAppIsNotOpened) {
  for (const char* state : {"none", "raises"}) {
    const StandIns standIns(stringXML("service", state));
    EXPECT_THAT(openingError("com.example.a").value_or(""),
                testing::HasSubstr(state == "none"s ? "missing" : "raised"));
  }
  const StandIns standIns("<key>launchErrors</key><dict>" + stringXML("com.example.a", "DomainA") +
                          "</dict>");
  EXPECT_THAT(openingError("com.example.a").value_or(""), testing::HasSubstr("DomainA"));
  EXPECT_EQ(openingError("com.example.b"), std::nullopt);
  SystemService::OpenOptions malformed;
  malformed.environment = {{"NAME", "\xFF"}};
  EXPECT_THAT(openingError("com.example.b", malformed).value_or(""), testing::HasSubstr("UTF-8"));
  EXPECT_THAT(openingError("\xFF").value_or(""), testing::HasSubstr("UTF-8"));
}

}  // namespace
}  // namespace tavlen
