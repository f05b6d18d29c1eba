#include <gmock/gmock.h>
#include <sys/inotify.h>

#include <algorithm>
#include <array>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {
using testing::EndsWith;
using testing::HasSubstr;

const std::string kNoDevice =
    "tavlen: not a running device: the app is not ended and the home screen not restarted\n";

class InstallCommandTest : public CommandStoreTest {
 protected:
  /// What the app's folder of installed tweaks holds of files named `name`, one after the other.
  std::string installed(const std::string& name) const {
    std::string found;
    const fs::path directory =
        folder() / ("tree" + std::string(kInstalledTweaksDir)) / "com.example.notes";
    if (!fs::exists(directory)) return "nothing";
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
      if (entry.path().filename() == name) found += contents(entry.path());
    }
    return found;
  }
};

TEST_F(InstallCommandTest, InstallsAndUninstalls) {
  const std::string id = newTweak("T");
  write(stored(id) + "/script.objs", "one();");
  write(stored(id) + "/Executables/tool", "tool");
  EXPECT_EQ(run("uninstall T").err, "tavlen: error: T: is not installed\n");
  EXPECT_EQ(run("install T").err, kNoDevice);
  EXPECT_EQ(installed("code.js") + installed("tool"), "one();");
  EXPECT_EQ(run("install T --executables").status, 0);
  EXPECT_EQ(installed("code.js") + installed("tool"), "one();tool");
  write("share/ob.js", "OBJSTranspiler = {transpile() { return {code: 'other', map: ''}; }};");
  EXPECT_EQ(run("install T --transpiler share").status, 0);
  EXPECT_EQ(installed("code.js"), "other");
  EXPECT_THAT(run("show T").out, HasSubstr("Installed:  yes\n"));

  writeCollection("C", "C", "\"" + id + R"(","gone")");
  EXPECT_EQ(run("uninstall C").status, 1) << "its member is, but it is not";
  EXPECT_EQ(run("install C").err,
            "tavlen: warning: the member gone cannot be opened and is left out\n" + kNoDevice);
  writeCollection("E", "E", "");
  EXPECT_EQ(run("install E").err,
            "tavlen: error: E: has no members, so there is nothing to install; to uninstall, use "
            "uninstall --app com.example.notes\n");
  EXPECT_EQ(installed("code.js"), "one();");
  EXPECT_EQ(run("uninstall T").status, 1);
  EXPECT_EQ(run("uninstall C").err, kNoDevice);
  EXPECT_EQ(installed("code.js"), "nothing");

  EXPECT_EQ(run("install T").status, 0);
  fs::remove_all(folder() / stored(id));
  EXPECT_EQ(run("uninstall --app com.example.notes --json").out,
            R"({"kind":"tweak","bundleID":"com.example.notes","installed":false,"stored":false,)"
            R"("identifier":")" +
                id + "\"}\n");
  EXPECT_EQ(run("uninstall --app com.example.notes").err,
            "tavlen: error: com.example.notes: no tweak is installed\n");
  EXPECT_EQ(run("uninstall").status, 2);
  EXPECT_EQ(run("uninstall T --app x").status, 2);
}

TEST_F(InstallCommandTest, SignalsThatTheParentIgnoresChangeNothing) {
  newTweak("T");
  EXPECT_EQ(shell("env --ignore-signal=CHLD \"$tavlen\" install T").err, kNoDevice);
  const Result closed =
      shell("trap '' PIPE; (sleep .2; \"$tavlen\" list; echo $? >status) | true; cat status");
  EXPECT_EQ(closed.err, "");
  EXPECT_EQ(closed.out, std::to_string(128 + SIGPIPE) + "\n");
}

