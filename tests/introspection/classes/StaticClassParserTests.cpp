#include "tavlen/introspection/classes/StaticClassParser.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tavlen/bundles/Executable.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tests/introspection/classes/ClassText.h"
#include "tests/introspection/classes/ObjdumpText.h"
#include "tests/support/AppPlist.h"
#include "tests/support/MachOFile.h"
#include "tests/support/TableFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Result = StaticClassParser::Result;

std::string image(const std::string& name) { return readFile(paths().machoImages + "/" + name); }

/// A result on lines, except for its slice.
std::string textOf(const Result& result) {
  std::string text;
  for (const auto& each : result.classes) text += textOf(*each);
  for (const auto& each : result.categories) {
    text += "category " + each.className.str() + '(' + each.name.str() + ")\n";
    for (const auto& protocol : each.protocols) text += "protocol " + protocol.str() + '\n';
    for (const auto& method : each.methods) text += textOf(*method);
  }
  for (const auto& each : result.diagnostics) text += "diagnostic " + each + '\n';
  return text;
}

SharedText shown(const SharedText& name) {
  if (name == "_TtC6Sketch6Canvas") return "Sketch.Canvas";
  if (name == "_TtP6Sketch7Erasing_") return "Sketch.Erasing";
  return name;
}

/// Replaces the mangled names in what another program printed by those that the run time shows.
void showNames(Result& result) {
  for (const auto& each : result.classes) {
    each->name = shown(each->name);
    if (each->supercls && shown(*each->supercls) != *each->supercls) {
      each->mangledSuperclass = std::exchange(each->supercls, shown(*each->supercls));
    }
    for (SharedText& protocol : each->protocols) protocol = shown(protocol);
  }
  for (auto& each : result.categories) each.className = shown(each.className);
}

/// A device tree with an app: a program, its framework and a loadable bundle.
class StaticClassParserTest : public testing::Test {
 protected:
  StaticClassParserTest() {
    DeviceRoot::setShared(DeviceRoot(tree_.path()));
    write("Info.plist", appPlist("com.example.sketch", "Sketch"));
    write("Sketch", image("Sketch"));
    write("Frameworks/Shapes.framework/Shapes", image("Shapes"));
    write("PlugIns/Stickers.bundle/Stickers", image("Stickers"));
  }
  ~StaticClassParserTest() override { DeviceRoot::setShared(DeviceRoot()); }

  fs::path appDir() const { return tree_.path() / "Applications/Sketch.app"; }
  void write(const std::string& path, std::string_view bytes) const {
    tree_.write("Applications/Sketch.app/" + path, bytes);
  }
  /// What the image at that path of the app holds.
  Result parsed(const std::string& path, const std::string& architecture = {}) const {
    return StaticClassParser(architecture)
        .parseImage(Executable(ipa_, appDir(), path, path == "Sketch"));
  }
  Result parsedBytes(std::string_view bytes, const std::string& architecture = {}) const {
    write("Image", bytes);
    return parsed("Image", architecture);
  }
  /// The path of the superclass of the image's class of that name.
  std::string superclassPath(const std::string& path, std::string_view name) const {
    for (const auto& each : parsed(path).classes) {
      if (each->name == name) return each->superclassPath.value_or("none").str();
    }
    return "no such class";
  }

  TemporaryFolder tree_;
  std::shared_ptr<IPA> ipa_ = IPA::withAppDir(appDir());
};

TEST_F(StaticClassParserTest, AgreesWithAnotherProgram) {
  for (const std::string name : {"Shapes", "Shapes.stripped", "Shapes.simulator", "Shapes.intel",
                                 "Sketch", "Sketch.intel", "Stickers"}) {
    Result expected = resultFromObjdump(image(name + ".objdump"));
    showNames(expected);
    ASSERT_FALSE(expected.classes.empty()) << name;
    const Result result = parsedBytes(image(name));
    for (const auto& each : result.classes) each->superclassPath.reset();
    EXPECT_EQ(textOf(result), textOf(expected)) << name;
  }
}

TEST_F(StaticClassParserTest, FixupsAndSlicesDoNotMatter) {
  const struct {
    std::string source;
    std::vector<std::string> copies;
  } rows[] = {{"Shapes",
               {"relative", "chained", "chained.relative", "chained6", "imports2", "imports3",
                "arm64e1", "arm64e9", "arm64e12", "threaded", "byLoader", "fat", "fat64"}},
              {"Shapes.intel", {"chained"}},
              {"Sketch",
               {"chained", "chained6", "imports2", "imports3", "arm64e1", "arm64e9", "arm64e12",
                "threaded"}},
              {"Records", {"chained"}}};
  for (const auto& [source, copies] : rows) {
    const std::string expected = textOf(parsedBytes(image(source)));
    for (const std::string& copy : copies) {
      EXPECT_EQ(textOf(parsedBytes(image(source + '.' + copy))), expected) << source << ' ' << copy;
    }
  }
}

