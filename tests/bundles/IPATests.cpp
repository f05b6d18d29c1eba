#include "tavlen/bundles/IPA.h"

#include <gmock/gmock.h>

#include <atomic>
#include <regex>

#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tavlen/device/Process.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/tasks/NotificationPoster.h"
#include "tests/support/AppPlist.h"
#include "tests/support/MachOFile.h"
#include "tests/support/SamplePackage.h"
#include "tests/support/StandIns.h"
#include "tests/support/Threads.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using testing::ElementsAre;

class IPATest : public testing::Test {
 protected:
  IPATest() {
    DeviceRoot::setShared(DeviceRoot(tree_.path()));
    app("com.example.notes", "Notes");
    tree_.write("Applications/Notes.app/Notes", macho::thin(2));
    program("kill", "echo kill \"$@\" >> \"$root/calls\"");
    program("killall", "echo killall \"$@\" >> \"$root/calls\"");
    DevicePrograms::setForOtherRoots(
        {helperPath(), tree_.path() / "kill", tree_.path() / "killall"});
    // The helper as documented, with nothing that only a privileged one can do.
    helper(
        "case $1 in\n"
        "cleanup) if [ \"$3\" = 1 ]; then mkdir -p \"$2\"; else rm -rf \"$2\"; fi ;;\n"
        "esac");
  }
  ~IPATest() override { DeviceRoot::setShared(DeviceRoot()); }

  void app(const std::string& bundleID, const std::string& executable) const {
    tree_.write("Applications/Notes.app/Info.plist", appPlist(bundleID, executable));
  }
  void program(const std::string& path, const std::string& script) const {
    const fs::path file =
        tree_.write(path, "#!/bin/sh\nroot='" + tree_.path().string() + "'\n" + script + "\n");
    fs::permissions(file, fs::perms::owner_all);
  }
  void helper(const std::string& script) const {
    program("helper", "echo kvfileops \"$@\" >> \"$root/calls\"\n" + script);
  }

  fs::path helperPath() const { return tree_.path() / "helper"; }
  fs::path appDir() const { return tree_.path() / "Applications/Notes.app"; }
  fs::path installed() const {
    return DeviceRoot::shared().resolve(InstalledRecords::directory("com.example.notes"));
  }
  /// The calls of programs so far, a line each, without the tree's path and the helper's trial run.
  std::string calls() const {
    if (!fs::exists(tree_.path() / "calls")) return "";
    const std::regex noise(tree_.path().string() + "|kvfileops cleanup .*/[0-9A-F-]{36} 0\n");
    return std::regex_replace(readFile(tree_.path() / "calls"), noise, "");
  }

  TemporaryFolder tree_;
};

std::string paths(const std::vector<std::shared_ptr<Executable>>& executables) {
  std::string paths;
  for (const auto& executable : executables) paths += executable->relativePath() + "\n";
  return paths;
}

