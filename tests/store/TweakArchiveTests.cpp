#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/store/TweakManager.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

class TweakArchiveTest : public StoreTest {
 protected:
  /// The archive `name` of the folder "Payload" that lies in `folder`.
  fs::path archive(const std::string& folder, const std::string& name) const {
    ZIPArchive::zipItem(root_.path() / folder / "Payload", root_.path() / name);
    return root_.path() / name;
  }
};

TEST_F(TweakArchiveTest, ACollectionBringsItsMembers) {
  const auto tweak = newTweak("T");
  const auto collection = newCollection("C");
  collection->updateManifest([&](auto& manifest) { manifest._tweaks = {tweak->id()}; });
  const fs::path file = TweakManager::export_(*collection);
  EXPECT_EQ(file.filename(), "C.tvxc");
  const auto copy = std::dynamic_pointer_cast<TweakCollection>(TweakManager::decompressAt(file));
  ASSERT_NE(copy, nullptr);
  ASSERT_EQ(copy->manifest().tweaks().size(), 1U);
  EXPECT_NE(copy->manifest()._tweaks.front(), tweak->id());

  // A member that does not open is named but does not come along.
  collection->updateManifest([](auto& manifest) { manifest._tweaks = {"nowhere"}; });
  EXPECT_THROW(TweakManager::decompressAt(TweakManager::export_(*collection)), TweakFile::Error);
}

TEST_F(TweakArchiveTest, NamesBecomeFileNames) {
  std::string longName = "x";
  for (int i = 0; i < 200; ++i) longName += "\xC3\xBC";
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},  // the identifier
      {":/", "--"},
      {std::string("a\0b", 3), "a-b"},
      {"..", ".."},
      {"n.tvx", "n.tvx"},
      {longName, longName.substr(0, 251)},
      {longName.substr(1), longName.substr(1, 250)}};
  for (const auto& [name, stem] : rows) {
    const auto tweak = newTweak(name);
    const fs::path file = TweakManager::export_(*tweak);
    EXPECT_EQ(file.filename().string(), (stem.empty() ? tweak->id() : stem) + ".tvx");
    EXPECT_TRUE(TweakManager::canHandle(file));
    EXPECT_EQ(TweakManager::decompressAt(file)->genericManifest().genericConfiguration().name(),
              name);
  }
}

TEST_F(TweakArchiveTest, ABrokenArchiveLeavesNothing) {
  root_.write("file/Payload", "x");
  root_.write("empty/Payload/Resources/r", "x");
  root_.write("broken/Payload/Manifest.json", "{");
  root_.write("other/Else/Manifest.json", kTweakManifest);
  ZIPArchive::zipItem(root_.path() / "other/Else", root_.path() / "other.tvx");
  root_.write("none.tvx", "no archive");
  const fs::path file = archive("file", "file.tvx");
  for (const fs::path& refused : {file, root_.path() / "other.tvx"}) {
    EXPECT_EQ(thrown<TweakFile::Error>([&] { TweakManager::decompressAt(refused); }),
              TweakFile::Error::notFound())
        << refused;
  }
  EXPECT_THROW(TweakManager::decompressAt(archive("empty", "empty.TVX")), TweakFile::Error);
  EXPECT_THROW(TweakManager::decompressAt(archive("empty", "empty.tvxc")), TweakError);
  EXPECT_THROW(TweakManager::decompressAt(archive("broken", "broken.tvx")), DecodingError);
  EXPECT_THROW(TweakManager::decompressAt(root_.path() / "none.tvx"), ZIPError);
  EXPECT_THROW(TweakManager::decompressAt(root_.path() / "nowhere.tvx"), std::exception);
  EXPECT_EQ(storedEntries(), 0);
  EXPECT_FALSE(leftTemporaryItems());
}

}  // namespace
}  // namespace tavlen
