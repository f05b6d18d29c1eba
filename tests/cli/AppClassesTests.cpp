#include <gmock/gmock.h>

#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// An app of two images, and the same app in an archive.
class AppClassesTest : public CommandTest {
 protected:
  AppClassesTest() {
    write(kApp + "/Info.plist", appPlist("com.example.sketch", "Sketch"));
    copy("Sketch", "Sketch");
    copy("Shapes", "Frameworks/Shapes");
    ZIPArchive::zipItem(folder() / "Payload", folder() / "Sketch.ipa");
    setEnvironment({"TMPDIR=" + (folder() / "tmp").string()});
    fs::create_directory(folder() / "tmp");
  }
  ~AppClassesTest() override { EXPECT_TRUE(fs::is_empty(folder() / "tmp")); }
  void copy(const std::string& image, const std::string& name) const {
    const fs::path file = folder() / kApp / name;
    fs::create_directories(file.parent_path());
    fs::copy_file(paths().machoImages + "/" + image, file, fs::copy_options::overwrite_existing);
  }

  const std::string kApp = "Payload/Sketch.app";
};

TEST_F(AppClassesTest, ListsTheClassesOfAllImages) {
  for (const std::string& app : {kApp, std::string("Sketch.ipa")}) {
    EXPECT_EQ(run("classes --match [ES]* " + app).out,
              "Sketch.Canvas : UIView\tSketch\nEraser : Circle <Sketch.Erasing>\tSketch\n"
              "Shape : NSObject <Outlined, Drawing, NSCopying>\tFrameworks/Shapes\n"
              "ShapeFactory : NSObject\tFrameworks/Shapes\n");
    EXPECT_EQ(run("classes --match er* --ignore-case --image Sketch " + app).out,
              "Eraser : Circle <Sketch.Erasing>\n");
    EXPECT_THAT(run("classes --match Types --json " + app).out,
                AllOf(StartsWith(R"({"images":[{"path":"Sketch","architecture":"arm64",)"
                                 R"("classes":[],"categories":[],"diagnostics":[]},)"
                                 R"({"path":"Frameworks/Shapes","architecture":"arm64",)"),
                      HasSubstr("Payload/Sketch.app/Frameworks/Shapes\",\"protocols\""),
                      Not(HasSubstr("TemporaryItems"))));
  }
}

TEST_F(AppClassesTest, WritesTheHeadersOfAllImages) {
  const Result written = run("classes Sketch.ipa --match [ES]* --headers -o H");
  EXPECT_EQ(written.out + written.err, "");
  EXPECT_THAT(contents("H/Eraser.h"), HasSubstr("@interface Eraser : Circle <"));
  EXPECT_TRUE(fs::exists(folder() / "H/ShapeFactory.h"));
  expectRefused("classes Sketch.ipa",
                {{"--headers", 2, "--headers needs --output"},
                 {"-o H", 2, "--output needs --headers"},
                 {"--parser remote", 1, "Sketch.ipa: an app in an archive cannot be run"}});
  EXPECT_EQ(run("classes Sketch.ipa --headers -o H --json").status, 2);
}

TEST_F(AppClassesTest, AnImageThatCannotBeReadIsNamedAndTheOthersAreListed) {
  copy("Shapes.encrypted", "Frameworks/Shapes");
  const std::string warning =
      "tavlen: warning: " + kApp + ": Frameworks/Shapes: The slice for arm64 is encrypted";
  const Result partial = run("classes --match Eraser " + kApp);
  EXPECT_EQ(partial.status, 0);
  EXPECT_EQ(partial.out, "Eraser : Circle <Sketch.Erasing>\tSketch\n");
  EXPECT_THAT(partial.err, StartsWith(warning));
  EXPECT_EQ(run("classes --strict " + kApp).status, 1);
  copy("Shapes.encrypted", "Sketch");
  const Result none = run("classes " + kApp);
  EXPECT_EQ(none.status, 1);
  EXPECT_THAT(none.err, AllOf(HasSubstr(warning), HasSubstr("error: " + kApp + ": none of its")));
  std::string archive = contents("Sketch.ipa");
  archive.replace(archive.find(kApp + "/Sketch"), kApp.size(), kApp.size(), 'x');
  write("Sketch.ipa", archive);
  EXPECT_THAT(run("classes Sketch.ipa").err, HasSubstr(": Missing Sketch (The two records of"));
}

