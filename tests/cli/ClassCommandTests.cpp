#include <gmock/gmock.h>

#include "tests/cli/RunningCommand.h"
#include "tests/support/MachOFile.h"

namespace tavlen {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// The library of the stand-ins, which defines classes, is the image.
class ClassCommandTest : public CommandTest {
 protected:
  ClassCommandTest() {
    fs::create_symlink(paths().standInsLibrary, folder() / "image.so");
    // GNUstep, which the image needs, keeps a list while it is loaded. It has no frame pointers, so
    // only a slow look at the stack tells the leak checker whose it is.
    setEnvironment({"ASAN_OPTIONS=fast_unwind_on_malloc=0"});
    writeTweak("T", "");
  }
  void writeApp() const {
    write("Applications/Notes.app/Info.plist", appPlist("com.example.notes", "Notes"));
    write("Applications/Notes.app/Notes", macho::thin(2));
    write("Applications/Notes.app/Frameworks/none", "");
    fs::copy_file(paths().dumpedImage, folder() / kImage);
  }
  /// The variables of a command whose launch service starts `programs`, in the app's place.
  std::vector<std::string> service(const std::string& programs) const {
    auto variables =
        standIns("<key>launchOptions</key><string>" + (folder() / "launched").string() +
                 "</string><key>programs</key><dict>" + programs + "</dict>");
    variables.push_back("TAVLEN_ROOT=" + folder().string());
    return variables;
  }
  static constexpr const char* kImage = "Applications/Notes.app/Frameworks/Probe.dylib";
  std::string manifest() const { return contents("T/Manifest.json"); }
};

TEST_F(ClassCommandTest, ListsTheClassesOfAnImage) {
  const Result some = run("classes image.so --match LS*Proxy");
  EXPECT_EQ(some.err, "");
  EXPECT_THAT(some.out, AnyOf("LSApplicationProxy : NSObject\n"
                              "LSCurrentApplicationProxy : LSApplicationProxy\n",
                              "LSCurrentApplicationProxy : LSApplicationProxy\n"
                              "LSApplicationProxy : NSObject\n"))
      << "the compiler lays the classes out";
  EXPECT_THAT(run("classes image.so").out, HasSubstr("FBSSystemService : NSObject\n"));
  EXPECT_EQ(run("classes image.so --match LSApp").out, "") << "names fit as a whole";
  EXPECT_THAT(run("classes image.so --match LSApplicationWorkspace --json").out,
              AllOf(StartsWith(R"([{"name":"LSApplicationWorkspace","methods":[{"selector":)"),
                    HasSubstr(R"("supercls":"NSObject","superclassPath":)")));
}

TEST_F(ClassCommandTest, ListsTheMethodsOfAClass) {
  const Result methods = run("methods LSApplicationWorkspace --in image.so");
  EXPECT_EQ(methods.err, "");
  EXPECT_EQ(methods.out, "-\u00A0 (id)allApplications\n+\u00A0 (id)defaultWorkspace\n");
  EXPECT_EQ(run("methods LSApplicationWorkspace --in image.so --json").out,
            R"([{"selector":"allApplications","encoding":"@16@0:8","isClassMethod":false},)"
            R"({"selector":"defaultWorkspace","encoding":"@16@0:8","isClassMethod":true}])"
            "\n");
  const Result missing = run("methods NSObject --in image.so");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "tavlen: error: image.so: defines no class NSObject\n");
}