TEST_F(IPATest, FindsTheImagesOfABundleByTheirHeaders) {
  const std::string base = "Applications/Notes.app/";
  tree_.write(base + "Frameworks/Kit.framework/Kit", macho::fat({macho::thin(6)}));
  tree_.write(base + "Frameworks/libz.dylib", macho::thin(6));
  tree_.write(base + "PlugIns/Share.appex/Share", macho::thin(2));
  tree_.write(base + "helper", macho::thin(2));
  tree_.write(base + "Stickers.bundle/Stickers", macho::thin(8));
  tree_.write(base + "object.o", macho::thin(1));
  tree_.write(base + "fake.dylib", "text");
  fs::create_symlink("Frameworks/libz.dylib", appDir() / "alias.dylib");
  fs::create_symlink("/usr/lib", appDir() / "outside");
  fs::create_hard_link(appDir() / "Notes", appDir() / "AAA");
  ::mkfifo((appDir() / "pipe").c_str(), 0600);

  auto ipa = IPA::withAppDir(appDir());
  const auto main = ipa->mainExecutable();
  EXPECT_TRUE(main->isMain());
  EXPECT_EQ(main->name(), "Notes");
  EXPECT_EQ(main->path(), appDir() / "Notes");
  EXPECT_FALSE(main->parseDynamically());
  Dl_info loaded{};
  // Not through the function's name, which a sanitizer may have taken for one of its own.
  ASSERT_NE(::dladdr(::dlsym(RTLD_NEXT, "fputs"), &loaded), 0);
  EXPECT_TRUE(
      Executable(ipa, "/", std::string(loaded.dli_fname).substr(1), false).parseDynamically());
  EXPECT_EQ(paths(ipa->bundleExecutables()), "PlugIns/Share.appex/Share\nhelper\n");
  EXPECT_EQ(paths(ipa->dynamicExecutables()),
            "Frameworks/Kit.framework/Kit\nFrameworks/libz.dylib\nStickers.bundle/Stickers\n");

  fs::remove_all(appDir());
  EXPECT_EQ(ipa->mainExecutable(), main) << "the bundle is looked through once";
  EXPECT_EQ(main->ipa(), ipa);
  ipa.reset();
  EXPECT_EQ(main->ipa(), nullptr) << "an executable does not keep its app alive";
}

TEST_F(IPATest, SaysWhyThereAreNoExecutables) {
  const auto message = [&] {
    return messageOf([&] { IPA::withAppDir(appDir())->bundleExecutables(); });
  };
  app("com.example.notes", "Missing");
  EXPECT_EQ(message(), "Missing Missing");
  for (const std::string name : {"../Notes", "", ".."}) {
    app("com.example.notes", name);
    EXPECT_EQ(message(), "Invalid filename: " + name);
  }
  app("com.example.notes", "Notes");
  tree_.write("Applications/Notes.app/Notes", "no image");
  EXPECT_EQ(message(), "Error while reading Notes");
  fs::remove_all(appDir());
  EXPECT_EQ(message(), "Cleaned up");

  const auto ipa = IPA::withAppDir(appDir());
  EXPECT_THROW(ipa->mainExecutable(), IPA::Error);
  app("com.example.notes", "Notes");
  tree_.write("Applications/Notes.app/Notes", macho::thin(2));
  EXPECT_NE(ipa->mainExecutable(), nullptr);
}

TEST_F(IPATest, OpensFoldersThatAreBundles) {
  EXPECT_EQ(IPA::openAt(appDir())->appDir(), appDir());
  for (const fs::path& path : {tree_.path(), appDir() / "Notes", tree_.path() / "none"}) {
    EXPECT_EQ(messageOf([&] { IPA::openAt(path); }), "The ipa file was invalid") << path;
  }
}

/// An archived record that is no TweakInfo.
struct OtherRecord {
  static constexpr std::string_view archivedClassName = "OtherRecord";
  std::string tweakID = "T1";
  static constexpr auto codedFields() {
    return std::tuple{requiredField("tweakID", &OtherRecord::tweakID)};
  }
};

TEST_F(IPATest, TellsTheActiveTweak) {
  const auto ipa = IPA::withAppDir(appDir());
  const std::string record =
      std::string(kInstalledTweaksDir.substr(1)) + "/com.example.notes/TweakInfo.plist";
  EXPECT_EQ(ipa->activeTweakID(), std::nullopt);
  tree_.write(record, encodeKeyedArchive(TweakInfo("com.example.notes", "T1")));
  EXPECT_EQ(ipa->activeTweakID(), "T1");
  for (const std::string& broken :
       {std::string(), std::string("bplist00"), std::string("<plist><dict/></plist>"),
        encodeKeyedArchive(OtherRecord())}) {
    tree_.write(record, broken);
    EXPECT_EQ(ipa->activeTweakID(), std::nullopt) << broken;
  }
  fs::remove(tree_.path() / record);
  ::mkfifo((tree_.path() / record).c_str(), 0600);
  EXPECT_EQ(ipa->activeTweakID(), std::nullopt) << "a pipe";

  // A record beside the folder of records is nobody's.
  tree_.write(std::string(kInstalledTweaksDir.substr(1)) + "/../out/TweakInfo.plist",
              encodeKeyedArchive(TweakInfo("x", "T2")));
  app("../out", "Notes");
  EXPECT_EQ(ipa->activeTweakID(), std::nullopt);
}

