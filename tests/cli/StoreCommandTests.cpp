#include <gmock/gmock.h>

#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/text/Characters.h"
#include "tests/cli/RunningCommand.h"

namespace tavlen {
namespace {
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kError = "tavlen: error: ";

TEST_F(CommandStoreTest, NewMakesATweakOrSaysWhatIsWrong) {
  EXPECT_THAT(run("list").err, StartsWith("tavlen: nothing is stored in "));
  const std::string id = newTweak("N\n");
  EXPECT_EQ(contents(stored(id) + "/Manifest.json"),
            R"({"configuration":{"name":"N\n","color":"lightGreen","bundleID":"com.example.notes",)"
            R"("glyph":{"icon":"tools","style":"solid"}},"overrides":[],"hooks":[]})");
  EXPECT_THAT(run("new A --app com.gone --glyph apple").err,
              StartsWith("tavlen: warning: com.gone: no app with that identifier"));
  EXPECT_THAT(run("new B --app com.example.note").err,
              EndsWith("did you mean \"com.example.notes\"?\n"));
  expectRefused(
      "new",
      {{"B --app x", 1, "B: the item "},
       {"A --app x --glyph tolls", 2,
        "--glyph: unknown glyph \"tolls/solid\"; did you mean \"tools/solid\"?\n"},
       {"A --app x --glyph apple/solid", 2,
        "--glyph: unknown glyph \"apple/solid\"; did you mean \"apple/brands\"?\n"},
       {"A --app x --glyph /", 2, "--glyph: unknown glyph \"/\"\n"},
       {"A --app x --color blue", 2, "--color: unknown value \"blue\"; known are lightGreen,"},
       {"\xFF --app x", 2, "NAME: it is not UTF-8\n"},
       {"'' --app x", 2, "NAME: it is empty\n"},
       {"A --app ./gone.app", 1, "./gone.app: No such file or directory\n"},
       {"A --app gone.ipa", 1, "gone.ipa: no such file, and no app has this"},
       {"A", 2, "--app is missing\n"}});
  EXPECT_EQ(std::distance(fs::directory_iterator(folder() / stored("")), {}), 3)
      << "what is refused makes nothing";
}

TEST_F(CommandStoreTest, ListSortsItemsAndCountsOtherEntries) {
  const std::string alpha = newTweak("alpha");
  const std::string beta = newTweak("Beta", "com.gone");
  writeCollection("C", R"(a\u001b collection)", "");
  EXPECT_EQ(run("install alpha").status, 0);
  const Result all = run("list");
  EXPECT_EQ(all.err, "");
  EXPECT_THAT(all.out, StartsWith("NAME              KIND        APP                INSTALLED  "
                                  "IDENTIFIER\na\\x1b collection  collection  "
                                  "com.example.notes             C.collection\nalpha"));
  const std::string json = run("list --json").out;
  const auto at = [&](const std::string& id) {
    return R"("stored":true,"identifier":")" + id + R"(","path":")" +
           (folder() / stored(id)).string() + "\"}";
  };
  EXPECT_THAT(json, HasSubstr(R"({"name":"alpha","kind":"tweak","bundleID":"com.example.notes",)"
                              R"("color":"lightGreen","glyph":"tools/solid","installed":true,)" +
                              at(alpha) + ",{\"name\":\"Beta\""));
  EXPECT_THAT(json, EndsWith("\"installed\":false," + at(beta) + "]\n"));
  write(stored(".hidden"), "");
  write(stored("note.txt"), "");
  write(stored("note"), "");
  const Result some = run("list");
  EXPECT_EQ(some.out, all.out);
  EXPECT_THAT(some.err, EndsWith("/Tweaks are not items and are left out\n"));
  fs::remove_all(folder() / stored(alpha));
  EXPECT_THAT(run("list").out,
              EndsWith("\n-                 tweak       com.example.notes  yes      "
                       "  " +
                       alpha + "  not stored\n"));
  EXPECT_THAT(run("list --json").out, HasSubstr(R"("stored":false,"identifier":")" + alpha));
  fs::remove_all(folder() / stored(""));
  write(stored("").substr(0, stored("").size() - 1), "");
  EXPECT_THAT(run("list").err, EndsWith("/Tweaks: Not a directory\n"));
}

TEST_F(CommandStoreTest, ItemsGoByIdentifierNameOrPath) {
  const std::string id = newTweak("My tweak");
  write(stored(id) + "/script.objs", "one();");
  writeTweak("here", "");
  for (const std::string& name :
       {id, lowercased(id), id.substr(0, 8), lowercased(id.substr(0, 4)), std::string("My tweak"),
        "./" + stored(id), stored(id) + "/", stored(id) + "/Manifest.json"}) {
    EXPECT_EQ(run("build", {name}).out, "one();") << name;
    EXPECT_THAT(run("show", {name}).out, HasSubstr("Identifier: " + id + "\n")) << name;
  }
  writeCollection("C", "Both", "\"" + id + R"(","../../x")");
  EXPECT_THAT(
      run("show Both").out,
      EndsWith("Tweaks:     " + id + "  My tweak\n            ../../x  (cannot be opened)\n"));
  EXPECT_THAT(run("show C.collection --json").out,
              HasSubstr(R"("stored":true,"identifier":"C.collection","path":")"));
  const std::string installed = newTweak("My");
  EXPECT_EQ(run("install", {installed}).status, 0);
  fs::copy(folder() / stored(installed), folder() / stored("ABCD-1"));
  fs::copy(folder() / stored(installed), folder() / stored("ABCD-2"));
  write(stored("BROKEN/Manifest.json"), "{}");
  expectRefused(
      "install",
      {{"brok", 1,
        (folder() / stored("BROKEN/Manifest.json")).string() + ":1:1: error: missing key"},
       {"a.tvx", 1, "a.tvx: is an archive, not a stored item; import makes one of it\n"},
       {"-", 1, "-: is a text, not a stored item; apply makes one of it\n"}});
  for (const char* command : {"show", "install", "delete", "uninstall"}) {
    expectRefused(
        command,
        {{"'my tweak'", 1,
          "my tweak: no stored tweak or collection has that identifier or name; did you mean \"My "
          "tweak\"?\n"},
         {"ABCE", 1,
          "ABCE: no stored tweak or collection has that identifier or name; did you mean "
          "\"ABCD\"?\n"},
         {"My", 1, "My: several items have that name; name one by its identifier\nIDENTIFIER "},
         {"abcd", 1, "abcd: several identifiers begin like that; write more of one\nIDENTIFIER  "},
         {"./BAD", 1, "./BAD: No such file or directory\n"},
         {"./tree", 1, "./tree: has neither Manifest.json nor tweak.toml\n"}});
  }
  EXPECT_THAT(run("show My").err, ContainsRegex(installed + "  My    com.example.notes  20..-..-.. "
                                                            "..:..  yes\n"));
  EXPECT_THAT(run("show --json My").err, HasSubstr(R"("candidates":[{"name":"My","bundleID":")"));
  newTweak("ABCD");
  EXPECT_EQ(run("show ABCD").err, "") << "a name goes before the beginning of an identifier";
  EXPECT_EQ(run("build Both").err, kError + "Both: is a collection, not a tweak\n");
}

TEST_F(CommandStoreTest, ABrokenItemIsListedShownAndDeletedByItsIdentifier) {
  const std::string id = newTweak("T");
  EXPECT_EQ(run("install T").status, 0);
  std::string manifest = contents(stored(id) + "/Manifest.json");
  manifest.replace(manifest.find("[]}"), 3, "[1]}");
  write(stored(id) + "/Manifest.json", manifest);
  write(stored("BAD.collection"), "[]");
  const std::string error = "expected a dictionary, found a";
  EXPECT_EQ(run("list").err, "");
  EXPECT_THAT(run("list").out, HasSubstr(id + "  hooks[0]: " + error));
  const std::string json = run("list --json").out;
  EXPECT_THAT(json, HasSubstr(R"({"kind":"collection","installed":false,"stored":true,)"
                              R"("identifier":"BAD.collection",)"));
  EXPECT_THAT(json, HasSubstr(R"({"kind":"tweak","installed":true,)"));
  EXPECT_THAT(json, HasSubstr(R"(","error":")" + error));
  const Result shown = run("show", {id});
  EXPECT_EQ(shown.status, 1);
  EXPECT_THAT(shown.out, StartsWith("Name:       T\nKind:       tweak\n"));
  EXPECT_THAT(shown.out, HasSubstr("Installed:  yes\nScript:     none\n"));
  EXPECT_THAT(shown.err, HasSubstr("Manifest.json:1:148: hooks[0]: error: " + error));
  EXPECT_THAT(run("show BAD.collection --json").out,
              HasSubstr(R"("installed":false,"stored":true,"identifier":)"));
  EXPECT_EQ(run("show BAD").err,
            kError + "BAD: no stored tweak or collection has that identifier or name\n");
  EXPECT_EQ(run("delete", {id}).status, 0);
  EXPECT_EQ(run("delete BAD.collection").err, "");
  EXPECT_THAT(run("list").err, StartsWith("tavlen: nothing is stored in "));
  EXPECT_EQ(run("uninstall --app com.example.notes").status, 1) << "it has been uninstalled";
}

TEST_F(CommandStoreTest, DeleteTakesAwayWhatTheStoreHolds) {
  const std::string id = newTweak("A");
  writeCollection("C", "C", "\"" + id + "\"");
  writeTweak("mine", "");
  EXPECT_EQ(run("delete C ./mine").err, kError + "./mine: is not in " +
                                            (folder() / "tree").string() + std::string(kTweaksDir) +
                                            "\n");
  EXPECT_EQ(run("delete C C.collection").out, "deleted collection C (C.collection)\n");
  EXPECT_EQ(run("install A").status, 0);
  const std::string other = newTweak("B");
  const std::string row = run("list --json").out;
  const std::string rowOfB = row.substr(row.find(R"({"name":"B")"));
  EXPECT_EQ(run("delete --json B").out, "[" + rowOfB) << "the row of " + other;
  EXPECT_THAT(run("show A").out, HasSubstr("Installed:  yes\n")) << "another one's";
  helper("exit 3");
  const Result forced = run("delete A");
  EXPECT_EQ(forced.out, "deleted tweak A (" + id + ")\n");
  EXPECT_THAT(forced.err, HasSubstr("warning: A: could not be uninstalled from com.example.notes"));
  EXPECT_THAT(run("list").err, StartsWith("tavlen: nothing is stored"));
  EXPECT_TRUE(fs::exists(folder() / "mine"));
}

TEST_F(CommandStoreTest, DeleteAsksOnATerminal) {
  const std::string id = newTweak("A");
  const struct {
    std::vector<std::string> words;
    std::string answer;
    int status;
  } rows[] = {{{"A"}, "\n", 1}, {{"A"}, "n\n", 1}, {{"A"}, "\x04", 1}, {{"A"}, "y\n", 0}};
  for (const auto& [words, answer, status] : rows) {
    std::vector<std::string> line = {"delete", "--root", (folder() / "tree").string()};
    line.insert(line.end(), words.begin(), words.end());
    RunningCommand command(line, {}, 80);
    EXPECT_EQ(command.until(']'), "Delete the tweak A (" + id + ")? [y/N");
    command.type(answer);
    EXPECT_EQ(command.status(), status);
    EXPECT_EQ(fs::exists(folder() / stored(id)), status != 0);
  }
  const std::string other = newTweak("B");
  RunningCommand sure({"delete", "B", "-y", "--root", (folder() / "tree").string()}, {}, 80);
  EXPECT_EQ(sure.until('\r'), "deleted tweak B (" + other + ")");
}

TEST_F(CommandStoreTest, SetChangesWhatItIsToldInOneWrite) {
  write("tree/Applications/Maps.app/Info.plist", appPlist("com.example.maps", "Maps"));
  const std::string id = newTweak("A");
  const std::string inner = newTweak("B");
  writeCollection("C", "C", "\"" + inner + "\"");
  writeCollection("E", "E", "");
  expectRefused("set", {{"A", 2, ""},
                        {"A --name B", 1, "B: the item " + inner + " has this name already\n"},
                        {"A --glyph tolls", 2, "--glyph: unknown glyph"},
                        {"C --app com.example.maps", 1,
                         "C: its member B: Bundle ID mismatch (expected 'com.example.maps' but "
                         "found 'com.example.notes')\n"}});
  EXPECT_EQ(run("set E --app tree/Applications/Maps.app --name E").err, "");
  EXPECT_THAT(contents(stored("E.collection")), HasSubstr("com.example.maps"));
  EXPECT_EQ(run("install A").status, 0);
  EXPECT_EQ(run("set A --name N --color darkPurple --glyph moon").err, "");
  EXPECT_THAT(run("show N").out, HasSubstr("Installed:  yes\n"));
  const Result moved = run("set N --app com.example.maps --json");
  EXPECT_THAT(moved.err, EndsWith(R"("message":"N: uninstalled from com.example.notes; not )"
                                  R"(installed for com.example.maps"})"
                                  "\n"));
  EXPECT_THAT(moved.out, StartsWith(R"({"name":"N","kind":"tweak","bundleID":"com.example.maps",)"
                                    R"("color":"darkPurple","glyph":"moon/solid",)"
                                    R"("installed":false,"stored":true,"identifier":")" +
                                    id));
  EXPECT_EQ(run("uninstall --app com.example.notes").status, 1);
  const std::string broken =
      "tavlen: warning: the collection C, which contains it, is for com.example.notes and can no "
      "longer be installed\n";
  EXPECT_EQ(run("set B --app com.example.maps").err, broken);
  for (const char* change : {"apply B.toml --to B", "edit B"}) {
    EXPECT_EQ(run("set B --app com.example.notes").status + run("install B").status, 0);
    EXPECT_EQ(shell("$tavlen dump B | sed s/notes/maps/ >B.toml").err, "");
    environment({"EDITOR=sed -i s/notes/maps/"});
    EXPECT_THAT(run(change).err, EndsWith("B: uninstalled from com.example.notes; not installed "
                                          "for com.example.maps\n" +
                                          broken));
  }
}