TEST_F(ClassCommandTest, AHookTakesItsTypesFromTheImage) {
  const Result added =
      run("hook add T --method '-[LSApplicationProxy objectForInfoDictionaryKey:ofClass:]' --in "
          "image.so --name Key");
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(added.out + added.err, "");
  EXPECT_THAT(
      manifest(),
      HasSubstr(R"("hooks":[{"customName":"Key","className":"LSApplicationProxy",)"
                R"("selector":"objectForInfoDictionaryKey:ofClass:","signature":"@32@0:8@16#24",)"
                R"("isClassMethod":false,"args":{}}])"));
  const std::string before = manifest();
  const std::string workspace = "LSApplicationWorkspace";
  expectRefused(
      "hook add T",
      {{"--method '-[" + workspace + " defaultWorkspace]' --in image.so", 1,
        "image.so: " + workspace + " has no method -[" + workspace + " defaultWorkspace]"},
       {"--method '-[Nobody x]' --in image.so", 1, "image.so: defines no class Nobody"},
       {"--method '-[Nobody]' --in image.so", 2, "--method"},
       {"--method '[Nobody x]' --in image.so", 2, "--method"},
       {"--method '-[Nobody x]'", 2, ""},
       {"A b --signature v16@0:8 --in image.so", 2, "--in"},
       {"A b --method '-[A b]' --in image.so", 2, "CLASS excludes --method"},
       {"A b --signature v16@0:8 --parser remote", 2, ""},
       {"A b", 2, "--signature"},
       {"--signature v16@0:8", 2, "CLASS"}});
  EXPECT_EQ(manifest(), before);
}

TEST_F(ClassCommandTest, SaysWhyThereAreNoClassesOnTheAgentPort) {
  write("text.so", "no library");
  writeApp();
  const std::string app = "Applications/Notes.app";
  expectRefused(
      "classes",
      {{"text.so", 1, "text.so: Dynamic dump failed"},
       {app, 1, app + ": Dynamic dump failed (a device's image"},
       {app + "/Notes", 1, app + "/Notes: Dynamic dump failed (a device's image cannot"},
       {"./none.so", 1, "./none.so: No such file or directory\n"},
       {app + " --parser remote", 1, app + ": Remote dump failed"},
       {app + "/Notes --parser remote", 1, app + "/Notes: Remote dump failed"},
       {app + "/Info.plist --parser remote", 1, app + "/Info.plist: not an executable image"},
       {"image.so --parser remote", 1, "image.so: not inside an .app bundle"},
       {"/dev/null", 1, "/dev/null: Dynamic dump failed: "},
       {"image.so --parser static", 2, ""}});
  EXPECT_THAT(run("classes --verbose text.so").err, HasSubstr("dlopen encountered error: "));
}

TEST_F(ClassCommandTest, AsksAnAppOnTheAgentPort) {
  writeApp();
  const std::string agent =
      "<key>com.example.notes</key><string>" + paths().dumpAgent + "</string>";
  RunningCommand dump({"methods", "DumpedProbe", "--in", folder() / kImage, "--parser", "remote"},
                      service(agent), 300);
  EXPECT_THAT(dump.until(), HasSubstr(" 0 %"));
  std::string line = dump.until();
  while (!line.empty() && line.find("add:") == line.npos) line = dump.until();
  EXPECT_THAT(line, EndsWith("\r\x1B[K-\u00A0 (int)add:(int) to:(int)\r")) << "the bar is gone";
  EXPECT_EQ(dump.status(), 0);
}

