#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tavlen/bundles/Info.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kEverything = paths().examples + "/tweaks/Everything";
const std::string kGreeting = paths().examples + "/tweaks/Greeting";

TEST_F(CommandTest, ArgumentsAreChecked) {
  expectRefused("",
                {{"--verbose", 2, "a command is missing\n"},
                 {"hook", 2, "a command is missing: add, remove, list, set or move\n"},
                 {"instal", 2, "unknown command \"instal\"; did you mean \"install\"?\n"},
                 {"hook ad T", 2, "unknown command \"ad\"; did you mean \"add\"?\n"},
                 {"help hook ad", 2, "unknown command \"ad\"; did you mean \"add\"?\n"},
                 {"--frobnicate", 2, "unknown option \"--frobnicate\"\n"},
                 {"hook remove", 2, "TWEAK and HOOK are missing\n"},
                 {"build a b", 2, "unexpected argument \"b\"\n"},
                 {"build '-[A b]' '-[A c]'", 2, "unexpected argument \"-[A c]\"\n"},
                 {"build a -o", 2, "-o needs a value: DIR\n"},
                 {"build a -o b --output=c", 2, "--output is given more than once\n"},
                 {"apps --verbose=yes", 2, "--verbose takes no value\n"},
                 {"list --root ''", 2, "--root: it is empty\n"},
                 {"check", 2, "TWEAK is missing\n"},
                 {"icon a -o b --size 1k", 2, "--size: expected a whole number"},
                 {"uninstall", 2, "ITEM or --app is missing\n"},
                 {"uninstall a --app b", 2, "ITEM and --app cannot be given together\n"},
                 {"classes a --headers", 2, "--headers needs --output\n"},
                 {"info --jsn=1 x", 2, "unknown option \"--jsn\"; did you mean \"--json\"?\n"},
                 {"list --color green", 2, "--color: unknown value \"green\"; known are auto"}});
  EXPECT_THAT(run("build").err, HasSubstr("\ntavlen: see \"tavlen help build\"\n"));
  EXPECT_THAT(run("build --json").err,
              StartsWith(R"({"severity":"error","message":"TWEAK is missing"})"));
  EXPECT_THAT(run("--version").out, testing::MatchesRegex("tavlen [0-9.]+\n"));
}

TEST_F(CommandTest, DoesItsWorkOnTheExamples) {
  for (const std::string& tweak : {kEverything, kGreeting + "/"}) {
    const std::string golden = fs::path(tweak).filename().empty() ? "Greeting" : "Everything";
    const Result source = run("source", {tweak});
    EXPECT_EQ(source.out, readFile(paths().testData + "/golden/" + golden + ".objs"));
    const Result build = run("build", {tweak});
    EXPECT_THAT(build.out, HasSubstr("objc_orig(this, arguments);\n"));
    write("new/" + golden + "/code.js", "old");
    write("new/" + golden + "/code.js.map", R"({"version":3,"sources":[],"mappings":""})");
    const Result written = run("build", {tweak, "-o", "new/" + golden});
    EXPECT_EQ(written.out + written.err + build.err + source.err, "");
    EXPECT_EQ(contents("new/" + golden + "/code.js"), build.out);
    EXPECT_THAT(contents("new/" + golden + "/code.js.map"), StartsWith("{\"version\":3,"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder() / "new" / golden), {}), 2);
  }
  const Result check = run("check", {kEverything, kGreeting});
  EXPECT_EQ(check.out, kEverything + ": ok\n" + kGreeting + ": ok\n");
  EXPECT_EQ(check.status, 0);
}

TEST_F(CommandTest, OutputThatCannotBeWrittenIsAFailure) {
  write("file", "kept");
  fs::create_directories(folder() / "taken/code.js");
  expectRefused("build '" + kEverything + "' -o",
                {{"file", 1, "file: Not a directory\n"},
                 {"file/x", 1, "file/x: Not a directory\n"},
                 {"taken", 1, "taken/code.js: Is a directory\n"}});
  EXPECT_EQ(contents("file"), "kept");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder() / "taken"), {}), 1);
  for (const std::string& line :
       {"build '" + kEverything + "'", "source '" + kGreeting + "'", "check '" + kGreeting + "'",
        "info '" + paths().examples + "/apps/Example.app'", std::string("--version")}) {
    const Result result = run(line, {}, "/dev/full");
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_EQ(result.err, "tavlen: error: standard output: No space left on device\n");
  }
}