TEST_F(IPATest, InstallsReplacesAndClearsATweak) {
  const auto ipa = IPA::withAppDir(appDir());
  const std::string cleanup =
      "kvfileops cleanup " + InstalledRecords::directory("com.example.notes");
  const std::string respring = "killall -9 SpringBoard\n";
  const std::string kill = "kill -9 4711\n";
  const StandIns standIns(
      "<key>pids</key><dict><key>com.example.notes</key><integer>4711</integer></dict>");
  std::vector<std::string> notices;
  const auto observe = [&](const Notification& notification) {
    const auto& info = *notification.userInfo;
    notices.push_back(notification.name + " " + std::any_cast<std::string>(info.at("bundleID")) +
                      " " + std::any_cast<std::string>(info.at("tweakID")));
  };
  const auto token = NotificationCenter::default_().addObserver(std::nullopt, nullptr, observe);
  const struct {
    std::string id;
    std::string icon;
    std::string calls;
  } steps[] = {{"T1", "", cleanup + " 1\n" + kill},
               {"T2", "an icon", cleanup + " 1\n" + respring},
               {"T3", "another icon", cleanup + " 1\n" + respring},
               // The same bytes elsewhere change nothing that the home screen shows.
               {"T4", "another icon", cleanup + " 1\n" + kill}};
  for (const auto& [id, icon, expected] : steps) {
    const SamplePackage tweak(id, icon);
    ipa->setActiveTweak(&tweak);
    EXPECT_EQ(calls(), expected) << id;
    EXPECT_EQ(ipa->activeTweakID(), id);
    EXPECT_TRUE(fs::exists(installed() / (id + ".bundle/code.js")));
    EXPECT_EQ(std::distance(fs::directory_iterator(installed()), {}), 2) << "with the record";
    EXPECT_THAT(notices, ElementsAre("InstalledTweaksDidChange com.example.notes " + id,
                                     "IPAFilesDidChange com.example.notes " + id));
    notices.clear();
    fs::remove(tree_.path() / "calls");
  }
  IPA::poster().performWithoutNotifications([&] { ipa->setActiveTweak(nullptr); });
  EXPECT_EQ(calls(), cleanup + " 0\n" + respring);
  EXPECT_FALSE(fs::exists(installed()));
  EXPECT_TRUE(notices.empty()) << "the last change was silent";
  EXPECT_FALSE(fs::exists(tree_.path() / "var/mobile/Library/Application Support/Marrowgleam/"
                                         ".TemporaryItems"));
  NotificationCenter::default_().removeObserver(token);
}

