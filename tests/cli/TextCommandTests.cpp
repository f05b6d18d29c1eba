#include <gmock/gmock.h>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/tweaks/Manifest.h"
#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// In a folder with the device tree "tree", whose app has classes, and texts.
class TextCommandTest : public CommandStoreTest {
 protected:
  TextCommandTest() {
    fs::copy_file(paths().machoImages + "/Sketch", folder() / "tree/Applications/Notes.app/Notes");
  }
  /// Makes the text "T/tweak.toml".
  void writeText(const std::string& rest, const std::string& files = "") const {
    write("T/tweak.toml", "[tweak]\nname = \"T\"\napp = \"com.example.notes\"\n" + files + rest);
  }
  std::string apply(const std::string& options) const {
    const std::string out = run("apply " + options).out;
    return out.substr(0, out.find('\n'));
  }
  TweakFile::Manifest manifest(const std::string& id) const {
    return TweakFile::open(folder() / stored(id)).manifest;
  }
};

TEST_F(TextCommandTest, ADumpedFolderMakesTheSameTweak) {
  const fs::path example = fs::path(paths().examples) / "tweaks/Everything";
  fs::copy(example, folder() / "Example", fs::copy_options::recursive);
  fs::copy_file(example / "Resources/background.png", folder() / "Example/Icon.png");
  write("Example/Executables/bin/tool", "#!/bin/sh\n");
  fs::permissions(folder() / "Example/Executables/bin/tool", fs::perms::owner_all);
  EXPECT_EQ(run("dump ./Example -o A").err, "");
  const std::string id = apply("A");
  const TweakFile::Manifest before = TweakFile::open(folder() / "Example").manifest;
  const TweakFile::Manifest after = manifest(id);
  EXPECT_EQ(before.configuration, after.configuration);
  EXPECT_EQ(before._overrides, after._overrides);
  EXPECT_EQ(before.hooks(), after.hooks());
  EXPECT_EQ(shell("diff -r -x Manifest.json -x Icon.png Example '" + stored(id) + "'").out, "");
  EXPECT_EQ(run("dump", {id, "-o", "B"}).err, "");
  EXPECT_EQ(shell("diff -r A B && ls -l B/Executables/bin | grep -c rwx").out, "1\n");
}

TEST_F(TextCommandTest, ApplyChangesAllOrNothingAndSaysWhat) {
  writeText("[overrides]\nVersion = \"1\"\n[[hook]]\nmethod = \"-[A a]\"\ntypes = \"q16@0:8\"\n",
            "script = \"s\"\n");
  write("T/s", "one();");
  write("T/Resources/old", "");
  const std::string id = apply("T");
  const std::string to = " --to " + id;
  EXPECT_THAT(run("apply T" + to).err, EndsWith("tavlen: the tweak is unchanged\n"));
  fs::remove(folder() / "T/Resources/old");
  write("T/Resources/new", "");
  writeText(
      "[[hook]]\nmethod = \"-[A b]\"\ntypes = \"q16@0:8\"\n[[hook]]\nmethod = \"-[A a]\"\n"
      "types = \"Q16@0:8\"\nreturn = 1\n",
      "color = \"darkRed\"\n");
  const std::string changes =
      "changed color: \"lightGreen\" -> \"darkRed\"\nremoved override Version: \"1\"\n"
      "added hook -[A b]\n    types: \"q16@0:8\"\n"
      "changed hook -[A a]\n    types: \"q16@0:8\" -> \"Q16@0:8\"\n    return: none -> 1\n"
      "removed script\nremoved file Resources/old\nadded file Resources/new\n";
  const auto stamp = [&] { return shell("ls -lR --full-time tree").out; };
  const std::string before = stamp();
  EXPECT_EQ(run("apply T --dry-run" + to).out, changes);
  EXPECT_THAT(run("apply T --dry-run").out, StartsWith("added tweak T for com.example.notes\n"));
  EXPECT_EQ(stamp(), before) << "a dry run stores nothing";
  EXPECT_EQ(run("apply T" + to).out, changes);
  EXPECT_THAT(run("apply T" + to).err, EndsWith("tavlen: the tweak is unchanged\n"));
  EXPECT_EQ(shell("cd '" + stored(id) + "' && find . -type f | sort && ls -A ..").out,
            "./Manifest.json\n./Resources/new\n" + id + "\n");
  EXPECT_THAT(run("apply ./T --dry-run --json").out,
              AllOf(StartsWith(R"({"kind":"tweak","name":"T","changes":[{"change":"added",)"),
                    HasSubstr(R"("subject":"file","name":"Resources/new"})")));
  fs::remove(folder() / "T/Resources/new");
  EXPECT_EQ(run("apply T/tweak.toml" + to).err, "tavlen: the tweak is unchanged\n")
      << "a single text keeps what it does not name";
}

