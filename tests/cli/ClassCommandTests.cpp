#include <gmock/gmock.h>
#include <sys/stat.h>

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
    fs::create_symlink(paths().initialisersImage, folder() / "fault.so");
    writeTweak("./T", "");
  }
  /// The variables of a command whose image fault.so has a fault. The sanitizers must leave SIGBUS
  /// to the system, and one has a status of its own for an exit while an image is being loaded.
  static std::vector<std::string> fault(const std::string& fault) {
    return {"TAVLEN_IMAGE_FAULT=" + fault, "ASAN_OPTIONS=handle_sigbus=0",
            "TSAN_OPTIONS=handle_sigbus=0:exitcode=0:ignore_noninstrumented_modules=1"};
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
  std::string manifest() const { return contents("./T/Manifest.json"); }
};

TEST_F(ClassCommandTest, ListsTheClassesOfAnImage) {
  const Result some = run("classes image.so --match LS*Proxy");
  EXPECT_EQ(some.err, "");
  EXPECT_THAT(some.out, AnyOf("LSApplicationProxy : NSObject\n"
                              "LSCurrentApplicationProxy : LSApplicationProxy\n",
                              "LSCurrentApplicationProxy : LSApplicationProxy\n"
                              "LSApplicationProxy : NSObject\n"))
      << "the compiler lays the classes out";
  setInput("image.so");
  EXPECT_EQ(run("classes - --match LS*Proxy").out, some.out);
  EXPECT_THAT(run("classes image.so").out, HasSubstr("FBSSystemService : NSObject\n"));
  EXPECT_EQ(run("classes image.so --match LSApp").out, "") << "names fit as a whole";
  EXPECT_THAT(run("classes image.so --match LSApplicationWorkspace --json").out,
              AllOf(StartsWith(R"({"images":[{"path":"image.so","classes":[{"name":)"
                               R"("LSApplicationWorkspace","superclass":"NSObject",)"
                               R"("superclassPath":)"),
                    EndsWith(R"("categories":[],"diagnostics":[]}],"diagnostics":[]})"
                             "\n")));
}

TEST_F(ClassCommandTest, ListsTheMethodsOfAClass) {
  const Result methods = run("methods LSApplicationWorkspace --in image.so");
  EXPECT_EQ(methods.err, "");
  EXPECT_EQ(methods.out,
            "-[LSApplicationWorkspace allApplications]\t- (id)allApplications\n"
            "+[LSApplicationWorkspace defaultWorkspace]\t+ (id)defaultWorkspace\n");
  EXPECT_THAT(run("methods LSApplicationWorkspace --in image.so --match all* --json").out,
              HasSubstr(R"("methods":[{"method":"-[LSApplicationWorkspace allApplications]",)"
                        R"("selector":"allApplications","signature":"@16@0:8"}])"));
  const Result missing = run("methods NSObject --in image.so");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "tavlen: error: image.so: defines no class NSObject\n");
  EXPECT_THAT(run("methods LSApplicationWorkspce --inherited --in image.so").err,
              HasSubstr("; did you mean \"LSApplicationWorkspace\"?\n"));
}

TEST_F(ClassCommandTest, AHookTakesItsTypesFromTheImage) {
  const Result added =
      run("hook add ./T '-[LSApplicationProxy objectForInfoDictionaryKey:ofClass:]' --in "
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
      "hook add ./T",
      {{"'-[" + workspace + " defaultWorkspace]' --in image.so", 1,
        "image.so: " + workspace + " has no method -[" + workspace +
            " defaultWorkspace] of its own; did you mean \"+[" + workspace +
            " defaultWorkspace]\"?\n"},
       {"'-[Nobody x]' --in image.so", 1, "image.so: defines no class Nobody"},
       {"'-[A b]'", 1,
        "./T: without --in or --signature, the method's types come from the tweak's app: a.b: no "
        "app has this identifier"},
       {"'-[A b]' --signature v16@0:8 --in image.so", 2, "--signature and --in cannot be"},
       {"'-[A b]' --signature v16@0:8 --parser remote", 2, ""},
       {"'-[A b]' --signature v16@0:8 --timeout 1", 2, ""},
       {"--signature v16@0:8", 2, "METHOD is missing"}});
  EXPECT_EQ(manifest(), before);
}

