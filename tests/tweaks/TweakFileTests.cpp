#include "tavlen/tweaks/TweakFile.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/tweaks/Manifest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

constexpr const char* kManifest =
    R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},"overrides":[],"hooks":[]})";

class TweakFileTest : public testing::Test {
 protected:
  /// What opening the folder `name` reports.
  std::string errorOf(const std::string& name) const {
    return messageOf([&] { TweakFile::at(folder_.path() / name); });
  }

  TemporaryFolder folder_;
};

TEST_F(TweakFileTest, OpensAFolderWithAManifest) {
  folder_.write("A B.tweak/Manifest.json", kManifest);
  fs::create_symlink("A B.tweak", folder_.path() / "link");
  const std::pair<const char*, const char*> cases[] = {
      {"A B.tweak", "A B.tweak"}, {"A B.tweak/", "A B.tweak"}, {"link", "link"}};
  for (const auto& [name, id] : cases) {
    const auto tweak = TweakFile::at(folder_.path() / name);
    EXPECT_EQ(tweak->url(), folder_.path() / id);
    EXPECT_EQ(tweak->id(), id);
    EXPECT_EQ(tweak->resourcesDir(), folder_.path() / id / "Resources/");
    EXPECT_EQ(tweak->executablesDir(), folder_.path() / id / "Executables/");
    EXPECT_EQ(tweak->manifest().configuration.name, "N");
  }
}

TEST_F(TweakFileTest, SaysWhatIsMissingOrBroken) {
  folder_.write("file", "");
  fs::create_directories(folder_.path() / "empty");
  folder_.write("broken/Manifest.json", "{");
  folder_.write("wrong/Manifest.json", R"({"configuration":[]})");
  fs::create_directories(folder_.path() / "folder/Manifest.json");
  EXPECT_EQ(errorOf("file"), "Not found");
  EXPECT_EQ(errorOf("nowhere"), "Not found");
  EXPECT_EQ(errorOf("empty"), "Missing Manifest.json");
  EXPECT_EQ(errorOf("wrong"), "configuration: expected a dictionary, found an array");
  EXPECT_THROW(TweakFile::at(folder_.path() / "broken"), DecodingError);
  EXPECT_THROW(TweakFile::at(folder_.path() / "folder"), std::system_error);
  EXPECT_THROW(TweakFile::at(""), TweakFile::Error);
}

TEST_F(TweakFileTest, APathWithoutANameStillGivesTheFoldersName) {
  folder_.write("T/Manifest.json", kManifest);
  fs::create_directories(folder_.path() / "T/Resources");
  for (const char* name : {"T/.", "T/./", "T/Resources/..", "T/Resources/../"}) {
    EXPECT_EQ(TweakFile::at(folder_.path() / name)->id(), "T") << name;
  }
}

TEST_F(TweakFileTest, ReadsTheFolderAnewEachTime) {
  const fs::path manifest = folder_.write("T/Manifest.json", kManifest);
  const auto tweak = TweakFile::at(folder_.path() / "T");
  EXPECT_EQ(tweak->readScript(), std::nullopt);
  EXPECT_EQ(tweak->script(), "");
  folder_.write("T/script.objs", "one();\r\n");
  EXPECT_EQ(tweak->readScript(), "one();\r\n");
  fs::remove(manifest);
  EXPECT_EQ(thrown<TweakFile::Error>([&] { tweak->manifest(); }),
            TweakFile::Error::missing("Manifest.json"));
  fs::remove_all(folder_.path() / "T");
  EXPECT_THROW(tweak->validate(), TweakFile::Error);
}

TEST_F(TweakFileTest, AScriptThatCannotBeReadCountsAsEmpty) {
  folder_.write("bytes/Manifest.json", kManifest);
  folder_.write("bytes/script.objs", "fine(); \xFF");
  folder_.write("folder/Manifest.json", kManifest);
  fs::create_directories(folder_.path() / "folder/script.objs");
  folder_.write("link/Manifest.json", kManifest);
  fs::create_symlink("nowhere", folder_.path() / "link/script.objs");
  for (const char* name : {"bytes", "folder", "link"}) {
    const auto tweak = TweakFile::at(folder_.path() / name);
    EXPECT_EQ(tweak->script(), "") << name;
    EXPECT_THROW(tweak->readScript(), std::system_error) << name;
  }
}

}  // namespace
}  // namespace tavlen
