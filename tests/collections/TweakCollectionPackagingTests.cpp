#include "tavlen/collections/TweakCollectionPackaging.h"

#include <gmock/gmock.h>

#include <set>

#include "tavlen/collections/TweakCollectionManifest.h"
#include "tests/support/PackagingTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

class TweakCollectionPackagingTest : public PackagingTest {
 protected:
  /// Packages a collection of these tweaks; `members` is the inside of a JSON array.
  void package(const std::string& members, const std::string& app = "com.example.notes") {
    const fs::path file = tree().write(
        store() + "C.collection", R"({"configuration":{"name":"C","color":"darkRed","bundleID":")" +
                                      app + R"("},"tweaks":[)" + members + "]}");
    TweakCollection::at(file)->package(directory(), transpiler(), tweakInfo_, false);
  }
  TweakInfo tweakInfo_{"com.example.notes", "C.collection"};
};

TEST_F(TweakCollectionPackagingTest, EachMemberThatOpensIsPackaged) {
  tweak("B", "b");
  tree().write(tweak("A", "a") + "Icon.png", icon(1));
  tree().write(tweak("D", "d") + "Icon.png", icon(2));
  tree().write(tweak("E", "never") + "Icon.png", icon(3));
  package(R"("GONE","B","../../x","C.collection","D","A")");
  std::multiset<std::string> codes;
  for (const auto& entry : fs::directory_iterator(directory())) {
    codes.insert(readFile(entry.path() / "code.js"));
  }
  EXPECT_THAT(codes, testing::ElementsAre("a1", "b1", "d1")) << "each with its own transpiler";
  const fs::path icon = *tweakInfo_.customIconURL->path();
  const fs::path first = directory() / icon.parent_path().filename();
  EXPECT_EQ(readFile(first / "code.js"), "d1") << "the first that has one";
  EXPECT_EQ(icon.parent_path().parent_path(), fs::path(kInstalledTweaksDir) / "com.example.notes");

  // An icon from before is nobody's.
  tweakInfo_.customIconURL = URL{"file:///old.png"};
  package(R"("B")");
  EXPECT_EQ(tweakInfo_.customIconURL, std::nullopt);
}

TEST_F(TweakCollectionPackagingTest, EveryTargetMustBeTheApp) {
  tweak("A", "a");
  tweak("X", "x", "", "com.other");
  const std::string mismatch =
      "Bundle ID mismatch (expected 'com.example.notes' but found 'com.other')";
  EXPECT_EQ(messageOf([&] { package(R"("A","X")"); }), mismatch);
  EXPECT_EQ(messageOf([&] { package("", "com.other"); }), mismatch);
  EXPECT_TRUE(fs::is_empty(directory()));
  tweak("BAD", "bad");
  EXPECT_THAT(messageOf([&] { package(R"("A","BAD")"); }), testing::StartsWith("Error: bad"));
  EXPECT_EQ(tweakInfo_, TweakInfo("com.example.notes", "C.collection"));
}

}  // namespace
}  // namespace tavlen