TEST_F(TextCommandTest, ApplyFindsTypesInTheAppAndNamesPlaces) {
  writeText("[[hook]]\nmethod = \"+[UIView layerCount]\"\nreturn = 1\n");
  EXPECT_EQ(manifest(apply("T")).hooks().at(0).signature.substr(1), "16@0:8");
  struct Case {
    const char* rest;
    const char* message;
  };
  const std::string first = shell("ls tree" + std::string(kTweaksDir)).out;
  for (const auto& [rest, message] : std::initializer_list<Case>{
           {"[[hook]]\nmethod = \"-[Gone a]\"\n",
            "T/tweak.toml:5:10: error: no types, and the app defines no class Gone\n"},
           {"[[hook]]\nmethod = \"-[UIView gone]\"\n",
            "T/tweak.toml:5:10: error: no types, and UIView has no method -[UIView gone] of its"},
           {"script = \"../s\"\n",
            "T/tweak.toml:4:10: error: ../s: lies outside of the text's folder\n"},
           {"icon = \"tweak.toml\"\n",
            "T/tweak.toml:4:8: error: tweak.toml: is not a PNG or JPEG image\n"},
           {"colour = 1\n", "T/tweak.toml:4:1: error: unknown key \"colour\""}}) {
    writeText(rest);
    const Result result = run("apply T");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, StartsWith(message));
  }
  EXPECT_EQ(shell("ls tree" + std::string(kTweaksDir)).out, first);
  writeText(
      "[[hook]]\nmethod = \"-[A a:]\"\ntypes = \"v20@0:8B16\"\nargs.0 = \"x\"\n"
      "return = [{ \"$data\" = \"../x\" }, { \"$image\" = \"x\" }]\n");
  const Result warned = run("apply T --dry-run");
  EXPECT_THAT(warned.err, HasSubstr("T/tweak.toml:7:10: warning: a text for a Boolean\n"));
  EXPECT_THAT(warned.err, HasSubstr("T/tweak.toml:8:11: warning: the resource \"../x\" lies out"));
  EXPECT_THAT(warned.err, HasSubstr("T/tweak.toml:8:33: warning: the resource \"x\" is missing\n"));
}

