#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"
#include "tests/cli/RunningCommand.h"
#include "tests/support/AppPlist.h"
#include "tests/support/MachOFile.h"

namespace tavlen {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

/// The library of the stand-ins, which defines classes, is the image.
class ClassCommandTest : public CommandTest {
 protected:
  ClassCommandTest() {
    std::filesystem::create_symlink(paths().standInsLibrary, folder() / "image.so");
    // GNUstep, which the image needs, keeps a list while it is loaded. It has no frame pointers, so
    // only a slow look at the stack tells the leak checker whose it is.
    setEnvironment({"ASAN_OPTIONS=fast_unwind_on_malloc=0"});
    writeTweak("T", "");
  }
  void writeApp() const {
    write("Applications/Notes.app/Info.plist", appPlist("com.example.notes", "Notes"));
    write("Applications/Notes.app/Notes", macho::thin(2));
    write("Applications/Notes.app/Frameworks/none", "");
    std::filesystem::copy_file(paths().dumpedImage, folder() / kImage);
  }
  /// The variables of a command whose launch service starts `programs`, in the app's place.
  std::vector<std::string> service(const std::string& programs) const {
    write("script.plist",
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
          "<key>launchOptions</key><string>" +
              (folder() / "launched").string() + "</string><key>programs</key><dict>" + programs +
              "</dict></dict></plist>");
    return {"LD_PRELOAD=" + paths().standInsLibrary, "LC_ALL=C",
            "TAVLEN_STAND_INS=" + (folder() / "script.plist").string(),
            "TAVLEN_ROOT=" + folder().string()};
  }
  static constexpr const char* kImage = "Applications/Notes.app/Frameworks/Probe.dylib";
  std::string manifest() const { return contents("T/Manifest.json"); }
};

TEST_F(ClassCommandTest, ListsTheClassesOfAnImage) {
  const Result some = run({"classes", "image.so", "--match", "LS*Proxy"});
  EXPECT_EQ(some.err, "");
  EXPECT_THAT(some.out, AnyOf("LSApplicationProxy : NSObject\n"
                              "LSCurrentApplicationProxy : LSApplicationProxy\n",
                              "LSCurrentApplicationProxy : LSApplicationProxy\n"
                              "LSApplicationProxy : NSObject\n"))
      << "the compiler lays the classes out";
  EXPECT_THAT(run({"classes", "image.so"}).out, HasSubstr("FBSSystemService : NSObject\n"));
  EXPECT_EQ(run({"classes", "image.so", "--match", "LSApp"}).out, "") << "names fit as a whole";
  EXPECT_THAT(run({"classes", "image.so", "--match", "LSApplicationWorkspace", "--json"}).out,
              AllOf(StartsWith(R"([{"name":"LSApplicationWorkspace","methods":[{"selector":)"),
                    HasSubstr(R"("supercls":"NSObject","superclassPath":)")));
}

TEST_F(ClassCommandTest, ListsTheMethodsOfAClass) {
  const Result methods = run({"methods", "LSApplicationWorkspace", "--in", "image.so"});
  EXPECT_EQ(methods.err, "");
  EXPECT_EQ(methods.out, "-\u00A0 (id)allApplications\n+\u00A0 (id)defaultWorkspace\n");
  EXPECT_EQ(run({"methods", "LSApplicationWorkspace", "--in", "image.so", "--json"}).out,
            R"([{"selector":"allApplications","encoding":"@16@0:8","isClassMethod":false},)"
            R"({"selector":"defaultWorkspace","encoding":"@16@0:8","isClassMethod":true}])"
            "\n");
  const Result missing = run({"methods", "NSObject", "--in", "image.so"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "tavlen: error: image.so: defines no class NSObject\n");
}

TEST_F(ClassCommandTest, AHookTakesItsTypesFromTheImage) {
  const Result added = run({"hook", "add", "T", "--method",
                            "-[LSApplicationProxy objectForInfoDictionaryKey:ofClass:]", "--in",
                            "image.so", "--name", "Key"});
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(added.out + added.err, "");
  EXPECT_THAT(
      manifest(),
      HasSubstr(R"("hooks":[{"customName":"Key","className":"LSApplicationProxy",)"
                R"("selector":"objectForInfoDictionaryKey:ofClass:","signature":"@32@0:8@16#24",)"
                R"("isClassMethod":false,"args":{}}])"));
  const std::string before = manifest();
  struct Row {
    std::vector<std::string> words;
    int status;
    std::string text;
  };
  const std::vector<Row> rows = {
      {{"--method", "-[LSApplicationWorkspace defaultWorkspace]", "--in", "image.so"},
       1,
       "LSApplicationWorkspace has no method -[LSApplicationWorkspace defaultWorkspace]"},
      {{"--method", "-[Nobody x]", "--in", "image.so"}, 1, "defines no class Nobody"},
      {{"--method", "-[Nobody]", "--in", "image.so"}, 2, "--method"},
      {{"--method", "[Nobody x]", "--in", "image.so"}, 2, "--method"},
      {{"--method", "-[Nobody x]"}, 2, "--in"},
      {{"A", "b", "--signature", "v16@0:8", "--in", "image.so"}, 2, "--in"},
      {{"A", "b", "--method", "-[A b]", "--in", "image.so"}, 2, "--method"},
      {{"A", "b", "--signature", "v16@0:8", "--parser", "remote"}, 2, "--method"},
      {{"A", "b"}, 2, "--signature"},
      {{"--signature", "v16@0:8"}, 2, "CLASS"},
  };
  for (const Row& row : rows) {
    std::vector<std::string> words = {"hook", "add", "T"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    const Result result = run(words);
    EXPECT_EQ(result.status, row.status) << row.text;
    EXPECT_THAT(result.err, HasSubstr(row.text));
  }
  EXPECT_EQ(manifest(), before);
}

TEST_F(ClassCommandTest, SaysWhyThereAreNoClassesOnTheAgentPort) {
  write("text.so", "no library");
  writeApp();
  struct Row {
    std::vector<std::string> words;
    std::string text;
  };
  const std::vector<Row> rows = {
      {{"text.so"}, "error: text.so: Dynamic dump failed"},
      {{"--verbose", "text.so"}, "dlopen encountered error: "},
      {{"Applications/Notes.app"},
       "error: Applications/Notes.app: Dynamic dump failed (it is an image of the device"},
      {{"Applications/Notes.app/Notes"},
       "error: Applications/Notes.app/Notes: Dynamic dump failed (it is an image of"},
      {{"none.so"}, "none.so"},
      {{"./none.so"}, "./none.so: No such file"},
      {{"Applications/Notes.app", "--parser", "remote"},
       "error: Applications/Notes.app: Remote dump failed"},
      {{"Applications/Notes.app/Notes", "--parser", "remote"},
       "error: Applications/Notes.app/Notes: Remote dump failed"},
      {{"Applications/Notes.app/Info.plist", "--parser", "remote"}, "Info.plist: is no image"},
      {{"image.so", "--parser", "remote"}, "image.so: is in no app's bundle"},
      {{"/dev/null"}, "/dev/null: Dynamic dump failed: "},
  };
  for (const Row& row : rows) {
    std::vector<std::string> words = {"classes"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    const Result result = run(words);
    EXPECT_EQ(result.status, 1) << row.text;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr(row.text));
  }
  EXPECT_EQ(run({"classes", "image.so", "--parser", "static"}).status, 2);
}

TEST_F(ClassCommandTest, AsksAnAppOnTheAgentPort) {
  writeApp();
  setEnvironment(service("<key>com.example.notes</key><string>" + paths().dumpAgent + "</string>"));
  const Result methods = run({"methods", "DumpedProbe", "--in", kImage, "--parser", "remote"});
  EXPECT_EQ(methods.status, 0) << methods.err;
  EXPECT_THAT(methods.out, HasSubstr("-\u00A0 (int)add:(int) to:(int)\n"));
}

TEST_F(ClassCommandTest, AnInterruptEndsARequestOnTheAgentPort) {
  writeApp();
  RunningCommand dump({"classes", (folder() / kImage).string(), "--parser", "remote"}, service(""));
  const auto last = std::chrono::steady_clock::now() + kLimit;
  while (!std::filesystem::exists(folder() / "launched")) {
    ASSERT_LT(std::chrono::steady_clock::now(), last);
    ::usleep(10'000);
  }
  dump.signal(SIGINT);
  EXPECT_EQ(dump.line(), "tavlen: error: " + (folder() / kImage).string() + ": Operation canceled");
  EXPECT_EQ(dump.status(), 1);
}

}  // namespace
}  // namespace tavlen
