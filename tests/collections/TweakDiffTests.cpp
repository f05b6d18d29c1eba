#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

#include "tavlen/collections/TweakBundleIDObserver.h"
#include "tavlen/foundation/tasks/MainQueue.h"
#include "tavlen/items/TweakPoster.h"
#include "tests/support/StoreTest.h"

namespace tavlen {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

  // A manifest that cannot be read has no identifier, and has one again later.
  tweak->remove();
  EXPECT_EQ(callsAfter([&] { post({update}); }), 1);
  EXPECT_EQ(observer->currBundleID(), std::nullopt);
  EXPECT_EQ(callsAfter([&] { post({update}); }), 0);
  std::filesystem::create_directory(tweak->url());
  EXPECT_EQ(callsAfter([&] { tweak->setManifest({}); }), 1);
  EXPECT_EQ(observer->currBundleID(), "");

  const std::weak_ptr<TweakBundleIDObserver> weak = observer;
  observer.reset();
  EXPECT_TRUE(weak.expired()) << "its registration holds it";
  EXPECT_EQ(callsAfter([&] { setBundleID(tweak, "g.h"); }), 0);
}

}  // namespace
}  // namespace tavlen
