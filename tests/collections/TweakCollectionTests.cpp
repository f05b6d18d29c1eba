#include "tavlen/collections/TweakCollection.h"

#include <gmock/gmock.h>

#include <set>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/store/TweakManager.h"
#include "tests/support/StoreTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

class TweakCollectionTest : public StoreTest {
 protected:
  /// Lays out an exported collection, `in`, of those members; none of their folders.
  void payload(const std::string& members) const {
    root_.write("in/Manifest.json",
                R"({"configuration":{"name":"C","color":"darkRed","bundleID":"a.b"},"tweaks":[)" +
                    members + "]}");
    fs::create_directories(root_.path() / "in/Tweaks");
  }
  /// What importing it throws: the error's text.
  std::string importError() const {
    return messageOf([&] { TweakCollection::handlePayloadAt(root_.path() / "in"); });
  }
};

TEST_F(TweakCollectionTest, ANewCollectionIsOneFile) {
  const TweakGlyph glyph = TweakGlyph::default_();
  const auto collection = TweakCollection::create("C", TweakColor::darkRed, glyph, "a.b");
  EXPECT_EQ(collection->url().parent_path(), TweaksDirectory::url());
  EXPECT_EQ(collection->id().size(), 36 + TweakCollection::kIDSuffix.size());
  EXPECT_TRUE(TweakCollection::isValidID(collection->id()));
  TweakCollection::Manifest expected;
  expected.configuration = {"C", TweakColor::darkRed, "a.b", glyph};
  EXPECT_EQ(TweakCollection::at(collection->url())->manifest(), expected);
  EXPECT_EQ(storedEntries(), 1);
  EXPECT_THAT(announced(), IsEmpty());

  collection->updateManifest([](auto& manifest) { manifest.configuration.name = "D"; });
  EXPECT_EQ(collection->genericManifest().genericConfiguration().name(), "D");
  EXPECT_TRUE(collection->isShownInSearchFor("d"));
  tweakPoster().performWithoutNotifications([&] { collection->updateManifest([](auto&) {}); });
  EXPECT_THAT(announced(), ElementsAre("collection updateManifest"));

  collection->delete_();
  EXPECT_EQ(storedEntries(), 0);
  EXPECT_FALSE(leftTemporaryItems());
  EXPECT_FALSE(collection->isShownInSearchFor("d"));
  EXPECT_EQ(thrown<TweakError>([&] { collection->validate(); }),
            TweakError::missing(collection->id()));
}

TEST_F(TweakCollectionTest, MembersThatDoNotOpenAreLeftOut) {
  const auto first = newTweak("first");
  const auto second = newTweak("second");
  const auto broken = newTweak("broken");
  const auto collection = newCollection("C");
  std::ofstream(broken->url() / "Manifest.json") << "{";
  root_.write("outside/Manifest.json", kTweakManifest);
  collection->updateManifest([&](auto& manifest) {
    const std::shared_ptr<TweakFile> members[] = {second, first};
    manifest.setTweaks(members);
    EXPECT_THAT(manifest._tweaks, ElementsAre(second->id(), first->id()));
    for (const std::string& id :
         {broken->id(), std::string("nowhere"), collection->id(),
          std::string("../../../../../../outside"), std::string(), first->id()}) {
      manifest._tweaks.push_back(id);
    }
  });
  std::string names;
  for (const auto& tweak : collection->manifest().tweaks()) {
    names += tweak->manifest().configuration.name + " ";
  }
  EXPECT_EQ(names, "second first first ");
  first->remove();
  EXPECT_EQ(collection->manifest().tweaks().size(), 1U);
}

TEST_F(TweakCollectionTest, ItsPayloadHoldsTheFileAndTheMembersThatOpen) {
  const auto tweak = newTweak("T");
  std::ofstream(tweak->resourcesDir() / "a") << "x";
  const auto collection = newCollection("C");
  const fs::path payload = root_.path() / "P";
  fs::create_directory(payload);
  collection->preparePayloadIn(payload);
  EXPECT_TRUE(fs::is_empty(payload / "Tweaks"));

  collection->updateManifest([&](auto& manifest) { manifest._tweaks = {tweak->id(), "nowhere"}; });
  collection->preparePayloadIn(root_.path() / "new/Q");
  EXPECT_EQ(readFile(root_.path() / "new/Q/Manifest.json"), readFile(collection->url()));
  EXPECT_EQ(readFile(root_.path() / "new/Q/Tweaks" / tweak->id() / "Resources/a"), "x");
  EXPECT_EQ(std::distance(fs::directory_iterator(root_.path() / "new/Q/Tweaks"), {}), 1);
  EXPECT_THROW(collection->preparePayloadIn(payload), std::system_error);
}