TEST_F(ClassCommandTest, AnInterruptEndsARequestOnTheAgentPort) {
  writeApp();
  const std::string image = (folder() / kImage).string();
  const std::pair<unsigned short, std::string> terminals[] = {
      {0, "nothing"},
      {300, "reading classes of " + image + ": [" + std::string(40, '.') + "] 0 "},
      {40, "[" + std::string(33, '.') + "] 0 "},
      {10, " 0 "}};
  for (const auto& [columns, bar] : terminals) {
    RunningCommand dump({"classes", image, "--parser", "remote"}, service(""), columns);
    const std::string newLine = columns == 0 ? "" : "\r\x1B[K";
    EXPECT_EQ(columns > 0 ? dump.until('%') : bar, newLine + bar);
    for (int i = 0; !fs::remove(folder() / "launched"); ++i) {
      ASSERT_LT(i, 3000);
      ::usleep(10'000);
    }
    dump.signal(SIGINT);
    const std::string rest = dump.until();
    EXPECT_THAT(rest, EndsWith(newLine + "tavlen: error: " + image + ": Operation canceled" +
                               (columns == 0 ? "" : "\r")));
    EXPECT_EQ(dump.status(), 1);
  }
}

using TypeCommandTest = CommandTest;

TEST_F(TypeCommandTest, AnswersEveryArgumentWithALine) {
  const Result result =
      run("type {CGRect={CGPoint=dd}{CGSize=dd}} [4i] [2[3i],i] ^? '' (U=if) list",
          {"@\"a\nb\x1B\xFF\"", "@\"a,b\"", "v24@0:8@16"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "struct CGRect { struct CGPoint { double field1; double field2; } field1; "
            "struct CGSize { double field1; double field2; } field2; }\n"
            "int[4]\nint[2][3]\nvoid (*)(void)\n\nunion U { int field1; float field2; }\nlong\n"
            "a\\nb\\x1b\xEF\xBF\xBD *\na,b *\nvoid\n");
  EXPECT_EQ(run("type -- -i --json").out, "void\nvoid\n");
  EXPECT_EQ(run("type").status, 2);
  EXPECT_EQ(run("type i --jsno").status, 2);
  EXPECT_THAT(run("type --help").out, HasSubstr("ENCODING..."));
}

TEST_F(TypeCommandTest, AnswersEveryLineOfTheInputWithALine) {
  const struct {
    std::string input;
    std::string answers;
  } rows[] = {
      {"", ""},
      {"\n", "\n"},
      {"i\n\nq", "int\n\nlong long\n"},
      {"{A=dd\r\n\r\n[4i]\n", "struct A { double field1; double field2; }\n\nint[4]\n"},
      {"-\n\xFF\n", "void\nvoid\n"},
  };
  for (const auto& [input, answers] : rows) {
    write("lines", input);
    setInput("lines");
    const Result result = run("type -");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, answers);
  }
  EXPECT_EQ(run("type -", {}, "/dev/full").status, 1);
}

TEST_F(TypeCommandTest, PrintsTreesAsJSON) {
  constexpr std::string_view kTrees =
      R"json([{"encoding":"^{A=\"x\"@\"N<P>\"\"y\"[2b3]}",)json"
      R"json("declaration":"const struct A { N<P> *x; unsigned int y[2]:3; } *",)json"
      R"json("qualifiers":"const","kind":"pointer","isFunction":false,"type":{"kind":"struct",)json"
      R"json("name":"A","fieldNames":["x","y"],"types":[{"encoding":"@\"N<P>\"",)json"
      R"json("kind":"object","name":"N","protocols":["P"],"isBlock":false},{"kind":"array",)json"
      R"json("count":2,"type":{"encoding":"b3","kind":"bitField","bits":3}}]}},null,)json"
      R"json({"encoding":"@?","declaration":"void (^)(void)","kind":"object","isBlock":true}])json"
      "\n";
  EXPECT_EQ(run("type --json", {"r^{A=\"x\"@\"N<P>\"\"y\"[2b3]}", "", "@?"}).out, kTrees);
  write("lines", "i\n\n(\xFF=}");
  setInput("lines");
  EXPECT_EQ(run("type --json -").out,
            "{\"encoding\":\"i\",\"declaration\":\"int\",\"kind\":\"basic\",\"name\":\"int\"}\n"
            "\n"
            "{\"encoding\":\"(\xEF\xBF\xBD=}\",\"declaration\":\"union \xEF\xBF\xBD { void field1; "
            "}\",\"kind\":\"union\",\"name\":\"\xEF\xBF\xBD\","
            "\"types\":[{\"encoding\":\"}\",\"kind\":\"basic\",\"name\":\"void\"}]}\n");
}

}  // namespace
}  // namespace tavlen