TEST_F(TextCommandTest, ATweakIsReadInAnyForm) {
  writeText("[[hook]]\nmethod = \"-[A a]\"\ntypes = \"@16@0:8\"\nreturn = { \"$image\" = \"i\" }\n",
            "script = \"s\"\n");
  write("T/s", "one();\n");
  write("T/Resources/i", "");
  const std::string id = apply("T");
  EXPECT_EQ(run("export ./T/tweak.toml -o T.tvx --json").out,
            R"({"name":"T","kind":"tweak","bundleID":"com.example.notes","color":"lightGreen",)"
            R"("glyph":"tools/solid","installed":false,"stored":false,"path":"./T/tweak.toml",)"
            R"("archive":"T.tvx"})"
            "\n");
  const fs::path here = folder() / "T/tweak.toml";
  fs::copy(here, folder() / "copy.toml");
  write("s", "one();\n");
  write("Resources/i", "");
  setInput("T/tweak.toml");
  for (const char* command : {"source", "build", "hook list", "script show", "override list",
                              "locate 2:3", "param get '-[A a]'", "show", "check"}) {
    const std::string line = command;
    const std::size_t rest = std::min(line.find_first_of("2'"), line.size());
    const auto out = [&](const std::string& tweak) {
      const Result result = run(line.substr(0, rest) + " " + tweak + " " + line.substr(rest));
      EXPECT_EQ(result.status, 0) << line << " " << tweak;
      EXPECT_EQ(result.err, "") << line << " " << tweak;
      return line == "show" || line == "check" ? "" : result.out;
    };
    const std::string expected = out(id);
    for (const char* tweak : {"T.tvx", "./T", "T/tweak.toml", "copy.toml", "-"}) {
      const std::string found = out(tweak);
      const bool namesFiles = line == "locate 2:3";
      EXPECT_TRUE(namesFiles || found == expected) << line << " " << tweak << ":\n" << found;
    }
  }
  EXPECT_EQ(run("source T.tvxc").err,
            "tavlen: error: T.tvxc: is the archive of a collection; import makes one of it\n");
  for (const char* line : {"diff - -", "check - -"})
    EXPECT_THAT(run(line).err, HasSubstr("the standard input can be read only once\n")) << line;
  EXPECT_EQ(run("icon ./T -o icon.png").err, "tavlen: error: ./T: No icon found\n");
  EXPECT_EQ(shell("mkfifo pipe; cat T/tweak.toml >pipe & $tavlen check ./pipe").out,
            "./pipe: ok\n");
  EXPECT_EQ(shell("ls -A | grep Temporary").out, "") << "nothing is left";
  EXPECT_THAT(run("locate ./T 2:3").out, StartsWith("./T/tweak.toml:6:10: -[A a]\n"
                                                    "    method = \"-[A a]\"\n             ^\n"));
  EXPECT_THAT(run("locate ./T 4:1").out, StartsWith("./T/tweak.toml:8:10: -[A a]\n"));
  const std::string code = run("build ./T").out;
  const std::string before = code.substr(0, code.find("one("));
  const auto scriptLine = 1 + std::count(before.begin(), before.end(), '\n');
  EXPECT_EQ(run("locate ./T " + std::to_string(scriptLine) + ":1 --json").out,
            "{\"file\":\"./T/s\",\"line\":1,\"column\":1}\n");
  write("T/s", "foo bar");
  fs::remove(folder() / "T/Resources/i");
  const Result broken = run("check ./T");
  EXPECT_THAT(broken.err, StartsWith("./T/tweak.toml:8:10: warning: the resource \"i\" is missing\n"
                                     "./T/s:1:5: error: expected ';' or an operator\n"));
  EXPECT_THAT(
      run("apply ./T").err,
      HasSubstr("\n./T/s:1:5: warning: expected ';' or an operator; the tweak will not build\n"));
  write("T/Manifest.json", "{}");
  EXPECT_THAT(run("source ./T").err, HasSubstr("./T/Manifest.json:1:1: error: missing key"));
  const char* editing[] = {"hook add T/tweak.toml '-[A c]' --signature v16@0:8",
                           "delete T/tweak.toml"};
  for (const char* line : editing)
    EXPECT_THAT(run(line).err,
                HasSubstr("T/tweak.toml: is a text, not a stored item; apply makes"));
}

