#include <gtest/gtest.h>

#include <cstdlib>

#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/introspection/classes/ObjCClass.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"

namespace tavlen {
namespace {

/// Another Foundation reads what is written here, and writes what it has read.
class KeyedArchiveInterop : public testing::Test {
 protected:
  template <class T>
  T reread(const char* task, const T& value) {
    const auto input = folder_.write("in", encodeKeyedArchive(value));
    const auto output = folder_.path() / "out";
    // Its leaks are not ours.
    const std::string command = "ASAN_OPTIONS=detect_leaks=0 '" + paths().archivePeer + "' " +
                                task + " '" + input.string() + "' '" + output.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;  // NOLINT(cert-env33-c)
    return decodeKeyedArchive<T>(readFile(output));
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(KeyedArchiveInterop, classesSurvive) {
  const auto method = [](const char* selector, const char* encoding, bool isClassMethod) {
    return std::make_shared<ObjCMethod>(selector, encoding, isClassMethod);
  };
  std::vector<ObjCClass> classes{
      {"PXView",
       {method("setSize:", "v32@0:8{CGSize=dd}16", false), method("größe", "@16@0:8", false),
        method("größe", "@16@0:8", true)},
       "_TtC1A1B",
       "UIView",
       "/System/Library/Frameworks/UIKit.framework/UIKit",
       {"NSCopying", "NSCoding", ""}},
      {"NSObject", {}, {}, {}, {}, {}},
      {"", {method("", "", true)}, "", "PXView", "/a 😀", {"NSCopying"}}};
  // As many objects as need numbers of two bytes.
  for (int i = 0; i < 80; ++i) {
    classes.push_back({"C" + std::to_string(i), {}, {}, {}, {}, {"P" + std::to_string(i)}});
  }
  EXPECT_EQ(reread("reread", classes), classes);
  EXPECT_EQ(reread("mutable", classes), classes);
}

TEST_F(KeyedArchiveInterop, theInstalledTweakSurvives) {
  TweakInfo info("com.example.app", "8C0B");
  EXPECT_EQ(reread("reread", info), info);
  info.customIconURL = URL::fileURL("/var/mobile/a b/Icon.png");
  EXPECT_EQ(reread("reread", info), info);
  // With a base, which comes back resolved.
  EXPECT_EQ(reread("rebase", info), info);
  EXPECT_EQ(reread("reread", TweakInfo()), TweakInfo());
}

}  // namespace
}  // namespace tavlen