TEST_F(AppClassesTest, SearchesForMethods) {
  const std::string kShapes = "\tFrameworks/Shapes\n";
  const struct {
    std::string options;
    std::string out;
  } rows[] = {
      {"--class Eraser",
       "-[Eraser erase]\t- (void)erase\tSketch\n+[Eraser sharedEraser]\t+ "
       "(id)sharedEraser\tSketch\n"},
      {"--match FRAME --ignore-case", "-[Shape frame]\t- (struct CGRect)frame" + kShapes},
      {"--match drawnSize --types",
       "-[UIView drawnSize]\t- (struct CGSize { double field1; double field2; })drawnSize\tSketch\n"
       "-[Shape drawnSize]\t- (struct CGSize { double field1; double field2; })drawnSize" +
           kShapes},
      {"Eraser --match erase", "-[Eraser erase]\t- (void)erase\tSketch\n"},
      {"Eraser --inherited --match [ace]*e*",
       "-[Eraser erase]\t- (void)erase\tSketch\n"
       "-[Circle circumference]\t- (double)circumference\tSketch\n"
       "-[Shape copyWithZone:]\t- (id)copyWithZone:(struct _NSZone *)" +
           kShapes + "-[Circle area]\t- (double)area" + kShapes},
      {"--class none", ""},
  };
  for (const auto& [options, out] : rows) {
    const Result found = run("methods --in Sketch.ipa " + options);
    EXPECT_EQ(found.out, out) << options;
    EXPECT_EQ(found.err, "");
  }
  expectRefused("methods --in Sketch.ipa",
                {{"None", 1, "Sketch.ipa: defines no class None\n"}, {"Eraser --class x", 2, ""}});
  writeTweak("./T", "");
  for (const std::string method : {"-[Eraser erase]", "+[UIView layerCount]"}) {
    EXPECT_EQ(run("hook add ./T --in Sketch.ipa", {method}).err, "") << "pasted back";
  }
  EXPECT_THAT(contents("./T/Manifest.json"), HasSubstr(R"("signature":"Q16@0:8")"));
}

TEST_F(AppClassesTest, CheckLooksTheHooksUp) {
  const auto hook = [](const std::string& cls, const std::string& selector,
                       const std::string& types) {
    return R"({"className":")" + cls + R"(","selector":")" + selector + R"(","signature":")" +
           types + R"(","isClassMethod":false,"args":{}})";
  };
  writeTweak("T", hook("Eraser", "area", "d8@0:4") + ",null," + hook("Shape", "aera", "d16@0:8") +
                      "," + hook("Shap", "area", "d16@0:8") + "," +
                      hook("Shape", "frame", "@16@0:8") + "," + hook("Shape", "shape", "@16@0:8"));
  EXPECT_EQ(run("check ./T --strict").status, 0);
  const Result checked = run("check ./T --strict --in Sketch.ipa");
  EXPECT_EQ(checked.status, 1);
  EXPECT_EQ(checked.out, "./T: 4 warnings\n");
  const std::string place = "./T/Manifest.json: hooks[";
  EXPECT_THAT(
      checked.err,
      StartsWith(
          place +
          "2].selector: warning: the app defines no method -[Shape aera]; did you mean "
          "\"-area\"?\n" +
          place +
          "3].className: warning: the app defines no class \"Shap\"; did you mean "
          "\"Shape\"?\n" +
          place +
          "4].signature: warning: \"@16@0:8\" differs from the method's types in the app, "));
  EXPECT_THAT(run("check ./T --classes").err, HasSubstr("a.b"));
}

}  // namespace
}  // namespace tavlen