TEST_F(CommandTest, ABadTweakIsNamedInOneLineAndNothingIsWritten) {
  write("file", "");
  fs::create_directories(folder() / "empty");
  writeTweak("kind",
             hookJSON("a", "v") + ",null,null," + hookJSON("b", "v", R"("-1":{"type":"Foo"})"));
  writeTweak("color", "", R"(,"color":"darkBlue")");
  writeTweak("escape", hookJSON("a", "v", R"("0":{"type":"\u001b[31m\u009b\u202e\n"})"));
  write("text/Manifest.json", "{\n\"configuration\" 1}");
  writeTweak("fine\x1b[31m\xC2\x9B", "null,1");
  write("out/code.js", "old");
  for (const char* command : {"source", "check", "build -o out"}) {
    expectRefused(
        command,
        {{"nowhere", 1, "nowhere: no stored tweak or collection has that identifier or name\n"},
         {"./nowhere", 1, "./nowhere: No such file or directory\n"},
         {"file", 1,
          "file: no stored tweak or collection has that identifier or name; for the file or folder "
          "here, write ./file\n"},
         {"./empty", 1, "./empty: has neither Manifest.json nor tweak.toml\n"},
         {"kind/", 1,
          "kind/Manifest.json:1:264: hooks[3].args.-1.type: error: unknown kind \"Foo\"\n"},
         {"./escape", 1,
          "./escape/Manifest.json:1:172: hooks[0].args.0.type: error: unknown kind "
          "\"\\x1b[31m\\u009b\\u202e\\n\"\n"},
         {"text/Manifest.json", 1,
          "text/Manifest.json:2:17: error: The given data was not valid JSON: expected a colon\n"},
         {"./fine\x1b[31m\xC2\x9B", 1,
          "./fine\\x1b[31m\\u009b/Manifest.json:1:95: hooks[1]: error: expected a dictionary, "
          "found a number\n"}});
  }
  EXPECT_EQ(contents("out/code.js"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder() / "out"), {}), 1);
}

TEST_F(CommandTest, TextsAreShownForPeople) {
  write("item/Payload/Manifest.json/file", "");
  ZIPArchive::zipItem(folder() / "item/Payload", folder() / "folder.tvx");
  writeTweak("nul", hookJSON("a", "v", R"("0":{"type":"\u0000\u007f"})"));
  const std::string many(1000, 'x');
  setEnvironment({"TAVLEN_ROOT=" + folder().string()});
  write("Applications/A.app/Info.plist", appPlist("com.a", "A"));
  expectRefused(
      "",
      {{"list '\x1b[1m\xC2\x9B'", 2,
        "unexpected argument \"\\x1b[1m\\u009b\"\ntavlen: see \"tavlen help list\""},
       {"show " + many, 1, many.substr(0, 400) + "…" + many.substr(0, 91) + ": no stored tweak"},
       {"show ./nul", 1,
        "./nul/Manifest.json:1:172: hooks[0].args.0.type: error: unknown kind \"\\x00\\x7f\"\n"},
       {"crash-logs com.a nowhere", 1, "nowhere: No such file or directory\n"},
       {"import folder.tvx", 1, "folder.tvx: Payload/Manifest.json: Is a directory\n"}});
}

TEST_F(CommandTest, SyntaxErrorsStandAtTheirPlace) {
  const std::string hook = hookJSON("a", "v16@0:8");
  const auto code = [](const std::string& text) {
    return hookJSON("b", "v24@0:8@16", R"("0":{"type":"Code","code":")" + text + "\"}");
  };
  const std::string manifest = "./T/Manifest.json: ";
  const struct {
    std::string hooks;
    std::string script;
    std::string message;
  } cases[] = {
      {"", "ok();\n[a b] [c];\nfoo bar;\n",
       "./T/script.objs:3:5: error: expected ';' or an operator\n    foo bar;\n        ^\n"},
      {hook, "ok();\r\n\r\nfoo bar;\r\n",
       "./T/script.objs:3:5: error: expected ';' or an operator\n    foo bar;\n        ^\n"},
      {hook, "ok();\u2028\tx = '日é😀e\u0301👨\u200D👩' y;",
       "./T/script.objs:2:20: error: expected ';' or an operator\n"
       "    \tx = '日é😀e\u0301👨\u200D👩' y;\n    \t               ^\n"},
      {"", "/*\x1b\xC2\x9B*/ a b",
       "./T/script.objs:1:10: error: expected ';' or an operator\n"
       "    /*\\x1b\\u009b*/ a b\n                     ^\n"},
      {"", "f(" + std::string(300, 'x') + " y" + std::string(300, 'z'),
       "./T/script.objs:1:304: error: expected ',' or ')' in the parentheses that began at 1:2\n   "
       " "
       "..." +
           std::string(99, 'x') + " y" + std::string(99, 'z') + "...\n" + std::string(107, ' ') +
           "^\n"},
      {hook, "\nif (a) {\n",
       "./T/script.objs:3:1: error: expected '}' to end the braces that began at 2:8\n    \n    "
       "^\n"},
      {hook + ",null," + code("[a b:1 +"), "ok();",
       manifest +
           "hooks[2].args.0: error: at 1:9 of the code: expected an expression in the message "
           "send that began at 1:1\n    [a b:1 +\n            ^\n"},
      {code("1}") + "," + hook, "ok();",
       manifest + "hooks[0].args.0: error: at 1:3 of the code: expected ',' or '}' in the braces\n"
                  "    1}\n      ^\n"},
      {hookJSON("b:", "@24@0:8@16",
                R"("-1":{"type":"Code","code":"1"},"0":{"type":"Code","code":"f( // c"})"),
       "",
       manifest +
           "hooks[0].args.0: error: expected ',' or ')' in the parentheses that began at 1:2 of "
           "the code\n    \t\t%orig;\n    \t\t     ^\n"},
      {code("1; }, }); let x; hookClass('', {}, { a() {") + "," + hook + "," +
           code("2; }, }); let x; hookClass('', {}, { a() {"),
       "ok();",
       manifest +
           "hooks[2].args.0: error: at 1:15 of the code: identifier 'x' has already been "
           "declared\n    2; }, }); let x; hookClass('', {}, { a() {\n                  ^\n"},
  };
  for (const auto& c : cases) {
    writeTweak("./T", c.hooks);
    write("./T/script.objs", c.script);
    const Result result = run("build ./T -o out");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, EndsWith(c.message + "tavlen: error: ./T: does not build\n"));
  }
  EXPECT_FALSE(fs::exists(folder() / "out"));
}

