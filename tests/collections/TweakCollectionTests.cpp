#include "tavlen/collections/TweakCollection.h"

#include <gmock/gmock.h>

#include <set>
#include <stdexcept>
#include <thread>

#include "tavlen/collections/TweakBundleIDObserver.h"
#include "tavlen/collections/TweakCollectionPackaging.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/tasks/MainQueue.h"
#include "tavlen/items/TweakError.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/store/TweakManager.h"
#include "tests/support/PackagingTest.h"

namespace tavlen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TweakCollectionTest : public StoreTest {
 protected:
  /// Lays out an exported collection, `in`, of those members; none of their folders.
  void payload(const std::string& members) const {
    root_.write("in/Manifest.json",
                R"({"configuration":{"name":"C","color":"darkRed","bundleID":"a.b"},"tweaks":[)" +
                    members + "]}");
    fs::create_directories(root_.path() / "in/Tweaks");
  }
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

class TweakDiffTest : public StoreTest {
 protected:
  ~TweakDiffTest() override { MainQueue::shared().drain(); }

  static void post(TweakDiffs diffs) {
    postTweakDiffs(NotificationCenter::default_(), std::move(diffs));
  }
  static void setBundleID(const std::shared_ptr<TweakFile>& tweak, const std::string& bundleID) {
    tweak->updateManifest([&](auto& manifest) { manifest.configuration.bundleID = bundleID; });
  }
};

TEST_F(TweakDiffTest, EveryObserverGetsEveryListInOrder) {
  NotificationCenter center;
  std::vector<std::string> calls;
  for (const char* name : {"1", "2"}) {
    addTweakDiffObserver(center, [&calls, name](const TweakDiffs& diffs) {
      std::string text = name;
      for (const TweakDiff& diff : diffs) text += " " + nameOf(*diff);
      calls.push_back(text);
    });
  }
  const auto tweak = newTweak("A");
  const auto collection = newCollection("B");
  using Diff = TweakFile::Diff;
  const auto diff = [&](Diff::Mode mode) { return std::make_shared<Diff>(tweak, std::move(mode)); };
  postTweakDiffs(center,
                 {diff(Diff::AddHooks()), diff(Diff::DeleteHook()), diff(Diff::UpdateIcon()),
                  collection->diffFor(GenericTweakDiffMode::create)});
  postTweakDiffs(center, {});
  const std::string all = " addHooks deleteHook updateIcon collection create";
  EXPECT_THAT(calls, ElementsAre("1" + all, "2" + all, "1", "2"));
  EXPECT_THAT(announced(), IsEmpty()) << "it was another centre";

  calls.clear();
  const std::string name(kTweaksDidUpdateNotification);
  center.post({name, nullptr, std::nullopt});
  center.post({name, nullptr, std::map<std::string, std::any>{{"others", TweakDiffs()}}});
  center.post({name, nullptr, std::map<std::string, std::any>{{"diffs", std::string("text")}}});
  center.post({"Other", nullptr, std::map<std::string, std::any>{{"diffs", TweakDiffs()}}});
  EXPECT_THAT(calls, IsEmpty());
  center.post({name, &center, std::map<std::string, std::any>{{"diffs", TweakDiffs()}}});
  EXPECT_THAT(calls, ElementsAre("1", "2")) << "from any sender";
}

TEST_F(TweakDiffTest, HandlersMayEditPostAndChangeTheObservers) {
  const auto tweak = newTweak("A");
  const auto other = newTweak("B");
  NotificationCenter& center = NotificationCenter::default_();
  std::optional<NotificationCenter::Token> token;
  std::vector<std::string> order;
  token = center.addObserver(std::string(kTweaksDidUpdateNotification), nullptr, [&](const auto&) {
    center.removeObserver(*token);
    token = center.addObserver(std::string(kTweaksDidUpdateNotification), nullptr,
                               [&](const auto&) { order.emplace_back("added"); });
    const std::lock_guard lock(other->recursiveLock);
    other->setCustomIcon(std::nullopt);
    tweak->updateManifest([](auto& manifest) { manifest.configuration.name += "!"; });
    tweakPoster().performWithoutNotifications([&] { setBundleID(other, "c"); });
    post({other->diffFor(GenericTweakDiffMode::delete_)});
    order.emplace_back("first");
  });
  tweak->updateManifest([](auto& manifest) { manifest.configuration.name = "B"; });
  center.removeObserver(*token);
  EXPECT_EQ(tweak->manifest().configuration.name, "B!");
  EXPECT_THAT(order, ElementsAre("added", "added", "added", "first"));
  EXPECT_THAT(announced(), ElementsAre("updateManifest", "updateIcon", "updateManifest", "delete"));
  // A handler that throws leaves the document changed and the lock free.
  token = center.addObserver(std::string(kTweaksDidUpdateNotification), nullptr,
                             [](const auto&) { throw std::runtime_error("handler"); });
  EXPECT_THROW(setBundleID(tweak, "d"), std::runtime_error);
  center.removeObserver(*token);
  EXPECT_EQ(tweak->manifest().configuration.bundleID, "d");
  std::thread([&] { setBundleID(tweak, "e"); }).join();
}

TEST_F(TweakDiffTest, ABundleIDIsFollowedOnTheMainQueue) {
  const auto tweak = newTweak("A");
  int calls = 0;
  auto observer = TweakBundleIDObserver::with(tweak, [&] { ++calls; });
  EXPECT_EQ(observer->currBundleID(), "a.b");
  const auto callsAfter = [&](const std::function<void()>& change) {
    calls = 0;
    std::thread(change).join();
    EXPECT_EQ(calls, 0) << "not on the posting thread";
    MainQueue::shared().drain();
    return calls;
  };
  const TweakDiff update =
      std::make_shared<TweakFile::Diff>(tweak, TweakFile::Diff::UpdateManifest());
  const TweakDiff deletion = tweak->diffFor(GenericTweakDiffMode::delete_);
  const TweakDiff foreign = newTweak("B")->diffFor(GenericTweakDiffMode::delete_);
  const auto silently = [&](const std::string& bundleID) {
    tweakPoster().performWithoutNotifications([&] { setBundleID(tweak, bundleID); });
  };

  EXPECT_EQ(callsAfter([&] { setBundleID(tweak, "a.b"); }), 0);
  EXPECT_EQ(callsAfter([&] { setBundleID(tweak, "c.d"); }), 1);
  EXPECT_EQ(observer->currBundleID(), "c.d");
  EXPECT_EQ(callsAfter([&] { silently("e.f"); }), 0);
  EXPECT_EQ(callsAfter([&] { post({foreign}); }), 0);
  EXPECT_EQ(callsAfter([&] { post({deletion}); }), 0);
  EXPECT_EQ(callsAfter([&] { post({deletion, update}); }), 0) << "only the first diff counts";
  EXPECT_EQ(observer->currBundleID(), "c.d");
  EXPECT_EQ(callsAfter([&] { post({nullptr, foreign, update, deletion}); }), 1);
  EXPECT_EQ(observer->currBundleID(), "e.f");

  tweak->remove();
  EXPECT_EQ(callsAfter([&] { post({update}); }), 1);
  EXPECT_EQ(observer->currBundleID(), std::nullopt);
  EXPECT_EQ(callsAfter([&] { post({update}); }), 0);
  fs::create_directory(tweak->url());
  EXPECT_EQ(callsAfter([&] { tweak->setManifest({}); }), 1);
  EXPECT_EQ(observer->currBundleID(), "");

  const std::weak_ptr<TweakBundleIDObserver> weak = observer;
  observer.reset();
  EXPECT_TRUE(weak.expired()) << "its registration holds it";
  EXPECT_EQ(callsAfter([&] { setBundleID(tweak, "g.h"); }), 0);
}

}  // namespace
}  // namespace tavlen