class CollectionCommandTest : public CommandStoreTest {
 protected:
  /// The members' names in the collection "C", "-" for missing ones.
  std::string members() const {
    const Result list = run("collection list C");
    EXPECT_EQ(list.status, 0) << list.err;
    std::string names;
    for (std::size_t at = list.out.find('\n'); at + 1 < list.out.size();
         at = list.out.find('\n', at + 1)) {
      names += list.out.at(at + 1);
    }
    return names;
  }
};

TEST_F(CollectionCommandTest, MembersAreAddedAndRemoved) {
  const Result made = run("collection new C --app com.example.notes --color darkRed --glyph star");
  ASSERT_EQ(made.status, 0) << made.err;
  const std::string file = stored(made.out.substr(0, made.out.size() - 1));
  EXPECT_EQ(contents(file),
            R"({"configuration":{"name":"C","color":"darkRed","bundleID":"com.example.notes",)"
            R"("glyph":{"icon":"star","style":"solid"}},"tweaks":[]})");
  const std::string a = newTweak("A");
  const std::string b = newTweak("B");
  newTweak("[WIP]");
  newTweak("O", "com.other");
  writeTweak("loose", "");
  const struct {
    std::string line;
    std::string error;
    std::string members;
  } steps[] = {{"add C B " + a, "", "BA"},
               {"add C [WIP]", "", "BA["},
               {"remove C [WIP]", "", "BA"},
               {"add C A", "A: is already in the collection", "BA"},
               {"add C O",
                "O: Bundle ID mismatch (expected 'com.example.notes' but found 'com.other')", "BA"},
               {"remove C B O", "O: is not in the collection", "BA"},
               {"add C C", "C: is a collection, not a tweak", "BA"},
               {"add " + b + " A", b + ": is a tweak, not a collection", "BA"},
               {"add C ./loose",
                "./loose: is not in " + (folder() / stored("")).parent_path().string(), "BA"},
               {"move C A 0", "", "AB"},
               {"move C A end", "", "BA"},
               {"move C A 2", "2: is no place; the members have the places from 0 to 1", "BA"},
               {"move C O 0", "O: is not in the collection", "BA"},
               {"remove C B", "", "A"},
               {"add '" + file + "' B", "", "AB"}};
  for (const auto& [line, error, left] : steps) {
    const Result result = run("collection " + line);
    EXPECT_EQ(result.err, error.empty() ? "" : "tavlen: error: " + error + "\n");
    EXPECT_EQ(result.status, error.empty() ? 0 : 1);
    EXPECT_EQ(members(), left);
  }
}