TEST_F(ClassCommandTest, SaysWhyThereAreNoClassesOnTheAgentPort) {
  write("text.so", "no library");
  fs::create_directory(folder() / "folder");
  fs::copy_file(paths().machoImages + "/Shapes.encrypted", folder() / "The");
  writeApp();
  const std::string app = "Applications/Notes.app";
  expectRefused(
      "classes",
      {{"text.so", 1, "text.so: Dynamic dump failed: " + (folder() / "text.so: ").string()},
       {"none.so", 1, "none.so: no such file, and no app has this identifier (tavlen apps"},
       {"folder", 1, "folder: this folder is no app's bundle, and no app has this identifier"},
       {app + "/Notes --parser dynamic", 1,
        app + "/Notes: Dynamic dump failed (a device's image cannot"},
       {"--root . /" + app + "/Notes --image Notes", 1, "/" + app + "/Notes: a file; --image is"},
       {app + " --image x", 1, app + ": no image x; the app's images are Notes\n"},
       {"image.so --arch arm64", 1, "image.so: --arch is for Mach-O files"},
       {"text.so --root .", 1, "text.so: Not a Mach-O file (--parser dynamic"},
       {"The", 1, "The: The slice for arm64 is encrypted; the remote parser can ask"},
       {"./none.so", 1, "./none.so: No such file or directory\n"},
       {app + " --parser remote", 1,
        app +
            ": Remote dump failed: error opening com.example.notes: the launch service is missing "
            "(remote dumps need a running device"},
       {app + "/Notes --parser remote", 1, app + "/Notes: Remote dump failed"},
       {app + "/Info.plist --parser remote", 1, app + "/Info.plist: not an executable image"},
       {"image.so --parser remote", 1, "image.so: not inside an .app bundle"},
       {"/dev/null", 1, "/dev/null: not a regular file"},
       {"image.so --parser swift", 2, "--parser: unknown value \"swift\"; known are auto"},
       {"image.so --timeout 0", 2,
        "--timeout: not a positive number of seconds up to 1000000000: 0\n"},
       {"image.so --timeout 1s", 2, "--timeout: not a"},
       {"image.so --timeout nan", 2, "--timeout: not a"}});
  EXPECT_THAT(run("classes --verbose text.so").err, HasSubstr("dlopen encountered error: "));
}

TEST_F(ClassCommandTest, AnImageThatEndsItsProcessOrAnswersForItEndsOnlyTheDump) {
  const std::string before = manifest();
  const std::string ended = ": the image ended the process that loaded it ";
  setEnvironment(fault("exit"));
  expectRefused("", {{"classes fault.so", 1, "fault.so" + ended + "(exit status 0)\n"},
                     {"hook add ./T '+[SampleLoaded load]' --in fault.so", 1,
                      "fault.so" + ended + "(exit status 0)\n"}});
  EXPECT_EQ(manifest(), before);
  setEnvironment(fault("answer"));
  expectRefused(
      "", {{"classes fault.so", 1, "fault.so: its classes take more than 268435456 bytes\n"}});
  fs::copy_file(paths().initialisersImage, folder() / "cut.so");
  fs::resize_file(folder() / "cut.so", 4096);
  expectRefused("",
                {{"methods SampleLoaded --in cut.so", 1, "cut.so" + ended + "(signal SIGBUS)\n"}});
}

TEST_F(ClassCommandTest, WhatAnImagePrintsIsLoggedAndItReadsNothing) {
  setEnvironment(fault("print"));
  write("input", "for the command");
  setInput("input");
  const Result quiet = run("methods SampleLoaded --in fault.so --json");
  EXPECT_THAT(quiet.out, StartsWith("{\"images\":[{"));
  EXPECT_EQ(quiet.err, "");
  const Result verbose = run("methods SampleLoaded --in fault.so --json --verbose");
  EXPECT_EQ(verbose.out, quiet.out);
  EXPECT_THAT(verbose.err, HasSubstr("\nprinted\ninput: -1\n"));
}

TEST_F(ClassCommandTest, AnImageThatHangsEndsWithTheCommand) {
  const std::string pipe = (folder() / "alive").string();
  const std::string image = (folder() / "fault.so").string();
  const struct {
    int signal;
    std::vector<std::string> limit;
    int status;
    std::string error;
  } rows[] = {{SIGINT, {}, 1, "tavlen: error: " + image + ": Operation canceled"},
              {0, {"--timeout", "1.5"}, 1, "tavlen: error: " + image + ": took longer than 1.5 s"},
              {SIGKILL, {}, -SIGKILL, ""}};
  for (const auto& [signal, limit, status, error] : rows) {
    SCOPED_TRACE(signal);
    fs::remove(pipe);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::vector<std::string> words = {"classes", image};
    words.insert(words.end(), limit.begin(), limit.end());
    RunningCommand dump(words, fault(pipe));
    const int alive = ::open(pipe.c_str(), O_RDONLY | O_CLOEXEC);  // waits for the image
    char byte = 0;
    EXPECT_EQ(::read(alive, &byte, 1), 1);
    if (signal != 0) dump.signal(signal);
    EXPECT_EQ(dump.until(), error);
    EXPECT_EQ(dump.status(), status);
    EXPECT_EQ(::read(alive, &byte, 1), 0) << "waits until none of its processes is left";
    ::close(alive);
  }
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
  EXPECT_THAT(line, EndsWith("\r\x1B[K-[DumpedProbe add:to:]\t- (int)add:(int) to:(int)\r"))
      << "the bar is gone";
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
  RunningCommand dump({"classes", image, "--parser", "remote", "--timeout", "0.25"}, service(""));
  EXPECT_EQ(dump.until(), "tavlen: error: " + image + ": took longer than 0.25 s");
  EXPECT_EQ(dump.status(), 1);
}