TEST_F(IPATest, AFailedInstallationLeavesTheOldOneOrNoRecord) {
  const auto ipa = IPA::withAppDir(appDir());
  const SamplePackage old("T1");
  const SamplePackage next("T2");
  ipa->setActiveTweak(&old);

  const SamplePackage broken("broken");
  EXPECT_THROW(ipa->setActiveTweak(&broken), std::runtime_error);
  EXPECT_EQ(ipa->activeTweakID(), "T1");

  // One that does not run here, that stops before its work, after it, and at the removal.
  for (const char* script : {"exit 3", "case $2 in *notes) exit 3; esac",
                             "case $2 in *notes) rm -rf \"$2\"; exit 3; esac",
                             "case $2 in *notes) mkdir -p \"$2\"/T1.bundle; exit 3; esac"}) {
    helper(script);
    for (const InstallableTweak* tweak :
         std::initializer_list<const SamplePackage*>{&next, nullptr}) {
      EXPECT_EQ(thrown<Process::Error>([&] { ipa->setActiveTweak(tweak); }),
                Process::Error::terminated(3));
      EXPECT_EQ(ipa->activeTweakID(), "T1") << script;
      EXPECT_TRUE(fs::exists(installed() / "T1.bundle/code.js")) << script;
      EXPECT_EQ(std::distance(fs::directory_iterator(installed()), {}), 2) << script;
    }
  }

  fs::remove(helperPath());
  EXPECT_EQ(messageOf([&] { ipa->setActiveTweak(&next); }), "Missing kvfileops");
  for (const std::string bundleID : {"..", "a/b", ""}) {
    app(bundleID, "Notes");
    EXPECT_EQ(messageOf([&] { ipa->setActiveTweak(&next); }), "Invalid filename: " + bundleID);
    EXPECT_EQ(messageOf([&] { ipa->copyCrashLogs(tree_.path()); }),
              "Invalid filename: " + bundleID);
  }
}

TEST_F(IPATest, NeverInstallsOutsideTheTree) {
  const TemporaryFolder outside;
  outside.write("com.example.notes/kept", "kept");
  fs::create_directories(installed().parent_path().parent_path());
  fs::create_symlink(outside.path(), installed().parent_path());
  const SamplePackage tweak("T1");
  IPA::withAppDir(appDir())->setActiveTweak(&tweak);
  // As on the device, the link leads to a folder of its own tree.
  EXPECT_TRUE(fs::exists(tree_.path() / outside.path().relative_path() / "com.example.notes"));
  EXPECT_EQ(std::distance(fs::recursive_directory_iterator(outside.path()), {}), 2);
}

TEST_F(IPATest, ALinkInThePlaceOfTheInstallationIsTheHelpers) {
  tree_.write("var/mobile/Documents/kept", "kept");
  fs::create_directories(installed().parent_path());
  fs::create_directory_symlink("/var/mobile/Documents",
                               installed().parent_path() / "com.example.notes");
  IPA::withAppDir(appDir())->setActiveTweak(nullptr);
  EXPECT_TRUE(fs::exists(tree_.path() / "var/mobile/Documents/kept"));
  EXPECT_EQ(calls(),
            "kvfileops cleanup " + InstalledRecords::directory("com.example.notes") + " 0\n");

  // Nor does a failure empty what the link leads to on this machine.
  const TemporaryFolder machine;
  machine.write("kept", "kept");
  fs::remove(installed().parent_path() / "com.example.notes");
  fs::create_directory_symlink(machine.path(), installed().parent_path() / "com.example.notes");
  helper("case $2 in *notes) exit 3; esac");
  EXPECT_THROW(IPA::withAppDir(appDir())->setActiveTweak(nullptr), Process::Error);
  EXPECT_TRUE(fs::exists(machine.path() / "kept"));
}

TEST_F(IPATest, WhatItMayNotWriteGoesThroughTheHelper) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs to give up root";
  fs::create_directories(installed());
  tree_.write("calls", "");
  helper("[ $1 = cleanup ] || [ -e \"$2\" ] || exit 5");
  for (const fs::path& open : {tree_.path() / "calls", installed().parent_path().parent_path()}) {
    fs::permissions(open, fs::perms::all);
  }
  fs::permissions(helperPath(), fs::perms(0755));
  fs::permissions(tree_.path(), fs::perms(0755));
  const auto install = [&] {
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(2);
    const SamplePackage tweak("T1");
    IPA::withAppDir(appDir())->setActiveTweak(&tweak);
    ::_exit(0);
  };
  EXPECT_EXIT(install(), testing::ExitedWithCode(0), "");
  const std::string place = InstalledRecords::directory("com.example.notes");
  EXPECT_THAT(calls(), testing::MatchesRegex("kvfileops cleanup " + place +
                                             " 1\nkvfileops copy /.*/T1.bundle " + place +
                                             "/T1.bundle\nkvfileops copy /.*/TweakInfo.plist " +
                                             place + "/TweakInfo.plist\n"));
}

