#include <gmock/gmock.h>

#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tests/cli/CommandTest.h"
#include "tests/support/MachOFile.h"

namespace tavlen {
namespace {
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class DeviceCommandTest : public CommandTest {
 protected:
  void app(const std::string& folder, const std::string& name, const std::string& bundleID,
           const std::string& rest = "<key>CFBundleVersion</key><string>7</string>") const {
    write("tree/Applications/" + folder + "/Info.plist",
          appPlist(bundleID, "Main",
                   "<key>CFBundleDisplayName</key><string>" + name + "</string>" + rest));
  }
  void program(const std::string& path, const std::string& script) const {
    write("tree/" + path, "#!/bin/sh\n" + script + "\n");
    fs::permissions(folder() / "tree" / path, fs::perms::owner_all);
  }
  Result device(const std::string& line) const { return run("--root tree " + line); }
};

const std::string kRecords =
    "tree/var/mobile/Library/Application Support/Marrowgleam/Installed Tweaks/";

TEST_F(DeviceCommandTest, AppsAreATable) {
  app("B.app", "bravo", "com.b");
  app("A.app", "Alpha", "com.a",
      "<key>CFBundleVersion</key><string>7</string>"
      "<key>CFBundleShortVersionString</key><string>1.20</string>");
  app("J.app", "\u65E5\u672C\u8A9E\U0001F5FA\uFE0F", "com.japan");
  app("Family.app", "f\u0065\u0301 \U0001F468\u200D\U0001F469\u200D\U0001F467!", "com.family");
  app("Broken.app", "Broken\nName", "com.broken", "");
  write("tree/Applications/Pipe.app/Info.plist/x", "");
  write(kRecords + "com.b/TweakInfo.plist", encodeKeyedArchive(TweakInfo("com.b", "T1")));
  write(kRecords + "com.a/TweakInfo.plist", "junk");

  const Result table = device("apps");
  EXPECT_EQ(table.err, "");
  EXPECT_EQ(table.out,
            "NAME          IDENTIFIER  VERSION  ACTIVE TWEAK  NOTE\n"
            "Alpha         com.a       1.20\n"
            "bravo         com.b       7        T1\n"
            "Broken\\nName  com.broken  -                      "
            "Info.plist: missing key \"CFBundleVersion\"\n"
            "f\u0065\u0301 \U0001F468\u200D\U0001F469\u200D\U0001F467!        com.family  7\n"
            "\u65E5\u672C\u8A9E\U0001F5FA\uFE0F      com.japan   7\n");

  const Result json = device("apps --json");
  EXPECT_THAT(json.out, StartsWith("[{\"name\":\"Alpha\",\"bundleID\":\"com.a\","
                                   "\"version\":\"1.20\",\"path\":\""));
  EXPECT_THAT(json.out, HasSubstr("\"activeTweak\":\"T1\""));
}

TEST_F(DeviceCommandTest, OneStrangeAppDoesNotSpoilTheList) {
  app("A.app", "Alpha", "com.a");
  app("bad\xFF.app", std::string(2'000'000, 'x'), "com.long");
  app("K.app", "\u1112\u1161\u11AB", "com.hangul");  // one syllable, decomposed
  write("tree/Applications/Out.app/x", "");
  fs::create_symlink(folder() / "outside.plist", folder() / "tree/Applications/Out.app/Info.plist");
  write("outside.plist", contents("tree/Applications/A.app/Info.plist"));
  const std::string wide(59, 'x');
  EXPECT_EQ(device("apps").out, "NAME" + std::string(58, ' ') + "IDENTIFIER  VERSION\nAlpha" +
                                    std::string(57, ' ') + "com.a       7\n" + wide +
                                    "\u2026  com.long    7\n" + "\u1112\u1161\u11AB" +
                                    std::string(60, ' ') + "com.hangul  7\n");
  EXPECT_THAT(device("apps --json").out, HasSubstr("bad\uFFFD.app"));
  EXPECT_EQ(device("info tree/Applications/Out.app").status, 1) << "as on the device";
}

TEST_F(DeviceCommandTest, TheRootComesFromTheOptionOrTheEnvironment) {
  app("A.app", "Alpha", "com.a");
  setEnvironment({"TAVLEN_ROOT=tree"});
  EXPECT_THAT(run("apps").out, HasSubstr("com.a"));
  fs::create_directory(folder() / "empty");
  const Result empty = run("apps --root empty");
  EXPECT_EQ(empty.status, 0);
  EXPECT_EQ(empty.out, "");
  EXPECT_THAT(empty.err, HasSubstr("no apps"));
  EXPECT_THAT(run("--root nowhere apps").err, HasSubstr("nowhere: not a folder"));
  setEnvironment({"TAVLEN_ROOT=nowhere"});
  EXPECT_THAT(run("apps").err, HasSubstr("TAVLEN_ROOT, nowhere: not a folder"));
  EXPECT_EQ(run("--help").status, 0);
}

TEST_F(DeviceCommandTest, APrefixIsOfProgramsAndNotOfTheStore) {
  write("tree/var/jb/Applications/Marrowgleam.app/Info.plist", appPlist("com.tool", "Tool"));
  setEnvironment({"TAVLEN_ROOT=tree"});
  EXPECT_EQ(run("info /Applications/Marrowgleam.app").status, 1);
  EXPECT_EQ(run("new A --app com.tool").status, 0);
  EXPECT_THAT(run("--prefix /var/jb info /Applications/Marrowgleam.app").out, HasSubstr("Tool"));
  expectRefused("list", {{"--prefix var/jb", 2, "--prefix: "}, {"--prefix /var/../x", 2, ""}});
  setEnvironment({"TAVLEN_ROOT=tree", "TAVLEN_PREFIX=/var/jb"});
  EXPECT_THAT(run("info /Applications/Marrowgleam.app").out, HasSubstr("Tool"));
  EXPECT_THAT(run("list").out, HasSubstr("com.tool"));
}

TEST_F(DeviceCommandTest, AnAppIsNamedByIdentifierOrPath) {
  app("A.app", "Alpha", "com.a");
  fs::create_directory(folder() / "com.a");  // no bundle, so the identifier is meant
  for (const std::string name :
       {"com.a", "tree/Applications/A.app", "./tree/Applications/A.app/", "/Applications/A.app"}) {
    EXPECT_THAT(device("info " + name).out, HasSubstr("Identifier:         com.a\n"));
  }
  EXPECT_THAT(device("info com.x").err, StartsWith("tavlen: error: com.x: no such file, and no"));
  EXPECT_EQ(device("info tree/Applications").err,
            "tavlen: error: tree/Applications: The ipa file was invalid\n");
}

TEST_F(DeviceCommandTest, ExecutablesAreListedByKind) {
  app("A.app", "Alpha", "com.a");
  EXPECT_EQ(device("executables com.a").err, "tavlen: error: Missing Main\n");
  write("tree/Applications/A.app/Main", macho::thin(2));
  fs::create_directory(folder() / "tree/Applications/A.app/Frameworks");
  fs::copy_file(paths().machoImages + "/Shapes.encrypted",
                folder() / "tree/Applications/A.app/Frameworks/\u65E5.dylib");
  write("tree/Applications/A.app/tool", macho::fat({macho::thin(2)}));
  EXPECT_EQ(device("executables com.a").out,
            "KIND     ARCHITECTURES  PLATFORM  MINIMUM OS  ENCRYPTED  PATH\n"
            "main     arm64                                no         Main\n"
            "bundle   arm64                                no         tool\n"
            "dynamic  arm64          iOS       15.0        yes        Frameworks/\u65E5.dylib\n");
  write("tree/Applications/A.app/Main", macho::fat({macho::thin(2), macho::thin32(2)}));
  EXPECT_THAT(device("executables com.a").out,
              HasSubstr("\nmain     arm64, armv7                                    Main"));
  const std::string json = device("executables --json com.a").out;
  EXPECT_THAT(json, StartsWith(R"([{"kind":"main","name":"Main","relativePath":"Main",)"));
  EXPECT_THAT(json, HasSubstr(R"("slices":[{"architecture":"arm64","isEncrypted":false},)"
                              R"({"architecture":"armv7","error":")"));
}

TEST_F(DeviceCommandTest, CrashLogsComeThroughTheHelper) {
  app("A.app", "Alpha", "com.a");
  fs::create_directory(folder() / "logs");
  // The helper learns the root, whatever the path that the user gave.
  helper("echo \"$1 $2 $TAVLEN_ROOT\" > \"$3/log.ips\"");
  EXPECT_EQ(device("crash-logs com.a logs").out, "log.ips\n");
  EXPECT_EQ(contents("logs/log.ips"),
            "fetch-logs com.a " + fs::canonical(folder() / "tree").string() + "\n");
  EXPECT_THAT(device("crash-logs com.a logs").err, HasSubstr("no new crash logs"));
  EXPECT_EQ(device("crash-logs com.a nowhere").status, 1);
  helper("exit 4");
  EXPECT_THAT(device("crash-logs com.a logs").err, EndsWith("/kvfileops: ended with status 4\n"));
}

TEST_F(DeviceCommandTest, NothingOfATreeIsRunOrEnded) {
  app("A.app", "Alpha", "com.a");
  for (const char* path :
       {"bin/kill", "usr/bin/killall", "Applications/Marrowgleam.app/bin/kvfileops"})
    program(path, "touch '" + (folder() / "ran").string() + "'");
  fs::create_directory(folder() / "logs");
  for (const char* line : {"respring", "kill com.a", "kill com.x"}) {
    EXPECT_EQ(device(line).err,
              "tavlen: error: not a running device: " + fs::canonical(folder() / "tree").string() +
                  " is a tree of files, in which no program runs\n");
  }
  EXPECT_EQ(device("crash-logs com.a logs").status, 0);
  EXPECT_FALSE(fs::exists(folder() / "ran"));
}

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
    const Result result = run("icon -fo icon.png " + options, {app});
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

TEST_F(IconCommandTest, AnAppMayBeInAnArchive) {
  const fs::path tmp = folder() / "tmp";
  fs::create_directory(tmp);
  fs::create_directory(folder() / "Payload");
  fs::copy(folder() / app("Notes.app"), folder() / "Payload/Notes.app",
           fs::copy_options::recursive);
  ZIPArchive::zipItem(folder() / "Payload", folder() / "Notes.ipa");
  setEnvironment({"TMPDIR=" + tmp.string()});
  EXPECT_EQ(width("Notes.ipa"), 180U);
  EXPECT_EQ(width("Notes.ipa", "--name AppIcon76x76"), 152U);
  EXPECT_EQ(run("info Notes.ipa").out, run("info Payload/Notes.app").out);
  setEnvironment({"TMPDIR=" + tmp.string(), "TAVLEN_ROOT=" + (folder() / "device").string()});
  EXPECT_THAT(run("new N --app Notes.ipa --json").out,
              HasSubstr(R"("bundleID":"com.example.notes")"));
  EXPECT_EQ(run("executables Notes.ipa").out, run("executables Payload/Notes.app").out);
  EXPECT_THAT(run("executables Notes.ipa --json").out,
              HasSubstr(R"("path":"Notes.ipa/Payload/Notes.app/Notes")"));
  write("Payload/Notes.app/Info.plist", "no list");
  write("text.ipa", "no archive");
  ZIPArchive::zipItem(folder() / "Payload", folder() / "bad.ipa");
  expectRefused("info",
                {{"bad.ipa", 1, "bad.ipa/Payload/Notes.app/Info.plist: "},
                 {"text.ipa", 1, "text.ipa: The archive is damaged: its end record is missing\n"}});
  EXPECT_TRUE(fs::is_empty(tmp));
}

TEST_F(IconCommandTest, AFailureIsOneLineAndLeavesTheFileAlone) {
  write("icon.png", "old");
  write("bare/Info.plist", contents(app("Notes.app") + "/Info.plist"));
  const std::string notes = app("Notes.app");
  const std::string broken = app("Broken.app");
  expectRefused(
      "icon",
      {{"bare -fo icon.png", 1, "bare: No icon found\n"},
       {"bare --name 'a\nb' -fo icon.png", 1, "bare: Icon not found: a\\nb\n"},
       {notes + " --size 0 -fo icon.png", 1, notes + ": Could not resize icon\n"},
       {notes + " --size 16385 -fo icon.png", 1, notes + ": Could not resize icon\n"},
       {broken + " -fo icon.png", 1, broken + "/Info.plist: missing key \"CFBundleExecutable\"\n"},
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
  EXPECT_EQ(run("icon T -o shown.png --json").out, R"({"path":"shown.png","width":2,"height":1})"
                                                   "\n");
  EXPECT_EQ(Image::decode(contents("shown.png")), picture);
  EXPECT_EQ(shell("\"$tavlen\" icon T -o - --size 4 | \"$tavlen\" icon set T -").err, "");
  EXPECT_EQ(Image::decode(contents(icon))->width(), 4U);
  expectRefused("icon", {{"T -o x --name A", 1, "T: is a tweak; only apps have icons with names\n"},
                         {"Notes -o x", 1,
                          "Notes: no stored tweak or collection has that identifier or name; did "
                          "you mean \"com.example.notes\"?\n"}});
  EXPECT_EQ(run("icon clear T").err, "");
  EXPECT_EQ(run("icon T -o x").err, "tavlen: error: T: No icon found\n") << "the app's";
  EXPECT_FALSE(fs::exists(folder() / icon));
  for (const char* misuse :
       {"", "set", "set T", "clear", "clear T x", "clear T -o x", "clear T --size 3",
        "set T picture x", "-o x", "T -o - --json", "com.example.notes"}) {
    EXPECT_EQ(run(std::string("icon ") + misuse).status, 2) << misuse;
  }
  EXPECT_FALSE(fs::exists(folder() / icon));
}

}  // namespace
}  // namespace tavlen