TEST_F(CommandTest, APlaceInTheCodeIsLedBack) {
  writeTweak("./T", "null," + hookJSON("a", "v16@0:8"));
  write("./T/script.objs", "ok();\n\t[a b:[c d]];\n");
  const struct {
    std::string place;
    int status;
    std::string text;
  } cases[] = {
      {"3:10", 0, "./T/Manifest.json: hooks[1]: -[A a]\n    \t\treturn %orig;\n    \t\t       ^\n"},
      {"8:25", 0, "./T/script.objs:2:7\n    \t[a b:[c d]];\n    \t     ^\n"},
      {"1:1", 1, "tavlen: error: ./T: 1:1: belongs to no hook and not to the script\n"},
      {"8:1", 0, "./T/script.objs:2:2\n    \t[a b:[c d]];\n    \t^\n"},
      {"9:2", 1, "tavlen: error: ./T: 9:2: the code has no such line or column\n"},
      {"8:0", 2,
       "tavlen: error: LINE:COLUMN: 8:0: expected a line and a column, such as 12:7\n"
       "tavlen: see \"tavlen help locate\"\n"},
  };
  for (const auto& c : cases) {
    const Result result = run("locate ./T " + c.place);
    EXPECT_EQ(result.status, c.status);
    EXPECT_EQ(c.status == 0 ? result.out : result.err, c.text);
  }
  write("ob.js", "OBJSTranspiler = { transpile(s) { return { code: s, map: '{}' }; } };");
  EXPECT_EQ(run("locate ./T 1:1 --transpiler .").err,
            "tavlen: error: the transpiler's source map: missing key \"version\"\n");
}

TEST_F(CommandTest, AScriptThatCannotBeReadCountsAsEmpty) {
  writeTweak("./T", hookJSON("a", "v16@0:8"));
  const std::string empty = run("source ./T").out;
  write("./T/script.objs", "fine(); \xFF");
  const Result result = run("source ./T");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, empty);
  EXPECT_THAT(result.err,
              StartsWith("./T/script.objs:1:9: warning: is not UTF-8; the script counts as empty"));
}