TEST_F(TextCommandTest, DiffComparesAnyTwoForms) {
  writeText("[[hook]]\nmethod = \"-[A a]\"\ntypes = \"q16@0:8\"\n", "script = \"s\"\n");
  write("T/s", "one();\n");
  write("T/Resources/i", "1");
  const std::string id = apply("T");
  EXPECT_EQ(run("export ./T -o T.tvx").status, 0);
  for (const char* other : {"T.tvx", "./T", "T/tweak.toml"}) {
    const Result same = run("diff " + id + " " + other);
    EXPECT_EQ(same.status, 0) << other;
    EXPECT_EQ(same.out + same.err, "") << other;
  }
  write("T/Resources/i", "2");
  write("T/Resources/j", "");
  writeText("[[hook]]\nmethod = \"-[A a]\"\ntypes = \"q16@0:8\"\nreturn = 2\n");
  const std::string changes = "changed hook -[A a]\n    return: none -> 2\nremoved script\n";
  const Result different = run("diff T.tvx ./T");
  EXPECT_EQ(different.status, 1);
  EXPECT_EQ(different.out, changes + "added file Resources/j\nchanged file Resources/i\n");
  EXPECT_EQ(run("diff T.tvx T/tweak.toml").out, changes);
  EXPECT_EQ(run("diff " + id + " ./T --json").out,
            R"([{"change":"changed","subject":"hook","name":"-[A a]","parts":[{"key":"return",)"
            R"("after":"2"}]},{"change":"removed","subject":"script"},{"change":"added","subject":)"
            R"("file","name":"Resources/j"},{"change":"changed","subject":"file","name":)"
            R"("Resources/i"}])"
            "\n");
  const std::string hook = "[[hook]]\nmethod = \"-[A a]\"\ntypes = \"d16@0:8\"\n";
  writeText(hook + "return = 0.0\n", "glyph = { icon = \"a/b\", style = \"c\" }\n");
  fs::copy(folder() / "T", folder() / "U", fs::copy_options::recursive);
  writeText(hook + "return = -0.0\n", "glyph = \"a/b/c\"\n");
  fs::permissions(folder() / "T/Resources/i", fs::perms::owner_exec, fs::perm_options::add);
  EXPECT_EQ(run("diff ./U ./T").out,
            "changed glyph: { icon = \"a/b\", style = \"c\" } -> \"a/b/c\"\n"
            "changed hook -[A a]\n    return: 0.0 -> -0.0\nchanged file Resources/i\n");
  fs::create_symlink("nowhere", folder() / "U/Executables");
  EXPECT_EQ(run("source ./U").err,
            "./U/Executables: warning: the entry is not a file of the folder and is left out\n");
  writeText("colour = 1\n");
  const Result trouble = run("diff T.tvx ./T");
  EXPECT_EQ(trouble.status, 2);
  EXPECT_THAT(trouble.err, StartsWith("./T/tweak.toml:4:1: error: unknown key"));
}