TEST_F(CollectionCommandTest, MissingMembersAreShownAndRemovedByIdentifier) {
  const std::string a = newTweak("A");
  writeCollection("C", "C", R"("../../x",")" + a + R"(","gone","gone","C.collection")");
  EXPECT_EQ(members(), "-A---");
  EXPECT_EQ(run("collection list C --json").out,
            R"([{"identifier":"../../x","missing":true},{"name":"A","identifier":")" + a +
                R"(","missing":false},{"identifier":"gone","missing":true},)"
                R"({"identifier":"gone","missing":true},)"
                R"({"identifier":"C.collection","missing":true}])"
                "\n");
  EXPECT_EQ(run("collection remove C gone ../../x").err, "");
  EXPECT_EQ(members(), "A-");
  EXPECT_EQ(run("collection").status, 2);
  EXPECT_EQ(run("collection add C").status, 2);
}

TEST_F(CommandStoreTest, AScriptIsStoredWholeOrNotAtAll) {
  const std::string id = newTweak("T");
  const std::string script = stored(id) + "/script.objs";
  EXPECT_EQ(run("script show T").out, "");
  write("new", "caf\u00E9();\r\n");
  EXPECT_EQ(run("script set T new").err, "");
  setInput("new");
  EXPECT_EQ(run("script set T -").err, "");
  EXPECT_EQ(run("script show T").out, contents("new"));
  EXPECT_EQ(shell("printf 'piped();' | \"$tavlen\" script set T /dev/stdin").err, "");
  EXPECT_EQ(run("script show T").out, "piped();");
  EXPECT_EQ(run("script set T -").err, "");
  write("bad", "\xFFx");
  setInput("bad");
  expectRefused("script set T", {{"bad", 1, "bad: is not UTF-8\n"},
                                 {"-", 1, "standard input: is not UTF-8\n"},
                                 {".", 1, ".: Is a directory\n"},
                                 {"gone", 1, "gone: No such file or directory\n"}});
  EXPECT_EQ(contents(script), contents("new"));
  EXPECT_EQ(run("script show T -o copy").out, "");
  EXPECT_EQ(contents("copy"), contents("new"));
  EXPECT_THAT(run("script clear T --json").out, StartsWith(R"({"name":"T",)"));
  EXPECT_FALSE(fs::exists(folder() / script));
  fs::create_directory(folder() / script);
  EXPECT_EQ(run("script show T").status, 1);
  EXPECT_EQ(run("script set T new").status, 1);
}