TEST_F(CommandTest, CheckWarnsOfWhatIsQuestionable) {
  const std::string hooks =
      hookJSON("set:to:", "v24@0:8@16",
               R"("0":{"type":"Image","filename":"../x.png"},"1":{"type":"Array","items":[)"
               R"({"type":"Data","filename":"link/x"},{"type":"Data","filename":"here"}]},)"
               R"("7":{"type":"Data","filename":"go\u001bne"},"-1":{"type":"Nil"})") +
      ",null," + hookJSON("set:to:", "zz");
  writeTweak("./T", hooks, R"(,"glyph":{"icon":"tolls","style":"solid"})");
  write("./T/Resources/here", "");
  write("./T/Executables/r\\x", "");
  write("x/x", "");
  fs::create_directory_symlink("../../x", folder() / "./T/Resources/link");
  fs::create_directory(folder() / "./T/Executables");
  ::mkfifo((folder() / "./T/Executables/pipe").c_str(), 0600);
  writeTweak("broken", "1");
  const Result result = run("check ./T ./broken nowhere", {kGreeting});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "./T: 12 warnings\n" + kGreeting + ": ok\n");
  const std::string place = "./T/Manifest.json: ";
  const std::string hook = place + "hooks[0].";
  EXPECT_EQ(result.err,
            place +
                "configuration.glyph: warning: unknown glyph \"tolls\" in the style \"solid\"; "
                "did you mean \"tools\" in the style \"solid\"?\n" +
                hook +
                "signature: warning: \"v24@0:8@16\" has 1 argument, the selector \"set:to:\" "
                "takes 2\n" +
                hook + "args.-1: warning: the method returns nothing\n" + hook +
                "args.7: warning: the method has no such argument\n" + hook +
                "args.0: warning: the resource \"../x.png\" lies outside of Resources\n" + hook +
                "args.1.items[0]: warning: the resource \"link/x\" lies outside of "
                "Resources\n" +
                hook + "args.7: warning: the resource \"go\\x1bne\" is missing\n" + place +
                "hooks[2]: warning: hooks the same method as hooks[0]\n" + place +
                "hooks[2].signature: warning: \"zz\" is not a method's type encoding\n"
                "./T/Executables/pipe: warning: neither a file nor a folder, and cannot be "
                "packaged\n"
                "./T/Executables/r\\x: warning: no archive can contain an entry of this name\n"
                "./T/Resources/link: warning: a symbolic link cannot be packaged\n"
                "./broken/Manifest.json:1:90: hooks[0]: error: expected a dictionary, found a "
                "number\n"
                "tavlen: error: nowhere: no stored tweak or collection has that identifier or "
                "name\n");
  EXPECT_EQ(run("check ./T").status, 0) << "warnings are no failure";
  EXPECT_THAT(run("export ./T").err,
              HasSubstr("tavlen: error: ./T/Executables/pipe: neither a file nor a folder, and"));
}

TEST_F(CommandTest, InfoShowsWhatTheFileHolds) {
  Info info;
  info.executable = "exe";
  info.bundleID = "a.b";
  info.build = "7";
  info._name = "N\x1b[31m\n\xC2\x9B\u2069\x7F";
  info._orientations = {"UIInterfaceOrientationPortrait", "Sideways"};
  const std::string binary = encodePropertyList(info, PropertyListFormat::binary);
  write("app/Info.plist", binary);
  write("cut/Info.plist", binary.substr(0, binary.size() - 10));
  EXPECT_EQ(run("info app").out,
            "Name:               N\\x1b[31m\\n\\u009b\\u2069\\x7f\n"
            "Bundle name:        N\\x1b[31m\\n\\u009b\\u2069\\x7f\n"
            "Identifier:         a.b\nVersion:            7\nBuild:              7\n"
            "Executable:         exe\niPad:               no\nOrientations:       Portrait\n");
  const std::string json = run("info --json app/").out;
  EXPECT_THAT(json, HasSubstr(R"("name":"N\u001b[31m\n\u009b\u2069\u007f")"));
  EXPECT_THAT(json, HasSubstr(R"("orientations":["UIInterfaceOrientationPortrait"])"));
  expectRefused("info", {{"cut", 1, "cut/Info.plist: "}});
}

/// The example for a shell in the page on the command, which begins with the line that sets PATH.
std::string exampleOfPage() {
  std::ifstream page(fs::path(paths().examples).parent_path() / "docs/command.md");
  const std::string indentation = "    ";
  std::string line;
  while (std::getline(page, line) && !line.starts_with(indentation + "export PATH=")) continue;
  std::string script;
  do script += (line.empty() ? line : line.substr(indentation.size())) + "\n";
  while (std::getline(page, line) && (line.empty() || line.starts_with(indentation)));
  return script;
}

TEST(CommandPage, ExampleRunsAsItStands) {
  const TemporaryFolder clone;
  const fs::path built = fs::path(paths().command).parent_path();
  fs::create_directories(clone.path() / "build/release");
  fs::create_directory_symlink(built, clone.path() / "build/release/bin");
  fs::create_directory_symlink(built.parent_path() / "share", clone.path() / "build/release/share");
  fs::copy(paths().examples, clone.path() / "examples", fs::copy_options::recursive);
  std::ofstream(clone.path() / "example.sh") << exampleOfPage();
  // The address sanitizer overlooks what GNUstep leaks, and finds GNUstep only in whole call
  // stacks.
  const std::string command = "cd '" + clone.path().string() +
                              "' && ASAN_OPTIONS=\"$ASAN_OPTIONS:fast_unwind_on_malloc=0\" "
                              "sh -e example.sh >out 2>err </dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0) << readFile(clone.path() / "err");
  const std::string out = readFile(clone.path() / "out");
  EXPECT_NE(out.find("Evening  tweak  com.example.notes  yes"), std::string::npos) << out;
  for (const char* name : {"Morning", "Evening"})
    EXPECT_TRUE(fs::exists(clone.path() / "build" / (std::string(name) + ".tvx"))) << name;
}

}  // namespace
}  // namespace tavlen