TEST_F(InstallCommandTest, AFailureIsShownAtItsPlace) {
  const std::string good = newTweak("good");
  const std::string bad = newTweak("bad");
  write(stored(bad) + "/script.objs", "fine();\n[a b:];\n");
  writeCollection("C", "C", "\"" + good + "\",\"" + bad + "\"");
  newTweak("elsewhere", "com.gone");
  const std::string folderOfBad = (folder() / stored(bad)).string();
  const std::string syntax = folderOfBad +
                             "/script.objs:2:6: error: expected an argument after 'b:' in the "
                             "message send that began at 2:1\n    [a b:];\n" +
                             std::string(9, ' ') + "^\ntavlen: error: " + folderOfBad +
                             ": does not build\n";
  EXPECT_EQ(run("install good").status, 0);
  for (const char* item : {"bad", "C"}) {
    const Result result = run("install", {item});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, kNoDevice + syntax);
  }
  write("share/ob.js", "OBJSTranspiler = {transpile() { throw new RangeError('deep\\x1b'); }};");
  EXPECT_THAT(run("install good --transpiler share").err,
              testing::MatchesRegex(".*tavlen: error: the transpiler failed: RangeError: deep.x1b\n"
                                    "    transpile@ob.js:1:[0-9]+\n"));
  write("share/ob.js", "1");
  EXPECT_THAT(run("install good --transpiler share").err,
              EndsWith("share/ob.js: error: does not define OBJSTranspiler\n"));
  write("share/ob.js", "f(");
  EXPECT_THAT(run("install good --transpiler share").err,
              HasSubstr("tavlen: error: the transpiler failed: SyntaxError: "));
  EXPECT_THAT(run("install elsewhere").err,
              testing::StartsWith("tavlen: error: com.gone: no app has this identifier"));
  EXPECT_THAT(run("show good").out, HasSubstr("Installed:  yes\n")) << "as it was";
  helper("exit 4");
  EXPECT_THAT(run("install good").err, EndsWith("/kvfileops: ended with status 4\n"));
}

class ArchiveCommandTest : public CommandStoreTest {
 protected:
  std::string only(const std::string& line, const std::vector<std::string>& more = {}) const {
    const Result result = run(line, more);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    return result.out.substr(0, result.out.find('\n'));
  }
  std::size_t entries(const std::string& name) const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder() / name), fs::directory_iterator()));
  }
};

TEST_F(ArchiveCommandTest, AnItemComesBackUnderNewIdentifiers) {
  const std::string tweak = newTweak("a/b:c");
  write(stored(tweak) + "/script.objs", "x();");
  const std::string collection = only("collection new Both --app com.example.notes");
  only("collection add", {collection, tweak, newTweak("B")});
  fs::create_directories(folder() / "out");
  write("out/old.tvx", "old");
  const std::pair<std::string, std::string> rows[] = {
      {tweak, "a-b-c.tvx"},
      {tweak + " -o out", "out/a-b-c.tvx"},
      {tweak + " -o out/old.tvx --force", "out/old.tvx"},
      {collection + " -o c.tvxc", "c.tvxc"}};
  for (const auto& [item, archive] : rows) {
    EXPECT_EQ(only("export " + item), archive);
  }
  EXPECT_EQ(run("export a/b:c -o out").status, 1) << "a path, by its slash";
  const Result copy = run("import out/old.tvx");
  EXPECT_EQ(copy.err, "tavlen: a/b:c: the name is taken; the new item is called a/b:c 2\n");
  EXPECT_EQ(contents(stored(copy.out.substr(0, copy.out.size() - 1)) + "/script.objs"), "x();");
  setInput("c.tvxc");
  EXPECT_THAT(run("import --json -").out,
              testing::StartsWith(R"([{"name":"Both 2","kind":"collection",)"));
  const std::string members = run("collection list --json", {"Both 2"}).out;
  EXPECT_EQ(members.find(tweak), std::string::npos);
  EXPECT_NE(members.find(R"({"name":"a/b:c 3",)"), std::string::npos) << members;
  EXPECT_EQ(entries(stored("..")), 1U);
  EXPECT_EQ(entries(stored("")), 7U);
  EXPECT_EQ(entries("out"), 2U);
}

TEST_F(ArchiveCommandTest, AFailureIsOneLineAndChangesNothing) {
  newTweak("A");
  write("old.tvx", "old");
  fs::create_directories(folder() / "folder.tvx");
  expectRefused("",
                {{"export A -o old.tvx", 1, "old.tvx: already exists; use --force to replace it\n"},
                 {"export A -o nowhere/a.tvx", 1, "nowhere/a.tvx: No such file or directory\n"},
                 {"import nowhere.tvx", 1, "nowhere.tvx: No such file or directory\n"},
                 {"import old.zip", 1, "old.zip: No such file or directory\n"},
                 {"import folder.tvx", 1, "folder.tvx: Is a directory\n"},
                 {"import old.tvx", 1, "old.tvx: "}});
  EXPECT_EQ(contents("old.tvx"), "old");
  EXPECT_EQ(entries(stored("")), 1U);
  EXPECT_EQ(entries(stored("..")), 1U);
}

TEST_F(ArchiveCommandTest, TheOtherFilesAreImportedAllTheSame) {
  const std::string archive = only("export", {newTweak("A")});
  const Result result = run("import nowhere.tvx", {archive, archive});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 2);
  EXPECT_EQ(entries(stored("")), 3U);
}