TEST_F(IPATest, AnUpdatedAppHasItsNewExecutablesAfterAReload) {
  AppList list(std::make_unique<DirectoryAppListFetcher>(DeviceRoot::shared()));
  const auto ipa = list.app("com.example.notes");
  EXPECT_EQ(ipa->mainExecutable()->name(), "Notes");
  app("com.example.notes", "Renamed");
  fs::rename(appDir() / "Notes", appDir() / "Renamed");
  list.reload();
  EXPECT_EQ(list.app("com.example.notes"), ipa);
  EXPECT_EQ(ipa->mainExecutable()->name(), "Renamed");
}

TEST_F(IPATest, ManyThreadsFillTheCachesOnce) {
  const auto ipa = IPA::withAppDir(appDir());
  std::array<std::shared_ptr<Executable>, 4> found;
  inThreads(
      4, [&](int thread) { found.at(static_cast<std::size_t>(thread)) = ipa->mainExecutable(); });
  EXPECT_THAT(found, testing::Each(found.front()));
}

/// Apps com.0 to com.2 and com.0 again; throws the first `failures` times.
class CountingFetcher final : public AppListFetcher {
 public:
  explicit CountingFetcher(std::atomic<int>& fetches, int failures = 0)
      : fetches_(fetches), failures_(failures) {}
  std::vector<AppListApp> fetchAllApps() const override {
    if (fetches_++ < failures_) throw std::runtime_error("no apps today");
    return {{"com.0", "", "/a"}, {"com.1", "", "/b"}, {"com.2", "", "/c"}, {"com.0", "", "/d"}};
  }

 private:
  std::atomic<int>& fetches_;
  int failures_;
};

TEST(AppList, FetchesOnceAndAnswersTheSameObjects) {
  std::atomic<int> fetches = 0;
  AppList list(std::make_unique<CountingFetcher>(fetches));
  EXPECT_EQ(fetches, 0);
  EXPECT_EQ(list.app("com.9"), nullptr);
  const auto apps = list.apps();
  ASSERT_EQ(apps.size(), 4U);
  EXPECT_EQ(apps[3]->appDir(), "/d");
  EXPECT_EQ(list.app("com.0"), apps[0]);
  EXPECT_EQ(list.app("com.2"), apps[2]);
  EXPECT_EQ(list.apps(), apps);
  EXPECT_EQ(fetches, 1);
}

/// Answers the lists in turn.
class ChangingFetcher final : public AppListFetcher {
 public:
  explicit ChangingFetcher(std::vector<std::vector<AppListApp>> lists) : lists_(std::move(lists)) {}
  std::vector<AppListApp> fetchAllApps() const override { return lists_.at(next_++); }

 private:
  std::vector<std::vector<AppListApp>> lists_;
  mutable std::size_t next_ = 0;
};

TEST(AppList, ReloadingKeepsTheObjectsOfAppsThatAreStillThere) {
  AppList list(std::make_unique<ChangingFetcher>(std::vector<std::vector<AppListApp>>{
      {{"com.0", "", "/a"}, {"com.1", "", "/b"}}, {{"com.2", "", "/c"}, {"com.0", "", "/a"}}}));
  const auto kept = list.app("com.0");
  int announced = 0;
  NotificationCenter& center = NotificationCenter::default_();
  const auto token = center.addObserver(std::string(AppList::kDidReloadNotification), &list,
                                        [&](const Notification& /*of*/) { ++announced; });
  list.reload();
  EXPECT_EQ(announced, 1);
  EXPECT_EQ(list.app("com.0"), kept);
  EXPECT_EQ(list.app("com.1"), nullptr);
  EXPECT_EQ(list.identifiers(), (std::vector<std::string>{"com.0", "com.2"}));
  EXPECT_THROW(list.reload(), std::out_of_range);
  EXPECT_EQ(list.apps().size(), 2U);
  EXPECT_EQ(announced, 1);
  center.removeObserver(token);
}

