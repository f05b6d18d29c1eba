#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <utility>

#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/AppPlist.h"
#include "tests/tools/HelperTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class FetchLogsTest : public HelperTest {
 protected:
  static constexpr const char* kLogs = "var/mobile/Library/Logs/CrashReporter/";

  FetchLogsTest() {
    writeList("Applications/Other.app", "com.other", "Other");
    writeList("var/containers/Bundle/Application/U/Notes.app", "com.example.notes", "NotesApp");
    write("Applications/Broken.app/Info.plist", "<plist>");
    write("Applications/Empty.app/f", "");
    fs::create_directories(root() / kLogs);
  }

  void writeList(const std::string& app, const std::string& bundleID,
                 const std::string& executable) const {
    write(app + "/Info.plist", appPlist(bundleID, executable));
  }
  void writeLog(const std::string& name, const std::string& text = "\n") const {
    write(kLogs + name, text);
  }
  int fetch(const std::string& bundleID = "com.example.notes", User user = User::same) const {
    return run({"fetch-logs", bundleID, outside().string()}, user).status;
  }
  std::set<std::string> fetched() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(outside())) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
};

TEST_F(FetchLogsTest, TakesTheLogsThatNameTheApp) {
  const struct {
    std::string name, text;
    bool isTaken;
  } byHeader[] = {
      {"a1.ips", R"({"bug_type":"309","bundleID":"com.example.notes"})", true},
      {"a2.ips", "{\"app_name\":\"NotesApp\",\"x\":[{}]}\r\n{}", true},
      {"a3.ips", R"({"app_name":"Other","bundleID":"com.example.notes2"})", false},
      {"a4.ips", R"({"note":"com.example.notes"})", false},
      {"a5.ips", R"({"bundleID":7,"app_name":"NotesApp"})", false},
      {"a6.ips", R"({"bundleID":"com.example.notes")", false},
      {"a7.ips", std::string(200'000, '['), false},
      {"a8.ips", "{\"a\":\"" + std::string(200'000, 'x') + R"(","bundleID":"com.example.notes"})",
       false},
      {"b1.crash", "Incident Identifier: 1\nIdentifier:   com.example.notes\r\n", true},
      {"b2.crash", "Process:         NotesApp [123]\n", true},
      {"b3.crash", "Process: NotesApp\n", true},
      {"b4.crash", "Process: NotesApp Lite [123]\nIdentifier: com.example.notes.lite\n", false},
      {"b5.crash", "Process: Other [1]\n\nIdentifier: com.example.notes\n", false},
      {"b6.crash", "Parent Process: NotesApp [123]\n", false},
      {"b7.txt", "Identifier: com.example.notes\n", false},
      {"b8.crash", std::string("\0\xFF\n", 3), false}};
  std::set<std::string> expected;
  for (const auto& row : byHeader) {
    writeLog(row.name, row.text);
    if (row.isTaken) expected.insert(row.name);
  }
  for (const char* ignored :
       {"com.example.notes-lite-2021-05-01.ips", "com.example.notes.widget-2021-05-01.ips",
        "xcom.example.notes-2021-05-01.ips", "NotesAppLite-2021-05-01.ips",
        "MyNotesApp-2021-05-01.ips", "Other-2021-05-01.ips", "NotesApp-2021-05-01.txt",
        "NotesApp-2021-05-01.ips.part"}) {
    writeLog(ignored);
  }
  for (const char* byName :
       {"NotesApp-2021-05-01-120000.ips", "NotesApp_2021-05-01-120001_Phone.crash",
        "ExcUserFault_NotesApp-2021-05-01.ips", "com.example.notes-2021-05-01.crash"}) {
    writeLog(byName);
    expected.insert(byName);
  }
  writeLog("NotesApp.ips", "");
  expected.insert("NotesApp.ips");
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(fetched(), expected);
  for (const std::string& name : expected) {
    EXPECT_EQ(readFile(outside() / name), readFile(root() / kLogs / name)) << name;
  }
  EXPECT_EQ(fetch("com.nobody"), 0);
  EXPECT_EQ(fetched(), expected);
}

TEST_F(FetchLogsTest, KnowsTheAppsOfTheAppList) {
  writeList("opt/Linked.app", "com.linked", "LinkedApp");
  fs::create_directory_symlink("/opt/Linked.app", root() / "Applications/Linked.app");
  writeList("opt/Apps/V/Deep.app", "com.deep", "DeepApp");
  fs::create_directory_symlink("../../../../../opt/Apps/V",
                               root() / "var/containers/Bundle/Application/V");
  writeList("Applications/Up.app", "com.up", "../NotesApp");
  // A link never leads out of the tree.
  const TemporaryFolder elsewhere;
  fs::permissions(elsewhere.path(), fs::perms(0755));
  fs::rename(root() / "Applications/Other.app", elsewhere.path() / "Other.app");
  fs::create_directory_symlink(elsewhere.path() / "Other.app", root() / "Applications/Other.app");
  for (const char* name : {"LinkedApp", "DeepApp", "NotesApp", "Other"}) {
    writeLog(std::string(name) + "-1.ips");
  }
  const std::pair<std::string, std::set<std::string>> rows[] = {{"com.linked", {"LinkedApp-1.ips"}},
                                                                {"com.deep", {"DeepApp-1.ips"}},
                                                                {"com.up", {}},
                                                                {"com.other", {}}};
  for (const auto& [bundleID, logs] : rows) {
    EXPECT_EQ(fetch(bundleID), 0) << bundleID;
    EXPECT_EQ(fetched(), logs) << bundleID;
    for (const std::string& log : logs) fs::remove(outside() / log);
  }
}

TEST_F(FetchLogsTest, NeverOverwrites) {
  for (const char* number : {"1", "2", "3"}) writeLog("NotesApp-"s + number + ".ips", "new");
  writeOutside("NotesApp-1.ips", "old");
  fs::create_symlink("target", outside() / "NotesApp-2.ips");
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(readFile(outside() / "NotesApp-1.ips"), "old");
  EXPECT_FALSE(fs::exists(outside() / "target"));
  EXPECT_EQ(readFile(outside() / "NotesApp-3.ips"), "new");
}

TEST_F(FetchLogsTest, BringsTheNextTimeWhatWasCutShort) {
  const std::string text(300'000, 'x');
  writeLog("NotesApp-1.ips", text);
  {
    const FileSizeLimit limit(100'000);
    EXPECT_EQ(fetch(), 1);
    EXPECT_TRUE(fetched().empty());
  }
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(readFile(outside() / "NotesApp-1.ips"), text);
}

TEST_F(FetchLogsTest, IsNotStoppedByWhatLiesAmongTheLogs) {
  ASSERT_EQ(::mkfifo((root() / kLogs / "NotesApp-1.ips").c_str(), 0644), 0);
  fs::create_directory(root() / kLogs / "NotesApp-2.ips");
  write("secret", "x");
  fs::create_symlink(root() / "secret", root() / kLogs / "NotesApp-3.ips");
  writeLog("NotesApp-5.ips");
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(fetched(), (std::set<std::string>{"NotesApp-5.ips"}));

  writeLog("NotesApp-4.ips");
  fs::resize_file(root() / kLogs / "NotesApp-4.ips", std::uintmax_t{1} << 40);
  writeLog("NotesApp-6.ips");
  EXPECT_EQ(fetch(), 1) << "one was too large";
  EXPECT_EQ(fetched(), (std::set<std::string>{"NotesApp-5.ips", "NotesApp-6.ips"}));

  fs::remove(root() / kLogs / "NotesApp-4.ips");
  writeLog("NotesApp-7.ips");
  fs::create_hard_link(root() / "secret", root() / kLogs / "NotesApp-8.ips");
  EXPECT_EQ(fetch(), 0) << "what the caller may read has any number of names";
  EXPECT_EQ(fetched().size(), 4U);
}

TEST_F(FetchLogsTest, RefusesOtherIdentifiersAndPlaces) {
  writeLog("NotesApp-1.ips");
  for (const char* bundleID : {"", ".", "..", "a/b", "../x", "/"}) {
    EXPECT_EQ(fetch(bundleID), 1) << bundleID;
  }
  for (const std::string& folder : {""s, "."s, (outside() / "missing").string(),
                                    (root() / kLogs / "NotesApp-1.ips").string()}) {
    EXPECT_EQ(status({"fetch-logs", "com.example.notes", folder}), 1) << folder;
  }
  EXPECT_TRUE(fetched().empty());
  fs::remove_all(root() / kLogs);
  EXPECT_EQ(fetch(), 0) << "nothing has crashed yet";
  // A link leads to a folder of the tree, whatever lies at that path outside of it.
  writeOutside("logs/NotesApp-2.ips");
  fs::create_directory_symlink(outside() / "logs", (root() / kLogs).parent_path());
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(fetched(), std::set<std::string>{"logs"});
}

TEST_F(FetchLogsTest, FailsWithoutPermission) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs another user than the folders' owner";
  writeLog("NotesApp-1.ips");
  EXPECT_EQ(fetch("com.example.notes", User::nobody), 1);
  EXPECT_TRUE(fetched().empty());
  fs::permissions(outside(), fs::perms(0777));
  writeLog("NotesApp-2.ips");
  fs::permissions(root() / kLogs / "NotesApp-1.ips", fs::perms(0600));
  EXPECT_EQ(fetch("com.example.notes", User::nobody), 1);
  EXPECT_EQ(fetched(), (std::set<std::string>{"NotesApp-2.ips"}));

  fs::permissions(root() / "Applications", fs::perms(0700));
  writeLog("com.example.notes-3.ips");
  writeLog("NotesApp-4.ips");
  fs::remove(root() / kLogs / "NotesApp-1.ips");
  EXPECT_EQ(fetch("com.example.notes", User::nobody), 1) << "the apps are not known";
  EXPECT_EQ(fetched(), (std::set<std::string>{"NotesApp-2.ips", "com.example.notes-3.ips"}));
}

}  // namespace
}  // namespace tavlen