TEST_F(ArchiveCommandTest, MembersThatDoNotOpenAreNamedOrLeftOut) {
  const std::string id = newTweak("T");
  writeCollection("C", "C", "\"gone\",\"" + id + R"(","C.collection")");
  expectRefused("export C -o", {{"c.tvxc", 1,
                                 "C: cannot open the members gone, C.collection; --skip-missing "
                                 "exports a copy without them\n"}});
  const Result result = run("export C --skip-missing -o c.zip");
  EXPECT_EQ(result.status, 0);
  for (const std::string text :
       {"gone: this member", "C.collection: this member", "c.zip: import recognises"}) {
    EXPECT_NE(result.err.find("tavlen: warning: " + text), std::string::npos) << result.err;
  }
  fs::rename(folder() / "c.zip", folder() / "c.TVXC");
  fs::create_directory(folder() / "empty");
  EXPECT_EQ(run("collection list c.TVXC --root empty").out, "NAME  IDENTIFIER\nT     " + id + "\n");
  EXPECT_EQ(run("export c.TVXC -o copy.tvxc --root empty").status, 0);
  EXPECT_EQ(contents("copy.tvxc"), contents("c.TVXC"));
  EXPECT_EQ(run("import c.TVXC").status, 0);
  const std::string members = run("collection list --json", {"C 2"}).out;
  EXPECT_THAT(members, testing::StartsWith(R"([{"name":"T 2",)"));
  EXPECT_EQ(members.find("true"), std::string::npos) << "none is missing";
}

TEST_F(ArchiveCommandTest, TheStoreNeedNotBeWritable) {
  newTweak("T");
  const fs::path blocked = folder() / stored("../.TemporaryItems");
  fs::create_symlink("nowhere", blocked);
  const std::size_t before = entries(".");
  only("export T -o file.tvx");
  EXPECT_EQ(shell("\"$tavlen\" export T -o - >stream.tvx").err, "");
  EXPECT_EQ(entries("."), before + 2) << "nothing temporary is left";
  fs::remove(blocked);
  EXPECT_EQ(run("import file.tvx stream.tvx").status, 0);
}

class OpenCount {
 public:
  OpenCount(const fs::path& folder, std::string name) : name_(std::move(name)) {
    // Openings that follow each other at once would be told as one, but a closing lies between.
    EXPECT_GE(::inotify_add_watch(events_.get(), folder.c_str(), IN_OPEN | IN_CLOSE), 0);
  }

  int take() {
    int count = 0;
    alignas(inotify_event) std::array<char, 1 << 16> buffer;
    for (ssize_t size = 0; (size = ::read(events_.get(), buffer.data(), buffer.size())) > 0;) {
      for (ssize_t at = 0; at < size;) {
        const auto* event = reinterpret_cast<const inotify_event*>(&buffer.at(std::size_t(at)));
        if ((event->mask & IN_OPEN) != 0 && event->len > 0 && event->name == name_) ++count;
        at += ssize_t{sizeof *event} + event->len;
      }
    }
    return count;
  }

 private:
  FileDescriptor events_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};
  std::string name_;
};

TEST_F(CommandStoreTest, EachCommandOpensATweaksDocumentOnce) {
  const std::string id = newTweak("Tweak");
  std::string collection = run("collection new C --app com.example.notes").out;
  collection.pop_back();
  OpenCount opens(folder() / stored(id), "Manifest.json");
  for (const std::string& command : {std::string("hook add Tweak '-[A b]' --signature v16@0:8"),
                                     std::string("hook list Tweak"),
                                     std::string("hook set Tweak '-[A b]' --name N"),
                                     std::string("param set Tweak N 0 nil"),
                                     std::string("param get Tweak N"),
                                     std::string("override add Tweak DisplayName Other"),
                                     std::string("override list Tweak"),
                                     std::string("show Tweak"),
                                     std::string("list"),
                                     std::string("source Tweak"),
                                     std::string("check Tweak"),
                                     std::string("build Tweak"),
                                     std::string("install Tweak"),
                                     std::string("uninstall Tweak"),
                                     "collection add " + collection + " Tweak",
                                     "collection list " + collection,
                                     "install " + collection,
                                     "export " + collection,
                                     std::string("export Tweak"),
                                     std::string("delete Tweak")}) {
    const Result result = run(command);
    EXPECT_EQ(result.status, 0) << command << "\n" << result.err;
    // What is exported is read, and copied.
    EXPECT_EQ(opens.take(), command.starts_with("export") ? 2 : 1) << command;
  }
}

}  // namespace
}  // namespace tavlen