TEST_F(TweakCollectionTest, ImportGivesAllNewIdentifiersInSilence) {
  payload(R"("A","B.dotted")");
  root_.write("in/Tweaks/A/Manifest.json", kTweakManifest);
  root_.write("in/Tweaks/B.dotted/Manifest.json", kTweakManifest);
  root_.write("in/Tweaks/B.dotted/script.objs", "b");
  root_.write("in/Tweaks/unnamed/Manifest.json", kTweakManifest);
  const auto collection = TweakCollection::handlePayloadAt(root_.path() / "in");
  const auto tweaks = collection->manifest().tweaks();
  ASSERT_EQ(tweaks.size(), 2U);
  EXPECT_EQ(tweaks[0]->script(), "");
  EXPECT_EQ(tweaks[1]->script(), "b");
  for (const auto& tweak : tweaks) EXPECT_EQ(tweak->id().size(), 36U);
  EXPECT_EQ(storedEntries(), 3);
  EXPECT_EQ(TweakManager::allTweaks().size(), 3U);
  EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(TweakCollectionTest, AMemberThatIsNamedAgainIsTheSame) {
  constexpr std::size_t kTimes = 50'000;
  std::string ids = R"("A")";
  for (std::size_t i = 1; i < kTimes; ++i) ids += R"(,"A")";
  payload(ids);
  root_.write("in/Tweaks/A/Manifest.json", kTweakManifest);
  const auto manifest = TweakCollection::handlePayloadAt(root_.path() / "in")->manifest();
  const auto tweaks = manifest.tweaks();
  EXPECT_EQ(manifest._tweaks.size(), kTimes);
  EXPECT_EQ(std::set(tweaks.begin(), tweaks.end()).size(), 1U) << "opened once";
  EXPECT_EQ(tweaks.size(), kTimes);
  EXPECT_EQ(manifest.openedTweaks().size(), 1U);
  EXPECT_EQ(storedEntries(), 2);
}

TEST_F(TweakCollectionTest, HostilePayloadsMoveNothing) {
  root_.write("outside/Manifest.json", kTweakManifest);
  for (const char* members :
       {R"("A","../../outside")", R"("A","")", R"("A",".")", R"("A","..")", R"("A","/etc")",
        R"("A","B/")", R"("A","B\u0000")", R"("A","link")"}) {
    payload(members);
    root_.write("in/Tweaks/A/Manifest.json", kTweakManifest);
    if (!fs::exists(root_.path() / "in/Tweaks/link")) {
      fs::create_symlink("../../outside", root_.path() / "in/Tweaks/link");
    }
    EXPECT_EQ(importError(), "Not found") << members;
    EXPECT_EQ(storedEntries(), 0) << members;
  }
  payload(R"("A")");
  fs::rename(root_.path() / "in/Tweaks", root_.path() / "elsewhere");
  fs::create_symlink("../elsewhere", root_.path() / "in/Tweaks");
  EXPECT_EQ(importError(), "Not found");
  fs::rename(root_.path() / "in/Manifest.json", root_.path() / "M");
  EXPECT_EQ(importError(), "Missing Manifest.json");
  fs::create_symlink("../M", root_.path() / "in/Manifest.json");
  EXPECT_EQ(importError(), "Not found");
  fs::remove(root_.path() / "in/Manifest.json");
  root_.write("in/Manifest.json", "{");
  EXPECT_THROW(TweakCollection::handlePayloadAt(root_.path() / "in"), DecodingError);
  EXPECT_EQ(storedEntries(), 0);
  EXPECT_TRUE(fs::exists(root_.path() / "outside/Manifest.json"));
}

TEST_F(TweakCollectionTest, AFailedImportKeepsWhatWasMovedAndLetsOthersPost) {
  payload(R"("A","nowhere","B")");
  root_.write("in/Tweaks/A/Manifest.json", kTweakManifest);
  root_.write("in/Tweaks/B/Manifest.json", kTweakManifest);
  EXPECT_EQ(importError(), "Not found");
  EXPECT_EQ(storedEntries(), 2) << "the collection and A";
  EXPECT_TRUE(fs::exists(root_.path() / "in/Tweaks/B"));
  EXPECT_THAT(announced(), IsEmpty());
  newTweak("later")->updateManifest([](auto&) {});
  EXPECT_THAT(announced(), ElementsAre("updateManifest"));
}

}  // namespace
}  // namespace tavlen