TEST_F(TextCommandTest, EditAppliesTheEditorsText) {
  writeText("[[hook]]\nmethod = \"-[A a]\"\ntypes = \"q16@0:8\"\n", "script = \"s\"\n");
  write("T/s", "one();\n");
  write("T/Resources/i", "");
  const std::string id = apply("T");
  const auto edit = [&](const std::string& script) {
    write("editor", script);
    environment({"EDITOR=f() { . ./editor; }; f"});
    return run("edit", {id});
  };
  const auto kept = [&](const Result& result) {
    const std::size_t at = result.err.find("; your text is in ");
    if (at == std::string::npos) return std::string("nothing is kept");
    return readFile(result.err.substr(at + 18, result.err.size() - at - 19));
  };
  EXPECT_EQ(edit("true").err, "tavlen: the tweak is unchanged\n");
  EXPECT_THAT(edit("echo >\"$1\"").err, EndsWith("tavlen: the tweak is unchanged\n"));
  EXPECT_EQ(kept(edit("exit 3")), "nothing is kept");
  // The first text has two errors; the editor is shown them, and puts the second right.
  const Result corrected = edit(
      "if test -e shown; then\n"
      "  cp \"$1\" shown; sed -i 's/retrun/return/' \"$1\"\n"
      "else\n"
      "  printf 'retrun = 5' >>\"$1\"; echo >shown\n"
      "fi\n");
  EXPECT_EQ(corrected.status, 0);
  EXPECT_EQ(corrected.out, "changed hook -[A a]\n    return: none -> 5\n");
  EXPECT_THAT(corrected.err, StartsWith("tweak.toml:11:1: error: unknown key \"retrun\""));
  EXPECT_THAT(contents("shown"), HasSubstr("types = \"q16@0:8\"\n#! tavlen: error at column 1: "
                                           "unknown key \"retrun\"; did you mean \"return\"?\n"
                                           "retrun = 5"));
  EXPECT_EQ(manifest(id).hooks().at(0)._args.size(), 1U);
  EXPECT_EQ(shell("cd '" + stored(id) + "' && cat script.objs && ls Resources").out, "one();\ni\n");
  newTweak("Taken");
  const Result refused = edit(
      "grep -q Taken \"$1\" || sed -i 's/\"T\"/\"Taken\"/; s/= 5/= {\"$code\" = \"(\"}/' \"$1\"");
  EXPECT_THAT(refused.err, StartsWith("tweak.toml:2:8: error: Taken: the item "));
  EXPECT_THAT(refused.err,
              HasSubstr("\ntweak.toml:11:10: error: at 1:2 of the code: expected an "));
  // Programs that do not see the errors: one leaves its text as it is, one adds to it each time.
  for (const auto& [editor, end] :
       {std::pair("grep -q '^x' \"$1\" || echo x >>\"$1\"", "return = 5\nx\n"),
        std::pair("echo x >>\"$1\"", "return = 5\nx\nx\n")}) {
    const Result gaveUp = edit(editor);
    EXPECT_EQ(gaveUp.status, 1);
    EXPECT_THAT(kept(gaveUp), AllOf(EndsWith(end), Not(HasSubstr("#!"))));
  }
  for (const char* file : {"script.objs", "Manifest.json"}) {
    const Result late = edit("sed -i 's/5/6/' \"$1\"; echo >>'" + stored(id) + "/" + file + "'");
    EXPECT_THAT(late.err,
                HasSubstr("error: the tweak changed on disk while you were editing it; "));
    EXPECT_THAT(kept(late), EndsWith("return = 6\n"));
  }
  EXPECT_THAT(kept(edit("sed -i 's/5/7/' \"$1\"; exit 3")), EndsWith("return = 7\n"));
}

TEST_F(TextCommandTest, DumpReplacesOnlyTextsOfTweaks) {
  newTweak("T");
  write("other/file", "");
  write("other.toml", "key = 1\n");
  expectRefused("dump T -o",
                {{"other", 1, "other: is not empty and has no tweak.toml\n"},
                 {"other.toml", 1, "other.toml: already exists and is not the text of a tweak\n"}});
  for (const char* place : {"new", "new.toml"}) {
    EXPECT_EQ(run(std::string("dump T -o ") + place).err, "");
    EXPECT_EQ(run(std::string("dump T -o ") + place).err, "") << "replaced";
  }
  EXPECT_EQ(contents("new/tweak.toml"), run("dump T").out);
  EXPECT_EQ(contents("new.toml"), run("dump T").out);
}

TEST_F(TextCommandTest, FailedDumpLeavesNothing) {
  const std::string id = newTweak("T");
  write(stored(id) + "/Resources/a", "1");
  write(stored(id) + "/Resources/b", "2");
  fs::resize_file(folder() / stored(id) / "Resources/b", std::uintmax_t{3} << 30);
  fs::create_directory(folder() / "empty");
  for (const char* place : {"new", "some/new/", "empty"})
    EXPECT_EQ(run(std::string("dump T -o ") + place).status, 1);
  EXPECT_EQ(shell("ls -A . empty").out, ".:\nempty\ntree\n\nempty:\n");
  fs::resize_file(folder() / stored(id) / "Resources/b", 1);
  for (const char* place : {"some/new/", "empty"}) {
    EXPECT_EQ(run(std::string("dump T -o ") + place).err, "");
    EXPECT_EQ(contents(std::string(place) + "/Resources/b"), "2");
  }
}

}  // namespace
}  // namespace tavlen