TEST_F(CommandStoreTest, AnEditedScriptIsNeverLost) {
  const std::string script = stored(newTweak("T")) + "/script.objs";
  const struct {
    std::string editor;
    std::string stored;
    std::string error;  ///< its beginning
    bool isKept;
  } rows[] = {
      {"sed -i s/old/new/", "new", "", false},
      {"f() { rm \"$1\"; printf new >\"$1\"; }; f", "new", "", false},
      {"true", "old", "tavlen: the script is unchanged\n", false},
      {"false", "old", "tavlen: error: false: ended with status 1 (there is no terminal)\n", false},
      {"f() { printf new >\"$1\"; exit 3; }; f", "old", "tavlen: error: ", true},
      {"f() { printf '\\377' >\"$1\"; }; f", "old", "tavlen: error: ", true},
      {"f() { printf new >\"$1\"; printf other >'" + (folder() / script).string() + "'; }; f",
       "other",
       "tavlen: error: the script changed on disk while you were editing it; your text is in",
       true},
  };
  for (const auto& row : rows) {
    write(script, "old");
    environment({"EDITOR=" + row.editor});
    const Result result = run("script edit T");
    EXPECT_EQ(result.status, row.error.starts_with("tavlen: error") ? 1 : 0);
    EXPECT_EQ(contents(script), row.stored) << row.editor;
    EXPECT_THAT(result.err, StartsWith(row.error)) << row.editor;
    EXPECT_EQ(result.err.empty(), row.error.empty()) << result.err;
    const std::size_t kept = result.err.find("is in ");
    ASSERT_EQ(kept != std::string::npos, row.isKept) << row.editor;
    std::size_t leavings = 0;
    for (const auto& entry : fs::directory_iterator(folder())) {
      if (!entry.path().filename().string().starts_with("tavlen-")) continue;
      ++leavings;
      EXPECT_TRUE(fs::exists(entry.path() / "script.objs"));
      fs::remove_all(entry.path());
    }
    EXPECT_EQ(leavings, row.isKept ? 1U : 0U) << row.editor;
  }
  environment();
  EXPECT_THAT(run("script edit T").err, StartsWith(kError + "there is no terminal for an editor"));
  environment({"VISUAL=sed -i s/old/visual/", "EDITOR=false"});
  write(script, "old");
  EXPECT_EQ(run("script edit T").status, 0);
  EXPECT_EQ(contents(script), "visual");
}