TEST_F(StaticClassParserTest, ReadsRecordsThatNoCompilerAtHandMakes) {
  const std::string path = "/Applications/Sketch.app/Image";
  EXPECT_EQ(textOf(parsedBytes(image("Records"))),
            "class Base\n- first v16@0:8\n- empty \n"
            "class Sorted\nsuper Base " +
                path +
                "\nprotocol Closing\nprotocol Notes.Opening\n"
                "- a i16@0:8\n- b: v20@0:8i16\n+ made @16@0:8\n"
                "class Notes.Unknown\n"
                "class Notes.List\nmangled _TtC5Notes7Unknown\nsuper Notes.Unknown " +
                path +
                "\n- a i16@0:8\n- b: v20@0:8i16\n"
                "class Notes.Early\nmangled _TtC5Notes4List\nsuper Notes.List " +
                path +
                "\nclass Swift.Object\nsuper NSObject /usr/lib/libobjc.A.dylib\n"
                "class Sorted\nsuper Base " +
                path +
                "\nprotocol Closing\nprotocol Notes.Opening\n"
                "- a i16@0:8\n- b: v20@0:8i16\n+ made @16@0:8\n");
}

TEST_F(StaticClassParserTest, ResultsKeepNoFileOpen) {
  const auto openFiles = [] {
    return std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator());
  };
  const auto before = openFiles();
  const Result result = parsedBytes(image("Shapes"));
  EXPECT_EQ(openFiles(), before);
}

TEST_F(StaticClassParserTest, FindsTheImagesOfSuperclasses) {
  const std::string app = "/Applications/Sketch.app/";
  const std::string framework = app + "Frameworks/Shapes.framework/Shapes";
  EXPECT_EQ(superclassPath("Sketch", "Eraser"), framework);
  EXPECT_EQ(superclassPath("Sketch", "_TtCC6Sketch6Canvas5Layer"), app + "Sketch");
  EXPECT_EQ(superclassPath("Sketch", "Sketch.Canvas"),
            "/System/Library/Frameworks/UIKit.framework/UIKit");
  // By a run path of the program, from the bundle's own folder, from the program's.
  const std::string stickers = "PlugIns/Stickers.bundle/Stickers";
  for (const std::string name : {"Stickers", "Stickers.byLoader", "Stickers.byProgram"}) {
    write(stickers, image(name));
    EXPECT_EQ(superclassPath(stickers, "Sticker"), framework) << name;
  }
  fs::remove_all(appDir() / "Frameworks");
  EXPECT_EQ(superclassPath("Sketch", "Eraser"), "@rpath/Shapes.framework/Shapes");
}

TEST_F(StaticClassParserTest, AFaultCostsItsClassOrMethod) {
  Result result = parsedBytes(image("Damaged"));
  for (const auto& each : result.classes) each->superclassPath.reset();
  const auto diagnostics = std::exchange(result.diagnostics, {});
  EXPECT_EQ(textOf(result),
            "class Good\n- good v16@0:8\n"
            "class Partly\nsuper Good -\n- kept v16@0:8\n- alsoKept v16@0:8\n+ good v16@0:8\n"
            "class Untyped\nsuper Good -\n"
            "class Endless\nsuper Good -\n"
            "class Flat\nsuper Good -\n"
            "class Cached\nsuper Good -\n"
            "class Orphan\n- good v16@0:8\n"
            "class Pious\nsuper Good -\n- good v16@0:8\n"
            "class Egg\nsuper Hen -\n"
            "class Hen\nsuper Egg -\n"
            "class Last\nsuper Good -\n- good v16@0:8\n");
  // Four entries of the list, and a category's class, have no name that can be read.
  for (const std::string name :
       {"Partly", "Untyped", "Endless", "Flat", "Cached", "Orphan", "Pious"}) {
    const auto isAbout = [&](const std::string& each) { return each.starts_with(name); };
    EXPECT_EQ(std::ranges::count_if(diagnostics, isAbout), 1) << name;
  }
  EXPECT_EQ(diagnostics.size(), 7 + 4 + 1);
}

TEST_F(StaticClassParserTest, NamesWhatItCannotRead) {
  using Case = StaticClassParser::ErrorCase;
  const struct {
    std::string bytes;
    std::string architecture;
    Case expected;
  } rows[] = {
      {"#!/bin/sh\n", "", Case::notMachO},
      {image("Shapes"), "x86_64", Case::architectureMissing},
      {macho::thin32(6), "", Case::unsupportedArchitecture},
      {image("Shapes.o"), "", Case::notLinked},
      {image("Shapes.dSYM"), "", Case::notLinked},
      {image("Shapes.encrypted"), "", Case::encrypted},
  };
  for (const auto& row : rows) {
    const auto error =
        thrown<StaticClassParser::Error>([&] { parsedBytes(row.bytes, row.architecture); });
    ASSERT_TRUE(error.has_value()) << static_cast<int>(row.expected);
    EXPECT_TRUE(error->which() == row.expected) << error->what();
  }
}

TEST_F(StaticClassParserTest, ReadsTheSliceAskedFor) {
  EXPECT_EQ(parsedBytes(image("Shapes.fat")).slice.architecture(), "arm64");
  for (const std::string each : {"arm64", "arm64e", "x86_64"}) {
    for (const std::string file : {"Shapes.fat", "Shapes.fat64"}) {
      EXPECT_EQ(parsedBytes(image(file), each).slice.architecture(), each) << file;
    }
  }
  EXPECT_EQ(parsedBytes(image("Shapes.brokenSlice")).slice.architecture(), "x86_64");
}

}  // namespace
}  // namespace tavlen