using TypeCommandTest = CommandTest;

TEST_F(TypeCommandTest, AnswersEveryArgumentWithALine) {
  const Result result = run("type {CGRect={CGPoint=dd}{CGSize=dd}} [4i] [2[3i]] ^? (U=if) l",
                            {"@\"a\nb\x1B\xFF\"", "@\"a,b\""});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "struct CGRect { struct CGPoint { double field1; double field2; } field1; "
            "struct CGSize { double field1; double field2; } field2; }\n"
            "int[4]\nint[2][3]\nvoid (*)(void)\nunion U { int field1; float field2; }\nlong\n"
            "a\\nb\\x1b\xEF\xBF\xBD *\na,b *\n");
  EXPECT_EQ(run("type").status, 2);
  EXPECT_EQ(run("type i --jsno").status, 2);
  EXPECT_THAT(run("type --help").out, HasSubstr("ENCODING..."));
}

TEST_F(TypeCommandTest, AnswersEveryLineOfTheInputWithALine) {
  const struct {
    std::string input;
    std::string answers;
    std::string errors = "";
  } rows[] = {
      {"", ""},
      {"\n", "\n"},
      {"i\n\nq", "int\n\nlong long\n"},
      {"{A=dd}\r\n\r\n[4i]\n", "struct A { double field1; double field2; }\n\nint[4]\n"},
      {"-\ni\n@\"\u00E9\"x\n", "\nint\n\n",
       "standard input:1:1: error: no type begins with this character\n"
       "standard input:3:5: error: the type ends before this character\n"},
  };
  for (const auto& [input, answers, errors] : rows) {
    write("lines", input);
    setInput("lines");
    const Result result = run("type -");
    EXPECT_EQ(result.status, errors.empty() ? 0 : 1);
    EXPECT_EQ(result.err, errors);
    EXPECT_EQ(result.out, answers);
  }
  EXPECT_EQ(run("type -", {}, "/dev/full").status, 1);
}

TEST_F(TypeCommandTest, RefusesWhatIsNoWholeType) {
  const Result result = run("type i v24@0:8@16 list r", {"", "\xFF"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "int\n\n\n\n\n\n");
  const std::string start = "tavlen: error: ";
  const std::string rest = ": the type ends before this character";
  EXPECT_EQ(result.err, start + "\"v24@0:8@16\": character 2" + rest +
                            "; --method prints the declaration of a method with these types\n" +
                            start + "\"list\": character 2" + rest + "\n" + start +
                            "\"r\": character 2: expected a type\n" + start +
                            "\"\": character 1: expected a type\n" + start +
                            "\"\uFFFD\": character 1: no type begins with this character\n");
}

TEST_F(TypeCommandTest, PrintsTheDeclarationOfAMethod) {
  const Result result = run("type v24@0:8@16 v16@0:8 i --method '+[C foo:]'");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "+ (void)foo:(id)\n+ (void)foo:\n\n");
  EXPECT_EQ(result.err,
            "tavlen: warning: \"v16@0:8\" has 0 arguments, the selector \"foo:\" takes 1\n"
            "tavlen: error: \"i\" is not a method's type encoding\n");
  EXPECT_EQ(run("type v16@0:8 --json --method '-[C foo]'").out,
            R"([{"method":"-[C foo]","class":"C","selector":"foo","signature":"v16@0:8",)"
            "\"declaration\":\"- (void)foo\"}]\n");
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
  write("lines", "i\n\n(\xFF=)");
  setInput("lines");
  EXPECT_EQ(run("type --json -").out,
            "{\"encoding\":\"i\",\"declaration\":\"int\",\"kind\":\"basic\",\"name\":\"int\"}\n"
            "null\n"
            "{\"encoding\":\"(\xEF\xBF\xBD=)\",\"declaration\":\"union \xEF\xBF\xBD\","
            "\"kind\":\"union\",\"name\":\"\xEF\xBF\xBD\",\"types\":[]}\n");
}

}  // namespace
}  // namespace tavlen