TEST_F(CommandStoreTest, WhatCannotBePrintedIsAnError) {
  const std::string id = newTweak("T");
  write("script", "x();");
  writeCollection("C", "C", "\"" + id + "\"");
  write("picture", Image(1, 1, {1, 2, 3, 255}).pngData());
  for (const char* line : {"icon set T picture", "script set T script", "export T -o T.tvx"}) {
    ASSERT_EQ(run(line).status, 0);
  }
  for (const char* line :
       {"list", "apps", "info com.example.notes", "show T", "collection list C", "script show T",
        "icon T -o -", "set T --color darkRed --json", "export T -o -", "import T.tvx",
        "script set T script --json", "uninstall --json T"}) {
    SCOPED_TRACE(line);
    EXPECT_EQ(run("install T").status, 0);
    const Result full = run(line, {}, "/dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.err, HasSubstr("standard output: No space left on device"));
    EXPECT_EQ(run("install T").status, 0);
    const Result closed = shell("\"$tavlen\" " + std::string(line) + " >&-");
    EXPECT_EQ(closed.status, 1);
    EXPECT_THAT(closed.err, HasSubstr("standard output: Bad file descriptor"));
  }
  EXPECT_EQ(shell("\"$tavlen\" new N --app a.b >&-").status, 1);
  EXPECT_EQ(shell("\"$tavlen\" delete N >&-").status, 1);
}

}  // namespace
}  // namespace tavlen