TEST(AppList, AsksAgainAfterAFetchThatThrew) {
  std::atomic<int> fetches = 0;
  AppList list(std::make_unique<CountingFetcher>(fetches, 1));
  EXPECT_THROW(list.apps(), std::runtime_error);
  EXPECT_EQ(list.apps().size(), 4U);
}

TEST(AppList, IsLoadedOnceByManyThreads) {
  std::string records;
  for (int i = 0; i < 20; ++i) {
    const std::string name = std::to_string(i);
    records += "<dict><key>bundleIdentifier</key><string>com." + name +
               "</string><key>bundleURL</key><string>/A/" + name + ".app</string></dict>";
  }
  const StandIns standIns("<key>applications</key><array>" + records + "</array>");
  std::atomic<int> fetches = 0;
  AppList system(std::make_unique<LSAppListFetcher>());
  AppList counted(std::make_unique<CountingFetcher>(fetches));
  std::array<std::shared_ptr<IPA>, 8> found;
  inThreads(8, [&](int i) {
    EXPECT_EQ(counted.apps().size(), 4U);
    EXPECT_EQ(LSAppListFetcher().fetchAllApps().size(), 20U);
    found.at(static_cast<std::size_t>(i)) = i % 2 == 0 ? system.app("com.7") : system.apps().at(7);
  });
  EXPECT_EQ(fetches, 1);
  for (const auto& app : found) EXPECT_EQ(app, found[0]);
  EXPECT_EQ(found[0]->appDir(), "/A/7.app");
}

/// Whether the shared list, made now, holds just the app in `appDir`.
bool sharedListHolds(const fs::path& appDir) {
  const auto apps = AppList::shared().apps();
  return apps.size() == 1 && apps[0]->appDir() == appDir;
}

bool sharedListIsOfTheSystem() {
  const StandIns standIns(
      "<key>applications</key><array><dict><key>bundleIdentifier</key><string>com.s</string>"
      "<key>bundleURL</key><string>/A/S.app</string></dict></array>");
  return sharedListHolds("/A/S.app");
}

bool sharedListIsOfTheTree() {
  const TemporaryFolder tree;
  tree.write("Applications/T.app/Info.plist",
             "<plist><dict><key>CFBundleIdentifier</key><string>com.t</string></dict></plist>");
  DeviceRoot::setShared(DeviceRoot(tree.path()));
  return sharedListHolds(tree.path() / "Applications/T.app");
}

bool sharedListIsOfTheHost() {
  static std::atomic<int> fetches = 0;
  AppList::setSharedFetcher(std::make_unique<CountingFetcher>(fetches));
  return AppList::shared().apps().size() == 4 && IPA::all() == AppList::shared().apps() &&
         fetches == 1;
}

void setSharedFetcherTooLate() {
  AppList::shared();
  AppList::setSharedFetcher(nullptr);
}

// The shared list is made once a process, so each question has a process of its own.
TEST(AppListDeathTest, SharedListChoosesItsFetcher) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const testing::ExitedWithCode good(0);
  EXPECT_EXIT(std::exit(sharedListIsOfTheSystem() ? 0 : 1), good, "");
  EXPECT_EXIT(std::exit(sharedListIsOfTheTree() ? 0 : 1), good, "");
  EXPECT_EXIT(std::exit(sharedListIsOfTheHost() ? 0 : 1), good, "");
  EXPECT_DEATH(setSharedFetcherTooLate(), "already in use");
}

}  // namespace
}  // namespace tavlen
