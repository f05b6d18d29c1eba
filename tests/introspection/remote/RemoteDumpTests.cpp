#include "tavlen/introspection/remote/detail/RemoteDump.h"

#include <gmock/gmock.h>
#include <sys/inotify.h>

#include <cerrno>
#include <cmath>
#include <cstdio>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/introspection/remote/RemoteClassParser.h"
#include "tavlen/introspection/remote/detail/DumpFolder.h"
#include "tests/introspection/remote/DumpTest.h"

namespace tavlen {
namespace {
using namespace std::string_literals;
using Classes = ClassParser::Classes;

/// What of a dump does not depend on who is asked: the request is answered by the test.
class RemoteDumpTest : public DumpTest {
 protected:
  static Classes sampleClasses() {
    return {std::make_shared<ObjCClass>(
        "A", ObjCClass::Methods{std::make_shared<ObjCMethod>("b:", "v@:@", true)}, std::nullopt,
        "Super", std::nullopt, std::vector<SharedText>{"P"})};
  }

  Classes dump(const Path& answer, const std::vector<double>& fractions = {},
               const std::shared_ptr<Progress>& parent = nullptr) const {
    return dumpRemotely(image_, parent,
                        [&](const std::string& bundleID, const std::string& image, bool isMain,
                            const std::function<void(double)>& progress) {
                          EXPECT_EQ(bundleID, kApp);
                          EXPECT_EQ(image, kImage);
                          EXPECT_FALSE(isMain);
                          for (const double fraction : fractions) progress(fraction);
                          return answer;
                        });
  }
  /// What becomes of the archive that lies at the device's path `named`, where `path` was sent.
  std::string outcome(const std::string& path) const {
    try {
      EXPECT_EQ(dump(path).size(), 1U);
      return "dumped";
    } catch (const RemoteClassParser::Error& error) {
      return error.description();
    } catch (const std::system_error& error) {
      return error.code() == std::errc::operation_not_permitted ? "refused" : error.what();
    }
  }
  std::string outcomeOfArchiveAt(const std::string& path, const std::string& end = "") const {
    write(path.substr(1), encodeKeyedArchive(sampleClasses()));
    return outcome(path + end);
  }
};

TEST_F(RemoteDumpTest, TakesTheArchiveAndDeletesItsFolder) {
  const fs::path archive = write("tmp/dump/classes", encodeKeyedArchive(sampleClasses()));
  write("tmp/dump/deeper/other", "");
  const Classes classes = dump("/tmp/dump/classes");
  ASSERT_EQ(classes.size(), 1U);
  EXPECT_EQ(*classes.front(), *sampleClasses().front());
  EXPECT_FALSE(fs::exists(archive.parent_path()));
  EXPECT_TRUE(fs::exists(tree() / "tmp"));

  write("tmp/dump/classes", encodeKeyedArchive(Classes()));
  EXPECT_TRUE(dump("/tmp/dump//./classes").empty());  // a success
  EXPECT_EQ(archiveFolders(), 0);
  // What the platform takes for no component of its own.
  for (const char* end : {"/", "//", "/.", "/./", "//.//"}) {
    write("tmp/dump/other", "");
    EXPECT_EQ(outcomeOfArchiveAt("/tmp/dump/classes", end), "dumped") << end;
    EXPECT_EQ(archiveFolders(), 0) << end;
  }
}

TEST_F(RemoteDumpTest, FailsForWhatIsNoArchiveOfClasses) {
  const fs::path folder = tree() / "tmp/dump";
  write("tmp/dump/text", "no archive");
  write("tmp/dump/empty", "");
  write("tmp/dump/texts", encodeKeyedArchive(std::vector<std::string>{"ObjCClass"}));
  write("tmp/dump/class", encodeKeyedArchive(*sampleClasses().front()));
  write("tmp/dump/methods", encodeKeyedArchive(sampleClasses().front()->methods));
  const std::string good = encodeKeyedArchive(sampleClasses());
  write("tmp/dump/cut", good.substr(0, good.size() - 1));
  fs::resize_file(write("tmp/dump/large", good), (std::uintmax_t{256} << 20) + 1);
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", folder / "device");
  fs::create_symlink("circle", folder / "circle");
  write("tmp/elsewhere", good);
  fs::create_symlink("../elsewhere", folder / "link");
  for (const char* name : {"text", "empty", "texts", "class", "methods", "cut", "large", "pipe",
                           "device", "circle", "link", "missing", "", "/", "/.", "text/below"}) {
    EXPECT_EQ(outcome("/tmp/dump/" + std::string(name)), "Remote dump failed") << name;
  }
  EXPECT_EQ(outcome("missing"), "Remote dump failed");
  EXPECT_EQ(outcome(std::string(5000, '/') + std::string(5000, 'a')), "Remote dump failed");
  EXPECT_TRUE(fs::exists(folder / "text"));  // only after a good one
  EXPECT_EQ(outcome("/tmp/dump/class\0"s + "es"), "Remote dump failed");
  EXPECT_EQ(log_.count("remote dump: /tmp/dump/text: "), 1);
  EXPECT_THROW(dump(std::nullopt), RemoteClassParser::Error);
}

TEST_F(RemoteDumpTest, DeletesNoFolderThatIsNotTheAgents) {
  const std::string support(kApplicationSupportDir);
  const std::string tweaks(kTweaksDir);
  for (const std::string& folder :
       {""s, "/etc"s, "/tmp"s, "/var/tmp"s, "/var/mobile"s, "/var/mobile/Library"s,
        "/var/mobile/Library/Application Support"s, "/var/mobile/Library/Logs"s, support, tweaks,
        tweaks + "/A/Resources", support + "/.TemporaryItems/x",
        std::string(kInstalledTweaksDir) + "/com.example.a", std::string(kTweakLibrariesDir),
        "/usr/lib"s, "/Applications/Marrowgleam.app/bin"s, "/Applications/Dumped.app"s,
        "/Applications/Dumped.app/Frameworks"s}) {
    fs::create_directories(tree() / support.substr(1));
    EXPECT_EQ(outcomeOfArchiveAt(folder + "/f"), "refused") << folder;
    EXPECT_TRUE(fs::exists(tree().string() + folder + "/f")) << folder;
  }
  fs::create_directories(tree() / "tmp/x");
  fs::create_directory_symlink("/var/mobile", tree() / "tmp/link");
  fs::create_directory_symlink("/", tree() / "tmp/top");
  fs::create_directory_symlink(tweaks, tree() / "tmp/tweaks");
  for (const std::string& path :
       {"/tmp/x/../../etc/f"s, "/tmp/x/../../../../../etc/f"s, "/tmp/link/Library/f"s,
        "/tmp/top/etc/f"s, "/tmp/tweaks/A/Resources/f"s, fs::relative(tree() / "etc/f").string()}) {
    EXPECT_EQ(outcome(path), "refused") << path;
  }
  for (const std::string& kept : {"/etc"s, "/var/mobile/Library"s, tweaks + "/A/Resources"}) {
    EXPECT_TRUE(fs::exists(tree().string() + kept + "/f")) << kept;
  }
}

TEST_F(RemoteDumpTest, DeletesTheLinkThatWasNamedNotItsTarget) {
  write("var/mobile/Documents/f", encodeKeyedArchive(sampleClasses()));
  fs::create_directories(tree() / "tmp");
  fs::create_directory_symlink("/var/mobile/Documents", tree() / "tmp/dump");
  EXPECT_EQ(outcome("/tmp/dump/f"), "dumped");
  EXPECT_EQ(archiveFolders(), 0);
  EXPECT_TRUE(fs::exists(tree() / "var/mobile/Documents/f"));
  // A link on the way is one of the device's own, and is followed below the root.
  fs::create_directory_symlink("/var/mobile/Documents", tree() / "tmp/docs");
  write("var/mobile/Documents/dump/f", encodeKeyedArchive(sampleClasses()));
  EXPECT_EQ(outcome("/tmp/docs/dump/f"), "dumped");
  EXPECT_FALSE(fs::exists(tree() / "var/mobile/Documents/dump"));
  EXPECT_TRUE(fs::exists(tree() / "var/mobile/Documents/f"));
}

TEST_F(RemoteDumpTest, SaysThatItCouldNotDelete) {
  fs::create_directories(tree() / "tmp");
  fs::create_directory_symlink("/var", tree() / "tmp/dump");
  write("var/f", "");
  fs::permissions(tree(), fs::perms(0755));
  fs::permissions(tree() / "tmp", fs::perms(0555));
  const auto remove = [&] {
    if (::geteuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
    try {
      DumpFolder("/tmp/dump/f").remove(appDir());
    } catch (const std::system_error& error) {
      ::_exit(error.code() == std::errc::permission_denied ? 0 : 1);
    }
    ::_exit(3);
  };
  EXPECT_EXIT(remove(), testing::ExitedWithCode(0), "");
}

/// Exchanges two entries of the tree, as an app that goes on running may at any time.
void exchange(const fs::path& first, const fs::path& second) {
  EXPECT_EQ(::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE), 0);
}

TEST_F(RemoteDumpTest, DeletesWhereItReadWhateverIsSwappedIn) {
  write("var/mobile/Documents/kept", "");
  fs::create_directories(tree() / "tmp");
  fs::create_directory_symlink("/var/mobile", tree() / "tmp/link");
  const auto isKept = [&] { return fs::exists(tree() / "var/mobile/Documents/kept"); };
  write("tmp/p/Documents/classes", encodeKeyedArchive(sampleClasses()));
  {  // The folder around.
    const DumpFolder folder("/tmp/p/Documents/classes");
    exchange(tree() / "tmp/p", tree() / "tmp/link");
    EXPECT_EQ(folder.readArchive(1'000'000), encodeKeyedArchive(sampleClasses()));
    folder.remove(appDir());
    EXPECT_FALSE(fs::exists(tree() / "tmp/link/Documents"));
    EXPECT_TRUE(isKept());
    exchange(tree() / "tmp/p", tree() / "tmp/link");
  }
  const auto refusal = [&](const DumpFolder& folder) {
    try {
      folder.remove(appDir());
      return 0;
    } catch (const std::system_error& error) {
      return error.code().value();
    }
  };
  write("tmp/p/Documents/classes", "");
  {  // The folder itself, by a link and by another folder; nothing is lost by either.
    const DumpFolder folder("/tmp/p/Documents/classes");
    exchange(tree() / "tmp/p/Documents", tree() / "tmp/link");
    EXPECT_EQ(refusal(folder), EPERM);
    exchange(tree() / "tmp/p/Documents", tree() / "tmp/link");
    exchange(tree() / "tmp/p/Documents", tree() / "var/mobile/Documents");
    EXPECT_EQ(refusal(folder), EPERM);
    exchange(tree() / "tmp/p/Documents", tree() / "var/mobile/Documents");
  }
  {  // A folder that has become one of the app's.
    const DumpFolder folder("/tmp/p/Documents/classes");
    fs::rename(tree() / "tmp/p", appDir() / "p");
    EXPECT_EQ(refusal(folder), EPERM);
    fs::rename(appDir() / "p", tree() / "tmp/p");
    fs::rename(tree() / "tmp/p/Documents", tree() / "tmp/gone");
    EXPECT_EQ(refusal(folder), 0);
  }
  EXPECT_TRUE(fs::exists(tree() / "tmp/gone/classes"));
  EXPECT_TRUE(isKept());
}

TEST_F(RemoteDumpTest, SurvivesAnAgentThatSwapsWhileTheArchiveIsDecoded) {
  write("var/mobile/Documents/kept", "");
  fs::create_directories(tree() / "tmp");
  fs::create_directory_symlink("/var/mobile", tree() / "tmp/link");
  // So many that the decoding takes far longer than the exchange.
  Classes classes;
  for (int i = 0; i < 5'000; ++i) classes.push_back(sampleClasses().front());
  const fs::path archive = write("tmp/p/Documents/classes", encodeKeyedArchive(classes));
  const FileDescriptor events(::inotify_init1(IN_CLOEXEC));
  ASSERT_GE(::inotify_add_watch(events.get(), archive.c_str(), IN_CLOSE_NOWRITE), 0);
  std::thread agent([&] {
    std::array<char, 4096> event{};
    EXPECT_GT(::read(events.get(), event.data(), event.size()), 0);
    exchange(tree() / "tmp/p", tree() / "tmp/link");
  });
  EXPECT_EQ(dump("/tmp/p/Documents/classes").size(), classes.size());
  agent.join();
  EXPECT_TRUE(fs::exists(tree() / "var/mobile/Documents/kept"));
  EXPECT_FALSE(fs::exists(tree() / "tmp/link/Documents"));
}

TEST_F(RemoteDumpTest, KnowsTheFoldersOfTheDeviceItself) {
  DeviceRoot::setShared(DeviceRoot());
  const auto isRefused = [&](const std::string& archive) {
    try {
      DumpFolder(tree() / archive).remove(appDir());
      return false;
    } catch (const std::system_error&) {
      return true;
    }
  };
  const auto swap = [](const char* variable, const std::string& value) {
    const char* const former = std::getenv(variable);
    std::string formerValue = former == nullptr ? "" : former;
    EXPECT_EQ(value.empty() ? ::unsetenv(variable) : ::setenv(variable, value.c_str(), 1), 0);
    return formerValue;
  };
  for (const char* folder : {"home", "temporary", "working/deep"}) {
    fs::create_directories(tree() / "users" / folder);
  }
  const std::string home = swap("HOME", tree() / "users/home");
  const std::string temporary = swap("TMPDIR", tree() / "users/temporary");
  const fs::path working = fs::current_path();
  fs::current_path(tree() / "users/working/deep");
  for (const char* archive : {"users/home/f", "users/temporary/f", "users/working/f", "users/f",
                              "users/working/deep/f", "Applications/Dumped.app/Frameworks/f"}) {
    EXPECT_TRUE(isRefused(archive)) << archive;
  }
  fs::current_path(working);
  swap("HOME", home);
  swap("TMPDIR", temporary);
  fs::create_directories(tree() / "kept");
  fs::create_directory_symlink(tree() / "kept", tree() / "link");
  fs::create_directory_symlink(appDir(), tree() / "app");
  EXPECT_TRUE(isRefused("app/Frameworks/f"));
  EXPECT_FALSE(isRefused("link/f"));
  EXPECT_FALSE(fs::is_symlink(tree() / "link"));
  EXPECT_TRUE(fs::exists(tree() / "kept"));
  EXPECT_TRUE(fs::exists(appDir() / "Info.plist"));
}

TEST_F(RemoteDumpTest, ShowsItsProgressAsOneUnitOfTheParent) {
  const std::pair<std::vector<double>, double> cases[] = {
      {{}, 0},          {{0.25, 0.5}, 0.25}, {{0.5, 0.259999}, 0.125},  // towards zero
      {{-0.0099}, 0},   {{0.999999}, 0.495}, {{1}, 0.5},
      {{0.5, -0.01}, 0}};  // below zero it counts for nothing
  for (const auto& [fractions, ofParent] : cases) {
    const auto parent = Progress::discrete(2);
    write("tmp/dump/classes", encodeKeyedArchive(Classes()));
    dump("/tmp/dump/classes", fractions, parent);
    EXPECT_DOUBLE_EQ(parent->fractionCompleted(), ofParent) << testing::PrintToString(fractions);
  }
  EXPECT_EQ(Progress::current(), nullptr);
}

TEST_F(RemoteDumpTest, AnImpossibleFractionIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const double fraction : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, 0x1p63 / 100, -1e17}) {
    EXPECT_DEATH(dump(std::nullopt, {fraction}), "64 bits") << fraction;
  }
  // The furthest ones that are none.
  for (const double fraction : {0x1p63 / 100 * 0.999, -0x1p63 / 100}) {
    EXPECT_THROW(dump(std::nullopt, {fraction}), RemoteClassParser::Error) << fraction;
  }
}

TEST_F(RemoteDumpTest, FailsWithoutTheAppsInfo) {
  const auto isNotAsked = [](const std::string&, const std::string&, bool,
                             const std::function<void(double)>&) -> Path {
    ADD_FAILURE();
    return {};
  };
  write("Applications/Dumped.app/Info.plist", "nothing");
  EXPECT_THROW(dumpRemotely(image_, nullptr, isNotAsked), RemoteClassParser::Error);
  ipa_.reset();
  EXPECT_THROW(dumpRemotely(image_, nullptr, isNotAsked), RemoteClassParser::Error);
  EXPECT_EQ(Progress::current(), nullptr);
}

}  // namespace
}  // namespace tavlen
